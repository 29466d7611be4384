#include "app/dialogs/radiosetupdialog.h"

#include "app/dialogs/dialogfields.h"
#include "radio/hamliblink.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPortInfo>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

const QString k_connected = QStringLiteral("● Connected");
const QString k_notConnected = QStringLiteral("○ Not connected");

// The rig answers slowly over a serial line; the pointer says the window is waiting, not hung.
class WaitCursor final
{
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

// By maker, then model name, then number: how an operator looks for a radio.
bool listedBefore(const RigModelInfo &a, const RigModelInfo &b)
{
    if (const int byMaker = a.maker.compare(b.maker, Qt::CaseInsensitive))
        return byMaker < 0;
    if (const int byName = a.name.compare(b.name, Qt::CaseInsensitive))
        return byName < 0;
    return a.model < b.model;
}

// A stored model this Hamlib does not know is listed by its number alone, so that accepting keeps it.
QString entryText(const RigModelInfo &rig)
{
    return rig.maker.isEmpty() && rig.name.isEmpty() ? QString::number(rig.model) : rig.entry();
}

QString serialPortText(const SerialPortChoice &port)
{
    return port.description.isEmpty() ? port.device
                                      : QStringLiteral("%1 — %2").arg(port.device, port.description);
}

} // namespace

RigSetupCalls RigSetupCalls::through(HamlibLink &link)
{
    RigSetupCalls calls;
    calls.isConnected = [&link] { return link.isConnected(); };
    calls.connectRig = [&link](const RigConfig &config) { return link.connectRigAndWait(config); };
    calls.disconnectRig = [&link] { link.disconnectRigAndWait(); };
    calls.frequencyKhz = [&link] {
        double kHz = 0.0;
        QString rigMode;
        return link.readFrequencyAndWait(kHz, rigMode) ? kHz : 0.0;
    };
    calls.mode = [&link] {
        double kHz = 0.0;
        QString rigMode;
        link.readFrequencyAndWait(kHz, rigMode);
        return rigMode;
    };
    return calls;
}

RadioSetupDialog::RadioSetupDialog(const RigConfig &config, QList<RigModelInfo> rigModels,
                                   const QList<SerialPortChoice> &serialPorts, RigSetupCalls rig,
                                   QWidget *parent)
    : QDialog(parent)
    , m_rig(std::move(rig))
    , m_rigModels(std::move(rigModels))
    , m_chosenModel(config.rigModel)
    , m_modelFilter(new QLineEdit(this))
    , m_model(addChoice("rigModelCombo"))
    , m_port(addChoice("rigPortCombo"))
    , m_baud(addChoice("baudRateCombo"))
    , m_dataBits(addChoice("dataBitsCombo"))
    , m_stopBits(addChoice("stopBitsCombo"))
    , m_parity(addChoice("parityCombo"))
    , m_handshake(addChoice("handshakeCombo"))
    , m_dtr(addChoice("dtrCombo"))
    , m_rts(addChoice("rtsCombo"))
    , m_ptt(addChoice("pttCombo"))
    , m_status(new QLabel(this))
    , m_testResult(new QLabel(this))
{
    setWindowTitle(QStringLiteral("Radio Setup — Tallis"));
    setMinimumWidth(500);

    const auto stored = [&config](const RigModelInfo &listed) { return listed.model == config.rigModel; };
    if (std::none_of(m_rigModels.cbegin(), m_rigModels.cend(), stored))
        m_rigModels.append({config.rigModel, QString(), QString(), false});
    std::sort(m_rigModels.begin(), m_rigModels.end(), listedBefore);
    fillPorts(serialPorts, config.port);
    for (const int rate : {1200, 2400, 4800, 9600, 14400, 19200, 38400, 57600, 115200})
        m_baud->addItem(QString::number(rate), rate);
    DialogFields::selectValue(m_baud, config.baudRate, QString::number(config.baudRate));
    DialogFields::addChoices(m_dataBits, {{"7", 7}, {"8", 8}});
    DialogFields::selectValue(m_dataBits, config.dataBits, QString::number(config.dataBits));
    DialogFields::addChoices(m_stopBits, {{"1", 1}, {"2", 2}});
    DialogFields::selectValue(m_stopBits, config.stopBits, QString::number(config.stopBits));
    DialogFields::addChoices(m_parity, {{"None", 0}, {"Odd", 1}, {"Even", 2}});
    DialogFields::selectValue(m_parity, config.parity, QString::number(config.parity));
    DialogFields::addChoices(m_handshake, {{"None", 0}, {"XON/XOFF", 1}, {"Hardware (RTS/CTS)", 2}});
    DialogFields::selectValue(m_handshake, config.handshake, QString::number(config.handshake));
    for (QComboBox *line : {m_dtr, m_rts})
        DialogFields::addChoices(line, {{"Unset", 0}, {"On", 1}, {"Off", 2}});
    DialogFields::selectValue(m_dtr, config.dtrState, QString::number(config.dtrState));
    DialogFields::selectValue(m_rts, config.rtsState, QString::number(config.rtsState));
    DialogFields::addChoices(m_ptt, {{"VOX (radio handles it)", 0},
                                     {"CAT (software command)", 1},
                                     {"DTR (serial hardware line)", 2},
                                     {"RTS (serial hardware line)", 3}});
    DialogFields::selectValue(m_ptt, config.pttType, QString::number(config.pttType));

    m_status->setObjectName(QStringLiteral("radioStatusDlg"));
    m_status->setText(m_rig.isConnected() ? k_connected : k_notConnected);
    m_testResult->setObjectName(QStringLiteral("radioTestLabel"));

    auto *group = new QGroupBox(QStringLiteral("Radio Connection"), this);
    auto *form = new QFormLayout(group);
    form->addRow(QStringLiteral("Rig Model:"), buildModelChoice());
    form->addRow(QStringLiteral("Port / Address:"), m_port);
    form->addRow(QStringLiteral("Baud Rate:"), m_baud);
    form->addRow(QStringLiteral("Data Bits:"), m_dataBits);
    form->addRow(QStringLiteral("Stop Bits:"), m_stopBits);
    form->addRow(QStringLiteral("Parity:"), m_parity);
    form->addRow(QStringLiteral("Handshake:"), m_handshake);
    form->addRow(QStringLiteral("DTR:"), m_dtr);
    form->addRow(QStringLiteral("RTS:"), m_rts);
    form->addRow(QStringLiteral("PTT Keying:"), m_ptt);
    form->addRow(QStringLiteral("Status:"), m_status);
    form->addRow(buildButtons());
    form->addRow(QStringLiteral("Test result:"), m_testResult);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(group);
    layout->addWidget(DialogFields::okCancelButtons(this));

    // A network rig has no serial line: its settings stay as stored but are not offered.
    for (QWidget *field : {m_baud, m_dataBits, m_stopBits, m_parity, m_handshake, m_dtr, m_rts})
        m_serialFields << field << form->labelForField(field);
    filterModels(QString());
    connect(m_model, &QComboBox::currentIndexChanged, this, &RadioSetupDialog::onModelChosen);
    connect(m_modelFilter, &QLineEdit::textChanged, this, &RadioSetupDialog::filterModels);
}

RadioSetupDialog::~RadioSetupDialog() = default;

QComboBox *RadioSetupDialog::addChoice(const char *objectName)
{
    auto *combo = new QComboBox(this);
    combo->setObjectName(QString::fromLatin1(objectName));
    return combo;
}

QWidget *RadioSetupDialog::buildModelChoice()
{
    auto *box = new QWidget(this);
    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    m_modelFilter->setObjectName(QStringLiteral("rigModelFilterEdit"));
    m_modelFilter->setPlaceholderText(QStringLiteral("Find a model: 7300, icom, ft-991 …"));
    m_modelFilter->setClearButtonEnabled(true);
    layout->addWidget(m_modelFilter);
    // Hundreds of models: a drop-down of twenty rows that scrolls (the style sheet
    // turns the full-height pop-up off for this list).
    m_model->setMaxVisibleItems(20);
    m_model->view()->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    layout->addWidget(m_model);
    return box;
}

void RadioSetupDialog::filterModels(const QString &text)
{
    const QStringList words = text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const QSignalBlocker blocker(m_model);
    m_model->clear();
    for (const RigModelInfo &rig : std::as_const(m_rigModels)) {
        const QString entry = entryText(rig);
        const auto inEntry = [&entry](const QString &word) {
            return entry.contains(word, Qt::CaseInsensitive);
        };
        if (std::all_of(words.cbegin(), words.cend(), inEntry))
            m_model->addItem(entry, rig.model);
    }
    // With nothing matching, the chosen model stays chosen.
    const int index = m_model->findData(m_chosenModel);
    m_model->setCurrentIndex(index < 0 && m_model->count() > 0 ? 0 : index);
    onModelChosen();
}

void RadioSetupDialog::onModelChosen()
{
    if (m_model->currentIndex() >= 0)
        m_chosenModel = m_model->currentData().toInt();
    const auto chosen = std::find_if(m_rigModels.cbegin(), m_rigModels.cend(),
                                     [this](const RigModelInfo &rig) { return rig.model == m_chosenModel; });
    const bool serial = chosen == m_rigModels.cend() || !chosen->networkPort;
    for (QWidget *field : std::as_const(m_serialFields))
        field->setEnabled(serial);
}

QWidget *RadioSetupDialog::buildButtons()
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    const std::pair<const char *, void (RadioSetupDialog::*)()> buttons[] = {
        {"Connect", &RadioSetupDialog::onConnect},
        {"Disconnect", &RadioSetupDialog::onDisconnect},
        {"Test Connection", &RadioSetupDialog::onTest}};
    for (const auto &[text, slot] : buttons) {
        auto *button = new QPushButton(QString::fromLatin1(text), row);
        // Enter in a field accepts the dialog; it must not open the rig as well.
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, slot);
        layout->addWidget(button);
    }
    return row;
}

void RadioSetupDialog::fillPorts(const QList<SerialPortChoice> &serialPorts, const QString &current)
{
    // Editable: any device path or host:port may be typed.
    m_port->setEditable(true);
    m_port->setInsertPolicy(QComboBox::NoInsert);
    for (const SerialPortChoice &port : serialPorts)
        m_port->addItem(serialPortText(port), port.device);
    for (const QString &daemon : {QStringLiteral("localhost:4532"), QStringLiteral("localhost:4533")})
        m_port->addItem(daemon, daemon);
    if (serialPorts.isEmpty())
        m_port->lineEdit()->setPlaceholderText(QStringLiteral("No ports detected — type path here"));
    const int index = current.isEmpty() ? -1 : m_port->findData(current);
    m_port->setCurrentIndex(index);
    if (index < 0)
        m_port->setEditText(current);
}

QString RadioSetupDialog::portText() const
{
    // A listed port shows its description too; only its device path is stored.
    const QString text = m_port->currentText().trimmed();
    const int index = m_port->findText(text);
    return index >= 0 ? m_port->itemData(index).toString() : text;
}

RigConfig RadioSetupDialog::rigConfig() const
{
    RigConfig config;
    config.rigModel = m_chosenModel;
    config.port = portText();
    config.baudRate = m_baud->currentData().toInt();
    config.dataBits = m_dataBits->currentData().toInt();
    config.stopBits = m_stopBits->currentData().toInt();
    config.parity = m_parity->currentData().toInt();
    config.handshake = m_handshake->currentData().toInt();
    config.dtrState = m_dtr->currentData().toInt();
    config.rtsState = m_rts->currentData().toInt();
    config.pttType = m_ptt->currentData().toInt();
    return config;
}

QList<SerialPortChoice> RadioSetupDialog::detectSerialPorts()
{
    QList<SerialPortChoice> ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        const QString what = info.description().isEmpty() ? info.manufacturer() : info.description();
        ports.append({info.systemLocation(), what});
    }
    return ports;
}

void RadioSetupDialog::onConnect()
{
    const WaitCursor wait;
    m_status->setText(m_rig.connectRig(rigConfig()) ? k_connected : QStringLiteral("○ Connection failed"));
}

void RadioSetupDialog::onDisconnect()
{
    const WaitCursor wait;
    m_rig.disconnectRig();
    m_status->setText(k_notConnected);
}

void RadioSetupDialog::onTest()
{
    const WaitCursor wait;
    if (!m_rig.isConnected()) {
        if (!m_rig.connectRig(rigConfig())) {
            m_testResult->setText(QStringLiteral("✘ Connection failed"));
            return;
        }
        m_status->setText(k_connected);
    }
    const double kHz = m_rig.frequencyKhz();
    const QString mode = m_rig.mode();
    if (kHz <= 0) {
        m_testResult->setText(QStringLiteral("✔ Connected but frequency read failed"));
        return;
    }
    m_testResult->setText(
        QStringLiteral("✔ OK — %1 MHz  %2").arg(QString::number(kHz / 1000.0, 'f', 3), mode));
}
