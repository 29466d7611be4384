#include "app/logexport.h"

#include "app/contactstatusstore.h"
#include "app/logbook/adifwriter.h"
#include "model/bands.h"

#include <QSaveFile>

namespace {

QString orDefault(const QString &value, const QString &fallback)
{
    return value.isEmpty() ? fallback : value;
}

QString unknownCallsign()
{
    return QStringLiteral("UNKNOWN");
}

} // namespace

namespace LogExport {

const ExportFormat &sotaFormat()
{
    static const ExportFormat format{StationSpot::SOTA,
                                     QStringLiteral("Export SOTA Log"),
                                     QStringLiteral("No contacted SOTA stations found to export."),
                                     QStringLiteral("sota-log.csv"),
                                     QStringLiteral("CSV files (*.csv);;All files (*)"),
                                     QStringLiteral("SOTA log exported: %1 QSO(s) written to %2")};
    return format;
}

const ExportFormat &potaFormat()
{
    static const ExportFormat format{StationSpot::POTA,
                                     QStringLiteral("Export POTA Log"),
                                     QStringLiteral("No contacted POTA stations found to export."),
                                     QStringLiteral("pota-log.adi"),
                                     QStringLiteral("ADIF files (*.adi *.adif);;All files (*)"),
                                     QStringLiteral("POTA log exported: %1 QSO(s) written to %2")};
    return format;
}

QList<ContactRow> collectRows(const QList<StationSpot> &spots, StationSpot::Source source,
                              const ContactStatusStore &store, const QDateTime &now)
{
    QList<ContactRow> rows;
    for (const StationSpot &spot : spots) {
        if (spot.status != StationSpot::Contacted || spot.source != source)
            continue;
        ContactRow row;
        row.callsign = spot.callsign;
        row.reference = spot.reference;
        row.frequencyKhz = spot.frequencyKhz;
        if (source == StationSpot::SOTA) {
            row.band = bandForFrequency(spot.frequencyKhz);
            row.mode = sotaMode(spot.mode);
        } else {
            row.mode = spot.mode.toUpper();
        }
        const QDateTime marked = store.markTime(spot.key());
        row.time = (marked.isValid() ? marked : now).toUTC();
        rows.append(row);
    }
    return rows;
}

QString sotaMode(const QString &mode)
{
    const QString upper = mode.toUpper();
    if (upper == QLatin1String("CW") || upper == QLatin1String("CWR"))
        return QStringLiteral("CW");
    if (upper == QLatin1String("FM") || upper == QLatin1String("NFM"))
        return QStringLiteral("FM");
    if (upper == QLatin1String("AM"))
        return QStringLiteral("AM");
    if (upper == QLatin1String("SSB") || upper == QLatin1String("USB") || upper == QLatin1String("LSB"))
        return QStringLiteral("SSB");
    return QStringLiteral("DATA");
}

QString sotaCsv(const QList<ContactRow> &rows, const QString &myCallsign, const QString &mySummit)
{
    const QString callsign = orDefault(myCallsign, unknownCallsign());
    const QString summit = orDefault(mySummit, QStringLiteral("XX/XX-000"));
    QString text;
    for (const ContactRow &row : rows) {
        // The worked summit is not written, and the columns keep this order:
        // the upload service reads them so.
        text += QStringLiteral("V2,%1,%2,%3,%4,%5,%6,%7\n")
                    .arg(callsign, summit, row.time.toString(QStringLiteral("dd/MM/yyyy")),
                         row.time.toString(QStringLiteral("HH:mm")), row.callsign,
                         orDefault(row.band, QStringLiteral("?")), row.mode);
    }
    return text;
}

QString adifField(const QString &name, const QString &value)
{
    return AdifWriter::field(name, value);
}

QString potaAdif(const QList<ContactRow> &rows, const QString &myCallsign)
{
    const QString callsign = orDefault(myCallsign, unknownCallsign());
    QString text = QStringLiteral("ADIF Export from Tallis\n<EOH>\n\n");
    for (const ContactRow &row : rows) {
        // USB on every band: no LSB below 10 MHz, a deliberate simplification.
        const QString mode = row.mode == QLatin1String("SSB") ? QStringLiteral("USB") : row.mode;
        text += adifField(QStringLiteral("CALL"), row.callsign);
        text += adifField(QStringLiteral("FREQ"), QString::number(row.frequencyKhz / 1000.0, 'f', 6));
        text += adifField(QStringLiteral("MODE"), mode);
        text += adifField(QStringLiteral("QSO_DATE"), row.time.toString(QStringLiteral("yyyyMMdd")));
        text += adifField(QStringLiteral("TIME_ON"), row.time.toString(QStringLiteral("HHmmss")));
        text += adifField(QStringLiteral("STATION_CALLSIGN"), callsign);
        text += adifField(QStringLiteral("COMMENT"), QStringLiteral("POTA %1").arg(row.reference));
        text += QStringLiteral("<EOR>\n\n");
    }
    return text;
}

QString exportText(const ExportFormat &format, const QList<ContactRow> &rows, const QString &myCallsign,
                   const QString &mySummit)
{
    return format.source == StationSpot::SOTA ? sotaCsv(rows, myCallsign, mySummit)
                                              : potaAdif(rows, myCallsign);
}

bool writeTextFile(const QString &path, const QString &text)
{
    QSaveFile file(path);
    // A device or a file in a directory we may not create in is written in place.
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    const QByteArray data = text.toUtf8();
    if (file.write(data) != data.size())
        return false;
    return file.commit();
}

} // namespace LogExport
