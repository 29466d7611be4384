#pragma once

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

// Runs a test class with HOME in a fresh temporary directory, so no test ever
// touches a real ~/.tallis, and with the offscreen platform.
#define TALLIS_TEST_MAIN(TestClass)                                                                          \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        QTemporaryDir home;                                                                                  \
        if (!home.isValid())                                                                                 \
            return 2;                                                                                        \
        qputenv("HOME", home.path().toLocal8Bit());                                                          \
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))                                                  \
            qputenv("QT_QPA_PLATFORM", "offscreen");                                                         \
        QApplication app(argc, argv);                                                                        \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                                             \
        TestClass tc;                                                                                        \
        QTEST_SET_MAIN_SOURCE_PATH                                                                           \
        return QTest::qExec(&tc, argc, argv);                                                                \
    }
