#include "app/widgets/radiopanel.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>

class TestRadioPanel final : public QObject
{
    Q_OBJECT

private slots:
    void capabilitiesAndState();
    void choicesActLikeRadioGroups();
};

void TestRadioPanel::capabilitiesAndState()
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

    const QList<QSignalSpy *> spies{new QSignalSpy(&panel, &RadioPanel::volumeChanged),
                                    new QSignalSpy(&panel, &RadioPanel::rfPowerChanged),
                                    new QSignalSpy(&panel, &RadioPanel::keySpeedChanged)};
    panel.applyState({40, 55, 0, 28, 1, true}); // volume, power, filter, wpm, break-in, muted
    QCOMPARE(panel.volumeLabel()->text(), QStringLiteral(" --"));
    QCOMPARE(panel.rfPowerLabel()->text(), QStringLiteral("55%"));
    QVERIFY(panel.filterButton(0)->isChecked() && !panel.filterButton(1)->isChecked());
    QVERIFY(panel.breakInButton(1)->isChecked() && !panel.breakInButton(0)->isChecked());
    QVERIFY(panel.muteButton()->isChecked());
    QCOMPARE(panel.keySpeedSpin()->text(), QStringLiteral("28 wpm"));
    for (QSignalSpy *spy : spies)
        QCOMPARE(spy->count(), 0);
    qDeleteAll(spies);

    // A rig with nothing: every mark of the old one is cleared.
    panel.applyCapabilities(RadioCaps());
    QCOMPARE(panel.rfPowerLabel()->text(), QStringLiteral(" --"));
    QVERIFY(!panel.muteButton()->isChecked() && !panel.filterButton(0)->isChecked());
    QVERIFY(!panel.breakInButton(1)->isChecked());
    QVERIFY(!autoAtu.isChecked() && !autoAtu.isEnabled() && !panel.canTune());
    QCOMPARE(autoAtuSpy.count(), 1);
}

void TestRadioPanel::choicesActLikeRadioGroups()
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

TALLIS_TEST_MAIN(TestRadioPanel)
#include "tst_radiopanel.moc"
