#pragma once

#include <QByteArray>
#include <QString>

struct SpotRequest;

// What POTA's spot service takes, no account needed: activator, spotter,
// frequency in kHz, reference, mode, source and comments.
class PotaPoster final
{
public:
    static constexpr const char *k_sourceName = "Tallis";

    static QByteArray body(const SpotRequest &request, const QString &spotter);
};
