#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/settingsfile.h"
#include "app/widgets/radiopanel.h"
#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>

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

QVariantList rigValues(const RigConfig &c)
{
    return {c.rigModel, c.port,      c.baudRate, c.dataBits, c.stopBits,
            c.parity,   c.handshake, c.dtrState, c.rtsState, c.pttType};
}

} // namespace

class TestDialogs final : public QObject
{
    Q_OBJECT

private slots:
    void preferencesKeepEveryField()
    {
        const AppSettings original = SettingsFile::fromJson(QJsonDocument::fromJson(R"({"callsign": "G4ABC",
            "sotaRef": "G/LD-001", "maxAgeMins": 45, "refreshIntervalSecs": 120, "hasUserLocation": true,
            "latitude": 54.4542, "longitude": -3.2116, "watchCallsigns": ["W4GXX", "EA1AB"],
            "watchReferences": ["US-1234"], "wsEnabled": false, "wsHost": "0.0.0.0", "wsPort": 4000})")
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
        field<QLineEdit>(dialog, "callsignEdit")->setText(QStringLiteral(" w4abc "));
        field<QLineEdit>(dialog, "sotaRefEdit")->setText(QStringLiteral("w4c/cm-001 "));
        field<QPlainTextEdit>(dialog, "watchCallsignsEdit")->setPlainText(typed);
        field<QPlainTextEdit>(dialog, "watchReferencesEdit")->setPlainText(typed);
        clickOk(dialog);
        const Preferences p = dialog.preferences();
        QCOMPARE(p.callsign, QStringLiteral("W4ABC"));
        QCOMPARE(p.sotaRef, QStringLiteral("W4C/CM-001"));
        QCOMPARE(p.watchCallsigns, expected);
        QCOMPARE(p.watchReferences, expected);
        QVERIFY(p.hasUserLocation);
    }

    void radioSetupAgainstRigctld()
    {
        RigctldProcess daemon;
        QVERIFY2(daemon.start(), qPrintable(daemon.errorString()));
        HamlibController rig;
        HamlibLink link(&rig);
        RadioSetupDialog dialog(daemon.rigConfig(), rig.availableRigs(), {}, RigSetupCalls::through(link));
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
        RadioSetupDialog dialog(config,
                                {QStringLiteral("1 — Hamlib Dummy"), QStringLiteral("2 — Hamlib NET rigctl")},
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

    void dxClustersRefuseADuplicate()
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

    void bridgeSettings()
    {
        LwBridgeDialog dialog({true, QStringLiteral("192.168.1.5"), 5000});
        clickOk(dialog);
        QCOMPARE(dialog.settings().host, QStringLiteral("192.168.1.5"));
        QCOMPARE(dialog.settings().port, 5000);
        QVERIFY(dialog.settings().enabled);
        field<QLineEdit>(dialog, "lwHostEdit")->clear();
        QCOMPARE(dialog.settings().host, QStringLiteral("127.0.0.1"));
    }

    void radioPanelCapabilitiesAndState()
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

        // A rig with nothing: every mark of the old one is cleared.
        panel.applyCapabilities(RadioCaps());
        QCOMPARE(panel.rfPowerLabel()->text(), QStringLiteral(" --"));
        QVERIFY(!panel.muteButton()->isChecked() && !panel.filterButton(0)->isChecked());
        QVERIFY(!panel.breakInButton(1)->isChecked());
        QVERIFY(!autoAtu.isChecked() && !autoAtu.isEnabled() && !panel.canTune());
        QCOMPARE(autoAtuSpy.count(), 1);
    }

    void radioPanelChoicesActLikeRadioGroups()
    {
        RadioPanel panel;
        RadioCaps caps;
        caps.hasFilter = caps.hasBreakIn = caps.hasBreakInSemi = caps.hasBreakInFull = caps.hasVolume = true;
        panel.applyCapabilities(caps);
        QSignalSpy filterSpy(&panel, &RadioPanel::filterChosen);
        QSignalSpy volumeSpy(&panel, &RadioPanel::volumeChanged);
        panel.filterButton(1)->click();
        panel.filterButton(2)->click();
        panel.filterButton(2)->click(); // pressing the chosen one keeps it chosen
        QVERIFY(!panel.filterButton(1)->isChecked() && panel.filterButton(2)->isChecked());
        QCOMPARE(filterSpy.count(), 3);
        QCOMPARE(filterSpy.last().at(0).toInt(), 2);
        panel.volumeSlider()->triggerAction(QSlider::SliderPageStepAdd);
        QCOMPARE(volumeSpy.count(), 1);
        QCOMPARE(panel.volumeLabel()->text(), QStringLiteral("%1%").arg(panel.volumeSlider()->value()));
    }
};

TALLIS_TEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
