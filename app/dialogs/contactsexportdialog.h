#pragma once

#include "app/logbook/adifwriter.h"

#include <QDate>
#include <QDateTime>
#include <QDialog>
#include <QString>

class QDateEdit;

// "Export All Contacts": every contact of the daily logs from a day the
// operator picks, oldest first, as one ADIF file for a logbook or an award site.
class ContactsExportDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ContactsExportDialog)

public:
    // first and last: the UTC days of the oldest and newest contact; the choice starts at first.
    ContactsExportDialog(const QDate &first, const QDate &last, QWidget *parent = nullptr);
    ~ContactsExportDialog() override;

    QDate from() const;

    // The whole exchange over the logs of directory: the day, the file, the
    // writing. Returns the status-bar notice; empty when there was nothing to
    // export, the operator cancelled, or the file could not be written (each
    // said in a box of its own, as the other exports do).
    static QString run(QWidget *parent, const QString &directory, const AdifStation &station,
                       const QDateTime &now);

private:
    QDateEdit *m_from;
};
