#include "app/logbook/n1mmsender.h"

#include "app/logbook/logdelivery.h"
#include "model/bands.h"

#include <QUuid>
#include <QXmlStreamWriter>

#include <array>
#include <cmath>

namespace {

// In the band table's order.
constexpr std::array<const char *, 13> k_bandFigures = {"1.8", "3.5", "5",  "7",  "10",  "14", "18",
                                                        "21",  "24",  "28", "50", "144", "420"};
static_assert(k_bandFigures.size() == k_bands.size());

} // namespace

namespace N1mmSender {

QString bandFigure(double frequencyKhz)
{
    for (std::size_t i = 0; i < k_bands.size(); ++i) {
        if (frequencyKhz >= k_bands[i].lowKhz && frequencyKhz <= k_bands[i].highKhz)
            return QString::fromLatin1(k_bandFigures[i]);
    }
    return QString();
}

QByteArray contactInfo(const ContactRecord &record, const AdifStation &station)
{
    const StationSpot &spot = record.spot;
    const QString own =
        record.myCallsign.trimmed().isEmpty() ? station.callsign.trimmed() : record.myCallsign.trimmed();
    const QString tenHz = spot.frequencyKhz > 0.0 ? QString::number(std::llround(spot.frequencyKhz * 100.0))
                                                  : QStringLiteral("0");
    const std::pair<const char *, QString> fields[] = {
        {"app", QStringLiteral("Tallis")},
        {"timestamp", record.loggedAt.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))},
        {"mycall", own},
        {"operator", own},
        {"call", spot.callsign.trimmed()},
        {"band", bandFigure(spot.frequencyKhz)},
        {"rxfreq", tenHz},
        {"txfreq", tenHz},
        {"mode", LogDelivery::loggerMode(record)},
        {"snt", record.rstSent.trimmed()},
        {"rcv", record.rstRcvd.trimmed()},
        {"gridsquare", spot.grid.trimmed()},
        {"comment", LogDelivery::loggerComment(record)},
        {"ID", QUuid::createUuid().toString(QUuid::Id128)},
    };
    QByteArray xml;
    QXmlStreamWriter writer(&xml);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("contactinfo"));
    for (const auto &[name, value] : fields)
        writer.writeTextElement(QString::fromLatin1(name), value);
    writer.writeEndElement();
    writer.writeEndDocument();
    return xml;
}

} // namespace N1mmSender
