#include "fuzz/fuzzsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace {

QTemporaryDir *g_home = nullptr;

void quietMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "qFatal: %s\n", qPrintable(message));
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Made once and kept: the objects under test need an application, and the
    // files they read and write must not be the user's own. Memory-backed when
    // the system has it: the state files are synced to disk on every save.
    const QFileInfo shm(QStringLiteral("/dev/shm"));
    const QString base = shm.isDir() && shm.isWritable() ? shm.filePath() : QDir::tempPath();
    g_home = new QTemporaryDir(base + QStringLiteral("/tallis-fuzz-XXXXXX"));
    if (!g_home->isValid() || !qputenv("HOME", QFile::encodeName(g_home->path()))) {
        std::fprintf(stderr, "cannot make a temporary HOME\n");
        std::abort();
    }
    QDir(g_home->path()).mkpath(QStringLiteral(".tallis"));
    qInstallMessageHandler(quietMessages);
    new QCoreApplication(*argc, *argv);
    return 0;
}

namespace FuzzSupport {

QString homePath()
{
    return g_home->path();
}

QString tallisDirPath()
{
    return g_home->path() + QStringLiteral("/.tallis");
}

void writeFile(const QString &path, QByteArrayView contents)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(contents.data(), contents.size()) != contents.size())
        fail("cannot write the input file", path);
}

void processEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void fail(const char *what, const QString &detail)
{
    std::fprintf(stderr, "\n*** %s\n%s\n", what, qPrintable(detail));
    std::fflush(stderr);
    std::abort();
}

void requireValidJson(QByteArrayView json, const char *what)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json.toByteArray(), &error);
    if (error.error != QJsonParseError::NoError || document.isNull())
        fail(what, error.errorString() + QLatin1Char('\n') + QString::fromUtf8(json.toByteArray()));
}

} // namespace FuzzSupport
