#include "app/logbook/logtarget.h"

#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

struct TypeRow
{
    LogTarget::Type type;
    const char *name;
    const char *title;
    quint16 port;
};

constexpr std::array<TypeRow, LogTarget::k_typeCount> k_types = {{
    {LogTarget::Type::Wsjtx, "wsjtx", "WSJT-X UDP", 2237},
    {LogTarget::Type::N1mm, "n1mm", "N1MM+ UDP", 12060},
    {LogTarget::Type::Adif, "adif", "ADIF UDP", 2333},
    {LogTarget::Type::Wavelog, "wavelog", "Wavelog / Cloudlog", 0},
    {LogTarget::Type::Qrz, "qrz", "QRZ Logbook", 0},
}};

const TypeRow &rowOf(LogTarget::Type type)
{
    return k_types[std::size_t(type)];
}

QString field(const char *name)
{
    return QString::fromLatin1(name);
}

QString text(const QJsonObject &json, const char *name, const QString &fallback = QString())
{
    const QJsonValue value = json.value(field(name));
    return value.isString() ? value.toString().trimmed() : fallback;
}

} // namespace

LogTarget LogTarget::withDefaults(Type type)
{
    LogTarget target;
    target.type = type;
    target.port = defaultPort(type);
    return target;
}

quint16 LogTarget::defaultPort(Type type)
{
    return rowOf(type).port;
}

QString LogTarget::typeName(Type type)
{
    return field(rowOf(type).name);
}

std::optional<LogTarget::Type> LogTarget::typeFromName(const QString &name)
{
    for (const TypeRow &row : k_types) {
        if (name == QLatin1String(row.name))
            return row.type;
    }
    return std::nullopt;
}

QString LogTarget::typeTitle(Type type)
{
    return field(rowOf(type).title);
}

QString LogTarget::address() const
{
    if (isUdp())
        return host + QLatin1Char(':') + QString::number(port);
    if (type == Type::Qrz)
        return QStringLiteral("logbook.qrz.com");
    // A URL may carry a user and password; they are not for display.
    return QUrl(url).toDisplayString(QUrl::RemoveUserInfo);
}

std::optional<LogTarget> LogTarget::fromJson(const QJsonValue &value)
{
    const QJsonObject json = value.toObject();
    const std::optional<Type> type = typeFromName(json.value(field("type")).toString());
    if (!value.isObject() || !type)
        return std::nullopt;
    LogTarget target = withDefaults(*type);
    target.enabled = json.value(field("enabled")).toBool(true);
    if (target.isUdp()) {
        target.host = text(json, "host");
        if (target.host.isEmpty())
            target.host = QStringLiteral("127.0.0.1");
        const QJsonValue port = json.value(field("port"));
        if (port.isDouble() && std::isfinite(port.toDouble()))
            target.port = quint16(std::clamp(port.toDouble(), 1.0, 65535.0));
    }
    if (target.type == Type::Wsjtx) {
        const QString message = text(json, "message");
        if (message == QLatin1String("adif") || message == QLatin1String("qso"))
            target.message = message;
    }
    if (!target.isUdp())
        target.key = text(json, "key");
    if (target.type == Type::Wavelog) {
        target.url = text(json, "url");
        // Wavelog shows the station profile as a number; a file edited by hand may hold one.
        const QJsonValue station = json.value(field("stationId"));
        target.stationId =
            station.isDouble() ? QString::number(station.toInteger()) : text(json, "stationId");
    }
    return target;
}

QJsonObject LogTarget::toJson() const
{
    QJsonObject json{{field("type"), typeName(type)}, {field("enabled"), enabled}};
    if (isUdp()) {
        json.insert(field("host"), host);
        json.insert(field("port"), port);
    }
    if (type == Type::Wsjtx)
        json.insert(field("message"), message);
    if (!isUdp())
        json.insert(field("key"), this->key);
    if (type == Type::Wavelog) {
        json.insert(field("url"), url);
        json.insert(field("stationId"), stationId);
    }
    return json;
}

QList<LogTarget> LogTarget::listFromJson(const QJsonValue &value)
{
    QList<LogTarget> targets;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &element : array) {
        if (const std::optional<LogTarget> target = fromJson(element))
            targets.append(*target);
    }
    return targets;
}

QJsonArray LogTarget::listToJson(const QList<LogTarget> &targets)
{
    QJsonArray array;
    for (const LogTarget &target : targets)
        array.append(target.toJson());
    return array;
}
