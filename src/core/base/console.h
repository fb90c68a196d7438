#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::base {

// Writes one line to the program's log, standard output unless a capture is active.
void printLine(std::string_view line);

// Redirects printLine into a list for as long as it lives; captures nest.
class PrintCapture {
public:
    PrintCapture();
    ~PrintCapture();
    PrintCapture(const PrintCapture&) = delete;
    PrintCapture& operator=(const PrintCapture&) = delete;

    [[nodiscard]] const std::vector<std::string>& lines() const noexcept { return m_lines; }
    [[nodiscard]] bool contains(std::string_view line) const;

private:
    std::vector<std::string> m_lines;
    PrintCapture* m_previous = nullptr;
    friend void printLine(std::string_view line);
};

} // namespace lumbra::base
