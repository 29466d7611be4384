#pragma once

#include "radio/rigtypes.h"

class HamlibLink;

#include <QFrame>

#include <array>

class QCheckBox;
class QLabel;
class QPushButton;
class QSlider;
class QSpinBox;

// The radio read-out and the rig's own controls: frequency and mode as the
// radio reports them, volume, RF power, mute, filter, break-in, keyer speed
// and the tuner. Only what the rig offers is enabled; the rig's reports never
// echo back as user actions.
class RadioPanel final : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RadioPanel)

public:
    static constexpr int k_choiceCount = 3; // narrow/normal/wide, off/semi/full

    explicit RadioPanel(QWidget *parent = nullptr);
    ~RadioPanel() override;

    // Enables exactly what caps offer; a disabled level shows " --", disabled
    // mute, filter and auto-tune are unchecked, and break-in when the rig has none.
    void applyCapabilities(const RadioCaps &caps);
    // Shows the rig's settings on the enabled controls only, emitting nothing.
    void applyState(const RadioState &state);

    // The "Auto ATU" check box lives elsewhere (in the filter bar) but follows
    // the tuner's capability; its toggles come out as autoAtuToggled.
    void attachAutoAtuCheck(QCheckBox *check);
    // Whether the rig has a tuner, so that a tuner cycle may be started.
    bool canTune() const;

    // The poll's report: a frequency above 0 as "%1 MHz", the mode always.
    void showPollResult(double kHz, const QString &mode);
    // The bridge's report: a frequency above 0, a mode when there is one.
    void showBridgeFrequency(double kHz, const QString &mode);
    void showDisconnected();

    QLabel *frequencyLabel() const { return m_frequency; }
    QLabel *modeLabel() const { return m_mode; }
    QSlider *volumeSlider() const { return m_volume; }
    QLabel *volumeLabel() const { return m_volumePct; }
    QSlider *rfPowerSlider() const { return m_rfPower; }
    QLabel *rfPowerLabel() const { return m_rfPowerPct; }
    QPushButton *muteButton() const { return m_mute; }
    QPushButton *filterButton(int filter) const { return m_filter.at(size_t(filter)); }
    QPushButton *breakInButton(int breakIn) const { return m_breakIn.at(size_t(breakIn)); }
    QSpinBox *keySpeedSpin() const { return m_keySpeed; }
    QPushButton *tuneAtuButton() const { return m_tuneAtu; }

    // The panel's own controls always address the rig, also while the
    // bridge has the radio.
    void driveRig(HamlibLink *rig);

signals:
    void volumeChanged(int volume);
    void rfPowerChanged(int rfPower);
    void muteToggled(bool muted);
    void filterChosen(int filter);   // 0 narrow, 1 normal, 2 wide
    void breakInChosen(int breakIn); // 0 off, 1 semi, 2 full
    void keySpeedChanged(int wpm);
    void tuneAtuClicked();
    void autoAtuToggled(bool on);

private:
    using Choices = std::array<QPushButton *, k_choiceCount>;

    void buildLayout();
    void connectControls();
    void wireLevel(QSlider *slider, QLabel *label, void (RadioPanel::*changed)(int));
    void wireChoices(const Choices &buttons, void (RadioPanel::*chosen)(int));
    static void checkOnly(const Choices &buttons, int index);
    static void setLevel(QSlider *slider, QLabel *label, int value);

    QLabel *m_frequency;
    QLabel *m_mode;
    QSlider *m_volume;
    QLabel *m_volumePct;
    QSlider *m_rfPower;
    QLabel *m_rfPowerPct;
    QPushButton *m_mute;
    Choices m_filter;
    Choices m_breakIn;
    QSpinBox *m_keySpeed;
    QPushButton *m_tuneAtu;
    QCheckBox *m_autoAtu = nullptr;
};
