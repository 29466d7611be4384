// The coordinate cache file: positions of parks and summits, read at start.
#include "app/coordinatecache.h"
#include "fuzz/fuzzsupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

constexpr qint64 k_nowMs = 1764000000000; // a fixed day

bool isOnEarth(const CoordinateCache::Position &p)
{
    return std::abs(p.latitude) <= 90.0 && std::abs(p.longitude) <= 180.0;
}

bool operator==(const CoordinateCache::Position &a, const CoordinateCache::Position &b)
{
    return a.latitude == b.latitude && a.longitude == b.longitude;
}

// The references the file names, found without the cache's help.
QStringList referencesIn(const QByteArray &file)
{
    QStringList references;
    const QJsonArray array = QJsonDocument::fromJson(file).array();
    for (const QJsonValue &value : array)
        references.append(value.toObject().value(QStringLiteral("reference")).toString());
    return references;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray file = FuzzSupport::bytes(data, size);
    FuzzSupport::writeFile(coordCacheFilePath(), file);
    CoordinateCache cache(nullptr);
    cache.setClock([] { return k_nowMs; });
    cache.load();
    cache.save();

    // What was kept is what loads back, and every position is a place.
    CoordinateCache again(nullptr);
    again.setClock([] { return k_nowMs; });
    again.load();
    if (again.size() != cache.size())
        FuzzSupport::fail("positions were lost or gained when saved and loaded");
    for (const QString &reference : referencesIn(file)) {
        const auto kept = cache.lookup(reference);
        if (!kept)
            continue;
        if (!isOnEarth(*kept))
            FuzzSupport::fail("a cached position is no place on Earth", reference);
        const auto reloaded = again.lookup(reference);
        if (!reloaded || !(*reloaded == *kept))
            FuzzSupport::fail("a position changed when saved and loaded", reference);
    }
    return 0;
}
