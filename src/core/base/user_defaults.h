#pragma once

#include <map>
#include <optional>
#include <string>

namespace lumbra::base {

// The few values the application keeps outside any project; the shell stores them in its settings.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    // Absent when the key was never written.
    [[nodiscard]] virtual std::optional<std::string> stringValue(const std::string& key) const = 0;
    virtual void setString(const std::string& key, const std::string& value) = 0;
    virtual void setBool(const std::string& key, bool value) = 0;
};

// Defaults kept in memory, for tests and for a run that must not touch the user's settings.
class MemoryUserDefaults final : public UserDefaults {
public:
    [[nodiscard]] std::optional<std::string> stringValue(const std::string& key) const override {
        const auto found = m_values.find(key);
        return found == m_values.end() ? std::nullopt : std::optional<std::string>(found->second);
    }
    void setString(const std::string& key, const std::string& value) override { m_values[key] = value; }
    void setBool(const std::string& key, bool value) override { m_values[key] = value ? "1" : "0"; }

private:
    std::map<std::string, std::string> m_values;
};

} // namespace lumbra::base
