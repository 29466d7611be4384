#pragma once

#include "model/stationspot.h"

#include <QString>
#include <QStringList>

// One spot the operator (or a program) wants posted: what it says and where
// it goes. The checks and the texts each service is sent are built here, from
// the checked fields only.
struct SpotRequest
{
    // POTA and the clusters take this much comment; longer is cut.
    static constexpr int k_maxCommentChars = 60;
    static constexpr int k_minCallsignChars = 3;
    static constexpr int k_maxCallsignChars = 15;

    QString callsign;
    double frequencyKhz = 0.0;
    QString mode;
    // One reference; for WWBOTA several, separated by blanks or commas.
    QString reference;
    QString referenceName;
    // What the reference belongs to: the spot's programme (DX for none).
    StationSpot::Source programme = StationSpot::DX;
    // Where it is posted: POTA, WWBOTA or DX (a cluster node).
    StationSpot::Source target = StationSpot::DX;
    QString comments;
    bool qrt = false;
    // The cluster node chosen, as "host:port"; empty: the first one logged in.
    QString clusterNode;

    // The spot's call, reference, programme and mode; the rig's frequency
    // when rigKhz is above 0 (the operator is tuned there), else the spot's.
    // The spot's programme is also where it goes, when that service takes spots.
    static SpotRequest fromSpot(const StationSpot &spot, double rigKhz, const QString &commentTemplate);
    // The programme a reference's form names: POTA, WWBOTA, or DX when neither.
    static StationSpot::Source programmeOf(const QString &reference);

    // Whether Tallis can post there: POTA, WWBOTA and the clusters.
    static bool isTarget(StationSpot::Source target);
    // Whether posting to the programme's own service needs an account or a
    // key Tallis cannot hold (SOTA, WWFF, GMA, ZLOTA, ParksnPeaks): the text
    // says what it needs.
    static QString accountNeeded(StationSpot::Source programme);

    static bool isValidCallsign(const QString &callsign);
    static bool isValidReference(StationSpot::Source programme, const QString &reference);

    // The first check that fails, as its message; empty when every one
    // passes. ownCall is the spotter, the operator's call sign.
    QString problem(const QString &ownCall) const;

    // Call sign, mode and references upper-cased, blanks trimmed.
    SpotRequest normalized() const;
    static QStringList splitReferences(const QString &text);
    QStringList references() const;
    // The programme whose reference form applies: the target's, or for a
    // cluster the spot's programme.
    StationSpot::Source referenceProgramme() const;
    // Same station, reference and frequency within 1 kHz.
    bool sameSpotAs(const SpotRequest &other) const;

    // Printable ASCII only (accents dropped, control characters made blanks),
    // blanks run together, at most maxChars.
    static QString cleanText(const QString &text, int maxChars);
    // POTA's comment: QRT first when the operator ticked it.
    QString potaComment() const;
    // WWBOTA's comment must name the bunkers: those it lacks go first.
    QString wwbotaComment() const;
    // The cluster's comment carries the reference ("POTA US-1234 ...").
    QString clusterComment() const;
    // "DX <kHz, one decimal> <call> <comment>".
    QString clusterLine() const;
};
