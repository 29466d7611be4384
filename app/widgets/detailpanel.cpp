#include "app/widgets/detailpanel.h"

#include "app/widgets/radiopanel.h"
#include "model/referencekind.h"
#include "sources/dxcc.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {
QLabel *makeLabel(const char *objectName, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QLatin1String(objectName));
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

// An empty line takes no room in the panel.
void showLine(QLabel *label, const QString &text)
{
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

QPushButton *makeAction(const QString &text, const char *objectName, const QString &tooltip, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(objectName));
    button->setToolTip(tooltip);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

// "Germany · Europe (EU)"; only the continent when the reference line already names the country.
QString placeOfCall(const StationSpot &spot)
{
    const DxccEntity *entity = dxccEntityForCallsign(spot.callsign);
    if (!entity)
        return {};
    const QString code = dxContinentForCallsign(spot.callsign);
    const QString continent = QStringLiteral("%1 (%2)").arg(continentName(code), code);
    const QString country = QString::fromLatin1(entity->name);
    return country == spot.referenceName ? continent : QStringLiteral("%1 · %2").arg(country, continent);
}
} // namespace

DetailPanel::DetailPanel(QWidget *parent)
    : QFrame(parent)
    , m_callsign(makeLabel("detailCallsign", this))
    , m_reference(makeLabel("detailReference", this))
    , m_referenceName(makeLabel("detailReferenceName", this))
    , m_continent(makeLabel("detailContinent", this))
    , m_frequency(makeLabel("detailFrequency", this))
    , m_mode(makeLabel("detailMode", this))
    , m_time(makeLabel("detailTime", this))
    , m_spotter(makeLabel("detailSpotter", this))
    , m_comments(makeLabel("detailComments", this))
    , m_multiop(makeLabel("detailMultiop", this))
    , m_worked(makeLabel("detailWorked", this))
    , m_details(new QWidget(this))
    , m_welcome(buildWelcome())
    , m_radioPanel(new RadioPanel(this))
    , m_tuneButton(makeAction(QStringLiteral("[T]une Radio"), "tuneButton", QString(), this))
    , m_heardButton(makeAction(QStringLiteral("Mark [H]eard"), "heardButton", QString(), this))
    , m_unheardButton(makeAction(QStringLiteral("Mark [U]nheard/QRT"), "unheardButton",
                                 QStringLiteral("Mark as not heard or gone QRT"), this))
    , m_addToLogButton(makeAction(QStringLiteral("[L]og Contact"), "addToLogButton",
                                  QStringLiteral("Log contact and mark as Contacted"), this))
    , m_spotButton(makeAction(QStringLiteral("[S]pot"), "spotButton",
                              QStringLiteral("Spot or re-spot this station: POTA, WWBOTA or a DX cluster, "
                                             "after you confirm"),
                              this))
{
    setObjectName(QStringLiteral("detailPanel"));
    setFrameShape(QFrame::StyledPanel);
    // No fixed minimum width: the radio rows' own widths set it, so the splitter
    // never squeezes their buttons below their texts.

    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(4);
    layout->addWidget(buildDetails(), 1);
    layout->addWidget(m_radioPanel);
    for (QPushButton *button : {m_tuneButton, m_heardButton, m_unheardButton, m_addToLogButton, m_spotButton})
        layout->addWidget(button);
    clear();
}

QWidget *DetailPanel::buildDetails()
{
    m_details->setObjectName(QStringLiteral("detailLines"));
    auto *details = new QVBoxLayout(m_details);
    details->setContentsMargins(0, 0, 0, 0);
    details->setSpacing(2);
    for (QLabel *label : {m_callsign, m_reference, m_referenceName, m_continent})
        details->addWidget(label);
    auto *tuning = new QHBoxLayout; // frequency and mode share a line
    tuning->setSpacing(10);
    m_frequency->setWordWrap(false);
    m_mode->setWordWrap(false);
    tuning->addWidget(m_frequency);
    tuning->addWidget(m_mode, 1);
    details->addLayout(tuning);
    for (QLabel *label : {m_time, m_spotter, m_comments, m_multiop, m_worked})
        details->addWidget(label);

    // On a small screen the spot's lines scroll; the radio and the actions stay whole.
    auto *scroll = new QScrollArea(this);
    scroll->setObjectName(QStringLiteral("detailScroll"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *content = new QWidget(scroll);
    content->setObjectName(QStringLiteral("detailContent"));
    auto *lines = new QVBoxLayout(content);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->addWidget(m_details);
    lines->addWidget(m_welcome);
    lines->addStretch(1);
    scroll->setWidget(content);
    return scroll;
}

DetailPanel::~DetailPanel() = default;

void DetailPanel::showSpot(const StationSpot &spot, const QString &multiOp)
{
    showLine(m_callsign, spot.callsign);
    showLine(m_reference, QStringLiteral("[%1] %2").arg(spot.sourceString(), spot.reference));
    const QString kind = ReferenceKind::of(spot);
    showLine(m_referenceName, kind.isEmpty() || spot.referenceName.isEmpty()
                                  ? kind + spot.referenceName
                                  : QStringLiteral("%1 — %2").arg(kind, spot.referenceName));
    showLine(m_continent, placeOfCall(spot));
    showLine(m_frequency, spot.frequencyKhz > 0 ? QStringLiteral("%1 kHz").arg(spot.frequencyKhz, 0, 'f', 1)
                                                : QStringLiteral("? kHz"));
    showLine(m_mode, spot.mode);
    showLine(m_time, spot.spotTime.isValid()
                         ? QStringLiteral("Spotted: %1 UTC")
                               .arg(spot.spotTime.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm")))
                         : QStringLiteral("Spotted: unknown"));
    showLine(m_spotter, spot.spotter.isEmpty() ? QString() : QStringLiteral("via %1").arg(spot.spotter));
    showLine(m_comments, spot.comments);
    showLine(m_multiop, multiOp.isEmpty() ? QString() : QStringLiteral("Multi-op: %1").arg(multiOp));
    setActionsEnabled(true);
    m_showingSpot = true;
    showDetailsOrWelcome();
}

void DetailPanel::clear()
{
    for (QLabel *label : {m_callsign, m_reference, m_referenceName, m_continent, m_frequency, m_mode, m_time,
                          m_spotter, m_comments, m_multiop, m_worked})
        showLine(label, QString());
    setActionsEnabled(false);
    m_showingSpot = false;
    showDetailsOrWelcome();
}

void DetailPanel::setActionsEnabled(bool enabled)
{
    for (QPushButton *button : {m_tuneButton, m_heardButton, m_unheardButton, m_addToLogButton, m_spotButton})
        button->setEnabled(enabled);
}

void DetailPanel::showWorked(const QString &text)
{
    showLine(m_worked, text);
}

void DetailPanel::showWelcome(bool welcome)
{
    m_welcomeWanted = welcome;
    showDetailsOrWelcome();
}

QWidget *DetailPanel::buildWelcome()
{
    auto *welcome = new QWidget(this);
    welcome->setObjectName(QStringLiteral("firstStartWelcome"));
    auto *layout = new QVBoxLayout(welcome);
    layout->setContentsMargins(0, 0, 0, 0);
    QLabel *greeting = makeLabel("firstStartLabel", welcome);
    greeting->setText(QStringLiteral("Welcome to Tallis — set your call sign to begin."));
    layout->addWidget(greeting);
    const struct
    {
        const char *objectName;
        QString text;
        void (DetailPanel::*request)();
    } buttons[] = {
        {"firstStartPrefsButton", QStringLiteral("Preferences…"), &DetailPanel::preferencesRequested},
        {"firstStartRadioButton", QStringLiteral("Radio Setup…"), &DetailPanel::radioSetupRequested}};
    for (const auto &[objectName, text, request] : buttons) {
        auto *button = new QPushButton(text, welcome);
        button->setObjectName(QLatin1String(objectName));
        connect(button, &QPushButton::clicked, this, request);
        layout->addWidget(button);
    }
    welcome->hide();
    return welcome;
}

void DetailPanel::showDetailsOrWelcome()
{
    const bool welcome = m_welcomeWanted && !m_showingSpot;
    m_welcome->setVisible(welcome);
    m_details->setVisible(!welcome);
}
