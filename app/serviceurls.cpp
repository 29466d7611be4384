#include "app/serviceurls.h"

#include "sources/gmaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"

ServiceUrls ServiceUrls::defaults()
{
    ServiceUrls urls;
    urls.pota = QUrl(QString::fromLatin1(PotaSpotFetcher::k_defaultUrl));
    urls.sota = QUrl(QString::fromLatin1(SotaSpotFetcher::k_defaultUrl));
    urls.wwff = QUrl(QString::fromLatin1(WwffSpotFetcher::k_defaultUrl));
    urls.wwbota = QUrl(QString::fromLatin1(WwbotaSpotFetcher::k_defaultUrl));
    urls.gma = QUrl(QString::fromLatin1(GmaSpotFetcher::k_defaultUrl));
    return urls;
}

ServiceUrls ServiceUrls::allAt(const QUrl &base)
{
    return ServiceUrls{base, base, base, base, base};
}
