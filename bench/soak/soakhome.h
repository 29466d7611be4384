#pragma once

#include <QJsonObject>
#include <QProcessEnvironment>
#include <QString>

// A home of the program's own for one run: its settings file and the
// environment that points the program at it.
namespace SoakHome {

// Writes home + "/.tallis/settings.json"; false when it could not.
bool writeSettings(const QString &home, const QJsonObject &settings);
// This process's environment with HOME at home, the offscreen platform and a
// private runtime directory.
QProcessEnvironment environment(const QString &home);
// A TCP port on 127.0.0.1 that nothing listens on just now.
quint16 freePort();

} // namespace SoakHome
