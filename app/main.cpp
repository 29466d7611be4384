#include "app/heaptrimmer.h"
#include "app/mainwindow.h"
#include "app/unixsignalwatcher.h"
#include "buildinfo.h"

#include <QApplication>
#include <QIcon>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

// Every size the desktop may ask for: the title bar, the task switcher, the dock.
QIcon applicationIcon()
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icons/%1x%1/org.brightwater.Tallis.png").arg(size), QSize(size, size));
    return icon;
}

} // namespace

int main(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--text") == 0) {
            std::fputs("Tallis: this build was compiled without ncurses; --text mode is unavailable.\n",
                       stderr);
            return 1;
        }
    }

    QApplication app(argc, argv);
    const HeapTrimmer heapTrimmer;
    QApplication::setOrganizationName(QStringLiteral("Brightwater"));
    QApplication::setOrganizationDomain(QStringLiteral("brightwater.example"));
    QApplication::setApplicationName(QStringLiteral("Tallis"));
    QApplication::setApplicationVersion(QString::fromLatin1(BuildInfo::k_version));
    // Lets the desktop match the window to its installed entry and icon.
    QGuiApplication::setDesktopFileName(QStringLiteral("org.brightwater.Tallis"));
    QApplication::setWindowIcon(applicationIcon());
    // Watching from before the window exists: a stop request during start-up
    // still ends the program through the window's own close.
    const UnixSignalWatcher stopSignals({SIGTERM, SIGINT, SIGHUP});

    auto window = std::make_unique<MainWindow>();
    // Ends the program as File > Quit does, so that the window saves what it
    // saves on close; quitting as well leaves any open dialog's loop too.
    QObject::connect(&stopSignals, &UnixSignalWatcher::signalReceived, window.get(), [&window] {
        if (window->close())
            QCoreApplication::quit();
    });
    window->show();
    const int rc = QApplication::exec();
    window.reset();
    return rc;
}
