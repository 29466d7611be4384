#pragma once

#include "model/stationspot.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

class ApiBackend;
class JsonWriter;
struct SpotDelta;

// The answer of a command that replies once something else has answered:
// called once, with an error text, or with an empty one and the reply's data
// as compact JSON.
using ApiLateReply = std::function<void(const QString &error, const QByteArray &dataJson)>;

// What a command or a message needs besides the program: the server's own
// state, and of the client that asks.
struct ApiContext
{
    ApiBackend &backend;
    quint16 port = 0;
    int clientCount = 0;
    // The asking client's choice of spot events ("spots.subscribe"): true for
    // deltas; returns the version the deltas continue from. Absent outside a
    // client's request.
    std::function<qint64(bool delta)> subscribeSpots = {};
    // The asking program runs on this computer (a loopback peer).
    bool localPeer = true;
    // For a command that answers later: it returns a null QByteArray and
    // calls this instead. Empty where no client asked.
    ApiLateReply lateReply = nullptr;
};

// The JSON shapes of the API, written in their documented key order.
namespace ApiJson {

// key, source, callsign, reference, reference_name, freq_khz, mode, spot_time,
// spotter, comments, grid, status, status_str, then lat and lon when known.
void spotToJson(JsonWriter &out, const StationSpot &spot);
// {"spots": [...], "count": n}
QByteArray spotListJson(const QList<StationSpot> &spots);
// The "spots.updated" event around that list, written in one pass.
QByteArray spotsUpdatedEvent(const QList<StationSpot> &spots);
// Whether the two spots give the same spot object.
bool sameSpotJson(const StationSpot &a, const StationSpot &b);
// {"type":"event","event":"spots.changed","data":{"version","added","updated","removed"}}
QByteArray spotsChangedEvent(qint64 version, const SpotDelta &delta);
// {"type":"event","event":"spots.snapshot","data":{"version","spots"}}
QByteArray spotsSnapshotEvent(qint64 version, const QList<StationSpot> &spots);
// The heartbeat's data and the "status.get" reply.
QByteArray statusJson(const ApiContext &context);

// Envelopes around a data object that is already compact JSON.
QByteArray eventMessage(QStringView event, QByteArrayView dataJson);
QByteArray replyMessage(const QString &id, QByteArrayView dataJson);
QByteArray errorMessage(const QString &id, const QString &message);

// "2024-05-01T12:34:56Z" for UTC times, Qt's ISO text for others, empty when invalid.
QString isoTime(const QDateTime &time);

} // namespace ApiJson
