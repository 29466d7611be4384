#include "app/tallisdir.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

QString tallisDirPath()
{
    return QDir::homePath() + QStringLiteral("/.tallis");
}

void ensureTallisDir()
{
    const QString path = tallisDirPath();
    const QFileInfo info(path);
    if (info.exists() && !info.isDir())
        QFile::remove(path);
    if (!QFileInfo::exists(path))
        QDir().mkpath(path);
}
