#include "app/widgets/detailpanel.h"

#include "app/widgets/radiopanel.h"

#include <QLabel>
#include <QPushButton>
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

QPushButton *makeAction(const QString &text, const char *objectName, const QString &tooltip, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(objectName));
    button->setToolTip(tooltip);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}
} // namespace

DetailPanel::DetailPanel(QWidget *parent)
    : QFrame(parent)
    , m_callsign(makeLabel("detailCallsign", this))
    , m_reference(makeLabel("detailReference", this))
    , m_referenceName(makeLabel("detailReferenceName", this))
    , m_frequency(makeLabel("detailFrequency", this))
    , m_mode(makeLabel("detailMode", this))
    , m_time(makeLabel("detailTime", this))
    , m_spotter(makeLabel("detailSpotter", this))
    , m_comments(makeLabel("detailComments", this))
    , m_multiop(makeLabel("detailMultiop", this))
    , m_worked(makeLabel("detailWorked", this))
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
    setMinimumWidth(260);

    auto *layout = new QVBoxLayout(this);
    for (QLabel *label : {m_callsign, m_reference, m_referenceName, m_frequency, m_mode, m_time, m_spotter,
                          m_comments, m_multiop, m_worked})
        layout->addWidget(label);
    layout->addStretch(1);

    layout->addWidget(m_radioPanel);

    for (QPushButton *button : {m_tuneButton, m_heardButton, m_unheardButton, m_addToLogButton, m_spotButton})
        layout->addWidget(button);
    clear();
}

DetailPanel::~DetailPanel() = default;

void DetailPanel::showSpot(const StationSpot &spot, const QString &multiOp)
{
    m_callsign->setText(spot.callsign);
    m_reference->setText(QStringLiteral("[%1] %2").arg(spot.sourceString(), spot.reference));
    m_referenceName->setText(spot.referenceName);
    m_frequency->setText(spot.frequencyKhz > 0 ? QStringLiteral("%1 kHz").arg(spot.frequencyKhz, 0, 'f', 1)
                                               : QStringLiteral("? kHz"));
    m_mode->setText(spot.mode);
    m_time->setText(spot.spotTime.isValid()
                        ? QStringLiteral("Spotted: %1 UTC")
                              .arg(spot.spotTime.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm")))
                        : QStringLiteral("Spotted: unknown"));
    m_spotter->setText(spot.spotter.isEmpty() ? QString() : QStringLiteral("via %1").arg(spot.spotter));
    m_comments->setText(spot.comments);
    m_multiop->setText(multiOp.isEmpty() ? QString() : QStringLiteral("Multi-op: %1").arg(multiOp));
    setActionsEnabled(true);
}

void DetailPanel::clear()
{
    for (QLabel *label : {m_callsign, m_reference, m_referenceName, m_frequency, m_mode, m_time, m_spotter,
                          m_comments, m_multiop, m_worked})
        label->clear();
    setActionsEnabled(false);
}

void DetailPanel::setActionsEnabled(bool enabled)
{
    for (QPushButton *button : {m_tuneButton, m_heardButton, m_unheardButton, m_addToLogButton, m_spotButton})
        button->setEnabled(enabled);
}

void DetailPanel::showWorked(const QString &text)
{
    m_worked->setText(text);
}
