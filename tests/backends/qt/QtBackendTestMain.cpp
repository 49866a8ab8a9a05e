#include "backends/qt/QtPlatform.h"

#include <gtest/gtest.h>
#include <QGuiApplication>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")) qputenv("QT_QUICK_BACKEND", "software");
    testing::InitGoogleTest(&argc, argv);
    QGuiApplication application(argc, argv);
    ostrel::QtPlatform::install({});
    return RUN_ALL_TESTS();
}
