#pragma once

#include "model/stationspot.h"

#include <QJsonObject>
#include <QList>
#include <QString>

#include <functional>

// A spot a program asks to post; the spot's source is where it goes (POTA,
// WWBOTA, or DX for a cluster node).
struct ApiSpotPost
{
    StationSpot spot;
    bool qrt = false;
    bool force = false; // post even when spotted in the last five minutes
};

// Called once: where the spot went ("POTA", "WWBOTA" or the node's host), or
// the error that stopped it.
using ApiSpotAnswer = std::function<void(const QString &postedTo, const QString &error)>;

// What the WebSocket API asks of the program. The main window implements it by
// delegation; the server and its commands are tested against a fake.
class ApiBackend
{
public:
    virtual ~ApiBackend() = default;

    // The Hamlib controller's own state; a linked bridge does not count.
    virtual bool apiIsRadioConnected() const = 0;
    virtual double apiRadioFreqKhz() const = 0;
    virtual QString apiRadioMode() const = 0;
    virtual QString apiCallsign() const = 0;

    virtual int apiVisibleSpotCount() const = 0;
    virtual int apiTotalSpotCount() const = 0;
    // In row order.
    virtual QList<StationSpot> apiVisibleSpots() const = 0;
    virtual QList<StationSpot> apiAllSpots() const = 0;

    virtual QJsonObject apiConfigGet() const = 0;
    virtual void apiConfigSet(const QJsonObject &config) = 0;
    virtual QJsonObject apiFilterGet() const = 0;
    virtual void apiFilterSet(const QJsonObject &filter) = 0;

    virtual bool apiTuneToSpot(const QString &key) = 0;
    virtual void apiSetSpotStatus(const QString &key, StationSpot::Status status) = 0;
    virtual bool apiLogSpot(const QString &key) = 0;

    virtual void apiRadioConnect() = 0;
    virtual void apiRadioDisconnect() = 0;
    virtual void apiSetRadioFreqKhz(double kHz) = 0;
    virtual void apiSetRadioMode(const QString &mode) = 0;
    virtual void apiSetVolume(int volume) = 0;
    virtual void apiSetRfPower(int power) = 0;
    virtual void apiSetMute(bool muted) = 0;
    virtual void apiSetFilter(int filter) = 0;
    virtual void apiSetKeySpeed(int wpm) = 0;
    virtual void apiStartTune() = 0;
    virtual void apiRefresh() = 0;
    // Checks and posts; the answer may come before this returns or later,
    // when the service has answered.
    virtual void apiPostSpot(const ApiSpotPost &post, ApiSpotAnswer answer) = 0;

protected:
    ApiBackend() = default;
    ApiBackend(const ApiBackend &) = default;
    ApiBackend &operator=(const ApiBackend &) = default;
};
