#pragma once

#include "app/logbook/adifwriter.h"

#include <QByteArray>
#include <QString>

// The contact broadcast of N1MM Logger+: one XML document per contact, which
// the programs built around N1MM take as well.
namespace N1mmSender {

// The band as N1MM names it, the lower edge in MHz ("14", "3.5", "1.8"); empty outside every band.
QString bandFigure(double frequencyKhz);

// "<contactinfo>" with a fresh GUID as ID; frequencies in units of 10 Hz.
QByteArray contactInfo(const ContactRecord &record, const AdifStation &station);

} // namespace N1mmSender
