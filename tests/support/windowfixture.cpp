#include "support/windowfixture.h"

#include "app/tallisdir.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>

namespace WindowFixture {

void serveEmptySources(HttpTestServer &server)
{
    server.setRoute("/spot/", "[]");
    server.setRoute("/api/spots/-72", "[]");
    server.setRoute("/static/spots.json", "[]");
    server.setRoute("/spots/", "[]");
    server.setRoute("/api/spots/gma/", "{\"RCD\":[]}");
}

ServiceUrls servicesAt(const HttpTestServer &server)
{
    return ServiceUrls::allAt(server.url());
}

void resetDataDir()
{
    QDir(tallisDirPath()).removeRecursively();
}

QString settingsPath()
{
    return tallisDirPath() + QStringLiteral("/settings.json");
}

void writeSettings(const QJsonObject &settings)
{
    ensureTallisDir();
    QFile file(settingsPath());
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(QJsonDocument(settings).toJson());
}

QJsonObject readSettings()
{
    QFile file(settingsPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

QJsonObject potaSpot(const QString &call, const QString &reference, double khz, int secsAgo,
                     const QString &mode)
{
    const QDateTime when = QDateTime::currentDateTimeUtc().addSecs(-secsAgo);
    return QJsonObject{
        {QStringLiteral("activator"), call},
        {QStringLiteral("reference"), reference},
        {QStringLiteral("name"), QStringLiteral("Park of %1").arg(reference)},
        {QStringLiteral("frequency"), QString::number(khz, 'f', 1)},
        {QStringLiteral("mode"), mode},
        {QStringLiteral("spotter"), QStringLiteral("N0CALL")},
        {QStringLiteral("comments"), QStringLiteral("thanks")},
        {QStringLiteral("grid6"), QStringLiteral("FN31pr")},
        {QStringLiteral("locationDesc"), QStringLiteral("US-CT")},
        {QStringLiteral("spotTime"), when.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))},
    };
}

QByteArray toBody(const QJsonArray &spots)
{
    return QJsonDocument(spots).toJson(QJsonDocument::Compact);
}

} // namespace WindowFixture
