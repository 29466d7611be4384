#include "app/dialogs/lwbridgedialog.h"

#include "app/dialogs/dialogfields.h"
#include "app/settingsfile.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

// The bridge dialog keeps its own look, whatever the application's style sheet says.
const char k_styleSheet[] = R"(
QDialog { background-color: #1a1a2e; color: #e8e0d0; }
QLabel, QCheckBox { color: #e8e0d0; }
QLineEdit, QSpinBox { background-color: #0d1521; color: #e8e0d0; border: 1px solid #2a2a4a; padding: 3px; }
QPushButton { background-color: #16213e; color: #c9a84c; border: 1px solid #8b6914; padding: 4px 14px; }
QPushButton:hover { background-color: #1f2b4d; }
QLabel#lwBridgeNote { color: #9090a0; font-size: 10px; }
)";

} // namespace

LwBridgeSettings LwBridgeSettings::fromSettings(const AppSettings &settings)
{
    return {settings.lwEnabled, settings.lwHost, settings.lwPort};
}

void LwBridgeSettings::applyTo(AppSettings &settings) const
{
    settings.lwEnabled = enabled;
    settings.lwHost = host;
    settings.lwPort = port;
}

LwBridgeDialog::LwBridgeDialog(const LwBridgeSettings &values, QWidget *parent)
    : QDialog(parent)
    , m_enabled(new QCheckBox(QStringLiteral("Connect to Lampwick for radio control"), this))
    , m_host(new QLineEdit(values.host, this))
    , m_port(DialogFields::spinBox(this, 1024, 65535, values.port, QStringLiteral("lwPortSpin")))
{
    setWindowTitle(QStringLiteral("Lampwick Bridge — Tallis"));
    setStyleSheet(QString::fromLatin1(k_styleSheet));
    m_enabled->setObjectName(QStringLiteral("lwEnabledCheck"));
    m_enabled->setChecked(values.enabled);
    m_host->setObjectName(QStringLiteral("lwHostEdit"));

    auto *note =
        new QLabel(QStringLiteral("When connected, Tallis delegates all radio control to Lampwick.\n"
                                  "Lampwick handles tuning, mode, keyer speed, and PTT.\n"
                                  "Tallis's own Hamlib connection is suspended while linked.\n"
                                  "CW spots are automatically offset for the decoder tone frequency."),
                   this);
    note->setObjectName(QStringLiteral("lwBridgeNote"));

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Enable:"), m_enabled);
    form->addRow(QStringLiteral("Lampwick Host:"), m_host);
    form->addRow(QStringLiteral("Lampwick Port:"), m_port);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(note);
    layout->addWidget(DialogFields::okCancelButtons(this));
}

LwBridgeDialog::~LwBridgeDialog() = default;

LwBridgeSettings LwBridgeDialog::settings() const
{
    const QString host = m_host->text().trimmed();
    return {m_enabled->isChecked(), host.isEmpty() ? LwBridgeSettings().host : host,
            static_cast<quint16>(m_port->value())};
}
