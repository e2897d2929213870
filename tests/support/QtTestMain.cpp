#include <gtest/gtest.h>

#include <QApplication>

/// The main program of tests that show views: on the platform that needs no screen, unless another
/// one is asked for, and with the faster loop, which has no other program's sources in it.
int main(int argumentCount, char** arguments) {
    qputenv("QT_NO_GLIB", "1");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argumentCount, arguments);
    ::testing::InitGoogleTest(&argumentCount, arguments);
    return RUN_ALL_TESTS();
}
