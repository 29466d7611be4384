#pragma once

#include "app/settingsfile.h"

#include <QDialog>
#include <QList>

class DxClusterFetcher;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

// "DX Cluster Setup": the list of telnet clusters the program logs into, all at once.
class DxClustersDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DxClustersDialog)

public:
    explicit DxClustersDialog(const QList<DxClusterEntry> &clusters, QWidget *parent = nullptr);
    ~DxClustersDialog() override;

    QList<DxClusterEntry> clusters() const { return m_clusters; }
    // The running clients, so that a node stopped by a refusal can be asked
    // again at once ("Reconnect now").
    void followClients(const DxClusterPool &pool);

private:
    void onAdd();
    void onRemove();
    void showClusters();
    DxClusterFetcher *selectedClient() const;
    void showReconnect();

    QList<DxClusterEntry> m_clusters;
    QListWidget *m_list;
    QLineEdit *m_host;
    QSpinBox *m_port;
    QLabel *m_message;
    QPushButton *m_reconnect;
    const DxClusterPool *m_pool = nullptr;
};
