#include "app/dialogs/logcontactdialog.h"

#include "app/dialogs/dialogfields.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QLineEdit *lineEdit(QWidget *parent, const QString &text, const char *objectName)
{
    auto *edit = new QLineEdit(text, parent);
    edit->setObjectName(QLatin1String(objectName));
    return edit;
}

QString referenceText(const StationSpot &spot)
{
    const QString text = QStringLiteral("[%1] %2").arg(spot.sourceString(), spot.reference);
    return spot.referenceName.isEmpty() ? text : text + QStringLiteral(" — ") + spot.referenceName;
}

} // namespace

LogContactDialog::LogContactDialog(const QList<ContactRecord> &records, QWidget *parent)
    : QDialog(parent)
    , m_records(records)
{
    Q_ASSERT(!m_records.isEmpty());
    const ContactRecord &first = m_records.first();
    const StationSpot &spot = first.spot;
    setObjectName(QStringLiteral("logContactDialog"));
    setWindowTitle(QStringLiteral("Log Contact"));
    setMinimumWidth(360);

    m_rstSent = lineEdit(this, first.rstSent, "logRstSentEdit");
    m_rstRcvd = lineEdit(this, first.rstRcvd, "logRstRcvdEdit");
    m_comment = lineEdit(this, spot.comments, "logCommentEdit");
    auto *call = new QLabel(spot.callsign, this);
    call->setObjectName(QStringLiteral("logCallsignLabel"));

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Call:"), call);
    form->addRow(QStringLiteral("UTC time:"),
                 new QLabel(first.loggedAt.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")), this));
    form->addRow(QStringLiteral("Frequency:"),
                 new QLabel(QStringLiteral("%1 kHz").arg(spot.frequencyKhz, 0, 'f', 1), this));
    form->addRow(QStringLiteral("Band:"),
                 new QLabel(first.band().isEmpty() ? QStringLiteral("?") : first.band(), this));
    form->addRow(QStringLiteral("Mode:"), new QLabel(spot.mode, this));
    form->addRow(QStringLiteral("RST sent:"), m_rstSent);
    form->addRow(QStringLiteral("RST received:"), m_rstRcvd);
    form->addRow(QStringLiteral("Comment:"), m_comment);
    form->addRow(QStringLiteral("References:"), buildReferences());

    QDialogButtonBox *buttons = DialogFields::okCancelButtons(this);
    m_logButton = buttons->button(QDialogButtonBox::Ok);
    m_logButton->setText(QStringLiteral("&Log"));
    m_logButton->setDefault(true); // Enter logs, from whichever field
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    updateLogButton();
    m_rstSent->setFocus(Qt::OtherFocusReason);
    m_rstSent->selectAll();
}

LogContactDialog::~LogContactDialog() = default;

QWidget *LogContactDialog::buildReferences()
{
    auto *box = new QWidget(this);
    auto *column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    for (const ContactRecord &record : std::as_const(m_records)) {
        // A contact without a reference (a cluster spot) has nothing to leave out.
        if (record.spot.reference.isEmpty()) {
            m_referenceChecks.append(nullptr);
            continue;
        }
        auto *check = new QCheckBox(referenceText(record.spot), box);
        check->setObjectName(QStringLiteral("logReferenceCheck"));
        check->setChecked(true);
        connect(check, &QCheckBox::toggled, this, &LogContactDialog::updateLogButton);
        column->addWidget(check);
        m_referenceChecks.append(check);
    }
    if (column->isEmpty())
        column->addWidget(new QLabel(QStringLiteral("none"), box));
    return box;
}

void LogContactDialog::updateLogButton()
{
    // With every reference unticked there is nothing left to log.
    bool any = false;
    for (const QCheckBox *check : std::as_const(m_referenceChecks))
        any = any || check == nullptr || check->isChecked();
    m_logButton->setEnabled(any);
}

QList<RecordEdit> LogContactDialog::edits() const
{
    const QString comment = m_comment->text();
    const bool commentEdited = comment != m_records.first().spot.comments;
    QList<RecordEdit> edits;
    for (int i = 0; i < m_records.size(); ++i) {
        RecordEdit edit;
        edit.reference = m_records.at(i).spot.reference;
        edit.logged = m_referenceChecks.at(i) == nullptr || m_referenceChecks.at(i)->isChecked();
        edit.rstSent = m_rstSent->text().trimmed();
        edit.rstRcvd = m_rstRcvd->text().trimmed();
        if (commentEdited)
            edit.comments = comment;
        edits.append(edit);
    }
    return edits;
}
