#pragma once

#include "radio/rigtypes.h"

#include <QDialog>
#include <QList>
#include <QString>

#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;

// A serial port the radio set-up offers: the device path that is stored, and
// what the system says the device is.
class HamlibLink;

struct SerialPortChoice
{
    QString device;
    QString description;
};

// How the dialog reaches the rig controller on its worker thread. Every call
// blocks until the worker has answered; all five must be set.
struct RigSetupCalls
{
    std::function<bool()> isConnected;
    std::function<bool(const RigConfig &)> connectRig;
    std::function<void()> disconnectRig;
    std::function<double()> frequencyKhz; // 0 or less when it cannot be read
    std::function<QString()> mode;

    // The calls through the program's one link to the rig's worker thread.
    static RigSetupCalls through(HamlibLink &link);
};

// "Radio Setup": the ten rig connection settings, with buttons that connect,
// disconnect and test the rig at once with what the fields say.
class RadioSetupDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RadioSetupDialog)

public:
    // rigModels: every model the rig controller knows, in any order; the dialog
    // lists them by maker, then model name, then number.
    RadioSetupDialog(const RigConfig &config, QList<RigModelInfo> rigModels,
                     const QList<SerialPortChoice> &serialPorts, RigSetupCalls rig,
                     QWidget *parent = nullptr);
    ~RadioSetupDialog() override;

    RigConfig rigConfig() const;

    // The serial ports present now, as the system names them (/dev/ttyUSB0 …).
    static QList<SerialPortChoice> detectSerialPorts();

private:
    QComboBox *addChoice(const char *objectName);
    QWidget *buildModelChoice();
    QWidget *buildButtons();
    // Lists the models whose entry holds every word of text; keeps the chosen
    // model when it still matches, else takes the first match.
    void filterModels(const QString &text);
    void onModelChosen();
    void fillPorts(const QList<SerialPortChoice> &serialPorts, const QString &current);
    QString portText() const;
    void onConnect();
    void onDisconnect();
    void onTest();

    RigSetupCalls m_rig;
    QList<RigModelInfo> m_rigModels; // sorted for the list
    int m_chosenModel;
    QLineEdit *m_modelFilter;
    QComboBox *m_model;
    QComboBox *m_port;
    QComboBox *m_baud;
    QComboBox *m_dataBits;
    QComboBox *m_stopBits;
    QComboBox *m_parity;
    QComboBox *m_handshake;
    QComboBox *m_dtr;
    QComboBox *m_rts;
    QComboBox *m_ptt;
    QLabel *m_status;
    QLabel *m_testResult;
    QList<QWidget *> m_serialFields;
};
