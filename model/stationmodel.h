#pragma once

#include "model/loweredset.h"
#include "model/stationspot.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

class QTimer;

// The one table of spots: merges every source's batches, expires old spots,
// groups spots that belong together and carries the user's marks.
class StationModel final : public QAbstractTableModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationModel)

public:
    enum Column : int {
        SourceColumn = 0,
        CallsignColumn = 1,
        ReferenceColumn = 2,
        NameColumn = 3,
        FrequencyColumn = 4,
        ModeColumn = 5,
        AgeColumn = 6,
        StatusColumn = 7,
        DistanceColumn = 8,
        BearingColumn = 9,
        ColumnCount = 10
    };

    static constexpr int k_ageTickMs = 1000;
    static constexpr qint64 k_maxSpotAgeSecs = 3 * 3600;
    static constexpr double k_linkFreqKhz = 2.0;
    static constexpr qint64 k_linkSecs = 1800;
    static constexpr double k_partnerFreqKhz = 1.0;
    static constexpr qint64 k_partnerSecs = 300;
    static constexpr double k_similarFreqKhz = 1.0;
    // The operator's own spot stands in for the service's copy this long at
    // most: a fetch that brings the copy (same call and reference, within
    // k_similarFreqKhz) replaces it sooner.
    static constexpr qint64 k_ownSpotHoldSecs = 600;
    // Sort values of distance and bearing when either position is unknown.
    static constexpr double k_unknownDistance = 1e18;
    static constexpr double k_unknownBearing = -1.0;

    // Milliseconds since the Unix epoch, UTC.
    using Clock = std::function<qint64()>;

    // What one merge did to the rows, by key: the API sends changes from
    // this rather than comparing whole tables.
    struct MergeChanges
    {
        QList<int> addedRows;   // rows (after the merge) of keys the table did not have
        QList<int> updatedRows; // rows whose key stayed but whose spot was replaced
        QStringList removedKeys;
    };

    explicit StationModel(QObject *parent = nullptr);
    ~StationModel() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Replaces the batch's sources' earlier spots (DX spots are only added),
    // expires spots older than three hours, keeps the newest row per call
    // and reference, carries statuses by key and regroups; resets the model.
    void mergeSpots(const QList<StationSpot> &batch);
    // The operator's own spots, just posted: added without replacing their
    // sources' other rows. A later fetch keeps them until it brings the
    // service's copy, which then takes their place.
    void addOwnSpots(const QList<StationSpot> &spots);
    void clearSpots();
    // The change set of the last merge; spotsMerged carries the same.
    const MergeChanges &lastMergeChanges() const { return m_lastChanges; }

    // A copy of the row's spot; out of range, a default spot whose source is
    // the invalid value StationSpot::k_sourceCount.
    StationSpot spotAt(int row) const;
    const QList<StationSpot> &spots() const { return m_spots; }
    // The row's spot time, read from a compact array: the age sort compares
    // it n log n times.
    qint64 spotTimeMSecsAt(int row) const { return m_rowInfo[size_t(row)].timeMs; }

    static bool areLinked(const StationSpot &a, const StationSpot &b);
    // Gives linked spots a common group number; unlinked spots get 0.
    static void computeGroups(QList<StationSpot> &spots);

    // Other operators at the same reference close in frequency and time.
    QList<StationSpot> findMultiOpPartners(const QString &reference, double freqKhz, const QDateTime &time,
                                           const QString &callsign) const;
    // The calls of findMultiOpPartners for spot, for the detail panel.
    QStringList multiOpPartnerCalls(const StationSpot &spot) const;
    QStringList keysInGroup(int groupId) const;
    QStringList potaPrograms() const;
    QStringList sotaAssociations() const;

    void setWatchCallsigns(const QStringList &callsigns);
    void setWatchReferences(const QStringList &references);
    QSet<QString> watchCallsigns() const { return m_watchCallsigns.toSet(); }
    QSet<QString> watchReferences() const { return m_watchReferences.toSet(); }
    bool isWatchedCallsign(const QString &callsign) const
    {
        return m_watchCallsigns.containsLowered(callsign);
    }

    void setUserLocation(double lat, double lon);
    void clearUserLocation();
    bool hasUserLocation() const { return m_hasUserLocation; }
    double userLat() const { return m_userLat; }
    double userLon() const { return m_userLon; }

    void setReferenceLocation(const QString &reference, double lat, double lon);

    void setHighlightGroup(int groupId);
    int highlightGroup() const { return m_highlightGroup; }

    void markSpot(const QString &key, StationSpot::Status status);
    void markGroupSpots(int groupId, StationSpot::Status status);
    // Marks the spots of that call (any case) within 1 kHz; returns their rows.
    QList<int> markSimilarSpots(const QString &callsign, double freqKhz, StationSpot::Status status);

    // The time source of expiry and ages; tests inject a fixed clock.
    void setClock(Clock clock);
    qint64 nowMSecs() const;

    static QString formatFrequency(double khz);
    static QString formatAge(const QDateTime &time);
    static QString formatAge(const QDateTime &time, qint64 nowMSecs);

    static bool gridToLatLon(const QString &grid, double &lat, double &lon);
    static double distanceMi(double lat1, double lon1, double lat2, double lon2);
    static double bearingDeg(double lat1, double lon1, double lat2, double lon2);

    int ageTickIntervalMs() const;
    bool isAgeTickActive() const;

public slots:
    void refreshAgeColumn();

signals:
    // After every merge, once the model reset is over.
    void spotsMerged(const StationModel::MergeChanges &changes);

private:
    // One run of mergeSpots, phase by phase (stationmodelmerge.cpp).
    class MergePass;
    enum class MergeKind { ReplaceSources, AddOnly };
    void merge(const QList<StationSpot> &batch, MergeKind kind);

    // What the merge needs of a row, kept beside it so that a merge reads
    // compact arrays instead of every row's strings.
    struct RowInfo
    {
        qint64 timeMs;
        quint64 callRefHash;
        int source;
        bool own; // posted by the operator, not yet confirmed by a fetch
    };
    // A row under a case-folded call sign or reference: rows that can link
    // share a bucket and lie close in frequency.
    struct LinkCandidate
    {
        quint64 bucket;
        double freqKhz;
        int row;
    };
    static void appendLinkCandidates(std::vector<LinkCandidate> &candidates, const StationSpot &spot,
                                     int row);
    // Bucket, then frequency: the order the candidate lists are kept in.
    static bool candidateBefore(const LinkCandidate &a, const LinkCandidate &b);
    static void sortLinkCandidates(std::vector<LinkCandidate> &candidates);
    using LinkPairs = std::vector<std::pair<int, int>>;
    // Every linked pair (i < j) found among bucket neighbours, sorted.
    static LinkPairs findLinkPairs(const QList<StationSpot> &spots,
                                   const std::vector<LinkCandidate> &sortedCandidates);
    // Numbers the groups by replaying the sorted pairs.
    static void assignGroups(QList<StationSpot> &spots, const LinkPairs &sortedPairs);

    void emitRowChanged(int row, int firstColumn, int lastColumn, const QList<int> &roles = {});
    void emitAllRowsChanged(int firstColumn, int lastColumn, const QList<int> &roles = {});
    void setRowStatus(int row, StationSpot::Status status);
    QVariant displayData(const StationSpot &spot, int column) const;
    QVariant sortData(const StationSpot &spot, int column) const;
    QVariant backgroundData(const StationSpot &spot) const;
    QVariant foregroundData(const StationSpot &spot) const;
    bool spotDistance(const StationSpot &spot, double &miles, double &degrees) const;

    QList<StationSpot> m_spots;
    std::vector<RowInfo> m_rowInfo;
    std::vector<LinkCandidate> m_linkCandidates; // sorted by bucket, then frequency
    LinkPairs m_linkPairs;                       // linked rows, sorted
    QTimer *m_ageTimer;
    bool m_hasUserLocation = false;
    double m_userLat = 0.0;
    double m_userLon = 0.0;
    int m_highlightGroup = 0;
    LoweredSet m_watchCallsigns;
    LoweredSet m_watchReferences;
    Clock m_clock;
    MergeChanges m_lastChanges;
};
