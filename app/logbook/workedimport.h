#pragma once

#include "app/logbook/workedtable.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>

class AdifRecord;
class QIODevice;
class QThread;

// What an import read: the contacts it took, the records it skipped (no call
// sign or no date), the fields it could not read and the files it could not open.
struct WorkedImportSummary
{
    qint64 taken = 0;
    qint64 skipped = 0;
    qint64 damagedFields = 0;
    QStringList unreadableFiles;

    // "Logbook read: 1234 contacts taken, 5 records skipped."
    QString message() const;
};

// The operator's own logbook, exported as ADIF by any program, read into a
// worked table: call sign, band (from BAND, else FREQ), mode, date and the
// references worked (SIG/SIG_INFO, POTA_REF, SOTA_REF, WWFF_REF). The MY_*
// fields describe the operator's own station and are not read.
namespace WorkedImport {

// Adds the one contact of record to table; false when it has no call sign or no valid date.
bool addRecord(const AdifRecord &record, WorkedTable &table);

// Adds every contact of the ADIF read from device. stop, when set, ends the
// reading early.
WorkedImportSummary readAdif(QIODevice &device, WorkedTable &table, const std::atomic_bool *stop = nullptr);

// The same for each file of paths, in turn.
WorkedImportSummary readFiles(const QStringList &paths, WorkedTable &table,
                              const std::atomic_bool *stop = nullptr);

} // namespace WorkedImport

// Reads the logbook files on a worker thread and hands the finished table
// over on the thread the loader lives on, where it is swapped into the
// worked index. A later load supersedes an earlier one still running.
class WorkedImportLoader final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WorkedImportLoader)

public:
    explicit WorkedImportLoader(QObject *parent = nullptr);
    // Stops and waits for the reading still running.
    ~WorkedImportLoader() override;

    void load(const QStringList &paths);
    bool isLoading() const { return m_running > 0; }

signals:
    // The table of the latest load, complete.
    void loaded(std::shared_ptr<const WorkedTable> table, const WorkedImportSummary &summary);

private:
    void finish(quint64 generation, const std::shared_ptr<const WorkedTable> &table,
                const WorkedImportSummary &summary);

    quint64 m_generation = 0;
    int m_running = 0;
    std::shared_ptr<std::atomic_bool> m_stop;
    QList<QThread *> m_threads;
};
