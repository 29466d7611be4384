#include "app/dialogs/contactsexportdialog.h"

#include "app/dialogs/dialogfields.h"
#include "app/dialogs/windowdialogs.h"
#include "app/logbook/contactsexport.h"
#include "buildinfo.h"

#include <QDateEdit>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QMessageBox>
#include <QVBoxLayout>

ContactsExportDialog::ContactsExportDialog(const QDate &first, const QDate &last, QWidget *parent)
    : QDialog(parent)
    , m_from(new QDateEdit(first, this))
{
    setObjectName(QStringLiteral("contactsExportDialog"));
    setWindowTitle(ContactsExport::title());
    setMinimumWidth(360);
    m_from->setObjectName(QStringLiteral("exportFromDate"));
    m_from->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    m_from->setCalendarPopup(true);
    m_from->setDateRange(first, last);

    auto *note = new QLabel(QStringLiteral("Every contact of your daily logs, oldest first, in one ADIF file "
                                           "fit for a logbook or an award site. The chronicle runs from %1 "
                                           "to %2; choose where it begins.")
                                .arg(first.toString(Qt::ISODate), last.toString(Qt::ISODate)),
                            this);
    note->setWordWrap(true);
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Logged from (UTC):"), m_from);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(note);
    layout->addLayout(form);
    layout->addWidget(DialogFields::okCancelButtons(this));
}

ContactsExportDialog::~ContactsExportDialog() = default;

QDate ContactsExportDialog::from() const
{
    return m_from->date();
}

QString ContactsExportDialog::run(QWidget *parent, const QString &directory, const AdifStation &station,
                                  const QDateTime &now)
{
    const QList<ContactRecord> all = ContactsExport::collect(directory, QDate());
    if (all.isEmpty()) {
        QMessageBox::information(parent, ContactsExport::title(), ContactsExport::nothingToExport());
        return QString();
    }
    ContactsExportDialog dialog(all.first().loggedAt.date(), all.last().loggedAt.date(), parent);
    if (dialog.exec() != QDialog::Accepted)
        return QString();
    QList<ContactRecord> chosen;
    for (const ContactRecord &record : all) {
        if (record.loggedAt.date() >= dialog.from())
            chosen.append(record);
    }
    const QString path = QFileDialog::getSaveFileName(
        parent, ContactsExport::title(), QDir::homePath() + QStringLiteral("/tallis-contacts.adi"),
        QStringLiteral("ADIF files (*.adi *.adif);;All files (*)"));
    if (path.isEmpty())
        return QString();
    const QString text =
        ContactsExport::adifText(chosen, station, now, QString::fromLatin1(BuildInfo::k_version));
    if (!WindowDialogs::writeExportFile(parent, path, text))
        return QString();
    return ContactsExport::exportedMessage().arg(chosen.size()).arg(path);
}
