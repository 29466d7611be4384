#include "app/mainwindow.h"
#include "app/spotsources.h"
#include "app/tallisdir.h"
#include "app/widgets/radiopanel.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "sources/dxclusterfetcher.h"
#include "sources/potaspotfetcher.h"
#include "support/clustertestserver.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDialog>
#include <QItemSelectionModel>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>

using namespace WindowFixture;

// The window with its sources pointed at a local server: spots flow in, counts and messages follow, the
// operator's keys and marks act; DX cluster nodes feed the same table; a real rig daemon follows the
// selection.
class TestMainWindow final : public WindowTest
{
    Q_OBJECT

    static QByteArray spotLine(const char *spotter, double khz, const char *call, const char *comment)
    {
        const QByteArray hhmm = QDateTime::currentDateTimeUtc().toString(QStringLiteral("HHmm")).toLatin1();
        return "DX de " + QByteArray(spotter) + ":     " + QByteArray::number(khz, 'f', 1) + "  " + call +
               "       " + comment + "   " + hhmm + "Z";
    }
    static QString clusterEntry(const ClusterTestServer &node)
    {
        return QStringLiteral(R"({"host": "127.0.0.1", "port": %1})").arg(node.port());
    }

private slots:
    void frameAndStatusBar()
    {
        m_server->setRoute("/api/spots/gma/", "down for maintenance", 500, "text/plain");
        MainWindow w(services());
        QStringList messages;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w,
                [&messages](const QString &m) { messages << m; });
        QCOMPARE(labelText(w, "statusRadio"), QStringLiteral("Radio unconfigured — consult the settings"));
        QCOMPARE(labelText(w, "statusSpots"), QStringLiteral("No spots"));
        QCOMPARE(labelText(w, "statusRefresh"),
                 QStringLiteral("Last refresh: not yet (the scribes are en route…)"));
        QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: [not set]"));
        // Every web source but the inert slots (BOTA, RBN) asks at once; SOTA asks for its epoch first.
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 8, 5000);
        QCOMPARE(m_server->requestCount("/api/spots.js?zlota_only=true"), 1); // the query kept as one
        QCOMPARE(m_server->requestCount("/api/ALL"), 1);
        QTRY_VERIFY_WITH_TIMEOUT(!messages.filter(QStringLiteral("The oracles have failed us: ")).isEmpty(),
                                 5000);
        QVERIFY(w.findChild<HamlibLink *>()->controller()->thread() != w.thread());
        QCOMPARE(timer(w, "radioPollTimer")->interval(), 500);
        QCOMPARE(timer(w, "rigReconnectTimer")->interval(), 15000);
        QVERIFY(!timer(w, "rigReconnectTimer")->isActive()); // no rig port configured
    }

    void batchesReachTheTableAndSourcesToggle()
    {
        // 35 stations, then five older reports of the first five: merged away.
        QStringList stations;
        for (int i = 0; i < 40; ++i)
            stations << QStringLiteral("K%1ABC US-%2 %3")
                            .arg(i % 35)
                            .arg(1000 + i % 35)
                            .arg(i < 35 ? 14030 + i : 7030);
        m_server->setRoute("/spot/", potaSpots(stations.join(QStringLiteral(", ")), 10));

        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(
            labelText(w, "statusSpots"),
            QStringLiteral("Showing 35 of 35  S:0 P:40 W:0 WB:0 B:0 DX:0 G:0 R:0 Z:0 SI:0"), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(QRegularExpression(QStringLiteral("^Last refresh: \\d\\d:\\d\\d:\\d\\d$"))
                                     .match(labelText(w, "statusRefresh"))
                                     .hasMatch(),
                                 5000);

        // Unticking POTA hides its rows, stops its fetching and is saved.
        auto *pota = w.findChild<PotaSpotFetcher *>();
        QVERIFY(pota->isAutoRefreshing());
        button(w, "sourceBtn", QStringLiteral("POTA"))->click();
        QCOMPARE(labelText(w, "statusSpots"),
                 QStringLiteral("Showing 0 of 35  S:0 P:40 W:0 WB:0 B:0 DX:0 G:0 R:0 Z:0 SI:0"));
        QVERIFY(!pota->isAutoRefreshing());
        QCOMPARE(readSettings().value(QStringLiteral("sources")).toObject().value(QStringLiteral("pota")),
                 QJsonValue(false));
        w.onRefreshAll(); // skips the unticked source
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/api/spots/gma/"), 2, 5000);
        QCOMPARE(m_server->requestCount("/spot/"), 1);
        button(w, "sourceBtn", QStringLiteral("POTA"))->click(); // ticked again: fetches at once
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/spot/"), 2, 5000);
    }

    void operatorKeysAfterAClickButNotInTheSearch()
    {
        m_server->setRoute("/spot/",
                           potaSpots(QStringLiteral("K1AAA US-1 14061, W4HHH US-2 14062, K3CCC US-3 14063")));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);
        QVERIFY(!w.findChild<QPushButton *>(QStringLiteral("heardButton"))->isEnabled());
        QTest::keyClick(&w, Qt::Key_K); // nothing selected: the last row
        QCOMPARE(selectedCallsign(w), QStringLiteral("K3CCC"));
        QTest::keyClick(&w, Qt::Key_J); // already last: stays
        QCOMPARE(selectedCallsign(w), QStringLiteral("K3CCC"));

        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        // After a click the table has the focus; its type-to-search must not eat the letters.
        clickRow(w, 0);
        QCOMPARE(QApplication::focusWidget(), table(w));
        QCOMPARE(selectedCallsign(w), QStringLiteral("K1AAA"));
        QTest::keyClick(table(w), Qt::Key_J);
        QCOMPARE(selectedCallsign(w), QStringLiteral("W4HHH"));
        QCOMPARE(labelText(w, "detailReference"), QStringLiteral("[POTA] US-2"));
        QCOMPARE(labelText(w, "detailFrequency"), QStringLiteral("14062.0 kHz"));
        QTest::keyClick(table(w), Qt::Key_H);
        QCOMPARE(statusOf(w, QStringLiteral("W4HHH")), StationSpot::Heard);
        QTest::keyClick(table(w), Qt::Key_K);
        QCOMPARE(selectedCallsign(w), QStringLiteral("K1AAA"));

        // In the search field an "h" is text: it filters and marks nothing.
        auto *search = w.findChild<QLineEdit *>();
        QTest::mouseClick(search, Qt::LeftButton);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("h"));
        QCOMPARE(table(w)->model()->rowCount(), 1);
        QCOMPARE(statusOf(w, QStringLiteral("K1AAA")), StationSpot::Unknown);

        // Escape returns to the table, Tab leaves it for the search, Ctrl+F and "/" select the search text.
        QTest::keyClick(search, Qt::Key_Escape);
        QCOMPARE(QApplication::focusWidget(), table(w));
        QTest::keyClick(table(w), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), search);
        for (const auto &[key, modifiers] :
             {std::pair{Qt::Key_F, Qt::ControlModifier}, {Qt::Key_Slash, Qt::NoModifier}}) {
            table(w)->setFocus();
            QTest::keyClick(table(w), key, modifiers);
            QCOMPARE(QApplication::focusWidget(), search);
            QCOMPARE(search->selectedText(), search->text());
        }
        QTest::keyClicks(search, QStringLiteral("K3"));
        QCOMPARE(selectedCallsign(w), QString());
        QCOMPARE(table(w)->model()->rowCount(), 1);

        // Clear Spots takes the selection with the rows: the panel shows none and L has nothing to log.
        clickRow(w, 0);
        QCOMPARE(labelText(w, "detailCallsign"), QStringLiteral("K3CCC"));
        for (QAction *action : w.findChildren<QAction *>())
            if (action->text() == QLatin1String("&Clear Spots"))
                action->trigger();
        QTRY_COMPARE(labelText(w, "detailCallsign"), QString());
        QVERIFY(!w.findChild<QPushButton *>(QStringLiteral("addToLogButton"))->isEnabled());
    }

    // Filters, searches, marks and logs with a selection, against a flood of merges: nothing may use a
    // row or index across a model change (run under ASan as well), and the panel always shows the
    // selected row's station or none.
    void selectionSurvivesAStorm()
    {
        MainWindow w(services());
        auto *fetcher = w.findChild<PotaSpotFetcher *>();
        auto *search = w.findChild<QLineEdit *>();
        auto *status = w.findChild<QComboBox *>();
        QRandomGenerator random(20261124);
        const auto batch = [&random] {
            QList<StationSpot> spots;
            for (int i = random.bounded(5, 40); i > 0; --i) {
                StationSpot spot;
                spot.source = StationSpot::POTA;
                const int n = random.bounded(60);
                spot.callsign = QStringLiteral("W%1A").arg(n % 20);
                spot.reference = QStringLiteral("US-%1").arg(n);
                spot.frequencyKhz = 7000 + 7000 * (n % 2) + n * 0.5;
                spot.mode = QStringLiteral("CW");
                spot.spotTime = QDateTime::currentDateTimeUtc().addSecs(-random.bounded(600));
                spots << spot;
            }
            return spots;
        };
        for (int step = 0; step < 400; ++step) {
            const int rows = table(w)->model()->rowCount();
            switch (random.bounded(8)) {
            case 0:
                emit fetcher->spotsReady(batch());
                break;
            case 1:
                search->setText(random.bounded(2) ? QStringLiteral("W%1").arg(random.bounded(20))
                                                  : QString());
                break;
            case 2:
                status->setCurrentIndex(random.bounded(status->count()));
                break;
            case 3:
                button(w, "bandBtn", QStringLiteral("40m"))->click();
                break;
            case 4:
            case 5:
                if (rows > 0)
                    clickRow(w, random.bounded(rows));
                break;
            default:
                QTest::keyClick(
                    &w, QList<Qt::Key>{Qt::Key_H, Qt::Key_U, Qt::Key_L, Qt::Key_J}[random.bounded(4)]);
            }
            if (step % 4 != 0)
                continue; // changes pile up unhandled between the turns of the event loop
            QCoreApplication::processEvents();
            const QString panel = labelText(w, "detailCallsign");
            QVERIFY2(panel.isEmpty() || panel == selectedCallsign(w), qPrintable(panel));
        }
    }

    void tuneWithoutARigAsksAndTunesNothing()
    {
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1 14061")));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 1, 5000);
        QTest::keyClick(&w, Qt::Key_J);
        QStringList messages;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w,
                [&messages](const QString &m) { messages << m; });
        // "Yes" opens the radio set-up, which is then cancelled; "No" only closes the question.
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            QStringList modals;
            QTimer closer;
            connect(&closer, &QTimer::timeout, &w, [&modals, answer] {
                auto *modal = qobject_cast<QDialog *>(QApplication::activeModalWidget());
                if (!modal || !modal->isVisible())
                    return;
                modals << modal->windowTitle();
                if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                    QVERIFY(box->text().startsWith(QStringLiteral("The radio has not yet been graced")));
                    box->button(answer)->click();
                } else {
                    modal->reject();
                }
            });
            closer.start(10);
            QTest::keyClick(&w, Qt::Key_T);
            QCOMPARE(modals.join(QLatin1Char('|')),
                     answer == QMessageBox::Yes ? QStringLiteral("Radio Not Connected|Radio Setup — Tallis")
                                                : QStringLiteral("Radio Not Connected"));
        }
        QVERIFY(messages.filter(QStringLiteral("Tuned to")).isEmpty());
    }

    void marksOutliveARefreshAndARestart()
    {
        const QString stations = QStringLiteral("K1AAA US-1 14061, K2BBB US-2 14062");
        m_server->setRoute("/spot/", potaSpots(stations));
        const QString day = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd"));
        {
            MainWindow w(services());
            QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
            QTest::keyClick(&w, Qt::Key_J);
            QTest::keyClick(&w, Qt::Key_H);
            QTest::keyClick(&w, Qt::Key_J);
            QTest::keyClick(&w, Qt::Key_L);
            QCOMPARE(
                w.statusBar()->currentMessage(),
                QStringLiteral("Contact with K2BBB recorded — logged to ~/.tallis/contacts-pota-%1.jsonl")
                    .arg(day));
            const QList<QByteArray> lines =
                readFile(tallisDirPath() + QStringLiteral("/contacts-pota-%1.jsonl").arg(day)).split('\n');
            QCOMPARE(lines.size(), 2); // one line and its end
            QCOMPARE(QJsonDocument::fromJson(lines.first()).object().value(QStringLiteral("callsign")),
                     QJsonValue(QStringLiteral("K2BBB")));

            // A refresh replaces every row: a newer station on top, both others re-spotted.
            m_server->setRoute("/spot/", potaSpots(QStringLiteral("K4DDD US-4 7030, ") + stations));
            w.onRefreshAll();
            QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 3, 5000);
            QCOMPARE(statusOf(w, QStringLiteral("K1AAA")), StationSpot::Heard);
            QCOMPARE(statusOf(w, QStringLiteral("K2BBB")), StationSpot::Contacted);
        }
        MainWindow again(services());
        QTRY_COMPARE_WITH_TIMEOUT(model(again)->rowCount(), 3, 5000);
        QCOMPARE(statusOf(again, QStringLiteral("K1AAA")), StationSpot::Heard);
        QCOMPARE(statusOf(again, QStringLiteral("K2BBB")), StationSpot::Contacted);
    }

    void twoClustersFeedOneTable()
    {
        ClusterTestServer nodeA;
        ClusterTestServer nodeB;
        QVERIFY(nodeA.start() && nodeB.start());
        nodeA.setLoginReply("Hello N0CALL, this is node A\r\n");
        nodeB.setLoginReply("Hello N0CALL, this is node B\r\n");
        writeSettings(
            QStringLiteral(R"({"callsign": "N0CALL", "sources": {"dx": true}, "dxClusters": [%1, %2]})")
                .arg(clusterEntry(nodeA), clusterEntry(nodeB))
                .toUtf8());

        MainWindow w(services());
        // The cluster clients, not the skimmer feed's connections.
        const auto clients =
            w.findChild<SpotSources *>()->findChildren<DxClusterFetcher *>(Qt::FindDirectChildrenOnly);
        QCOMPARE(clients.size(), 2);
        QTRY_VERIFY_WITH_TIMEOUT(clients.at(0)->isConnected() && clients.at(1)->isConnected(), 5000);
        QCOMPARE(labelText(w, "toolbarDxStatus"), QStringLiteral("DX: Connected"));
        QVERIFY(nodeB.receivedCount("N0CALL") >= 1); // the operator's call, on every node

        nodeA.sendLine(spotLine("W3LPL", 14025.0, "JA1XYZ", "CW 599"));
        nodeB.sendLine(spotLine("K1TTT", 7074.0, "VK9CA", "FT8"));
        QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
        // The same station from both nodes is one row.
        nodeA.sendLine(spotLine("W3LPL", 21025.0, "EA8/DL1ABC", "CW"));
        nodeB.sendLine(spotLine("DL1XX", 21025.0, "EA8/DL1ABC", "CW"));
        QTRY_VERIFY_WITH_TIMEOUT(labelText(w, "statusSpots").contains(QStringLiteral("DX:3")), 5000);

        // Unticking DX ends both sessions and hides the rows.
        button(w, "sourceBtn", QStringLiteral("DX Cluster"))->click();
        QVERIFY(!w.anyDxConnected());
        QCOMPARE(labelText(w, "toolbarDxStatus"), QStringLiteral("DX: Disconnected"));
        QCOMPARE(table(w)->model()->rowCount(), 0);
    }

    void tickingDxWithoutCallsignReminds()
    {
        ClusterTestServer node;
        QVERIFY(node.start());
        node.setLoginReply("Hello GUEST\r\n");
        writeSettings(QStringLiteral(R"({"dxClusters": [%1]})").arg(clusterEntry(node)).toUtf8());
        MainWindow w(services());
        QCOMPARE(node.connectionCount(), 0); // DX is off by default
        QStringList messages;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w,
                [&messages](const QString &m) { messages.append(m); });
        button(w, "sourceBtn", QStringLiteral("DX Cluster"))->click();
        QVERIFY(messages.contains(QStringLiteral("DX cluster: set your callsign in Preferences first")));
        // Still asked to connect.
        QTRY_VERIFY_WITH_TIMEOUT(messages.contains(QStringLiteral("DX cluster connected — 127.0.0.1")), 5000);
    }

    void networkRigFollowsTheSelectionIsLostAndRegained()
    {
        RigctldProcess daemon;
        QVERIFY2(daemon.start(), qPrintable(daemon.errorString()));
        writeSettings(QStringLiteral(R"({"autoAtu": true, "hamlib": {"rigModel": %1, "port": "%2"}})")
                          .arg(daemon.rigConfig().rigModel)
                          .arg(daemon.rigConfig().port)
                          .toUtf8());
        const QString stations = QStringLiteral("K1AAA US-1 14061, K2BBB US-2 7150 SSB");
        m_server->setRoute("/spot/", potaSpots(stations));

        MainWindow w(services());
        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        // Not at once: the window shows first, the rig opens 1.5 s later.
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Connected"),
                                  10000);
        QVERIFY(timer(w, "radioPollTimer")->isActive() && !timer(w, "rigReconnectTimer")->isActive());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 2, 5000);

        // The operator's click tunes the rig: frequency, and SSB as the band's sideband.
        clickRow(w, 1);
        QCOMPARE(rigSetting(w), QStringLiteral("7150.0 LSB"));
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "radioFreqLabel"), QStringLiteral("7.150 MHz"), 5000);
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "radioModeLabel"), QStringLiteral("LSB"), 5000);

        // The dial moves; a refresh pushes the station down a row and the
        // restored selection leaves the rig alone.
        w.apiSetRadioFreqKhz(14200.0);
        QCOMPARE(rigSetting(w), QStringLiteral("14200.0 LSB"));
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K4DDD US-4 7030, ") + stations));
        w.onRefreshAll();
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);
        QCOMPARE(table(w)->selectionModel()->selectedRows().first().row(), 2);
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QCOMPARE(rigSetting(w), QStringLiteral("14200.0 LSB"));

        // The search, then a band, take the station from the view: the selection goes with it,
        // the rig stays and no tuner cycle starts (Auto ATU is on). J then picks up where it stood.
        QStringList messages;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w,
                [&messages](const QString &m) { messages << m; });
        auto *search = w.findChild<QLineEdit *>();
        search->setText(QStringLiteral("K4"));
        QTRY_COMPARE(labelText(w, "detailCallsign"), QString());
        QVERIFY(table(w)->selectionModel()->selectedRows().isEmpty());
        search->clear();
        button(w, "bandBtn", QStringLiteral("40m"))->click();
        button(w, "bandBtn", QStringLiteral("40m"))->click();
        QCOMPARE(rigSetting(w), QStringLiteral("14200.0 LSB"));
        QVERIFY(messages.filter(QStringLiteral("ATU")).isEmpty());
        QTest::keyClick(&w, Qt::Key_J);
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QCOMPARE(rigSetting(w), QStringLiteral("7150.0 LSB"));
        // The operator zero-beats 600 Hz up; marking heard leaves the rig there.
        w.apiSetRadioFreqKhz(7150.6);
        QTest::keyClick(&w, Qt::Key_H);
        QCOMPARE(rigSetting(w), QStringLiteral("7150.6 LSB"));

        // The daemon dies: after five failed polls the window shows the loss
        // and starts trying again every 15 s.
        daemon.stop();
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "statusRadio"),
                                  QStringLiteral("Radio unconfigured — consult the settings"), 30000);
        QCOMPARE(labelText(w, "radioFreqLabel"), QStringLiteral("NOT CONNECTED"));
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QVERIFY(!timer(w, "radioPollTimer")->isActive() && timer(w, "rigReconnectTimer")->isActive());

        // The daemon comes back on the same port; the reconnect timer finds it
        // (its interval shortened here so the test need not wait 15 s).
        QVERIFY2(daemon.start(daemon.port()), qPrintable(daemon.errorString()));
        timer(w, "rigReconnectTimer")->setInterval(100);
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Connected"),
                                  15000);
        QVERIFY(timer(w, "radioPollTimer")->isActive() && !timer(w, "rigReconnectTimer")->isActive());
    }

    // The radio panel on its own.
    void radioPanelCapabilitiesStateAndChoices()
    {
        RadioPanel panel;
        QCheckBox autoAtu;
        autoAtu.setChecked(true);
        panel.attachAutoAtuCheck(&autoAtu);
        QSignalSpy autoAtuSpy(&panel, &RadioPanel::autoAtuToggled);
        // Everything but the AF level and full break-in.
        RadioCaps caps;
        caps.hasRfPower = caps.hasMute = caps.hasFilter = caps.hasBreakIn = caps.hasBreakInSemi = true;
        caps.hasKeySpeed = caps.hasTune = true;
        panel.applyCapabilities(caps);
        QVERIFY(!panel.volumeSlider()->isEnabled() && !panel.breakInButton(2)->isEnabled());
        QVERIFY(autoAtu.isChecked() && autoAtu.isEnabled() && panel.canTune());

        // The rig's state shows without echoing back to it.
        QSignalSpy volume(&panel, &RadioPanel::volumeChanged);
        QSignalSpy power(&panel, &RadioPanel::rfPowerChanged);
        QSignalSpy speed(&panel, &RadioPanel::keySpeedChanged);
        panel.applyState({40, 55, 0, 28, 1, true}); // volume, power, filter, wpm, break-in, muted
        QCOMPARE(panel.volumeLabel()->text(), QStringLiteral(" --"));
        QCOMPARE(panel.rfPowerLabel()->text(), QStringLiteral("55%"));
        QVERIFY(panel.filterButton(0)->isChecked() && !panel.filterButton(1)->isChecked());
        QVERIFY(panel.breakInButton(1)->isChecked() && !panel.breakInButton(0)->isChecked());
        QVERIFY(panel.muteButton()->isChecked());
        QCOMPARE(panel.keySpeedSpin()->text(), QStringLiteral("28 wpm"));
        QCOMPARE(volume.count() + power.count() + speed.count(), 0);

        // Choices act as a radio group; pressing the chosen one keeps it chosen, and asks again.
        QSignalSpy filters(&panel, &RadioPanel::filterChosen);
        panel.filterButton(2)->click();
        panel.filterButton(2)->click();
        QVERIFY(!panel.filterButton(0)->isChecked() && panel.filterButton(2)->isChecked());
        QCOMPARE(filters, (QList<QList<QVariant>>{{2}, {2}}));

        // A rig with nothing: every mark of the old one is cleared.
        panel.applyCapabilities(RadioCaps());
        QCOMPARE(panel.rfPowerLabel()->text(), QStringLiteral(" --"));
        QVERIFY(!panel.muteButton()->isChecked() && !panel.filterButton(2)->isChecked() &&
                !panel.breakInButton(1)->isChecked());
        QVERIFY(!autoAtu.isChecked() && !autoAtu.isEnabled() && !panel.canTune());
        QCOMPARE(autoAtuSpy.count(), 1);

        // With an AF level the slider is sent and labelled as it moves.
        caps.hasVolume = true;
        panel.applyCapabilities(caps);
        panel.volumeSlider()->triggerAction(QSlider::SliderPageStepAdd);
        QCOMPARE(volume.count(), 1);
        QCOMPARE(panel.volumeLabel()->text(), QStringLiteral("%1%").arg(panel.volumeSlider()->value()));
    }
};

TALLIS_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
