#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;

// POTA programme and SOTA association prefixes (US, K, W4C …).
struct ProgramSelection
{
    QStringList potaPrograms;
    QStringList sotaAssociations;

    bool isEmpty() const { return potaPrograms.isEmpty() && sotaAssociations.isEmpty(); }
};

// "Programs & Associations": which programmes and associations the table shows.
class ProgramsDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ProgramsDialog)

public:
    // present: the prefixes among the current spots. A selected prefix no spot has at
    // the moment is listed too, so that accepting keeps it.
    ProgramsDialog(const ProgramSelection &present, const ProgramSelection &selected,
                   QWidget *parent = nullptr);
    ~ProgramsDialog() override;

    // The ticked prefixes, in list order.
    ProgramSelection selection() const;

private:
    QWidget *buildCheckList(const QString &title, const QString &objectName, QStringList prefixes,
                            const QStringList &ticked, QListWidget *&list);

    QListWidget *m_pota = nullptr;
    QListWidget *m_sota = nullptr;
};
