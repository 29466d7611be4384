#pragma once

#include "app/spotting/spotrequest.h"

#include <QList>

#include <utility>

// The spots the operator posted lately, so that a second spot of the same
// station, reference and frequency (within 1 kHz) asks first.
class SpotMemory final
{
public:
    static constexpr qint64 k_repeatWindowMs = 5 * 60 * 1000;

    void remember(const SpotRequest &request, qint64 nowMs);
    bool isRepeat(const SpotRequest &request, qint64 nowMs) const;

private:
    QList<std::pair<qint64, SpotRequest>> m_posted; // oldest first
};
