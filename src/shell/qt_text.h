#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace lumbra::shell {

// The core's UTF-8 text to Qt and back.
inline QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string fromQt(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

} // namespace lumbra::shell
