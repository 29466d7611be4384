#pragma once

#include <QByteArray>
#include <QString>

struct SpotRequest;

// What WWBOTA's spot service takes, no account needed: spotter, call,
// frequency in MHz, mode, a comment that names the bunkers, and the type
// ("Live", or "QRT" when the activator has gone).
class WwbotaPoster final
{
public:
    static QByteArray body(const SpotRequest &request, const QString &spotter);
};
