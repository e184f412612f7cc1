#include "app/page_viewer.h"

#include <QWidget>

namespace kelb::app {

std::unique_ptr<QWidget> makePageViewer(const ViewedPage&, platform::FileSystem&, UserDialogs&) {
    return nullptr;
}

void prepareForPageViewer() {}

} // namespace kelb::app
