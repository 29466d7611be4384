#include "sources/servicejson.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QJsonValue>

#include <cmath>

namespace ServiceJson {

namespace {

// The body as a document of the wanted shape (an array, else an object).
std::optional<QJsonDocument> parseDocument(const QByteArray &body, StationSpot::Source source, QString &error,
                                           bool wantArray)
{
    QJsonParseError parseError;
    QJsonDocument document = QJsonDocument::fromJson(body, &parseError);
    const QString name = StationSpot::sourceName(source);
    if (parseError.error != QJsonParseError::NoError)
        error = QStringLiteral("%1 JSON parse error: %2").arg(name, parseError.errorString());
    else if (document.isArray() != wantArray)
        error = QStringLiteral("%1 response is not a JSON %2")
                    .arg(name, wantArray ? QStringLiteral("array") : QStringLiteral("object"));
    else
        return document;
    return std::nullopt;
}

} // namespace

std::optional<QJsonArray> parseArray(const QByteArray &body, StationSpot::Source source, QString &error)
{
    const std::optional<QJsonDocument> document = parseDocument(body, source, error, true);
    return document ? std::optional<QJsonArray>(document->array()) : std::nullopt;
}

std::optional<QJsonObject> parseObject(const QByteArray &body, StationSpot::Source source, QString &error)
{
    const std::optional<QJsonDocument> document = parseDocument(body, source, error, false);
    return document ? std::optional<QJsonObject>(document->object()) : std::nullopt;
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

double frequency(const QJsonValue &value, DecimalComma comma)
{
    double result = 0.0;
    if (value.isDouble()) {
        result = value.toDouble();
    } else if (value.isString()) {
        QString text = value.toString().trimmed();
        if (comma == DecimalComma::Accepted && !text.contains(QLatin1Char('.')))
            text.replace(QLatin1Char(','), QLatin1Char('.'));
        bool ok = false;
        result = text.toDouble(&ok);
        if (!ok)
            return 0.0;
    }
    // "nan" and "inf" convert, but are no frequency.
    return std::isfinite(result) ? result : 0.0;
}

double mhzToKhz(double mhz)
{
    const double khz = std::round(mhz * 1.0e6) / 1000.0;
    return std::isfinite(khz) ? khz : 0.0; // a huge text overflows
}

double mhzOrKhzToKhz(double value)
{
    return value <= 1000.0 ? value * 1000.0 : value;
}

QString qrtComment(const QString &comment)
{
    return comment.isEmpty() ? QStringLiteral("QRT") : QStringLiteral("QRT ") + comment;
}

namespace {

// Services send "yyyy-MM-ddTHH:mm:ss" nearly always; reading that form by hand
// is many times cheaper than the general ISO parser, which handles the rest.
QDateTime plainUtcStamp(QStringView text)
{
    static constexpr char k_shape[] = "dddd-dd-ddTdd:dd:dd";
    if (text.size() != 19 && !(text.size() == 20 && text.back() == QLatin1Char('Z')))
        return {};
    int digits[14];
    int n = 0;
    for (int i = 0; i < 19; ++i) {
        const char16_t c = text[i].unicode();
        if (k_shape[i] == 'd') {
            if (c < u'0' || c > u'9')
                return {};
            digits[n++] = c - u'0';
        } else if (c != char16_t(k_shape[i])) {
            return {};
        }
    }
    const auto field = [&digits](int from, int count) {
        int value = 0;
        for (int i = from; i < from + count; ++i)
            value = value * 10 + digits[i];
        return value;
    };
    const QDate date(field(0, 4), field(4, 2), field(6, 2));
    const QTime time(field(8, 2), field(10, 2), field(12, 2));
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time, Qt::UTC);
}

} // namespace

QDateTime isoTimeAssumingUtc(const QString &text)
{
    if (text.isEmpty())
        return {};
    if (const QDateTime fast = plainUtcStamp(text); fast.isValid())
        return fast;
    return isoTimeAssumingUtcByQt(text);
}

QDateTime isoTimeAssumingUtcByQt(const QString &text)
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

} // namespace ServiceJson
