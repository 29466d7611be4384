#include "app/logbook/adifwriter.h"

#include "app/logbook/adifmode.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

// The programmes ADIF names in SIG, and the ones with a field of their own.
QString programmeRefField(StationSpot::Source source)
{
    switch (source) {
    case StationSpot::POTA:
        return QStringLiteral("POTA_REF");
    case StationSpot::SOTA:
        return QStringLiteral("SOTA_REF");
    case StationSpot::WWFF:
        return QStringLiteral("WWFF_REF");
    default:
        return QString();
    }
}

bool isProgramme(StationSpot::Source source)
{
    // The streams name no programme; their spots' references are not awards.
    return source >= StationSpot::SOTA && source < StationSpot::k_sourceCount &&
           !StationSpot::isStreamSource(source);
}

QString commentOf(const ContactRecord &record, const AdifMode &mode)
{
    QStringList parts;
    for (const QString &part : {record.spot.comments.trimmed(), record.spot.referenceName.trimmed(),
                                mode.isKnown() ? QString() : record.spot.mode.trimmed()}) {
        if (!part.isEmpty())
            parts.append(part);
    }
    return parts.join(QStringLiteral("; "));
}

} // namespace

namespace AdifWriter {

QString field(const QString &name, const QString &value)
{
    // Characters, not UTF-16 units or bytes: an accented or astral letter counts once.
    const qsizetype length = value.toUcs4().size();
    return QStringLiteral("<%1:%2>%3 ").arg(name, QString::number(length), value);
}

QString header(const QDateTime &created, const QString &programVersion)
{
    return QStringLiteral("ADIF export from Tallis\n") +
           field(QStringLiteral("ADIF_VER"), QStringLiteral("3.1.4")) +
           field(QStringLiteral("PROGRAMID"), QStringLiteral("Tallis")) +
           field(QStringLiteral("PROGRAMVERSION"), programVersion) +
           field(QStringLiteral("CREATED_TIMESTAMP"),
                 created.toUTC().toString(QStringLiteral("yyyyMMdd HHmmss"))) +
           QStringLiteral("<EOH>\n\n");
}

QString record(const ContactRecord &record, const AdifStation &station)
{
    const StationSpot &spot = record.spot;
    const QDateTime time = record.loggedAt.toUTC();
    const AdifMode mode = AdifMode::forSpotMode(spot.mode, spot.frequencyKhz);
    const QString own =
        record.myCallsign.trimmed().isEmpty() ? station.callsign.trimmed() : record.myCallsign.trimmed();
    const bool programme = isProgramme(spot.source) && !spot.reference.trimmed().isEmpty();
    const QString refField = programme ? programmeRefField(spot.source) : QString();
    const std::pair<QString, QString> fields[] = {
        {QStringLiteral("CALL"), spot.callsign.trimmed()},
        {QStringLiteral("QSO_DATE"), time.toString(QStringLiteral("yyyyMMdd"))},
        {QStringLiteral("TIME_ON"), time.toString(QStringLiteral("HHmmss"))},
        {QStringLiteral("BAND"), record.band()},
        {QStringLiteral("FREQ"),
         spot.frequencyKhz > 0.0 ? QString::number(spot.frequencyKhz / 1000.0, 'f', 6) : QString()},
        {QStringLiteral("MODE"), mode.mode},
        {QStringLiteral("SUBMODE"), mode.submode},
        {QStringLiteral("RST_SENT"), record.rstSent.trimmed()},
        {QStringLiteral("RST_RCVD"), record.rstRcvd.trimmed()},
        {QStringLiteral("STATION_CALLSIGN"), own},
        {QStringLiteral("OPERATOR"), own},
        {QStringLiteral("MY_GRIDSQUARE"),
         station.hasLocation ? gridSquare(station.latitude, station.longitude) : QString()},
        {QStringLiteral("GRIDSQUARE"), spot.grid.trimmed()},
        {QStringLiteral("COMMENT"), commentOf(record, mode)},
        {QStringLiteral("SIG"), programme ? spot.sourceString() : QString()},
        {QStringLiteral("SIG_INFO"), programme ? spot.reference.trimmed() : QString()},
        {refField, refField.isEmpty() ? QString() : spot.reference.trimmed()},
    };
    QString text;
    for (const auto &[name, value] : fields) {
        if (!value.isEmpty())
            text += field(name, value);
    }
    return text + QStringLiteral("<EOR>\n\n");
}

QString document(const QList<ContactRecord> &records, const AdifStation &station, const QDateTime &created,
                 const QString &programVersion)
{
    QString text = header(created, programVersion);
    for (const ContactRecord &entry : records)
        text += record(entry, station);
    return text;
}

QString gridSquare(double latitude, double longitude)
{
    // Field, square and subsquare: 20 x 10 degrees, 2 x 1, then 5 x 2.5 minutes.
    const double lon = std::clamp(longitude + 180.0, 0.0, 359.999999);
    const double lat = std::clamp(latitude + 90.0, 0.0, 179.999999);
    const int lonField = int(lon / 20.0);
    const int latField = int(lat / 10.0);
    const int lonSquare = int(std::fmod(lon, 20.0) / 2.0);
    const int latSquare = int(std::fmod(lat, 10.0));
    const int lonSub = int(std::fmod(lon, 2.0) * 12.0);
    const int latSub = int(std::fmod(lat, 1.0) * 24.0);
    const QChar chars[] = {QChar(u'A' + lonField),  QChar(u'A' + latField), QChar(u'0' + lonSquare),
                           QChar(u'0' + latSquare), QChar(u'a' + lonSub),   QChar(u'a' + latSub)};
    return QString(chars, 6);
}

} // namespace AdifWriter
