#include "soakhome.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTcpServer>

namespace SoakHome {

bool writeSettings(const QString &home, const QJsonObject &settings)
{
    QDir(home).mkpath(QStringLiteral(".tallis"));
    QFile file(home + QStringLiteral("/.tallis/settings.json"));
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(settings).toJson()) > 0;
}

QProcessEnvironment environment(const QString &home)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home); // private (0700), as Qt wants it
    return env;
}

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

} // namespace SoakHome
