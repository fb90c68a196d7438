#pragma once

#include "base/user_defaults.h"

namespace lumbra::shell {

// The application's user defaults, kept in the desktop's settings store.
class QtUserDefaults final : public base::UserDefaults {
public:
    [[nodiscard]] std::optional<std::string> stringValue(const std::string& key) const override;
    void setString(const std::string& key, const std::string& value) override;
    void setBool(const std::string& key, bool value) override;
};

} // namespace lumbra::shell
