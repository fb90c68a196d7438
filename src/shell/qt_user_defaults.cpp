#include "qt_user_defaults.h"

#include <QSettings>

namespace lumbra::shell {

std::optional<std::string> QtUserDefaults::stringValue(const std::string& key) const {
    const QSettings settings;
    const QVariant value = settings.value(QString::fromStdString(key));
    if (!value.isValid()) {
        return std::nullopt;
    }
    return value.toString().toStdString();
}

void QtUserDefaults::setString(const std::string& key, const std::string& value) {
    QSettings().setValue(QString::fromStdString(key), QString::fromStdString(value));
}

void QtUserDefaults::setBool(const std::string& key, bool value) {
    QSettings().setValue(QString::fromStdString(key), value);
}

} // namespace lumbra::shell
