#pragma once

#include "app/logbook/logtarget.h"
#include "model/filterstate.h"
#include "model/stationmodel.h"
#include "radio/rigtypes.h"
#include "sources/dxclusterpool.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <Qt>

#include <array>

// Everything the settings file holds, already checked and clamped. A default-constructed
// record is exactly what a missing or unusable file loads as.
struct AppSettings
{
    static constexpr int k_sourceCount = FilterState::k_sourceCount; // StationSpot::Source order
    static constexpr int k_modeCount = FilterState::k_modeCount;     // SSB, CW, AM, FM, Other
    static constexpr int k_statusFilterCount = int(FilterState::k_statusValues.size());
    static constexpr int k_lastSortColumn = StationModel::ColumnCount - 1;

    // Taken when the file names no usable cluster, so the DX feed always has somewhere to go.
    static DxClusterEntry defaultDxCluster();

    // Whether the file could be opened at load time; on a first start the window picks its
    // own initial size. Not stored and not part of the comparison below.
    bool fileExisted = false;

    QString callsign;
    QString sotaRef;
    int refreshIntervalSecs = 60; // 60..3600
    bool hasUserLocation = false;
    double latitude = 0.0;  // -90..90, only read back when hasUserLocation
    double longitude = 0.0; // -180..180, likewise
    RigConfig rig;

    // Every choice of the filter bar; the window and the API work on this one copy.
    // Band names the band table lacks are dropped on reading.
    FilterState filter;
    QList<DxClusterEntry> dxClusters{defaultDxCluster()};
    QString rbnHost = QStringLiteral("telnet.reversebeacon.net"); // the skimmer feed, ports 7000 and 7001
    // "rbnScope": every station the skimmers hear ("all"), or only those hunted ("hunted").
    bool rbnAllStations = false;
    // "rbnContinents": the skimmers' continents (empty: anywhere). Null or absent in the
    // file, they follow the own call, so the default is right once the call is set.
    bool rbnContinentsFromCall = true;
    QStringList rbnContinents;
    QStringList rbnContinentsInEffect() const;

    int sortColumn = 6; // 0..9
    Qt::SortOrder sortOrder = Qt::DescendingOrder;

    QStringList watchCallsigns;
    QStringList watchReferences;

    bool wsEnabled = true;
    quint16 wsPort = 2103; // 1024..65535
    QString wsHost = QStringLiteral("127.0.0.1");
    bool lwEnabled = false;
    QString lwHost = QStringLiteral("127.0.0.1");
    quint16 lwPort = 2104; // 1024..65535
    bool autoAtu = false;
    // Watch-list alerts: on, with a sound, for every activation or only for needed ones.
    bool alertsEnabled = true;
    bool alertSound = true;
    bool alertNeededOnly = false;
    // Logging asks first: the records, their reports and comments, in a dialog.
    bool confirmLog = false;
    // The comment every spot the operator posts starts from.
    QString spotComment;
    // The operator's own logbooks, exported as ADIF, read for "worked before".
    QStringList workedAdifFiles;
    // Where each logged contact is sent: UDP listeners and online logbooks, with their keys.
    QList<LogTarget> logTargets;
    // The IARU region of the band map's plan, 1 to 3; 0 takes the own call's continent.
    int bandPlanRegion = 0;

    // Opaque layout blobs from saveGeometry()/saveState(); empty when never saved.
    QByteArray windowGeometry;
    QByteArray windowState;
    QByteArray splitterState;

    // The API's "config.get" object.
    QJsonObject apiConfig() const;

    // Equal when they write the same file.
    friend bool operator==(const AppSettings &a, const AppSettings &b);
    friend bool operator!=(const AppSettings &a, const AppSettings &b) { return !(a == b); }
};

// Home directory + "/.tallis/settings.json". Creates nothing.
QString settingsFilePath();

// Reads and writes the settings file at one path. Loading never fails: whatever is
// missing, mistyped or out of range takes its default or is clamped. Saving rewrites the
// whole file atomically, so an interrupted write leaves the previous file intact.
class SettingsFile final
{
public:
    explicit SettingsFile(QString path);

    QString path() const { return m_path; }

    AppSettings load() const;
    // False when the file could not be written; the previous file then stays as it was.
    bool save(const AppSettings &settings) const;

    static AppSettings fromJson(const QJsonObject &json);
    // Every key, always, so the file documents all there is to set.
    static QJsonObject toJson(const AppSettings &settings);

private:
    QString m_path;
};
