// Renders the real main window into a PNG for the README, and with a second
// name a second picture with the map and the band map shown. The spot and
// position services are read from a local address given on the command line,
// and the stored settings come from $HOME as always; see
// scripts/screenshot.sh, which prepares both.
//
//   tallis_screenshot <services base URL> <output PNG> [<map output PNG>]

#include "app/coordinatecache.h"
#include "app/mainwindow.h"
#include "app/serviceurls.h"
#include "app/widgets/bandmapcanvas.h"
#include "app/widgets/mapcanvas.h"
#include "app/widgets/spottable.h"
#include "model/stationspot.h"

#include <QApplication>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QStatusBar>
#include <QTextStream>
#include <QThread>
#include <QUrl>

#include <functional>

namespace {

bool waitFor(const std::function<bool()> &done, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(20);
    }
    return true;
}

QString labelText(const QWidget &window, const char *objectName)
{
    const auto *label = window.findChild<QLabel *>(QLatin1String(objectName));
    return label ? label->text() : QString();
}

int fail(const QString &message)
{
    QTextStream(stderr) << "tallis_screenshot: " << message << '\n';
    return 1;
}

// Both docks shown, a station far away picked on the map: its path from home
// on the map, the rig on its frequency on the band map.
int drawMapPicture(MainWindow &window, const QList<StationSpot> &spots, const QString &out)
{
    window.resize(1600, 1180);
    auto *mapDock = window.findChild<QDockWidget *>(QStringLiteral("mapDock"));
    auto *bandMapDock = window.findChild<QDockWidget *>(QStringLiteral("bandMapDock"));
    auto *table = window.findChild<SpotTable *>(QStringLiteral("spotTable"));
    auto *coords = window.findChild<CoordinateCache *>();
    auto *map = window.findChild<MapCanvas *>();
    auto *bandMap = window.findChild<BandMapCanvas *>();
    if (!mapDock || !bandMapDock || !table || !coords || !map || !bandMap)
        return fail(QStringLiteral("the window has no map docks"));
    mapDock->show();
    bandMapDock->show();
    window.resizeDocks({mapDock}, {520}, Qt::Vertical);
    window.resizeDocks({bandMapDock}, {300}, Qt::Horizontal);
    // Summits come without positions: the map asks for them once it is shown.
    QCoreApplication::processEvents();
    if (!waitFor([coords] { return coords->pendingCount() == 0; }, 10000))
        return fail(QStringLiteral("the summit positions did not come"));

    int row = -1;
    for (int i = 0; i < spots.size() && row < 0; ++i)
        row = spots.at(i).callsign == QLatin1String("VK3ANP") ? i : -1;
    if (row < 0)
        return fail(QStringLiteral("VK3ANP is not in the table"));
    table->selectViewRow(row, true); // as the operator's click would, so the rig follows
    const double kHz = spots.at(row).frequencyKhz;
    if (!waitFor([bandMap, kHz] { return bandMap->rigFrequency() == kHz; }, 5000))
        return fail(QStringLiteral("the band map did not follow the rig to %1 kHz").arg(kHz));
    map->rebuildNow();
    QCoreApplication::processEvents();
    if (!window.grab().save(out))
        return fail(QStringLiteral("cannot write %1").arg(out));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Brightwater"));
    QApplication::setApplicationName(QStringLiteral("Tallis"));
    const QStringList args = QApplication::arguments();
    if (args.size() != 3 && args.size() != 4)
        return fail(
            QStringLiteral("usage: tallis_screenshot <services base URL> <output PNG> [<map output PNG>]"));

    QStringList messages; // told when something does not come; outlives the window
    MainWindow window(ServiceUrls::allAt(QUrl(args.at(1))));
    window.resize(1440, 860);
    QObject::connect(window.statusBar(), &QStatusBar::messageChanged, &window, [&messages](const QString &m) {
        if (!m.isEmpty())
            messages << m;
    });
    window.show();
    // The stored rig is Hamlib's dummy, which needs no port; it is opened as
    // an API client's "radio.connect" would open it.
    window.apiRadioConnect();

    // Every source has answered and the rig is open.
    const bool ready = waitFor(
        [&window] {
            return labelText(window, "statusRefresh").contains(QLatin1Char(':')) &&
                   !labelText(window, "statusRefresh").contains(QStringLiteral("not yet")) &&
                   labelText(window, "toolbarRadioStatus") == QLatin1String("Radio: Connected");
        },
        20000);
    if (!ready)
        return fail(QStringLiteral("the spots or the rig did not arrive: \"%1\", \"%2\"; messages: %3")
                        .arg(labelText(window, "statusRefresh"), labelText(window, "toolbarRadioStatus"),
                             messages.join(QStringLiteral(" / "))));

    // The operator has heard one station and picked another to call next.
    const QList<StationSpot> spots = window.apiVisibleSpots();
    auto *table = window.findChild<SpotTable *>(QStringLiteral("spotTable"));
    auto *heard = window.findChild<QPushButton *>(QStringLiteral("heardButton"));
    if (spots.size() < 8 || !table || !heard)
        return fail(QStringLiteral("the table is not as expected (%1 spots shown)").arg(spots.size()));
    // As the operator's clicks would: the rig follows.
    const auto select = [table](int row) { table->selectViewRow(row, true); };
    select(4);
    heard->click();
    select(2);
    table->setFocus();
    const QString tuned = QStringLiteral("%1 MHz").arg(spots.at(2).frequencyKhz / 1000.0, 0, 'f', 3);
    if (!waitFor([&window, &tuned] { return labelText(window, "radioFreqLabel") == tuned; }, 5000))
        return fail(QStringLiteral("the rig did not follow the selection to %1").arg(tuned));

    if (!window.grab().save(args.at(2)))
        return fail(QStringLiteral("cannot write %1").arg(args.at(2)));
    return args.size() == 4 ? drawMapPicture(window, spots, args.at(3)) : 0;
}
