#include "base/console.h"

#include <algorithm>
#include <cstdio>

namespace lumbra::base {

namespace {
PrintCapture* activeCapture = nullptr;
}

void printLine(std::string_view line) {
    if (activeCapture) {
        activeCapture->m_lines.emplace_back(line);
        return;
    }
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
}

PrintCapture::PrintCapture() : m_previous(activeCapture) {
    activeCapture = this;
}

PrintCapture::~PrintCapture() {
    activeCapture = m_previous;
}

bool PrintCapture::contains(std::string_view line) const {
    return std::find(m_lines.begin(), m_lines.end(), line) != m_lines.end();
}

} // namespace lumbra::base
