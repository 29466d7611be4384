#pragma once

#include "app/logbook/contactrecord.h"
#include "app/logbook/recordbuilder.h"

#include <QDialog>
#include <QList>

class QCheckBox;
class QLineEdit;
class QPushButton;

// "Log Contact": the records logging the selection would write, for the
// operator to look over first: the reports given and received, a comment,
// and which of the references worked go into the log (all, unless unticked).
class LogContactDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LogContactDialog)

public:
    // records: one per reference worked, the selected spot's first; not empty.
    explicit LogContactDialog(const QList<ContactRecord> &records, QWidget *parent = nullptr);
    ~LogContactDialog() override;

    // One edit per record: ticked or not, the reports as they stand and the
    // comment only when the operator changed it.
    QList<RecordEdit> edits() const;

private:
    QWidget *buildReferences();
    void updateLogButton();

    QList<ContactRecord> m_records;
    QLineEdit *m_rstSent;
    QLineEdit *m_rstRcvd;
    QLineEdit *m_comment;
    QList<QCheckBox *> m_referenceChecks; // by record; null for a record without a reference
    QPushButton *m_logButton = nullptr;
};
