#pragma once

#include "model/stationspot.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

class StationModel;

// The user's marks (heard, not heard, contacted) by spot key with the time of
// marking. A mark outlives refreshes and restarts, but only for three hours:
// an activation this afternoon must not inherit this morning's mark. Expiry is
// lazy: every load, save and apply measures the window from the clock's now.
class ContactStatusStore final
{
public:
    struct Mark
    {
        StationSpot::Status status = StationSpot::Unknown;
        QDateTime time; // UTC
    };

    // Which rows besides the similar ones a mark from the interface reaches.
    enum class Spread { SimilarOnly, SimilarAndGroup };

    // The current time, UTC; tests inject a fixed one.
    using Clock = std::function<QDateTime()>;

    static constexpr qint64 k_retentionSecs = 3 * 3600;

    explicit ContactStatusStore(Clock clock = {});

    // The home directory followed by "/.tallis/contact-status.json".
    static QString defaultFilePath();

    void setClock(Clock clock);
    QDateTime now() const;

    // Reads the live marks of the file at path, which later saves write to.
    // A missing, unreadable or foreign file loads nothing.
    void load(const QString &path);
    QString filePath() const { return m_path; }
    // Writes the live marks atomically. On failure the previous file stays
    // whole and the marks stay in memory; false tells why nothing changed.
    bool save() const;

    void record(const QString &key, StationSpot::Status status);
    void record(const QString &key, StationSpot::Status status, const QDateTime &time);

    const QHash<QString, Mark> &marks() const { return m_marks; }
    // The time recorded for key, however old; invalid when there is none.
    QDateTime markTime(const QString &key) const;
    bool isLive(const Mark &mark) const;

    // Shows every live mark on the model's rows of the same key; keys of no
    // current row wait in the table for their spot. Returns the rows changed.
    int applyTo(StationModel &model) const;

    // Marks the spot of selectedKey, its kin at the same call within 1 kHz
    // and, for SimilarAndGroup, its group; records the rows of the same call
    // (any case) within 1 kHz or, for SimilarAndGroup, in the same group, each
    // under its own key at one time; saves. Group rows of other calls are
    // shown but not recorded. Returns the recorded keys; empty, with nothing
    // done, when the key names no row.
    QStringList markSelection(StationModel &model, const QString &selectedKey, StationSpot::Status status,
                              Spread spread);

    // The API's mark: exactly key, no spreading, recorded even when no row has
    // it yet; saves.
    void markKey(StationModel &model, const QString &key, StationSpot::Status status);

private:
    QDateTime cutOff() const;

    Clock m_clock;
    QString m_path;
    QHash<QString, Mark> m_marks;
};
