#pragma once

#include "api/apibackend.h"

#include <QJsonDocument>
#include <QStringList>

// The program as the API sees it: fixed answers, and a log of every action
// asked of it. `reads` counts queries, so a test can tell that nothing was built.
class FakeApiBackend final : public ApiBackend
{
public:
    static inline const QString k_knownKey = QStringLiteral("K1|P|7");

    bool radioConnected = false;
    QList<StationSpot> visible;
    QList<StationSpot> all;
    QJsonObject config{{QStringLiteral("callsign"), QStringLiteral("N0CALL")},
                       {QStringLiteral("wsPort"), 2103}};
    QJsonObject filter{{QStringLiteral("sota"), true}, {QStringLiteral("status_mode"), 0}};
    QStringList calls;
    // How a spot post is answered: where it went, or an error.
    QString spotPostedTo = QStringLiteral("POTA");
    QString spotError;
    mutable int reads = 0;

    bool apiIsRadioConnected() const override { return ++reads, radioConnected; }
    double apiRadioFreqKhz() const override { return ++reads, 14062.5; }
    QString apiRadioMode() const override { return ++reads, QStringLiteral("CW"); }
    QString apiCallsign() const override { return ++reads, QStringLiteral("N0CALL"); }
    int apiVisibleSpotCount() const override { return ++reads, int(visible.size()); }
    int apiTotalSpotCount() const override { return ++reads, int(all.size()); }
    QList<StationSpot> apiVisibleSpots() const override { return ++reads, visible; }
    QList<StationSpot> apiAllSpots() const override { return ++reads, all; }
    QJsonObject apiConfigGet() const override { return ++reads, config; }
    void apiConfigSet(const QJsonObject &c) override { log(QStringLiteral("config"), c); }
    QJsonObject apiFilterGet() const override { return ++reads, filter; }
    void apiFilterSet(const QJsonObject &f) override { log(QStringLiteral("filter"), f); }
    bool apiTuneToSpot(const QString &key) override
    {
        return log(QStringLiteral("tune ") + key), key == k_knownKey;
    }
    void apiSetSpotStatus(const QString &key, StationSpot::Status s) override
    {
        log(QStringLiteral("status %1 %2").arg(key).arg(int(s)));
    }
    bool apiLogSpot(const QString &key) override
    {
        return log(QStringLiteral("log ") + key), key == k_knownKey;
    }
    void apiRadioConnect() override { log(QStringLiteral("connect")); }
    void apiRadioDisconnect() override { log(QStringLiteral("disconnect")); }
    void apiSetRadioFreqKhz(double kHz) override { log(QStringLiteral("freq %1").arg(kHz)); }
    void apiSetRadioMode(const QString &mode) override { log(QStringLiteral("mode ") + mode); }
    void apiSetVolume(int v) override { log(QStringLiteral("volume %1").arg(v)); }
    void apiSetRfPower(int p) override { log(QStringLiteral("power %1").arg(p)); }
    void apiSetMute(bool m) override { log(QStringLiteral("mute %1").arg(int(m))); }
    void apiSetFilter(int f) override { log(QStringLiteral("filter %1").arg(f)); }
    void apiSetKeySpeed(int wpm) override { log(QStringLiteral("wpm %1").arg(wpm)); }
    void apiStartTune() override { log(QStringLiteral("starttune")); }
    void apiRefresh() override { log(QStringLiteral("refresh")); }
    void apiPostSpot(const ApiSpotPost &p, ApiSpotAnswer answer) override
    {
        log(QStringLiteral("spot %1 %2 %3 %4 %5 %6 qrt=%7 force=%8")
                .arg(p.spot.sourceString(), p.spot.callsign)
                .arg(p.spot.frequencyKhz)
                .arg(p.spot.mode, p.spot.reference, p.spot.comments)
                .arg(int(p.qrt))
                .arg(int(p.force)));
        answer(spotPostedTo, spotError);
    }

private:
    void log(const QString &call) { calls << call; }
    void log(const QString &name, const QJsonObject &o)
    {
        calls << name + QLatin1Char(' ') + QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact));
    }
};
