#pragma once

#include <QHash>
#include <QString>

// Country (DXCC entity) of a call sign, from a built-in prefix table.

// The part of a call sign that carries its prefix, upper case: a portable
// designator of another country wins over the home call because it is
// shorter, and operating designators such as /P or /MM are ignored.
QString extractPrefix(const QString &call);

// The entity name of the call, or an empty string when no prefix of up to
// four characters matches.
QString dxEntityForCallsign(const QString &call);

// Prefix (upper case) to entity name (Latin-1); built on first use, never
// changed afterwards.
const QHash<QString, const char *> &dxccPrefixTable();
