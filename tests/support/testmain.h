#pragma once

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// A test of widgets gets a QApplication, one of the GUI layer's values a QGuiApplication, everything
// else a plain QCoreApplication.
#if defined(QT_WIDGETS_LIB)
#include <QApplication>
using TallisTestApplication = QApplication;
#elif defined(QT_GUI_LIB)
#include <QGuiApplication>
using TallisTestApplication = QGuiApplication;
#else
#include <QCoreApplication>
using TallisTestApplication = QCoreApplication;
#endif

// The current row's value in a _data column, for a value used once; QFETCH for the rest.
template <typename T>
T fetched(const char *column)
{
    return *static_cast<T *>(QTest::qData(column, qMetaTypeId<T>()));
}

// A file's bytes (empty when it cannot be read), and a whole file written: false when it could not be.
inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(data) == data.size();
}

// Runs a test class with HOME in a fresh temporary directory, so no test ever touches a real ~/.tallis,
// and with the offscreen platform.
#define TALLIS_TEST_MAIN(TestClass)                                                                          \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        QTemporaryDir home;                                                                                  \
        if (!home.isValid())                                                                                 \
            return 2;                                                                                        \
        qputenv("HOME", home.path().toLocal8Bit());                                                          \
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))                                                  \
            qputenv("QT_QPA_PLATFORM", "offscreen");                                                         \
        QCoreApplication::setAttribute(Qt::AA_Use96Dpi, true);                                               \
        TallisTestApplication app(argc, argv);                                                               \
        TestClass tc;                                                                                        \
        QTEST_SET_MAIN_SOURCE_PATH                                                                           \
        return QTest::qExec(&tc, argc, argv);                                                                \
    }
