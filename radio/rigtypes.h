#pragma once

#include <QMetaType>
#include <QString>

// Rig connection settings, stored under "hamlib" in the settings file.
struct RigConfig
{
    int rigModel = 1; // 1 is Hamlib's dummy rig
    QString port;     // serial device or "host:port"
    int baudRate = 9600;
    int dataBits = 8;
    int stopBits = 1;
    int parity = 0;    // 0 none, 1 odd, 2 even
    int handshake = 0; // 0 none, 1 XON/XOFF, 2 hardware
    int dtrState = 0;  // 0 leave unset, 1 on, 2 off
    int rtsState = 0;  // 0 leave unset, 1 on, 2 off
    int pttType = 0;   // 0 none, 1 CAT, 2 DTR, 3 RTS
};

// The rig's adjustable settings, with the values that stand when it cannot report them.
struct RadioState
{
    int volume = 75;
    int rfPower = 100;
    int filter = 1; // 0 narrow, 1 normal, 2 wide
    int keySpeed = 20;
    int breakIn = 0; // 0 off, 1 semi, 2 full
    bool muted = false;
};

// One rig model Hamlib knows, as the radio set-up lists it.
struct RigModelInfo
{
    int model = 0;
    QString maker;
    QString name;
    bool networkPort = false; // reached over TCP or UDP: no serial line to set up

    // "3073 — Icom IC-7300": the text the set-up dialog shows.
    QString entry() const { return QStringLiteral("%1 — %2 %3").arg(QString::number(model), maker, name); }
};

struct RadioCaps
{
    bool hasVolume = false;
    bool hasRfPower = false;
    bool hasMute = false;
    bool hasFilter = false;
    bool hasBreakInSemi = false;
    bool hasBreakInFull = false;
    bool hasBreakIn = false;
    bool hasKeySpeed = false;
    bool hasTune = false;
};

Q_DECLARE_METATYPE(RigConfig)
Q_DECLARE_METATYPE(RadioState)
Q_DECLARE_METATYPE(RadioCaps)
