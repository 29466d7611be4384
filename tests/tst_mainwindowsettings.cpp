#include "app/dialogs/contactsexportdialog.h"
#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/logcontactdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/mainwindow.h"
#include "app/settingsfile.h"
#include "app/tallisdir.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "sources/dxclusterfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "support/apiclient.h"
#include "support/clustertestserver.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTableView>
#include <QTcpServer>
#include <QTimer>

#include <functional>
#include <tuple>

namespace {

using SerialPorts = QList<SerialPortChoice>;

void clickButton(const QWidget &parent, const QString &text)
{
    for (QPushButton *button : parent.findChildren<QPushButton *>()) {
        if (button->text() == text)
            return button->click();
    }
    QFAIL(qPrintable(QStringLiteral("no button %1").arg(text)));
}

void clickOk(QDialog &dialog)
{
    dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

template <typename T>
T *field(const QWidget &dialog, const char *name)
{
    T *widget = dialog.findChild<T *>(QString::fromLatin1(name));
    if (widget == nullptr)
        qFatal("no field %s", name);
    return widget;
}

// The lines of today's POTA contact log.
QList<QJsonObject> potaLogLines()
{
    QFile file(tallisDirPath() + QStringLiteral("/contacts-pota-%1.jsonl")
                                     .arg(QDateTime::currentDateTimeUtc().date().toString(Qt::ISODate)));
    QList<QJsonObject> lines;
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd())
            lines.append(QJsonDocument::fromJson(file.readLine()).object());
    }
    return lines;
}

QVariantList rigValues(const RigConfig &c)
{
    return {c.rigModel, c.port,      c.baudRate, c.dataBits, c.stopBits,
            c.parity,   c.handshake, c.dtrState, c.rtsState, c.pttType};
}

} // namespace

using namespace WindowFixture;
using ModalAnswer = std::function<void(QDialog &)>;
Q_DECLARE_METATYPE(Qt::Key)

// The settings file as the window reads and writes it, and the dialogs that change them.
class TestMainWindowSettings final : public WindowTest
{
    Q_OBJECT

private:
    // Opens the dialog behind the menu entry (or the button of that name), lets fill() set its fields,
    // accepts it.
    template <typename Dialog>
    static bool runDialog(MainWindow &w, const QString &entry, const std::function<void(Dialog &)> &fill)
    {
        bool seen = false;
        QTimer::singleShot(0, &w, [&] {
            auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            seen = true;
            fill(*dialog);
            dialog->accept();
        });
        for (QAction *action : w.menuBar()->findChildren<QAction *>()) {
            if (action->text() == entry)
                action->trigger();
        }
        if (auto *button = w.findChild<QPushButton *>(entry))
            button->click();
        return seen;
    }

    // Runs act while the modal dialogs it opens are answered in turn; returns their titles.
    static QStringList answerModals(const std::function<void()> &act, QList<ModalAnswer> answers)
    {
        QStringList titles;
        QTimer answerer;
        connect(&answerer, &QTimer::timeout, &answerer, [&titles, &answers] {
            auto *modal = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!modal || !modal->isVisible() || answers.isEmpty())
                return;
            titles << modal->windowTitle();
            answers.takeFirst()(*modal);
        });
        answerer.start(10);
        act();
        return titles;
    }

    static void triggerEntry(const MainWindow &w, const QString &entry)
    {
        for (QAction *action : w.menuBar()->findChildren<QAction *>()) {
            if (action->text() == entry)
                return action->trigger();
        }
        QFAIL(qPrintable(QStringLiteral("no menu entry %1").arg(entry)));
    }

    static ModalAnswer chooseFile(const QString &path)
    {
        return [path](QDialog &dialog) {
            field<QLineEdit>(dialog, "fileNameEdit")->setText(path); // typed, as the operator would
            dialog.accept();
        };
    }

private slots:
    void storedChoicesAreRestored()
    {
        writeSettings(
            R"({"callsign": "W1AW", "maxAgeMins": 0, "sources": {"pota": false}, "modes": {"cw": false},
            "statusFilter": 2, "disabledBands": ["20m", "11m"], "sortColumn": 12, "sortOrder": 0,
            "hasUserLocation": false, "latitude": 41.5, "longitude": -73.0, "potaPrograms": ["US"],
            "watchCallsigns": ["K1ABC"]})");
        MainWindow w(services());

        QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: W1AW"));
        QCOMPARE(proxy(w)->maxAgeMins(), 1);
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("POTA"))->isChecked());
        QVERIFY(!proxy(w)->isSourceEnabled(StationSpot::POTA));
        QVERIFY(!w.findChild<PotaSpotFetcher *>()->isAutoRefreshing()); // POTA stays quiet
        QVERIFY(w.findChild<SotaSpotFetcher *>()->isAutoRefreshing());
        QVERIFY(!button(w, "modeBtn", QStringLiteral("CW"))->isChecked());
        QVERIFY(!proxy(w)->isModeClassEnabled(SpotFilterProxyModel::CwMode));
        QCOMPARE(w.findChild<QComboBox *>()->currentText(), QStringLiteral("Heard"));
        QCOMPARE(proxy(w)->statusFilter(), 1);
        QVERIFY(!button(w, "bandBtn", QStringLiteral("20m"))->isChecked());
        QCOMPARE(table(w)->horizontalHeader()->sortIndicatorSection(), 9);
        QCOMPARE(table(w)->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
        QVERIFY(!model(w)->hasUserLocation());
        QVERIFY(table(w)->isColumnHidden(8) && table(w)->isColumnHidden(9));
        QCOMPARE(w.findChild<QPushButton *>(QStringLiteral("programsBtn"))->text(),
                 QStringLiteral("Programs… ●"));

        // The start-up save wrote back what was loaded, less the band no button has.
        const QJsonObject written = readSettings();
        QCOMPARE(written.value(QStringLiteral("disabledBands")).toArray(), QJsonArray{QStringLiteral("20m")});
        QCOMPARE(written.value(QStringLiteral("watchCallsigns")).toArray(),
                 QJsonArray{QStringLiteral("K1ABC")});
    }

    void preferencesRestartTickedSourcesAndTheApi()
    {
        QTcpServer busy;
        QVERIFY(busy.listen(QHostAddress::LocalHost, 0));
        writeSettings(R"({"sources": {"pota": false}})");
        MainWindow w(services());
        QVERIFY(runDialog<PreferencesDialog>(w, QStringLiteral("&Preferences..."), [&busy](QWidget &d) {
            field<QSpinBox>(d, "refreshIntervalSpin")->setValue(300);
            field<QSpinBox>(d, "wsPortSpin")->setValue(busy.serverPort());
        }));
        QCOMPARE(w.findChild<SotaSpotFetcher *>()->refreshIntervalMs(), 300000);
        QVERIFY(!w.findChild<PotaSpotFetcher *>()->isAutoRefreshing());
        QCOMPARE(w.statusBar()->currentMessage(),
                 QStringLiteral("WebSocket API: failed to listen on port %1").arg(busy.serverPort()));
    }

    void lastSessionsSpotsShowAtOnce()
    {
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1 14061, K2BBB US-2 7030")));
        {
            MainWindow w(services());
            QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
            w.close(); // writes the snapshot
        }
        // No source answers this time: the rows come from the snapshot alone.
        m_server->setHoldReplies(true);
        MainWindow again(services());
        QCOMPARE(model(again)->rowCount(), 2);
        QVERIFY(labelText(again, "statusSpots").startsWith(QStringLiteral("Showing 2 of 2")));
    }

    void changesAreSavedAtOnce()
    {
        MainWindow w(services());
        table(w)->sortByColumn(1, Qt::AscendingOrder);
        QCOMPARE(readSettings().value(QStringLiteral("sortColumn")).toInt(), 1);
        QCOMPARE(readSettings().value(QStringLiteral("sortOrder")).toInt(), 0);

        button(w, "modeBtn", QStringLiteral("FM"))->click();
        QCOMPARE(readSettings().value(QStringLiteral("modes")).toObject().value(QStringLiteral("fm")),
                 QJsonValue(false));

        w.findChild<QCheckBox *>(QStringLiteral("autoAtuCheck"))->setChecked(true);
        QCOMPARE(readSettings().value(QStringLiteral("autoAtu")), QJsonValue(true));
        button(w, "bandBtn", QStringLiteral("80m"))->click();
        QCOMPARE(proxy(w)->bandFilter().size(), 12);
        QCOMPARE(readSettings().value(QStringLiteral("disabledBands")).toArray(),
                 QJsonArray{QStringLiteral("80m")});
        w.findChild<QComboBox *>()->setCurrentIndex(3); // "Contacted"
        QCOMPARE(proxy(w)->statusFilter(), 2);
        QCOMPARE(readSettings().value(QStringLiteral("statusFilter")).toInt(), 3);

        // Closing stores the layout.
        w.resize(1000, 640);
        w.close();
        MainWindow again(services());
        QCOMPARE(again.size(), QSize(1000, 640));
        QCOMPARE(table(again)->horizontalHeader()->sortIndicatorSection(), 1);
    }

    void apiListensWhereTheSettingsSay()
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
        const quint16 port = probe.serverPort();
        probe.close();
        writeSettings(QStringLiteral(R"({"wsPort": %1})").arg(port).toUtf8());
        m_server->setRoute("/spot/",
                           potaSpots(QStringLiteral("K2BBB US-1 14061, K1AAA US-2 7150, K3CCC US-3 7030")));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);

        ApiClient client;
        QVERIFY(client.connectTo(port));
        QTRY_COMPARE_WITH_TIMEOUT(client.eventData(QStringLiteral("hello")).size(), 1, 5000);

        // The visible spots in the table's row order, which here is not the model's (newest first).
        table(w)->sortByColumn(1, Qt::AscendingOrder);
        QCOMPARE(table(w)->model()->index(0, 1).data().toString(), QStringLiteral("K1AAA"));
        client.send(R"({"type": "cmd", "cmd": "spots.get", "id": "a"})");
        QTRY_VERIFY_WITH_TIMEOUT(!client.reply(QStringLiteral("a")).isEmpty(), 5000);
        const QJsonArray spots =
            client.reply(QStringLiteral("a"))[QStringLiteral("data")][QStringLiteral("spots")].toArray();
        QCOMPARE(spots.size(), 3);
        for (int row = 0; row < 3; ++row)
            QCOMPARE(spots.at(row).toObject().value(QStringLiteral("callsign")).toString(),
                     table(w)->model()->index(row, 1).data().toString());

        client.send(R"({"type": "cmd", "cmd": "filter.set", "id": "b", "data": {"pota": false}})");
        QTRY_VERIFY_WITH_TIMEOUT(!client.eventData(QStringLiteral("filter.changed")).isEmpty(), 5000);
        QVERIFY(client.reply(QStringLiteral("b")).value(QStringLiteral("ok")).toBool());
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("POTA"))->isChecked());
        QCOMPARE(table(w)->model()->rowCount(), 0);
        QCOMPARE(readSettings().value(QStringLiteral("sources")).toObject().value(QStringLiteral("pota")),
                 QJsonValue(false));
    }

    // A new user sets everything through the window's own dialogs, and the window saves it all (reading it
    // back is the stored-choices test's and the settings file's round trip).
    void everyDialogIsSaved()
    {
        MainWindow w(services());
        QVERIFY(runDialog<PreferencesDialog>(w, QStringLiteral("&Preferences..."), [](QWidget &d) {
            field<QLineEdit>(d, "callsignEdit")->setText(QStringLiteral(" w4abc "));
            field<QCheckBox>(d, "locationCheck")->setChecked(true);
            field<QDoubleSpinBox>(d, "latitudeSpin")->setValue(35.5);
            field<QDoubleSpinBox>(d, "longitudeSpin")->setValue(-82.25);
        }));
        QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: W4ABC"));
        QVERIFY(!table(w)->isColumnHidden(StationModel::DistanceColumn));
        QVERIFY(!w.findChild<QWidget *>(QStringLiteral("firstStartWelcome"))->isVisibleTo(&w));

        QVERIFY(runDialog<RadioSetupDialog>(w, QStringLiteral("Radio &Setup..."), [](QWidget &d) {
            auto *model = field<QComboBox>(d, "rigModelCombo");
            model->setCurrentIndex(model->findData(2));
            field<QComboBox>(d, "rigPortCombo")->setEditText(QStringLiteral("127.0.0.1:4599"));
        }));
        QVERIFY(runDialog<DxClustersDialog>(w, QStringLiteral("DX &Cluster Setup..."), [](QWidget &d) {
            field<QLineEdit>(d, "dxClusterHostEdit")->setText(QStringLiteral("dx.example.org"));
            field<QSpinBox>(d, "dxClusterPortSpin")->setValue(7300);
            clickButton(d, QStringLiteral("Add"));
        }));
        QVERIFY(runDialog<LwBridgeDialog>(w, QStringLiteral("Lampwick &Bridge..."), [](QWidget &d) {
            field<QCheckBox>(d, "lwEnabledCheck")->setChecked(true);
            field<QSpinBox>(d, "lwPortSpin")->setValue(2110);
        }));
        QCOMPARE(labelText(w, "statusBridge"), QStringLiteral("LW: not linked — retrying"));
        QVERIFY(w.findChild<QLabel *>(QStringLiteral("statusBridge"))->isVisibleTo(&w));
        const QJsonObject s = readSettings();
        QCOMPARE(s.value(QStringLiteral("callsign")).toString(), QStringLiteral("W4ABC"));
        QCOMPARE(s.value(QStringLiteral("latitude")).toDouble(), 35.5);
        QCOMPARE(s.value(QStringLiteral("longitude")).toDouble(), -82.25);
        const QJsonObject rig = s.value(QStringLiteral("hamlib")).toObject();
        QCOMPARE(rig.value(QStringLiteral("rigModel")).toInt(), 2);
        QCOMPARE(rig.value(QStringLiteral("port")).toString(), QStringLiteral("127.0.0.1:4599"));
        const QJsonArray clusters = s.value(QStringLiteral("dxClusters")).toArray();
        QCOMPARE(clusters.last().toObject().value(QStringLiteral("host")).toString(),
                 QStringLiteral("dx.example.org"));
        QCOMPARE(clusters.last().toObject().value(QStringLiteral("port")).toInt(), 7300);
        QCOMPARE(s.value(QStringLiteral("lwEnabled")).toBool(), true);
        QCOMPARE(s.value(QStringLiteral("lwPort")).toInt(), 2110);
    }

    // A two-fer, logged with L or Shift+L: the dialog's edits land in both lines, or in none.
    void logContactDialog_data()
    {
        QTest::addColumn<bool>("confirmLog");
        QTest::addColumn<bool>("shift");
        QTest::addColumn<Qt::Key>("answer"); // Key_unknown: no dialog expected
        QTest::addColumn<QString>("untick");
        QTest::addColumn<QStringList>("logged");
        QTest::addColumn<QString>("reports"); // sent/received in each line
        const QStringList both{QStringLiteral("US-1"), QStringLiteral("US-2")};
        QTest::newRow("L logs at once") << false << false << Qt::Key_unknown << "" << both << "599/599";
        QTest::newRow("Escape logs nothing") << true << false << Qt::Key_Escape << "" << QStringList() << "";
        QTest::newRow("Enter logs the edits") << true << false << Qt::Key_Enter << "" << both << "57/58";
        QTest::newRow("unticked park left out")
            << true << false << Qt::Key_Return << "US-1" << QStringList{QStringLiteral("US-2")} << "57/58";
        QTest::newRow("Shift+L asks anyway") << false << true << Qt::Key_Enter << "" << both << "57/58";
    }
    void logContactDialog()
    {
        QFETCH(Qt::Key, answer);
        QFETCH(QString, untick);
        QFETCH(QStringList, logged);
        writeSettings(fetched<bool>("confirmLog") ? R"({"confirmLog": true})" : "{}");
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1 14061, K1AAA US-2 14061.4")));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
        QTest::keyClick(&w, Qt::Key_J);
        const QStringList titles = answerModals(
            [&w] {
                QTest::keyClick(&w, Qt::Key_L, fetched<bool>("shift") ? Qt::ShiftModifier : Qt::NoModifier);
            },
            {[&](QDialog &dialog) {
                field<QLineEdit>(dialog, "logRstSentEdit")->setText(QStringLiteral("57"));
                field<QLineEdit>(dialog, "logRstRcvdEdit")->setText(QStringLiteral(" 58 "));
                for (QCheckBox *check : dialog.findChildren<QCheckBox *>(QStringLiteral("logReferenceCheck")))
                    check->setChecked(untick.isEmpty() || !check->text().endsWith(untick));
                QTest::keyClick(dialog.focusWidget(), answer);
            }});
        QCOMPARE(titles,
                 answer == Qt::Key_unknown ? QStringList() : QStringList{QStringLiteral("Log Contact")});
        QCOMPARE(statusOf(w, QStringLiteral("K1AAA")),
                 logged.isEmpty() ? StationSpot::Unknown : StationSpot::Contacted);
        QStringList references;
        for (const QJsonObject &line : potaLogLines()) {
            references << line.value(QStringLiteral("reference")).toString();
            QCOMPARE(line.value(QStringLiteral("rst_sent")).toString() + QLatin1Char('/') +
                         line.value(QStringLiteral("rst_rcvd")).toString(),
                     fetched<QString>("reports"));
        }
        QCOMPARE(references, logged);
    }

    // Every day's log from the day chosen, as one ADIF file.
    void exportAllContactsFromADay()
    {
        ensureTallisDir();
        for (const QByteArray day : {"01", "03"}) {
            QFile file(tallisDirPath() +
                       QStringLiteral("/contacts-pota-2026-01-%1.jsonl").arg(QLatin1String(day)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QJsonDocument(QJsonObject{{QStringLiteral("callsign"), QLatin1String("K1A" + day)},
                                                 {QStringLiteral("source"), QStringLiteral("POTA")},
                                                 {QStringLiteral("timestamp"),
                                                  QLatin1String("2026-01-" + day + "T12:00:00Z")}})
                           .toJson(QJsonDocument::Compact));
        }
        MainWindow w(services());
        const QString path = QDir::homePath() + QStringLiteral("/all.adi");
        const QStringList titles =
            answerModals([&w] { triggerEntry(w, QStringLiteral("Export All Contacts (ADIF)…")); },
                         {[](QDialog &dialog) {
                              field<QDateEdit>(dialog, "exportFromDate")->setDate(QDate(2026, 1, 2));
                              dialog.accept();
                          },
                          chooseFile(path)});
        QCOMPARE(titles, QStringList(2, QStringLiteral("Export All Contacts")));
        QCOMPARE(w.statusBar()->currentMessage(),
                 QStringLiteral("All contacts exported: 1 QSO(s) written to %1").arg(path));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray adif = file.readAll();
        QVERIFY(adif.contains("<CALL:5>K1A03 ") && !adif.contains("K1A01"));
    }

    // The operator's own logbook feeds "Hide worked", now and at every start.
    void importedLogbookHidesWorked()
    {
        const QString path = QDir::homePath() + QStringLiteral("/my log.adi");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("header<EOH>\n<CALL:5>K1AAA <QSO_DATE:8>20250101 <TIME_ON:4>1200 <BAND:3>20m <MODE:2>CW "
                   "<SIG:4>POTA <SIG_INFO:4>US-1 <EOR>\n<CALL:5>K9ZZZ <EOR>\n");
        file.close();
        writeSettings(R"({"hideWorked": true})");
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1 14061, K2BBB US-2 14062")));
        {
            MainWindow w(services());
            QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
            QCOMPARE(proxy(w)->rowCount(), 2);
            const QStringList titles =
                answerModals([&w] { triggerEntry(w, QStringLiteral("Import Logbook for Worked Before…")); },
                             {chooseFile(path)});
            QCOMPARE(titles, QStringList{QStringLiteral("Import Logbook for Worked Before")});
            QTRY_COMPARE_WITH_TIMEOUT(proxy(w)->rowCount(), 1, 5000);
            QCOMPARE(w.statusBar()->currentMessage(),
                     QStringLiteral("Logbook read: 1 contacts taken, 1 records skipped."));
            QCOMPARE(readSettings().value(QStringLiteral("workedAdifFiles")).toArray(), QJsonArray{path});
        }
        MainWindow again(services());
        QTRY_COMPARE_WITH_TIMEOUT(model(again)->rowCount(), 2, 5000);
        QTRY_COMPARE_WITH_TIMEOUT(proxy(again)->rowCount(), 1, 5000);
    }

    // A refusal stays in sight in the sources' label, and the cluster dialog asks that node again.
    void refusedClusterIsShownAndAskedAgain()
    {
        ClusterTestServer node;
        QVERIFY(node.start());
        node.setLoginReply("Sorry, your call is not registered\r\n", true);
        writeSettings(QStringLiteral(R"({"callsign": "N0CALL", "sources": {"dx": true},
            "dxClusters": [{"host": "127.0.0.1", "port": %1}]})")
                          .arg(node.port())
                          .toUtf8());
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "statusSources"), QStringLiteral("Sources: 1 failing"), 5000);
        const auto *sources = w.findChild<QLabel *>(QStringLiteral("statusSources"));
        QVERIFY(sources->toolTip().contains(QStringLiteral(": refused at ")));
        QVERIFY(runDialog<DxClustersDialog>(w, QStringLiteral("DX &Cluster Setup..."), [&w](QWidget &d) {
            auto *reconnect = field<QPushButton>(d, "reconnectNowButton");
            QVERIFY(!reconnect->isEnabled()); // no node chosen
            field<QListWidget>(d, "dxClusterList")->setCurrentRow(0);
            QVERIFY(reconnect->isEnabled());
            reconnect->click();
            QCOMPARE(w.findChild<DxClusterFetcher *>()->state(), DxClusterFetcher::Connecting);
            QVERIFY(!reconnect->isEnabled());
        }));
        // The clients made anew are followed in place of the old.
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "statusSources"), QStringLiteral("Sources: 1 failing"), 5000);
        QCOMPARE(sources->toolTip().count(QStringLiteral("DX 127.0.0.1")), 1);
    }

    void firstStartOffersTheDialogs_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("dialog");
        QTest::newRow("preferences") << "firstStartPrefsButton"
                                     << "PreferencesDialog";
        QTest::newRow("radio") << "firstStartRadioButton"
                               << "RadioSetupDialog";
    }
    void firstStartOffersTheDialogs()
    {
        QFETCH(QString, button);
        MainWindow w(services());
        QVERIFY(w.findChild<QWidget *>(QStringLiteral("firstStartWelcome"))->isVisibleTo(&w));
        QString opened;
        QVERIFY(runDialog<QDialog>(
            w, button, [&opened](QDialog &d) { opened = QString::fromLatin1(d.metaObject()->className()); }));
        QTEST(opened, "dialog");
    }

    // The dialogs on their own.
    void preferencesKeepEveryField()
    {
        const AppSettings original = SettingsFile::fromJson(QJsonDocument::fromJson(R"({"callsign": "G4ABC",
            "sotaRef": "G/LD-001", "maxAgeMins": 45, "refreshIntervalSecs": 120, "hasUserLocation": true,
            "latitude": 54.4542, "longitude": -3.2116, "watchCallsigns": ["W4GXX", "EA1AB"],
            "watchReferences": ["US-1234"], "wsEnabled": false, "wsHost": "0.0.0.0", "wsPort": 4000,
            "bandPlanRegion": 3, "confirmLog": true})")
                                                                .object());
        PreferencesDialog dialog(Preferences::fromSettings(original));
        QVERIFY(!field<QComboBox>(dialog, "wsHostCombo")->isEnabled());
        clickOk(dialog);
        AppSettings back;
        dialog.preferences().applyTo(back);
        QVERIFY(back == original);
    }

    void preferencesNormaliseInput_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("blank line dropped")
            << "k1abc\n\n w2xyz " << QStringList{QStringLiteral("K1ABC"), QStringLiteral("W2XYZ")};
        QTest::newRow("line of blanks kept") << "   " << QStringList{QString()};
        QTest::newRow("nothing") << "" << QStringList{};
    }
    void preferencesNormaliseInput()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, expected);
        PreferencesDialog dialog{Preferences()};
        auto *latitude = field<QDoubleSpinBox>(dialog, "latitudeSpin");
        QVERIFY(!latitude->isEnabled());
        field<QCheckBox>(dialog, "locationCheck")->setChecked(true);
        QVERIFY(latitude->isEnabled());
        field<QLineEdit>(dialog, "sotaRefEdit")->setText(QStringLiteral("w4c/cm-001 "));
        field<QPlainTextEdit>(dialog, "watchCallsignsEdit")->setPlainText(typed);
        field<QPlainTextEdit>(dialog, "watchReferencesEdit")->setPlainText(typed);
        clickOk(dialog);
        const Preferences p = dialog.preferences();
        QCOMPARE(p.sotaRef, QStringLiteral("W4C/CM-001"));
        QCOMPARE(p.watchCallsigns, expected);
        QCOMPARE(p.watchReferences, expected);
        QVERIFY(p.hasUserLocation);
    }

    void watchListTabLeavesTheBox()
    {
        PreferencesDialog dialog{Preferences()};
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        auto *calls = field<QPlainTextEdit>(dialog, "watchCallsignsEdit");
        calls->setFocus();
        QTest::keyClick(calls, Qt::Key_Tab);
        QCOMPARE(calls->toPlainText(), QString());
        QCOMPARE(QApplication::focusWidget(), field<QPlainTextEdit>(dialog, "watchReferencesEdit"));
    }

    void radioSetupAgainstRigctld()
    {
        RigctldProcess daemon;
        QVERIFY2(daemon.start(), qPrintable(daemon.errorString()));
        HamlibController rig;
        HamlibLink link(&rig);
        RadioSetupDialog dialog(daemon.rigConfig(), rig.rigModels(), {}, RigSetupCalls::through(link));
        auto *status = field<QLabel>(dialog, "radioStatusDlg");
        auto *result = field<QLabel>(dialog, "radioTestLabel");
        QCOMPARE(status->text(), QStringLiteral("○ Not connected"));

        clickButton(dialog, QStringLiteral("Connect"));
        QCOMPARE(status->text(), QStringLiteral("● Connected"));
        QVERIFY(rig.tune(14074.0, QStringLiteral("USB")));
        clickButton(dialog, QStringLiteral("Disconnect"));
        QCOMPARE(status->text(), QStringLiteral("○ Not connected"));
        clickButton(dialog, QStringLiteral("Test Connection")); // connects first
        QCOMPARE(status->text(), QStringLiteral("● Connected"));
        QCOMPARE(result->text(), QStringLiteral("✔ OK — 14.074 MHz  USB"));

        clickButton(dialog, QStringLiteral("Disconnect"));
        daemon.stop();
        clickButton(dialog, QStringLiteral("Connect"));
        QCOMPARE(status->text(), QStringLiteral("○ Connection failed"));
        clickButton(dialog, QStringLiteral("Test Connection"));
        QCOMPARE(result->text(), QStringLiteral("✘ Connection failed"));
    }

    void radioSetupListsModelsByMaker_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("chosen"); // the first match is taken
        QTest::addColumn<bool>("serial");
        QTest::newRow("number") << "7300"
                                << "Icom IC-7300" << true;
        QTest::newRow("maker") << "icom"
                               << "Icom" << true;
        QTest::newRow("network rig") << "NET rigctl"
                                     << "Hamlib NET rigctl" << false;
    }
    void radioSetupListsModelsByMaker()
    {
        QFETCH(QString, filter);
        QFETCH(QString, chosen);
        HamlibController rig;
        QHash<int, RigModelInfo> known;
        for (const RigModelInfo &model : rig.rigModels())
            known.insert(model.model, model);
        const RigSetupCalls unused{[] { return false; }, [](const RigConfig &) { return false; }, [] {},
                                   [] { return 0.0; }, [] { return QString(); }};
        RadioSetupDialog dialog(RigConfig(), rig.rigModels(), {}, unused);
        field<QLineEdit>(dialog, "rigModelFilterEdit")->setText(filter);

        auto *list = field<QComboBox>(dialog, "rigModelCombo");
        QVERIFY(list->count() > 0);
        const auto sortKey = [&](int row) {
            const RigModelInfo &model = known.value(list->itemData(row).toInt());
            return std::make_tuple(model.maker.toLower(), model.name.toLower(), model.model);
        };
        for (int row = 0; row < list->count(); ++row) {
            QVERIFY2(list->itemText(row).contains(filter, Qt::CaseInsensitive),
                     qPrintable(list->itemText(row)));
            QVERIFY(row == 0 || sortKey(row - 1) < sortKey(row));
        }
        QVERIFY2(list->currentText().contains(chosen), qPrintable(list->currentText()));
        QCOMPARE(dialog.rigConfig().rigModel, list->itemData(0).toInt());
        QCOMPARE(field<QComboBox>(dialog, "baudRateCombo")->isEnabled(), fetched<bool>("serial"));
        QCOMPARE(field<QComboBox>(dialog, "rtsCombo")->isEnabled(), fetched<bool>("serial"));
    }

    void radioSetupFields_data()
    {
        QTest::addColumn<SerialPorts>("serialPorts");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("typed"); // null: left alone
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("placeholder");
        const SerialPorts usb{{QStringLiteral("/dev/ttyUSB0"), QStringLiteral("FT232R USB UART")}};
        const QString none = QStringLiteral("No ports detected — type path here");
        QTest::newRow("listed port") << usb << "/dev/ttyUSB0" << QString() << "/dev/ttyUSB0" << QString();
        QTest::newRow("rig daemon") << SerialPorts() << "localhost:4533" << QString() << "localhost:4533"
                                    << none;
        QTest::newRow("typed path") << SerialPorts() << ""
                                    << " /dev/ttyS3 "
                                    << "/dev/ttyS3" << none;
        QTest::newRow("empty stays empty") << usb << "" << QString() << "" << QString();
    }
    void radioSetupFields()
    {
        QFETCH(SerialPorts, serialPorts);
        QFETCH(QString, typed);
        RigConfig config{2, fetched<QString>("stored"), 300, 7, 2, 2, 1, 1, 2,
                         3}; // 300 baud is not offered, yet kept
        const RigSetupCalls answersNothing{[] { return false; }, [](const RigConfig &) { return true; },
                                           [] {}, [] { return 0.0; }, [] { return QString(); }};
        RadioSetupDialog dialog(config, {{2, QStringLiteral("Hamlib"), QStringLiteral("NET rigctl"), true}},
                                serialPorts, answersNothing);
        auto *port = field<QComboBox>(dialog, "rigPortCombo");
        QTEST(port->lineEdit()->placeholderText(), "placeholder");
        QCOMPARE(port->count(), serialPorts.size() + 2);
        QCOMPARE(port->itemText(port->count() - 2), QStringLiteral("localhost:4532"));
        if (!typed.isNull())
            port->setEditText(typed);
        clickButton(dialog, QStringLiteral("Test Connection"));
        QCOMPARE(field<QLabel>(dialog, "radioTestLabel")->text(),
                 QStringLiteral("✔ Connected but frequency read failed"));
        clickOk(dialog);
        config.port = fetched<QString>("expected");
        QCOMPARE(rigValues(dialog.rigConfig()), rigValues(config));
    }

    void clustersRefuseADuplicateAndBridge()
    {
        DxClustersDialog dialog({{QStringLiteral("dxc.example.net"), 23}});
        auto *list = field<QListWidget>(dialog, "dxClusterList");
        field<QLineEdit>(dialog, "dxClusterHostEdit")->setText(QStringLiteral(" DXC.example.net "));
        clickButton(dialog, QStringLiteral("Add"));
        QCOMPARE(list->count(), 1);
        QVERIFY(!field<QLabel>(dialog, "dxClusterMessage")->text().isEmpty());
        field<QSpinBox>(dialog, "dxClusterPortSpin")->setValue(7300);
        clickButton(dialog, QStringLiteral("Add"));
        QCOMPARE(list->item(1)->text(), QStringLiteral("DXC.example.net:7300"));
        list->setCurrentRow(0);
        clickButton(dialog, QStringLiteral("Remove"));
        clickOk(dialog);
        QCOMPARE(dialog.clusters(), (QList<DxClusterEntry>{{QStringLiteral("DXC.example.net"), 7300}}));

        // The bridge's dialog gives back what it was given; an empty host is the local one.
        LwBridgeDialog bridge({true, QStringLiteral("192.168.1.5"), 5000});
        clickOk(bridge);
        QCOMPARE(bridge.settings().host, QStringLiteral("192.168.1.5"));
        QCOMPARE(bridge.settings().port, 5000);
        QVERIFY(bridge.settings().enabled);
        field<QLineEdit>(bridge, "lwHostEdit")->clear();
        QCOMPARE(bridge.settings().host, QStringLiteral("127.0.0.1"));
    }

    void programsAllNoneAndTicks()
    {
        const ProgramSelection present{{QStringLiteral("US"), QStringLiteral("K")}, {QStringLiteral("W4C")}};
        ProgramsDialog dialog(present, {{QStringLiteral("VE")}, {}});
        auto *pota = field<QListWidget>(dialog, "potaProgramsList");
        QCOMPARE(pota->count(), 3); // a selected programme without spots stays listed
        QCOMPARE(pota->item(2)->checkState(), Qt::Checked);
        clickButton(*field<QListWidget>(dialog, "sotaAssociationsList")->parentWidget(),
                    QStringLiteral("All"));
        clickButton(*pota->parentWidget(), QStringLiteral("All"));
        QCOMPARE(dialog.selection().potaPrograms.size(), 3);
        clickButton(*pota->parentWidget(), QStringLiteral("None"));
        pota->item(1)->setCheckState(Qt::Checked);
        clickOk(dialog);
        QCOMPARE(dialog.selection().potaPrograms, QStringList{QStringLiteral("US")});
        QCOMPARE(dialog.selection().sotaAssociations, QStringList{QStringLiteral("W4C")});
    }
};

TALLIS_TEST_MAIN(TestMainWindowSettings)
#include "tst_mainwindowsettings.moc"
