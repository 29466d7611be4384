#include "app/settingsfile.h"

#include "app/tallisdir.h"
#include "sources/dxcc.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// A settings file is a few kilobytes; anything this large is not ours and is not read.
constexpr qint64 k_maxFileSize = 16 * 1024 * 1024;

const char *const k_sourceKeys[AppSettings::k_sourceCount] = {"sota", "pota", "wwff", "wwbota", "bota",
                                                              "dx",   "gma",  "rbn",  "zlota",  "siota"};
const char *const k_modeKeys[AppSettings::k_modeCount] = {"ssb", "cw", "am", "fm", "other"};

QString key(const char *name)
{
    return QString::fromLatin1(name);
}

// Only a JSON number counts; its value is clamped, a fractional part dropped. Anything
// else (string, bool, null, absent) gives the default.
int clampedInt(const QJsonValue &value, int defaultValue, int min, int max)
{
    if (!value.isDouble())
        return defaultValue;
    const double d = value.toDouble();
    if (std::isnan(d))
        return defaultValue;
    return static_cast<int>(std::clamp(d, static_cast<double>(min), static_cast<double>(max)));
}

quint16 clampedPort(const QJsonValue &value, int defaultValue, int min)
{
    return static_cast<quint16>(clampedInt(value, defaultValue, min, 65535));
}

double clampedCoordinate(const QJsonValue &value, double limit)
{
    const double d = value.toDouble(0.0);
    if (!std::isfinite(d))
        return 0.0;
    return std::clamp(d, -limit, limit);
}

QString stringValue(const QJsonValue &value, const QString &defaultValue = QString())
{
    return value.isString() ? value.toString() : defaultValue;
}

// Non-string and empty elements are dropped: an empty watch entry or programme prefix
// would only ever match by accident.
QStringList stringList(const QJsonValue &value)
{
    QStringList list;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &element : array) {
        const QString text = element.toString();
        if (!text.isEmpty())
            list.append(text);
    }
    return list;
}

// Upper case, in the usual order, each once; names the table lacks are dropped.
QStringList knownContinents(const QStringList &list)
{
    QStringList known;
    for (const QString &code : continentCodes()) {
        if (list.contains(code, Qt::CaseInsensitive))
            known.append(code);
    }
    return known;
}

QJsonArray toJsonArray(const QStringList &list)
{
    return QJsonArray::fromStringList(list);
}

QByteArray blobValue(const QJsonValue &value)
{
    const auto decoded =
        QByteArray::fromBase64Encoding(value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? *decoded : QByteArray();
}

QString blobText(const QByteArray &blob)
{
    return QString::fromLatin1(blob.toBase64());
}

RigConfig rigFromJson(const QJsonObject &json)
{
    const RigConfig defaults;
    RigConfig rig;
    rig.rigModel = clampedInt(json.value(key("rigModel")), defaults.rigModel, 1, 99999);
    rig.port = stringValue(json.value(key("port")));
    rig.baudRate = clampedInt(json.value(key("baudRate")), defaults.baudRate, 300, 115200);
    rig.dataBits = clampedInt(json.value(key("dataBits")), defaults.dataBits, 7, 8);
    rig.stopBits = clampedInt(json.value(key("stopBits")), defaults.stopBits, 1, 2);
    rig.parity = clampedInt(json.value(key("parity")), defaults.parity, 0, 2);
    rig.handshake = clampedInt(json.value(key("handshake")), defaults.handshake, 0, 2);
    rig.dtrState = clampedInt(json.value(key("dtrState")), defaults.dtrState, 0, 2);
    rig.rtsState = clampedInt(json.value(key("rtsState")), defaults.rtsState, 0, 2);
    rig.pttType = clampedInt(json.value(key("pttType")), defaults.pttType, 0, 3);
    return rig;
}

QJsonObject rigToJson(const RigConfig &rig)
{
    return QJsonObject{
        {key("rigModel"), rig.rigModel},   {key("port"), rig.port},         {key("baudRate"), rig.baudRate},
        {key("dataBits"), rig.dataBits},   {key("stopBits"), rig.stopBits}, {key("parity"), rig.parity},
        {key("handshake"), rig.handshake}, {key("dtrState"), rig.dtrState}, {key("rtsState"), rig.rtsState},
        {key("pttType"), rig.pttType},
    };
}

// Appends the cluster described by one element unless it is unusable or already listed
// (two connections to the same cluster would only double every spot).
void appendCluster(QList<DxClusterEntry> &list, const QJsonValue &element)
{
    if (!element.isObject())
        return;
    const QJsonObject object = element.toObject();
    DxClusterEntry entry;
    entry.host = stringValue(object.value(key("host"))).trimmed();
    if (entry.host.isEmpty())
        return;
    entry.port = clampedPort(object.value(key("port")), 23, 1);
    const bool listed = std::any_of(list.cbegin(), list.cend(), [&entry](const DxClusterEntry &e) {
        return e.port == entry.port && e.host.compare(entry.host, Qt::CaseInsensitive) == 0;
    });
    if (!listed)
        list.append(entry);
}

QList<DxClusterEntry> clustersFromJson(const QJsonObject &json)
{
    QList<DxClusterEntry> list;
    const QJsonArray array = json.value(key("dxClusters")).toArray();
    for (const QJsonValue &element : array)
        appendCluster(list, element);
    // Files from before several clusters were supported hold a single object.
    if (list.isEmpty())
        appendCluster(list, json.value(key("dxcluster")));
    if (list.isEmpty())
        list.append(AppSettings::defaultDxCluster());
    return list;
}

QJsonArray clustersToJson(const QList<DxClusterEntry> &list)
{
    QJsonArray array;
    for (const DxClusterEntry &entry : list)
        array.append(QJsonObject{{key("host"), entry.host}, {key("port"), entry.port}});
    return array;
}

template <std::size_t N>
void flagsFromJson(std::array<bool, N> &flags, const QJsonValue &value, const char *const (&keys)[N])
{
    const QJsonObject object = value.toObject();
    for (std::size_t i = 0; i < N; ++i)
        flags[i] = object.value(key(keys[i])).toBool(flags[i]);
}

template <std::size_t N>
QJsonObject flagsToJson(const std::array<bool, N> &flags, const char *const (&keys)[N])
{
    QJsonObject object;
    for (std::size_t i = 0; i < N; ++i)
        object.insert(key(keys[i]), flags[i]);
    return object;
}

} // namespace

QStringList AppSettings::rbnContinentsInEffect() const
{
    if (!rbnContinentsFromCall)
        return rbnContinents;
    const QString own = dxContinentForCallsign(callsign);
    return own.isEmpty() ? QStringList() : QStringList{own};
}

DxClusterEntry AppSettings::defaultDxCluster()
{
    return DxClusterEntry{QStringLiteral("dxc.ve7cc.net"), 23};
}

bool operator==(const AppSettings &a, const AppSettings &b)
{
    return SettingsFile::toJson(a) == SettingsFile::toJson(b);
}

QJsonObject AppSettings::apiConfig() const
{
    return QJsonObject{{key("callsign"), callsign},
                       {key("sotaRef"), sotaRef},
                       {key("maxAgeMins"), filter.maxAgeMins},
                       {key("refreshIntervalSecs"), refreshIntervalSecs},
                       {key("wsEnabled"), wsEnabled},
                       {key("wsPort"), wsPort},
                       {key("wsHost"), wsHost}};
}

QString settingsFilePath()
{
    return tallisDirPath() + QStringLiteral("/settings.json");
}

SettingsFile::SettingsFile(QString path)
    : m_path(std::move(path))
{}

AppSettings SettingsFile::fromJson(const QJsonObject &json)
{
    AppSettings s;
    const AppSettings d;

    s.callsign = stringValue(json.value(key("callsign")));
    s.sotaRef = stringValue(json.value(key("sotaRef")));
    if (json.contains(key("hamlib")))
        s.rig = rigFromJson(json.value(key("hamlib")).toObject());
    FilterState &filter = s.filter;
    filter.maxAgeMins = clampedInt(json.value(key("maxAgeMins")), d.filter.maxAgeMins, 1, 720);
    s.refreshIntervalSecs =
        clampedInt(json.value(key("refreshIntervalSecs")), d.refreshIntervalSecs, 60, 3600);

    s.hasUserLocation = json.value(key("hasUserLocation")).toBool(false);
    if (s.hasUserLocation) {
        s.latitude = clampedCoordinate(json.value(key("latitude")), 90.0);
        s.longitude = clampedCoordinate(json.value(key("longitude")), 180.0);
    }

    flagsFromJson(filter.sources, json.value(key("sources")), k_sourceKeys);
    s.dxClusters = clustersFromJson(json);
    s.rbnHost = stringValue(json.value(key("rbnHost"))).trimmed();
    if (s.rbnHost.isEmpty())
        s.rbnHost = d.rbnHost;
    s.rbnAllStations = stringValue(json.value(key("rbnScope"))) == QLatin1String("all");
    const QJsonValue continents = json.value(key("rbnContinents"));
    s.rbnContinentsFromCall = !continents.isArray();
    s.rbnContinents = knownContinents(stringList(continents));
    flagsFromJson(filter.modes, json.value(key("modes")), k_modeKeys);

    filter.statusIndex = clampedInt(json.value(key("statusFilter")), d.filter.statusIndex, 0,
                                    AppSettings::k_statusFilterCount - 1);
    s.sortColumn = clampedInt(json.value(key("sortColumn")), d.sortColumn, 0, AppSettings::k_lastSortColumn);
    const QJsonValue sortOrder = json.value(key("sortOrder"));
    if (sortOrder.isDouble())
        s.sortOrder = sortOrder.toDouble() > 0 ? Qt::DescendingOrder : Qt::AscendingOrder;

    filter.setDisabledBandNames(stringList(json.value(key("disabledBands"))));
    filter.potaPrograms = stringList(json.value(key("potaPrograms")));
    filter.sotaAssociations = stringList(json.value(key("sotaAssociations")));
    s.watchCallsigns = stringList(json.value(key("watchCallsigns")));
    s.watchReferences = stringList(json.value(key("watchReferences")));

    s.wsEnabled = json.value(key("wsEnabled")).toBool(d.wsEnabled);
    s.wsPort = clampedPort(json.value(key("wsPort")), d.wsPort, 1024);
    s.wsHost = stringValue(json.value(key("wsHost")), d.wsHost);
    s.lwEnabled = json.value(key("lwEnabled")).toBool(d.lwEnabled);
    s.lwHost = stringValue(json.value(key("lwHost")), d.lwHost);
    s.lwPort = clampedPort(json.value(key("lwPort")), d.lwPort, 1024);
    s.autoAtu = json.value(key("autoAtu")).toBool(d.autoAtu);
    s.alertsEnabled = json.value(key("alertsEnabled")).toBool(d.alertsEnabled);
    s.alertSound = json.value(key("alertSound")).toBool(d.alertSound);
    s.alertNeededOnly = json.value(key("alertNeededOnly")).toBool(d.alertNeededOnly);
    filter.hideWorked = json.value(key("hideWorked")).toBool(d.filter.hideWorked);
    s.confirmLog = json.value(key("confirmLog")).toBool(d.confirmLog);
    s.spotComment = stringValue(json.value(key("spotComment")));
    s.workedAdifFiles = stringList(json.value(key("workedAdifFiles")));
    s.logTargets = LogTarget::listFromJson(json.value(key("logTargets")));
    s.bandPlanRegion = clampedInt(json.value(key("bandPlanRegion")), d.bandPlanRegion, 0, 3);

    s.windowGeometry = blobValue(json.value(key("windowGeometry")));
    s.windowState = blobValue(json.value(key("windowState")));
    s.splitterState = blobValue(json.value(key("splitterState")));
    return s;
}

QJsonObject SettingsFile::toJson(const AppSettings &s)
{
    return QJsonObject{
        {key("callsign"), s.callsign},
        {key("sotaRef"), s.sotaRef},
        {key("maxAgeMins"), s.filter.maxAgeMins},
        {key("refreshIntervalSecs"), s.refreshIntervalSecs},
        {key("hasUserLocation"), s.hasUserLocation},
        {key("latitude"), s.latitude},
        {key("longitude"), s.longitude},
        {key("hamlib"), rigToJson(s.rig)},
        {key("sources"), flagsToJson(s.filter.sources, k_sourceKeys)},
        {key("dxClusters"), clustersToJson(s.dxClusters)},
        {key("rbnHost"), s.rbnHost},
        {key("rbnScope"), s.rbnAllStations ? QStringLiteral("all") : QStringLiteral("hunted")},
        // null: the own call's continent
        {key("rbnContinents"),
         s.rbnContinentsFromCall ? QJsonValue() : QJsonValue(toJsonArray(s.rbnContinents))},
        {key("modes"), flagsToJson(s.filter.modes, k_modeKeys)},
        {key("statusFilter"), s.filter.statusIndex},
        {key("sortColumn"), s.sortColumn},
        {key("sortOrder"), s.sortOrder == Qt::DescendingOrder ? 1 : 0},
        {key("disabledBands"), toJsonArray(s.filter.disabledBandNames())},
        {key("potaPrograms"), toJsonArray(s.filter.potaPrograms)},
        {key("sotaAssociations"), toJsonArray(s.filter.sotaAssociations)},
        {key("watchCallsigns"), toJsonArray(s.watchCallsigns)},
        {key("watchReferences"), toJsonArray(s.watchReferences)},
        {key("wsEnabled"), s.wsEnabled},
        {key("wsPort"), s.wsPort},
        {key("wsHost"), s.wsHost},
        {key("lwEnabled"), s.lwEnabled},
        {key("lwHost"), s.lwHost},
        {key("lwPort"), s.lwPort},
        {key("autoAtu"), s.autoAtu},
        {key("alertsEnabled"), s.alertsEnabled},
        {key("alertSound"), s.alertSound},
        {key("alertNeededOnly"), s.alertNeededOnly},
        {key("hideWorked"), s.filter.hideWorked},
        {key("confirmLog"), s.confirmLog},
        {key("spotComment"), s.spotComment},
        {key("workedAdifFiles"), toJsonArray(s.workedAdifFiles)},
        {key("logTargets"), LogTarget::listToJson(s.logTargets)},
        {key("bandPlanRegion"), s.bandPlanRegion},
        {key("windowGeometry"), blobText(s.windowGeometry)},
        {key("windowState"), blobText(s.windowState)},
        {key("splitterState"), blobText(s.splitterState)},
    };
}

AppSettings SettingsFile::load() const
{
    QFile file(m_path);
    if (QFileInfo(m_path).isDir() || !file.open(QIODevice::ReadOnly))
        return AppSettings{};

    QJsonObject json;
    if (file.size() <= k_maxFileSize) {
        const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
        json = doc.object(); // empty for an array, an empty file or a syntax error
    }
    AppSettings settings = fromJson(json);
    settings.fileExisted = true;
    return settings;
}

bool SettingsFile::save(const AppSettings &settings) const
{
    ensureTallisDir();
    const QFileInfo info(m_path);
    QDir().mkpath(info.absolutePath());
    // A stray empty directory of the file's name would block every save; a non-empty one
    // may hold someone's data and is left alone.
    if (info.isDir() && !QDir().rmdir(m_path))
        return false;

    // Unbuffered, so a short write (disk full, size limit) shows in write()'s count here: a
    // buffered flush inside commit() would let it pass and replace the file with a truncated one.
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    keepPrivate(file);
    const QByteArray data = QJsonDocument(toJson(settings)).toJson(QJsonDocument::Indented);
    if (file.write(data) != data.size())
        return false; // QSaveFile discards the partial copy; the old file stays
    return file.commit();
}
