#include "app/widgets/radiopanel.h"

#include "radio/hamliblink.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr int k_minKeySpeed = 5;
constexpr int k_maxKeySpeed = 60;

QString placeholder()
{
    return QStringLiteral(" --");
}

QString percent(int value)
{
    return QStringLiteral("%1%").arg(value);
}

QLabel *makeLabel(const QString &text, const char *objectName, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(QLatin1String(objectName));
    return label;
}

QPushButton *makeButton(const QString &text, const char *objectName, QWidget *parent, bool checkable = true)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(objectName));
    button->setCheckable(checkable);
    // The window's single-letter keys must keep reaching the window.
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

QSlider *makeSlider(QWidget *parent)
{
    auto *slider = new QSlider(Qt::Horizontal, parent);
    slider->setObjectName(QStringLiteral("radioSlider"));
    slider->setRange(0, 100);
    slider->setFocusPolicy(Qt::NoFocus);
    // While dragging only the label follows; the rig hears the value on release
    // rather than a burst of a hundred settings.
    slider->setTracking(false);
    return slider;
}

} // namespace

RadioPanel::RadioPanel(QWidget *parent)
    : QFrame(parent)
    , m_frequency(makeLabel(QStringLiteral("NOT CONNECTED"), "radioFreqLabel", this))
    , m_mode(makeLabel(QString(), "radioModeLabel", this))
    , m_volume(makeSlider(this))
    , m_volumePct(makeLabel(placeholder(), "radioSliderPct", this))
    , m_rfPower(makeSlider(this))
    , m_rfPowerPct(makeLabel(placeholder(), "radioSliderPct", this))
    , m_mute(makeButton(QStringLiteral("MUTE"), "radioMuteBtn", this))
    , m_filter{makeButton(QStringLiteral("NAR"), "radioFilterBtn", this),
               makeButton(QStringLiteral("NOR"), "radioFilterBtn", this),
               makeButton(QStringLiteral("WIDE"), "radioFilterBtn", this)}
    , m_breakIn{makeButton(QStringLiteral("Off"), "radioBkinBtn", this),
                makeButton(QStringLiteral("Semi"), "radioBkinBtn", this),
                makeButton(QStringLiteral("Full"), "radioBkinBtn", this)}
    , m_keySpeed(new QSpinBox(this))
    , m_tuneAtu(makeButton(QStringLiteral("Tune ATU"), "atuButton", this, false))
{
    setObjectName(QStringLiteral("radioReadout"));
    m_frequency->setAlignment(Qt::AlignCenter);
    m_mode->setAlignment(Qt::AlignCenter);
    m_keySpeed->setObjectName(QStringLiteral("cwWpmSpin"));
    m_keySpeed->setRange(k_minKeySpeed, k_maxKeySpeed);
    m_keySpeed->setValue(RadioState().keySpeed);
    m_keySpeed->setSuffix(QStringLiteral(" wpm"));
    // A typed speed goes to the rig once it is complete, not digit by digit.
    m_keySpeed->setKeyboardTracking(false);
    m_keySpeed->setFocusPolicy(Qt::ClickFocus);
    m_tuneAtu->setToolTip(QStringLiteral("Trigger antenna tuner cycle (RIG_OP_TUNE)"));

    buildLayout();
    connectControls();
    // Nothing is offered until a rig says what it has.
    applyCapabilities(RadioCaps());
}

RadioPanel::~RadioPanel() = default;

void RadioPanel::buildLayout()
{
    auto *layout = new QVBoxLayout(this);
    // Tight enough that the panel keeps every control whole at the window's minimum height.
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(3);
    layout->addWidget(m_frequency);
    layout->addWidget(m_mode);
    auto *divider = new QFrame(this);
    divider->setObjectName(QStringLiteral("radioCtrlDivider"));
    divider->setFrameShape(QFrame::HLine);
    layout->addWidget(divider);

    auto *grid = new QGridLayout();
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(3);
    const auto caption = [this](const QString &text) { return makeLabel(text, "radioCtrlLabel", this); };
    const auto row = [grid](QLabel *label, std::initializer_list<QWidget *> widgets) {
        const int at = grid->rowCount();
        grid->addWidget(label, at, 0);
        auto *line = new QHBoxLayout();
        line->setSpacing(4);
        for (QWidget *widget : widgets)
            line->addWidget(widget);
        grid->addLayout(line, at, 1);
    };
    row(caption(QStringLiteral("Volume")), {m_volume, m_volumePct});
    row(caption(QStringLiteral("RF Power")), {m_rfPower, m_rfPowerPct});
    row(caption(QStringLiteral("Filter")), {m_filter[0], m_filter[1], m_filter[2], m_mute});
    row(caption(QStringLiteral("BK-IN")), {m_breakIn[0], m_breakIn[1], m_breakIn[2]});
    row(caption(QStringLiteral("Keyer")), {m_keySpeed, m_tuneAtu});
    layout->addLayout(grid);
}

void RadioPanel::connectControls()
{
    wireLevel(m_volume, m_volumePct, &RadioPanel::volumeChanged);
    wireLevel(m_rfPower, m_rfPowerPct, &RadioPanel::rfPowerChanged);
    wireChoices(m_filter, &RadioPanel::filterChosen);
    wireChoices(m_breakIn, &RadioPanel::breakInChosen);
    // clicked, not toggled: only the user's press is an action for the rig.
    connect(m_mute, &QPushButton::clicked, this, &RadioPanel::muteToggled);
    connect(m_keySpeed, &QSpinBox::valueChanged, this, &RadioPanel::keySpeedChanged);
    connect(m_tuneAtu, &QPushButton::clicked, this, &RadioPanel::tuneAtuClicked);
}

void RadioPanel::wireLevel(QSlider *slider, QLabel *label, void (RadioPanel::*changed)(int))
{
    connect(slider, &QSlider::sliderMoved, label, [label](int value) { label->setText(percent(value)); });
    connect(slider, &QSlider::valueChanged, this, [this, label, changed](int value) {
        label->setText(percent(value));
        emit(this->*changed)(value);
    });
}

void RadioPanel::wireChoices(const Choices &buttons, void (RadioPanel::*chosen)(int))
{
    // Explicit checking rather than an exclusive group: a rig without the
    // feature leaves all three unchecked, which an exclusive group forbids.
    for (int index = 0; index < k_choiceCount; ++index) {
        connect(buttons.at(size_t(index)), &QPushButton::clicked, this, [this, buttons, index, chosen] {
            checkOnly(buttons, index);
            emit(this->*chosen)(index);
        });
    }
}

void RadioPanel::checkOnly(const Choices &buttons, int index)
{
    for (int i = 0; i < k_choiceCount; ++i)
        buttons.at(size_t(i))->setChecked(i == index);
}

void RadioPanel::setLevel(QSlider *slider, QLabel *label, int value)
{
    const QSignalBlocker blocker(slider);
    slider->setValue(value);
    label->setText(percent(slider->value()));
}

void RadioPanel::applyCapabilities(const RadioCaps &caps)
{
    for (QPushButton *button : m_filter) {
        button->setEnabled(caps.hasFilter);
        if (!caps.hasFilter)
            button->setChecked(false);
    }
    m_mute->setEnabled(caps.hasMute);
    if (!caps.hasMute)
        m_mute->setChecked(false);
    m_volume->setEnabled(caps.hasVolume);
    if (!caps.hasVolume)
        m_volumePct->setText(placeholder());
    m_rfPower->setEnabled(caps.hasRfPower);
    if (!caps.hasRfPower)
        m_rfPowerPct->setText(placeholder());
    m_breakIn[0]->setEnabled(caps.hasBreakIn);
    m_breakIn[1]->setEnabled(caps.hasBreakInSemi);
    m_breakIn[2]->setEnabled(caps.hasBreakInFull);
    if (!caps.hasBreakIn)
        checkOnly(m_breakIn, -1);
    m_keySpeed->setEnabled(caps.hasKeySpeed);
    m_tuneAtu->setEnabled(caps.hasTune);
    if (m_autoAtu) {
        m_autoAtu->setEnabled(caps.hasTune);
        if (!caps.hasTune)
            m_autoAtu->setChecked(false);
    }
}

void RadioPanel::applyState(const RadioState &state)
{
    if (m_volume->isEnabled())
        setLevel(m_volume, m_volumePct, state.volume);
    if (m_rfPower->isEnabled())
        setLevel(m_rfPower, m_rfPowerPct, state.rfPower);
    for (int i = 0; i < k_choiceCount; ++i) {
        QPushButton *filter = m_filter.at(size_t(i));
        if (filter->isEnabled())
            filter->setChecked(i == state.filter);
        QPushButton *breakIn = m_breakIn.at(size_t(i));
        if (breakIn->isEnabled())
            breakIn->setChecked(i == state.breakIn);
    }
    if (m_mute->isEnabled())
        m_mute->setChecked(state.muted);
    if (m_keySpeed->isEnabled()) {
        const QSignalBlocker blocker(m_keySpeed);
        m_keySpeed->setValue(state.keySpeed);
    }
}

void RadioPanel::attachAutoAtuCheck(QCheckBox *check)
{
    m_autoAtu = check;
    if (check)
        connect(check, &QCheckBox::toggled, this, &RadioPanel::autoAtuToggled);
}

bool RadioPanel::canTune() const
{
    return m_tuneAtu->isEnabled();
}

void RadioPanel::showPollResult(double kHz, const QString &mode)
{
    if (kHz > 0)
        m_frequency->setText(QStringLiteral("%1 MHz").arg(kHz / 1000.0, 0, 'f', 3));
    m_mode->setText(mode);
}

void RadioPanel::showBridgeFrequency(double kHz, const QString &mode)
{
    if (mode.isEmpty())
        showPollResult(kHz, m_mode->text());
    else
        showPollResult(kHz, mode);
}

void RadioPanel::showDisconnected()
{
    m_frequency->setText(QStringLiteral("NOT CONNECTED"));
    m_mode->clear();
}

void RadioPanel::driveRig(HamlibLink *rig)
{
    connect(this, &RadioPanel::volumeChanged, rig, &HamlibLink::setVolume);
    connect(this, &RadioPanel::rfPowerChanged, rig, &HamlibLink::setRfPower);
    connect(this, &RadioPanel::muteToggled, rig, &HamlibLink::setMute);
    connect(this, &RadioPanel::filterChosen, rig, &HamlibLink::setFilter);
    connect(this, &RadioPanel::breakInChosen, rig, &HamlibLink::setBreakIn);
    connect(this, &RadioPanel::keySpeedChanged, rig, &HamlibLink::setKeySpeed);
}
