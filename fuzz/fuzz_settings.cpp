// The settings file, as the program reads it at start.
#include "app/settingsfile.h"
#include "fuzz/fuzzsupport.h"

#include <QJsonDocument>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = FuzzSupport::tallisDirPath() + QStringLiteral("/settings.json");
    FuzzSupport::writeFile(path, FuzzSupport::bytes(data, size));
    const AppSettings loaded = SettingsFile(path).load();

    // What was loaded is what the program writes back at once; reading that
    // must give the same settings, or every start would drift them further.
    const QByteArray written = QJsonDocument(SettingsFile::toJson(loaded)).toJson(QJsonDocument::Indented);
    AppSettings reloaded = SettingsFile::fromJson(QJsonDocument::fromJson(written).object());
    reloaded.fileExisted = loaded.fileExisted;
    if (reloaded != loaded)
        FuzzSupport::fail("settings change when written and read back", QString::fromUtf8(written));
    (void)loaded.apiConfig();
    return 0;
}
