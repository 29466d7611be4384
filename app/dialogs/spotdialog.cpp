#include "app/dialogs/spotdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace {

QLabel *noteLabel(const char *objectName, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QLatin1String(objectName));
    label->setWordWrap(true);
    label->hide();
    return label;
}

void showNote(QLabel *label, const QString &text)
{
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

} // namespace

SpotDialog::SpotDialog(const SpotRequest &prefill, const QStringList &nodes, bool callsignSet, Checks checks,
                       QWidget *parent)
    : QDialog(parent)
    , m_prefill(prefill)
    , m_checks(std::move(checks))
    , m_callsign(new QLineEdit(prefill.callsign, this))
    , m_frequency(new QDoubleSpinBox(this))
    , m_mode(new QComboBox(this))
    , m_reference(new QLineEdit(prefill.reference, this))
    , m_target(new QComboBox(this))
    , m_node(new QComboBox(this))
    , m_comment(new QLineEdit(prefill.comments, this))
    , m_qrt(new QCheckBox(QStringLiteral("QRT (the activator has gone)"), this))
    , m_note(noteLabel("spotNote", this))
    , m_error(noteLabel("spotError", this))
    , m_post(new QPushButton(QStringLiteral("&Post"), this))
{
    setObjectName(QStringLiteral("spotDialog"));
    setWindowTitle(prefill.callsign.isEmpty() ? QStringLiteral("Spot a Station")
                                              : QStringLiteral("Spot %1").arg(prefill.callsign));
    setMinimumWidth(420);
    buildFields(prefill, nodes);

    auto *buttons = new QDialogButtonBox(this);
    m_post->setObjectName(QStringLiteral("postButton"));
    m_post->setDefault(true); // Enter in any field posts
    buttons->addButton(m_post, QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Cancel);
    connect(m_post, &QPushButton::clicked, this, &SpotDialog::onPost);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout()->addWidget(m_error);
    layout()->addWidget(buttons);

    connect(m_target, &QComboBox::currentIndexChanged, this, &SpotDialog::onTargetChanged);
    onTargetChanged();
    if (!callsignSet) {
        showNote(m_error, QStringLiteral("Set your own call sign in Settings \u2192 Preferences first: "
                                         "every spot carries it as the spotter."));
        m_post->setEnabled(false);
    }
}

SpotDialog::~SpotDialog() = default;

void SpotDialog::buildFields(const SpotRequest &prefill, const QStringList &nodes)
{
    m_callsign->setObjectName(QStringLiteral("spotCallsignEdit"));
    m_frequency->setObjectName(QStringLiteral("spotFrequencySpin"));
    m_frequency->setRange(0.0, 450000.0);
    m_frequency->setDecimals(1);
    m_frequency->setSuffix(QStringLiteral(" kHz"));
    m_frequency->setValue(prefill.frequencyKhz);
    m_mode->setObjectName(QStringLiteral("spotModeCombo"));
    m_mode->setEditable(true);
    m_mode->addItems({QStringLiteral("CW"), QStringLiteral("SSB"), QStringLiteral("FM"), QStringLiteral("AM"),
                      QStringLiteral("FT8"), QStringLiteral("FT4"), QStringLiteral("RTTY")});
    m_mode->setCurrentText(prefill.mode.toUpper());
    m_reference->setObjectName(QStringLiteral("spotReferenceEdit"));
    m_reference->setPlaceholderText(QStringLiteral("e.g. US-1234, B/G-0977"));
    m_target->setObjectName(QStringLiteral("spotTargetCombo"));
    for (const StationSpot::Source target : {StationSpot::POTA, StationSpot::WWBOTA, StationSpot::DX})
        m_target->addItem(target == StationSpot::DX ? QStringLiteral("DX cluster")
                                                    : StationSpot::sourceName(target),
                          int(target));
    m_target->setCurrentIndex(m_target->findData(int(prefill.target)));
    m_node->setObjectName(QStringLiteral("spotNodeCombo"));
    m_node->addItems(nodes);
    m_node->setPlaceholderText(QStringLiteral("no cluster node logged in"));
    m_comment->setObjectName(QStringLiteral("spotCommentEdit"));
    m_comment->setMaxLength(200);
    m_qrt->setObjectName(QStringLiteral("spotQrtCheck"));

    m_form = new QFormLayout;
    QFormLayout *form = m_form;
    form->addRow(QStringLiteral("Call sign:"), m_callsign);
    form->addRow(QStringLiteral("Frequency:"), m_frequency);
    form->addRow(QStringLiteral("Mode:"), m_mode);
    form->addRow(QStringLiteral("Reference:"), m_reference);
    form->addRow(QStringLiteral("Post to:"), m_target);
    form->addRow(QStringLiteral("Cluster node:"), m_node);
    form->addRow(QStringLiteral("Comment:"), m_comment);
    form->addRow(QString(), m_qrt);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_note);
}

void SpotDialog::onTargetChanged()
{
    const auto target = StationSpot::Source(m_target->currentData().toInt());
    m_form->setRowVisible(m_node, target == StationSpot::DX);
    m_node->setEnabled(m_node->count() > 1);
    // SOTA, WWFF and GMA take spots only from their own accounts.
    const QString needed = SpotRequest::accountNeeded(m_prefill.programme);
    showNote(m_note, needed.isEmpty()
                         ? QString()
                         : QStringLiteral("%1 takes spots only with %2, which Tallis cannot hold yet; "
                                          "the DX cluster carries this one instead.")
                               .arg(StationSpot::sourceName(m_prefill.programme), needed));
}

SpotRequest SpotDialog::request() const
{
    SpotRequest r = m_prefill;
    r.callsign = m_callsign->text();
    r.frequencyKhz = m_frequency->value();
    r.mode = m_mode->currentText();
    r.reference = m_reference->text();
    if (SpotRequest::splitReferences(r.reference) != m_prefill.references())
        r.referenceName.clear(); // the name was the prefilled reference's
    r.target = StationSpot::Source(m_target->currentData().toInt());
    if (r.programme == StationSpot::DX)
        r.programme = SpotRequest::programmeOf(r.reference);
    r.clusterNode = r.target == StationSpot::DX ? m_node->currentText() : QString();
    r.comments = m_comment->text();
    r.qrt = m_qrt->isChecked();
    return r.normalized();
}

void SpotDialog::onPost()
{
    SpotRequest r = request();
    if (r.target == StationSpot::WWBOTA) {
        // What is posted is what the operator sees: the bunkers named first.
        m_comment->setText(r.wwbotaComment());
        r = request();
    }
    const QString problem = m_checks.problem ? m_checks.problem(r) : QString();
    showNote(m_error, problem);
    if (!problem.isEmpty())
        return;
    if (m_checks.isRepeat && m_checks.isRepeat(r)) {
        const QString question = QStringLiteral("Spot %1 again?").arg(r.callsign);
        const bool again = m_checks.askAgain
                               ? m_checks.askAgain(question)
                               : QMessageBox::question(this, windowTitle(), question) == QMessageBox::Yes;
        if (!again)
            return;
    }
    accept();
}
