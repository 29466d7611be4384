#include "app/tallisdir.h"

#include <QDir>
#include <QFile>
#include <QFileDevice>
#include <QFileInfo>

namespace {

constexpr QFileDevice::Permissions k_privateDir =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
constexpr QFileDevice::Permissions k_privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions k_othersAccess = QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                                    QFileDevice::ExeGroup | QFileDevice::ReadOther |
                                                    QFileDevice::WriteOther | QFileDevice::ExeOther;

} // namespace

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
    if (!QFileInfo::exists(path)) {
        QDir().mkpath(QDir::homePath());
        QDir().mkdir(path, k_privateDir);
        return;
    }
    // A directory made before it was kept private, under the umask, is closed now.
    if (QFile::permissions(path) & k_othersAccess)
        QFile::setPermissions(path, k_privateDir);
}

void keepPrivate(QFileDevice &file)
{
    file.setPermissions(k_privateFile);
}
