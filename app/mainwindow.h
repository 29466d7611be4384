#pragma once

#include "model/stationspot.h"

#include <QList>
#include <QMainWindow>

class PotaSpotFetcher;
class SotaSpotFetcher;
class WwffSpotFetcher;
class WwbotaSpotFetcher;
class BotaSpotFetcher;
class GmaSpotFetcher;
class SpotFetcher;

class MainWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    QList<SpotFetcher *> webFetchers() const;

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void onSpotsReady(const QList<StationSpot> &spots);
    void onFetchError(const QString &error);
    void onFetchStarted();
    void startupChecks();

private:
    void setupUi();

    PotaSpotFetcher *m_potaFetcher;
    SotaSpotFetcher *m_sotaFetcher;
    WwffSpotFetcher *m_wwffFetcher;
    WwbotaSpotFetcher *m_wwbotaFetcher;
    BotaSpotFetcher *m_botaFetcher;
    GmaSpotFetcher *m_gmaFetcher;
    int m_refreshIntervalSecs = 60;
};
