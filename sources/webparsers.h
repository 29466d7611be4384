#pragma once

#include "sources/websource.h"

// One parser per web spot service, each in its own file; the table of sources
// names them. A parser is pure: the reply body in, spots or the fault out.
namespace WebParsers {

SpotParse pota(const QByteArray &body);
SpotParse sota(const QByteArray &body);
SpotParse wwff(const QByteArray &body);
SpotParse wwbota(const QByteArray &body);
SpotParse gma(const QByteArray &body);
SpotParse zlota(const QByteArray &body);
// ParksnPeaks serves every Australian programme; only its silos are taken.
SpotParse parksnpeaks(const QByteArray &body);

} // namespace WebParsers
