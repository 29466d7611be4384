#include "app/heaptrimmer.h"
#include "app/mainwindow.h"
#include "buildinfo.h"

#include <QApplication>

#include <cstdio>
#include <cstring>
#include <memory>

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

    auto window = std::make_unique<MainWindow>();
    window->show();
    const int rc = QApplication::exec();
    window.reset();
    return rc;
}
