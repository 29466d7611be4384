#include "sources/spotjson.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QJsonValue>

#include <cmath>

namespace SpotJson {

namespace {

std::optional<QJsonDocument> parseDocument(const QByteArray &body, const QString &sourceName, QString *error)
{
    QJsonParseError parseError;
    QJsonDocument document = QJsonDocument::fromJson(body, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = QStringLiteral("%1 JSON parse error: %2").arg(sourceName, parseError.errorString());
        return std::nullopt;
    }
    return document;
}

} // namespace

std::optional<QJsonArray> parseArray(const QByteArray &body, const QString &sourceName, QString *error)
{
    const std::optional<QJsonDocument> document = parseDocument(body, sourceName, error);
    if (!document)
        return std::nullopt;
    if (!document->isArray()) {
        *error = QStringLiteral("%1 response is not a JSON array").arg(sourceName);
        return std::nullopt;
    }
    return document->array();
}

std::optional<QJsonObject> parseObject(const QByteArray &body, const QString &sourceName, QString *error)
{
    const std::optional<QJsonDocument> document = parseDocument(body, sourceName, error);
    if (!document)
        return std::nullopt;
    if (!document->isObject()) {
        *error = QStringLiteral("%1 response is not a JSON object").arg(sourceName);
        return std::nullopt;
    }
    return document->object();
}

QString text(const QJsonObject &object, const QString &key)
{
    return object.value(key).toString().trimmed();
}

double number(const QJsonObject &object, const QString &key)
{
    const double value = object.value(key).toDouble(0.0);
    return std::isfinite(value) ? value : 0.0;
}

double textToKhz(const QString &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return 0.0;
    return value <= 1000.0 ? value * 1000.0 : value;
}

QDateTime isoTimeAssumingUtc(const QString &text)
{
    if (text.isEmpty())
        return {};
    QString stamp = text;
    if (!stamp.endsWith(QLatin1Char('Z')) && !stamp.contains(QLatin1Char('+')))
        stamp.append(QLatin1Char('Z'));
    QDateTime time = QDateTime::fromString(stamp, Qt::ISODate);
    if (!time.isValid())
        time = QDateTime::fromString(stamp, Qt::ISODateWithMs);
    return time.isValid() ? time.toUTC() : QDateTime();
}

} // namespace SpotJson
