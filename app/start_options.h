#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kelb::app {

/// What the program was told when it was started.
struct StartOptions {
    QString home; ///< application folder; "" when not given
    QString ini;  ///< settings file; "" when not given
    QString view; ///< a page to open in the viewer at once; "" when none
    bool help = false;
    bool version = false;
    bool quitAfterPaint =
        false; ///< opens the window, paints it once and ends: checks an installation, measures the start
};

/// Reads `--home DIR`, `--home=DIR` and the like (program name not among the arguments). No value when an argument is
/// not understood; `fault` then names it.
[[nodiscard]] std::optional<StartOptions> readStartOptions(const QStringList& arguments, QString& fault);

} // namespace kelb::app
