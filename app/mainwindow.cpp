#include "app/mainwindow.h"

#include "app/tallisdir.h"
#include "sources/botaspotfetcher.h"
#include "sources/gmaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"

#include <QCloseEvent>
#include <QStatusBar>
#include <QTimer>

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_potaFetcher(new PotaSpotFetcher(this))
    , m_sotaFetcher(new SotaSpotFetcher(this))
    , m_wwffFetcher(new WwffSpotFetcher(this))
    , m_wwbotaFetcher(new WwbotaSpotFetcher(this))
    , m_botaFetcher(new BotaSpotFetcher(this))
    , m_gmaFetcher(new GmaSpotFetcher(this))
{
    ensureTallisDir();
    setupUi();

    for (SpotFetcher *f : webFetchers()) {
        connect(f, &SpotFetcher::spotsReady, this, &MainWindow::onSpotsReady);
        connect(f, &SpotFetcher::fetchError, this, &MainWindow::onFetchError);
        connect(f, &SpotFetcher::fetchStarted, this, &MainWindow::onFetchStarted);
    }
    for (SpotFetcher *f : webFetchers())
        f->startAutoRefresh(m_refreshIntervalSecs);

    QTimer::singleShot(0, this, &MainWindow::startupChecks);
}

MainWindow::~MainWindow() = default;

QList<SpotFetcher *> MainWindow::webFetchers() const
{
    return {m_potaFetcher, m_sotaFetcher, m_wwffFetcher, m_wwbotaFetcher, m_botaFetcher, m_gmaFetcher};
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
}

void MainWindow::setupUi()
{
    setWindowTitle(QStringLiteral("Tallis — built by the Brightwater hams"));
    setMinimumSize(960, 600);
}

void MainWindow::onSpotsReady(const QList<StationSpot> &spots)
{
    Q_UNUSED(spots)
}

void MainWindow::onFetchError(const QString &error)
{
    statusBar()->showMessage(error);
}

void MainWindow::onFetchStarted()
{
}

void MainWindow::startupChecks()
{
}
