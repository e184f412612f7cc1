#pragma once

#include <QString>

#include <string>
#include <string_view>

/// Texts between the core (UTF-16 views) and Qt.
namespace kelb::app {

[[nodiscard]] inline QString toQt(std::u16string_view text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}
[[nodiscard]] inline std::u16string fromQt(const QString& text) {
    return text.toStdU16String();
}

} // namespace kelb::app
