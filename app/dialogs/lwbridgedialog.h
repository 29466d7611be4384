#pragma once

#include <QDialog>
#include <QString>

struct AppSettings;
class QCheckBox;
class QLineEdit;
class QSpinBox;

// Where the companion program Lampwick listens, and whether to use it.
struct LwBridgeSettings
{
    bool enabled = false;
    QString host = QStringLiteral("127.0.0.1");
    quint16 port = 2104;

    static LwBridgeSettings fromSettings(const AppSettings &settings);
    void applyTo(AppSettings &settings) const;
};

// "Lampwick Bridge": hands radio control to the companion program while it runs.
class LwBridgeDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LwBridgeDialog)

public:
    explicit LwBridgeDialog(const LwBridgeSettings &values, QWidget *parent = nullptr);
    ~LwBridgeDialog() override;

    // An empty host falls back to this machine.
    LwBridgeSettings settings() const;

private:
    QCheckBox *m_enabled;
    QLineEdit *m_host;
    QSpinBox *m_port;
};
