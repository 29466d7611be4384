#pragma once

#include "app/serviceurls.h"
#include "support/httptestserver.h"

#include <QJsonArray>
#include <QJsonObject>

// Helpers for tests that build a whole MainWindow: a local server answering
// for every spot service, and a fresh ~/.tallis for each test.
namespace WindowFixture {

// Every web service answers with an empty, well-formed reply.
void serveEmptySources(HttpTestServer &server);
ServiceUrls servicesAt(const HttpTestServer &server);

// Removes ~/.tallis entirely.
void resetDataDir();
QString settingsPath();
void writeSettings(const QJsonObject &settings);
QJsonObject readSettings();

// A POTA spot object as the service sends it, spotted secsAgo seconds ago.
QJsonObject potaSpot(const QString &call, const QString &reference, double khz, int secsAgo,
                     const QString &mode = QStringLiteral("CW"));
QByteArray toBody(const QJsonArray &spots);

} // namespace WindowFixture
