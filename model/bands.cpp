#include "model/bands.h"

int bandIndex(QStringView name)
{
    for (int i = 0; i < int(k_bands.size()); ++i) {
        if (name == QLatin1String(k_bands[i].name))
            return i;
    }
    return -1;
}

int bandIndexForFrequency(double khz)
{
    for (int i = 0; i < int(k_bands.size()); ++i) {
        if (khz >= k_bands[i].lowKhz && khz <= k_bands[i].highKhz)
            return i;
    }
    return -1;
}

QString bandForFrequency(double khz)
{
    const int i = bandIndexForFrequency(khz);
    return i < 0 ? QString() : QString::fromLatin1(k_bands[i].name);
}
