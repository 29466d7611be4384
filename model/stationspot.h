#pragma once

#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QString>

// One report that an activator is on the air: the value every part of the
// program passes around.
struct StationSpot
{
    enum Source : int {
        SOTA = 0,
        POTA = 1,
        WWFF = 2,
        WWBOTA = 3,
        BOTA = 4,
        DX = 5,
        GMA = 6,
        RBN = 7, // skimmers: a stream like DX, with no programme reference
        ZLOTA = 8,
        SIOTA = 9
    };
    enum Status : int { Unknown = 0, Heard = 1, Contacted = 2, NotHeard = 3 };
    // Sources are numbered 0 to k_sourceCount - 1; arrays over them use this size.
    static constexpr int k_sourceCount = SIOTA + 1;

    Source source = SOTA;
    QString callsign;
    QString reference;
    QString referenceName;
    double frequencyKhz = 0.0;
    QString mode;
    QDateTime spotTime;
    QString spotter;
    QString comments;
    QString grid;
    QString locationDesc;
    bool hasLocation = false;
    double lat = 0.0;
    double lon = 0.0;
    Status status = Unknown;
    int groupId = 0;
    // The service's id of one activation, where one spot names several
    // references (ZLOTA): rows sharing it belong together. Empty elsewhere.
    QString activationId;

    // call|reference|whole kHz truncated toward zero; two reports a fraction
    // of a kHz apart share a key on purpose.
    QString key() const;
    // The whole kHz of the key: truncated toward zero, 0 for what no integer holds.
    static qint64 keyKhz(double frequencyKhz);
    QString sourceString() const;

    static QString sourceName(int source);
    // Streamed sources (DX clusters, skimmers): a batch is a few new lines,
    // never the source's whole picture.
    static bool isStreamSource(int source) { return source == DX || source == RBN; }
    static QString statusText(Status status);
};

Q_DECLARE_METATYPE(StationSpot)
Q_DECLARE_METATYPE(QList<StationSpot>)

// Registers the spot types for queued connections; safe to call repeatedly.
void registerStationSpotMetaTypes();
