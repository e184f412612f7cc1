#include "app/texts.h"

#include <QCoreApplication>

namespace kelb::app::texts {

QString shown(const char* text) {
    return QCoreApplication::translate("KelbExtractor", text);
}

} // namespace kelb::app::texts
