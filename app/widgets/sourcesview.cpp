#include "app/widgets/sourcesview.h"

#include "app/spotingestor.h"
#include "app/widgets/windowlabels.h"
#include "sources/dxclusterfetcher.h"
#include "sources/dxclusterpool.h"
#include "sources/sourcehealth.h"
#include "sources/spotfetcher.h"
#include "sources/websource.h"

#include <QStatusBar>

SourcesView::SourcesView(SourceHealth *health, SpotIngestor *ingestor, const DxClusterPool &clusters,
                         WindowLabels &labels, QStatusBar *statusBar, QObject *parent)
    : QObject(parent)
    , m_health(health)
    , m_clusters(clusters)
    , m_labels(labels)
    , m_statusBar(statusBar)
{
    connect(m_health, &SourceHealth::changed, this, &SourcesView::showHealth);
    showHealth();
    connect(ingestor, &SpotIngestor::allAnswered, this,
            [this](const QDateTime &at) { m_labels.showRefreshed(at); });
}

void SourcesView::watch(StationSpot::Source source, SpotFetcher *fetcher)
{
    connect(fetcher, &SpotFetcher::notice, this,
            [this](const QString &text) { m_statusBar->showMessage(text, 8000); });
    // A placeholder with no service never answers, so it is never judged.
    if (WebSource::of(source).spotsPath)
        m_health->watch(fetcher, StationSpot::sourceName(source));
}

void SourcesView::showHealth()
{
    m_labels.showSources(m_health->labelText(), m_health->toolTip());
}

void SourcesView::fetchStarted(const QObject *sender)
{
    if (const auto *dx = qobject_cast<const DxClusterFetcher *>(sender))
        m_statusBar->showMessage(QStringLiteral("Connecting to DX cluster %1…").arg(dx->host()), 10000);
    else
        m_statusBar->showMessage(QStringLiteral("Consulting the celestial registry…"), 3000);
}

void SourcesView::fetchFailed(const QString &error)
{
    m_statusBar->showMessage(QStringLiteral("The oracles have failed us: %1").arg(error), 8000);
}

void SourcesView::dxConnectionChanged(bool connected, const QObject *sender)
{
    m_labels.showDxConnected(m_clusters.anyConnected());
    if (!connected)
        return m_statusBar->showMessage(QStringLiteral("DX cluster disconnected."), 4000);
    QString host;
    if (const auto *dx = qobject_cast<const DxClusterFetcher *>(sender); dx && !dx->host().isEmpty())
        host = QStringLiteral(" — %1").arg(dx->host());
    m_statusBar->showMessage(QStringLiteral("DX cluster connected%1").arg(host), 5000);
}

void SourcesView::dxChosen(bool on, bool haveCallsign)
{
    if (on && !haveCallsign)
        m_statusBar->showMessage(QStringLiteral("DX cluster: set your callsign in Preferences first"), 8000);
    // A deliberate disconnect is not announced by the clients themselves.
    if (!on)
        m_labels.showDxConnected(m_clusters.anyConnected());
}
