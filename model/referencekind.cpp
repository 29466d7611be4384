#include "model/referencekind.h"

namespace ReferenceKind {

QString of(const StationSpot &spot)
{
    if (spot.source != StationSpot::ZLOTA || spot.reference.size() < 3)
        return QString();
    switch (spot.reference.at(2).toUpper().unicode()) {
    case u'P':
        return QStringLiteral("Park");
    case u'H':
        return QStringLiteral("Hut");
    case u'L':
        return QStringLiteral("Lake");
    case u'I':
        return QStringLiteral("Island");
    case u'V':
        return QStringLiteral("Volcano");
    case u'B':
        return QStringLiteral("Lighthouse");
    default:
        return QString();
    }
}

} // namespace ReferenceKind
