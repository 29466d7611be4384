#include "app/widgets/filterbar.h"

#include "model/bands.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {
struct SourceButtonInfo
{
    StationSpot::Source source;
    const char *text;
    const char *tooltip;
};

// Left-to-right order of the source buttons; DX sits last.
constexpr SourceButtonInfo k_sourceButtons[] = {
    {StationSpot::SOTA, "SOTA",
     "Summits on the Air\nToggle to show/hide SOTA spots and stop/resume fetching"},
    {StationSpot::POTA, "POTA", "Parks on the Air\nToggle to show/hide POTA spots and stop/resume fetching"},
    {StationSpot::WWFF, "WWFF",
     "World Wide Flora & Fauna\nToggle to show/hide WWFF spots and stop/resume fetching"},
    {StationSpot::WWBOTA, "WWBOTA",
     "Bunkers on the Air (WWBOTA)\nToggle to show/hide WWBOTA spots and stop/resume fetching"},
    {StationSpot::BOTA, "BOTA",
     "Beaches on the Air\nToggle to show/hide BOTA spots and stop/resume fetching"},
    {StationSpot::GMA, "GMA",
     "Global Mountain Activity\nToggle to show/hide GMA spots and stop/resume fetching"},
    {StationSpot::ZLOTA, "ZLOTA",
     "New Zealand on the Air\nToggle to show/hide ZLOTA spots and stop/resume fetching"},
    {StationSpot::SIOTA, "SiOTA",
     "Silos on the Air\nToggle to show/hide SiOTA spots and stop/resume fetching"},
    {StationSpot::RBN, "RBN", "Reverse Beacon Network skimmers\nToggle to show/hide skimmer spots"},
    {StationSpot::DX, "DX Cluster", nullptr},
};

constexpr const char *k_modeTexts[] = {"SSB", "CW", "AM", "FM", "Other"};
constexpr const char *k_modeTooltips[] = {"Show SSB/USB/LSB/AM spots", "Show CW spots", "Show AM spots",
                                          "Show FM/NFM spots",
                                          "Show FT8, FT4, RTTY, and other digital modes"};

QPushButton *makeToggle(const QString &text, const char *objectName, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(objectName));
    button->setCheckable(true);
    button->setChecked(true);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}
} // namespace

FilterBar::FilterBar(QWidget *parent)
    : QWidget(parent)
    , m_statusCombo(new QComboBox(this))
    , m_searchEdit(new QLineEdit(this))
    , m_programsButton(new QPushButton(QStringLiteral("Programs…"), this))
    , m_autoAtuCheck(new QCheckBox(QStringLiteral("Auto ATU"), this))
    , m_hideWorkedCheck(new QCheckBox(QStringLiteral("Hide worked"), this))
{
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(4, 2, 4, 2);
    rows->setSpacing(2);
    auto *top = new QHBoxLayout;
    auto *bottom = new QHBoxLayout;
    rows->addLayout(top);
    rows->addLayout(bottom);

    m_sourceButtons.resize(FilterState::k_sourceCount, nullptr);
    for (const SourceButtonInfo &info : k_sourceButtons) {
        QPushButton *button = makeToggle(QLatin1String(info.text), "sourceBtn", this);
        if (info.tooltip)
            button->setToolTip(QString::fromUtf8(info.tooltip));
        button->setChecked(FilterState::k_defaultSources[size_t(info.source)]);
        m_sourceButtons[info.source] = button;
        top->addWidget(button);
        connect(button, &QPushButton::toggled, this, &FilterBar::sourcesChanged);
    }
    top->addSpacing(12);

    for (int i = 0; i < FilterState::k_modeCount; ++i) {
        QPushButton *button = makeToggle(QLatin1String(k_modeTexts[i]), "modeBtn", this);
        button->setToolTip(QLatin1String(k_modeTooltips[i]));
        m_modeButtons.append(button);
        top->addWidget(button);
        connect(button, &QPushButton::toggled, this, &FilterBar::modesChanged);
    }
    top->addSpacing(12);

    constexpr const char *k_statusTexts[] = {"Active", "All", "Heard", "Contacted", "Not Heard"};
    for (size_t i = 0; i < FilterState::k_statusValues.size(); ++i)
        m_statusCombo->addItem(QLatin1String(k_statusTexts[i]), FilterState::k_statusValues[i]);
    m_statusCombo->setFocusPolicy(Qt::NoFocus);
    top->addWidget(m_statusCombo);
    connect(m_statusCombo, &QComboBox::currentIndexChanged, this, &FilterBar::statusChanged);

    m_searchEdit->setPlaceholderText(QStringLiteral("Search callsign / reference..."));
    m_searchEdit->setClearButtonEnabled(true);
    top->addWidget(m_searchEdit, 1);
    connect(m_searchEdit, &QLineEdit::textChanged, this, &FilterBar::searchTextChanged);

    for (const Band &band : k_bands) {
        QPushButton *button = makeToggle(QLatin1String(band.name), "bandBtn", this);
        m_bandButtons.append(button);
        bottom->addWidget(button);
        connect(button, &QPushButton::toggled, this, &FilterBar::bandsChanged);
    }
    bottom->addStretch(1);

    m_programsButton->setObjectName(QStringLiteral("programsBtn"));
    m_programsButton->setToolTip(QStringLiteral("Filter by POTA program and/or SOTA association"));
    m_programsButton->setFocusPolicy(Qt::NoFocus);
    bottom->addWidget(m_programsButton);
    connect(m_programsButton, &QPushButton::clicked, this, &FilterBar::programsClicked);

    m_hideWorkedCheck->setObjectName(QStringLiteral("hideWorkedCheck"));
    m_hideWorkedCheck->setToolTip(QStringLiteral(
        "Hide spots of references (or, without one, call signs) already in your log on that band"));
    m_hideWorkedCheck->setFocusPolicy(Qt::NoFocus);
    bottom->addWidget(m_hideWorkedCheck);
    connect(m_hideWorkedCheck, &QCheckBox::toggled, this, &FilterBar::hideWorkedChanged);

    m_autoAtuCheck->setObjectName(QStringLiteral("autoAtuCheck"));
    m_autoAtuCheck->setToolTip(
        QStringLiteral("Trigger an ATU tuning cycle when a spot you select is on another band or more than "
                       "2% from the last cycle (a cycle transmits)"));
    m_autoAtuCheck->setFocusPolicy(Qt::NoFocus);
    bottom->addWidget(m_autoAtuCheck);
}

FilterBar::~FilterBar() = default;

QPushButton *FilterBar::sourceButton(StationSpot::Source source) const
{
    return m_sourceButtons.value(source);
}

bool FilterBar::isSourceEnabled(StationSpot::Source source) const
{
    const QPushButton *button = sourceButton(source);
    return button && button->isChecked();
}

void FilterBar::setSourceEnabled(StationSpot::Source source, bool on)
{
    if (QPushButton *button = sourceButton(source))
        button->setChecked(on);
}

bool FilterBar::isModeEnabled(ModeClass mode) const
{
    return m_modeButtons.at(mode)->isChecked();
}

void FilterBar::setModeEnabled(ModeClass mode, bool on)
{
    m_modeButtons.at(mode)->setChecked(on);
}

int FilterBar::statusFilterValue() const
{
    return m_statusCombo->currentData().toInt();
}

void FilterBar::setProgramFilterActive(bool active)
{
    m_programsButton->setText(active ? QStringLiteral("Programs… ●") : QStringLiteral("Programs…"));
}

void FilterBar::setState(const FilterState &state)
{
    const auto show = [](QPushButton *button, bool on) {
        const QSignalBlocker blocker(button);
        button->setChecked(on);
    };
    for (int i = 0; i < FilterState::k_sourceCount; ++i)
        show(m_sourceButtons.at(i), state.sources[size_t(i)]);
    for (int i = 0; i < FilterState::k_modeCount; ++i)
        show(m_modeButtons.at(i), state.modes[size_t(i)]);
    for (int i = 0; i < m_bandButtons.size(); ++i)
        show(m_bandButtons.at(i), state.bands[size_t(i)]);
    {
        const QSignalBlocker blocker(m_statusCombo);
        m_statusCombo->setCurrentIndex(state.statusIndex);
    }
    if (m_searchEdit->text() != state.searchText) {
        const QSignalBlocker blocker(m_searchEdit);
        m_searchEdit->setText(state.searchText);
    }
    {
        const QSignalBlocker blocker(m_hideWorkedCheck);
        m_hideWorkedCheck->setChecked(state.hideWorked);
    }
    setProgramFilterActive(state.hasProgramFilter());
}

void FilterBar::updateState(FilterState &state) const
{
    for (int i = 0; i < FilterState::k_sourceCount; ++i)
        state.sources[size_t(i)] = m_sourceButtons.at(i)->isChecked();
    for (int i = 0; i < FilterState::k_modeCount; ++i)
        state.modes[size_t(i)] = m_modeButtons.at(i)->isChecked();
    for (int i = 0; i < m_bandButtons.size(); ++i)
        state.bands[size_t(i)] = m_bandButtons.at(i)->isChecked();
    state.statusIndex = qMax(0, m_statusCombo->currentIndex());
    state.searchText = m_searchEdit->text();
    state.hideWorked = m_hideWorkedCheck->isChecked();
}
