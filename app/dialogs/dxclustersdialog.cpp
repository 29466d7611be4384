#include "app/dialogs/dxclustersdialog.h"

#include "app/dialogs/dialogfields.h"
#include "sources/dxclusterfetcher.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

DxClustersDialog::DxClustersDialog(const QList<DxClusterEntry> &clusters, QWidget *parent)
    : QDialog(parent)
    , m_clusters(clusters)
    , m_list(new QListWidget(this))
    , m_host(new QLineEdit(this))
    , m_port(DialogFields::spinBox(this, 1, 65535, 23, QStringLiteral("dxClusterPortSpin")))
    , m_message(new QLabel(this))
    , m_reconnect(new QPushButton(QStringLiteral("Reconnect now"), this))
{
    setWindowTitle(QStringLiteral("DX Cluster Setup — Tallis"));
    m_list->setObjectName(QStringLiteral("dxClusterList"));
    m_host->setObjectName(QStringLiteral("dxClusterHostEdit"));
    m_host->setPlaceholderText(QStringLiteral("hostname or IP"));
    m_message->setObjectName(QStringLiteral("dxClusterMessage"));

    auto *add = new QPushButton(QStringLiteral("Add"), this);
    auto *remove = new QPushButton(QStringLiteral("Remove"), this);
    // Enter in the host field adds the cluster rather than closing the dialog.
    add->setDefault(true);
    connect(add, &QPushButton::clicked, this, &DxClustersDialog::onAdd);
    connect(remove, &QPushButton::clicked, this, &DxClustersDialog::onRemove);
    m_reconnect->setObjectName(QStringLiteral("reconnectNowButton"));
    m_reconnect->setEnabled(false);
    m_reconnect->setAutoDefault(false);
    connect(m_reconnect, &QPushButton::clicked, this, [this] {
        if (DxClusterFetcher *client = selectedClient())
            client->reconnectNow();
    });
    connect(m_list, &QListWidget::currentRowChanged, this, &DxClustersDialog::showReconnect);

    const DxClusterEntry fallback = AppSettings::defaultDxCluster();
    auto *note =
        new QLabel(QStringLiteral("Connects to ALL listed clusters simultaneously. Duplicate spots are\n"
                                  "de-duplicated automatically. Login callsign from Preferences → My "
                                  "Callsign.\nDefault public cluster: %1, port %2.")
                       .arg(fallback.host)
                       .arg(fallback.port),
                   this);

    auto *group = new QGroupBox(QStringLiteral("Favorite Clusters"), this);
    auto *entry = new QHBoxLayout;
    entry->addWidget(m_host, 1);
    entry->addWidget(m_port);
    entry->addWidget(add);
    entry->addWidget(remove);
    entry->addWidget(m_reconnect);
    auto *groupLayout = new QVBoxLayout(group);
    groupLayout->addWidget(m_list);
    groupLayout->addLayout(entry);
    groupLayout->addWidget(m_message);
    groupLayout->addWidget(note);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(group);
    layout->addWidget(DialogFields::okCancelButtons(this));
    showClusters();
}

DxClustersDialog::~DxClustersDialog() = default;

void DxClustersDialog::showClusters()
{
    m_list->clear();
    for (const DxClusterEntry &cluster : std::as_const(m_clusters))
        m_list->addItem(QStringLiteral("%1:%2").arg(cluster.host).arg(cluster.port));
}

void DxClustersDialog::onAdd()
{
    const DxClusterEntry cluster{m_host->text().trimmed(), static_cast<quint16>(m_port->value())};
    if (cluster.host.isEmpty())
        return;
    // Host names are case-insensitive: two spellings of one node would log in twice.
    const auto same = [&cluster](const DxClusterEntry &other) {
        return other.port == cluster.port && other.host.compare(cluster.host, Qt::CaseInsensitive) == 0;
    };
    const auto existing = std::find_if(m_clusters.cbegin(), m_clusters.cend(), same);
    if (existing != m_clusters.cend()) {
        m_message->setText(
            QStringLiteral("%1:%2 is already in the list.").arg(cluster.host).arg(cluster.port));
        m_list->setCurrentRow(int(existing - m_clusters.cbegin()));
        return;
    }
    m_clusters.append(cluster);
    m_message->clear();
    m_host->clear();
    showClusters();
}

void DxClustersDialog::onRemove()
{
    const int row = m_list->currentRow();
    if (row < 0 || row >= m_clusters.size())
        return;
    m_clusters.removeAt(row);
    m_message->clear();
    showClusters();
}

void DxClustersDialog::followClients(const DxClusterPool &pool)
{
    m_pool = &pool;
    for (DxClusterFetcher *client : pool.clients())
        connect(client, &DxClusterFetcher::outcomeChanged, this, &DxClustersDialog::showReconnect);
    showReconnect();
}

DxClusterFetcher *DxClustersDialog::selectedClient() const
{
    const int row = m_list->currentRow();
    if (!m_pool || row < 0 || row >= m_clusters.size())
        return nullptr;
    return m_pool->client(m_clusters.at(row));
}

void DxClustersDialog::showReconnect()
{
    // Only a refusal stops a node for good; the others retry by themselves.
    const DxClusterFetcher *client = selectedClient();
    const bool refused = client && client->isRefused();
    m_reconnect->setEnabled(refused);
    m_reconnect->setToolTip(refused ? QStringLiteral("Refused: %1").arg(client->outcomeText()) : QString());
}
