#include "app/dialogs/logbookpage.h"

#include "app/dialogs/dialogfields.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace {

QLineEdit *lineEdit(QWidget *parent, const char *objectName, const QString &placeholder)
{
    auto *edit = new QLineEdit(parent);
    edit->setObjectName(QLatin1String(objectName));
    edit->setPlaceholderText(placeholder);
    return edit;
}

} // namespace

LogbookPage::LogbookPage(const QList<LogTarget> &targets, QWidget *parent)
    : QWidget(parent)
    , m_targets(targets)
    , m_list(new QListWidget(this))
    , m_addType(new QComboBox(this))
    , m_remove(new QPushButton(QStringLiteral("Remove"), this))
{
    m_list->setObjectName(QStringLiteral("logTargetList"));
    m_addType->setObjectName(QStringLiteral("logTargetType"));
    for (int type = 0; type < LogTarget::k_typeCount; ++type)
        m_addType->addItem(LogTarget::typeTitle(LogTarget::Type(type)), type);
    auto *add = new QPushButton(QStringLiteral("Add"), this);
    add->setObjectName(QStringLiteral("logTargetAdd"));
    m_remove->setObjectName(QStringLiteral("logTargetRemove"));

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_addType, 1);
    buttons->addWidget(add);
    buttons->addWidget(m_remove);
    auto *intro =
        new QLabel(QStringLiteral("Every contact you log is sent to the ticked logbooks. Programs such as "
                                  "Log4OM, GridTracker and JTAlert listen for WSJT-X; N1MM+ for its own "
                                  "broadcast. Keys are kept in ~/.tallis/settings.json, readable only "
                                  "by you."),
                   this);
    intro->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);
    layout->addWidget(buildEditor());

    for (int row = 0; row < m_targets.size(); ++row) {
        m_list->addItem(QString());
        refreshItem(row);
    }
    connect(add, &QPushButton::clicked, this, &LogbookPage::addTarget);
    connect(m_remove, &QPushButton::clicked, this, &LogbookPage::removeTarget);
    connect(m_list, &QListWidget::currentRowChanged, this, &LogbookPage::showTarget);
    connect(m_list, &QListWidget::itemChanged, this, [this](QListWidgetItem *item) {
        const int row = m_list->row(item);
        if (!m_loading && row >= 0 && row < m_targets.size())
            m_targets[row].enabled = item->checkState() == Qt::Checked;
    });
    m_list->setCurrentRow(m_targets.isEmpty() ? -1 : 0);
    showTarget(m_list->currentRow());
}

LogbookPage::~LogbookPage() = default;

QWidget *LogbookPage::buildEditor()
{
    auto *editor = new QWidget(this);
    m_host = lineEdit(editor, "logTargetHost", QStringLiteral("127.0.0.1"));
    m_port = DialogFields::spinBox(editor, 1, 65535, 2237, QStringLiteral("logTargetPort"));
    m_message = new QComboBox(editor);
    m_message->setObjectName(QStringLiteral("logTargetMessage"));
    m_message->addItem(QStringLiteral("QSO Logged and Logged ADIF (as WSJT-X)"), QStringLiteral("both"));
    m_message->addItem(QStringLiteral("Logged ADIF only"), QStringLiteral("adif"));
    m_message->addItem(QStringLiteral("QSO Logged only"), QStringLiteral("qso"));
    m_url = lineEdit(editor, "logTargetUrl", QStringLiteral("https://log.example.org/index.php"));
    m_key = lineEdit(editor, "logTargetKey", QStringLiteral("API key"));
    m_key->setEchoMode(QLineEdit::PasswordEchoOnEdit);
    m_stationId = lineEdit(editor, "logTargetStation", QStringLiteral("e.g. 1"));
    m_form = new QFormLayout(editor);
    m_form->addRow(QStringLiteral("Host:"), m_host);
    m_form->addRow(QStringLiteral("Port:"), m_port);
    m_form->addRow(QStringLiteral("Messages:"), m_message);
    m_form->addRow(QStringLiteral("URL:"), m_url);
    m_form->addRow(QStringLiteral("API key:"), m_key);
    m_form->addRow(QStringLiteral("Station profile:"), m_stationId);
    for (QLineEdit *edit : {m_host, m_url, m_key, m_stationId})
        connect(edit, &QLineEdit::textEdited, this, &LogbookPage::storeEditor);
    connect(m_port, &QSpinBox::valueChanged, this, &LogbookPage::storeEditor);
    connect(m_message, &QComboBox::currentIndexChanged, this, &LogbookPage::storeEditor);
    return editor;
}

void LogbookPage::addTarget()
{
    m_targets.append(LogTarget::withDefaults(LogTarget::Type(m_addType->currentData().toInt())));
    m_list->addItem(QString());
    refreshItem(int(m_targets.size()) - 1);
    m_list->setCurrentRow(int(m_targets.size()) - 1);
}

void LogbookPage::removeTarget()
{
    const int row = m_list->currentRow();
    if (row < 0 || row >= m_targets.size())
        return;
    m_editing = -1;
    m_targets.removeAt(row);
    delete m_list->takeItem(row);
    showTarget(m_list->currentRow());
}

void LogbookPage::showTarget(int row)
{
    m_editing = -1;
    const bool valid = row >= 0 && row < m_targets.size();
    m_remove->setEnabled(valid);
    const LogTarget target = valid ? m_targets[row] : LogTarget();
    m_loading = true;
    m_host->setText(target.host);
    m_port->setValue(target.port);
    m_message->setCurrentIndex(std::max(0, m_message->findData(target.message)));
    m_url->setText(target.url);
    m_key->setText(target.key);
    m_stationId->setText(target.stationId);
    m_loading = false;
    const bool udp = valid && target.isUdp();
    m_form->setRowVisible(m_host, udp);
    m_form->setRowVisible(m_port, udp);
    m_form->setRowVisible(m_message, valid && target.type == LogTarget::Type::Wsjtx);
    m_form->setRowVisible(m_url, valid && target.type == LogTarget::Type::Wavelog);
    m_form->setRowVisible(m_key, valid && !udp);
    m_form->setRowVisible(m_stationId, valid && target.type == LogTarget::Type::Wavelog);
    m_editing = valid ? row : -1;
}

void LogbookPage::storeEditor()
{
    if (m_loading || m_editing < 0 || m_editing >= m_targets.size())
        return;
    LogTarget &target = m_targets[m_editing];
    target.host = m_host->text().trimmed().isEmpty() ? QStringLiteral("127.0.0.1") : m_host->text().trimmed();
    target.port = quint16(m_port->value());
    target.message = m_message->currentData().toString();
    target.url = m_url->text().trimmed();
    target.key = m_key->text().trimmed();
    target.stationId = m_stationId->text().trimmed();
    refreshItem(m_editing);
}

void LogbookPage::refreshItem(int row)
{
    QListWidgetItem *item = m_list->item(row);
    const LogTarget &target = m_targets[row];
    m_loading = true;
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(target.enabled ? Qt::Checked : Qt::Unchecked);
    const QString where = target.address();
    item->setText(LogTarget::typeTitle(target.type) +
                  (where.isEmpty() ? QString() : QStringLiteral(" — ") + where));
    m_loading = false;
}
