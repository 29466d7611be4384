#pragma once

#include "model/stationspot.h"

#include <QList>
#include <QMap>
#include <QString>

// The spot table as it was at the last close, so that the next start shows
// stations at once instead of an empty table until every source has answered.
// "spots-snapshot.json" in the data directory, written whole and atomically.
class SpotSnapshot final
{
public:
    // Spots this old are gone from the table; the snapshot gives none of them.
    static constexpr qint64 k_maxAgeMs = 3 * 3600 * 1000;

    // directory: where the file goes, by default the per-user data directory.
    explicit SpotSnapshot(QString directory = QString());

    QString filePath() const;

    // Replaces the file; false when it could not be written (the old one then stays).
    bool write(const QList<StationSpot> &spots, qint64 nowMs) const;

    // The spots younger than three hours, by source, each list in file order,
    // ready for one merge per source. A missing or corrupt file gives nothing.
    QMap<StationSpot::Source, QList<StationSpot>> read(qint64 nowMs) const;

private:
    QString m_directory;
};
