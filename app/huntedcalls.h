#pragma once

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

class StationModel;

// The call signs the operator is hunting now: those on the table's watch list and
// those with a programme spot in the table within the age limit. The skimmer
// filter asks once per report, hundreds of times a second, so the set is
// rebuilt at most once per k_rebuildMs after the table changed.
class HuntedCalls final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HuntedCalls)

public:
    static constexpr qint64 k_rebuildMs = 1000;
    static constexpr qint64 k_ageRebuildMs = 60 * 1000;

    // maxAgeMins: the table's age limit as it is now.
    HuntedCalls(const StationModel *model, std::function<int()> maxAgeMins, QObject *parent = nullptr);
    ~HuntedCalls() override;

    // callsign in upper case.
    bool contains(const QString &callsign);

private:
    void rebuild();

    const StationModel *m_model;
    std::function<int()> m_maxAgeMins;
    QSet<QString> m_programmeCalls;
    bool m_stale = true;
    qint64 m_builtAtMs = 0;
};
