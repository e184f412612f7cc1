#include "app/page_viewer.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int count, char** arguments) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    testing::InitGoogleTest(&count, arguments);
    kelb::app::prepareForPageViewer();
    const QApplication application(count, arguments);
    return RUN_ALL_TESTS();
}
