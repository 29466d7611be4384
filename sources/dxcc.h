#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

// Country (DXCC entity) and continent of a call sign, from a built-in prefix table.

struct DxccEntity
{
    const char *name;      // Latin-1
    const char *prefixes;  // separated by single blanks
    const char *continent; // AF, AN, AS, EU, NA, OC or SA
};

// The part of a call sign that carries its prefix, upper case: a portable
// designator of another country wins over the home call because it is
// shorter, and operating designators such as /P or /MM are ignored.
QString extractPrefix(const QString &call);

// The entity of the call (longest prefix of up to four characters), or null.
const DxccEntity *dxccEntityForCallsign(const QString &call);
// The entity name of the call, or an empty string when no prefix matches.
QString dxEntityForCallsign(const QString &call);
// The continent code of the call, or an empty string when no prefix matches.
QString dxContinentForCallsign(const QString &call);

// AF, AN, AS, EU, NA, OC, SA.
const QStringList &continentCodes();
// "Europe" for "EU"; empty for anything else.
QString continentName(const QString &code);

// Prefix (upper case) to entity; built on first use, never changed afterwards.
const QHash<QString, const DxccEntity *> &dxccPrefixTable();
