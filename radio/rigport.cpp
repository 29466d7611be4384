#include "radio/rigport.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>

namespace {

constexpr int k_portTimeoutMs = 2000;

serial_parity_e parityFor(int parity)
{
    switch (parity) {
    case 1:
        return RIG_PARITY_ODD;
    case 2:
        return RIG_PARITY_EVEN;
    default:
        return RIG_PARITY_NONE;
    }
}

serial_handshake_e handshakeFor(int handshake)
{
    switch (handshake) {
    case 1:
        return RIG_HANDSHAKE_XONXOFF;
    case 2:
        return RIG_HANDSHAKE_HARDWARE;
    default:
        return RIG_HANDSHAKE_NONE;
    }
}

serial_control_state_e signalFor(int state)
{
    switch (state) {
    case 1:
        return RIG_SIGNAL_ON;
    case 2:
        return RIG_SIGNAL_OFF;
    default:
        return RIG_SIGNAL_UNSET;
    }
}

ptt_type_t pttFor(int pttType)
{
    switch (pttType) {
    case 1:
        return RIG_PTT_RIG;
    case 2:
        return RIG_PTT_SERIAL_DTR;
    case 3:
        return RIG_PTT_SERIAL_RTS;
    default:
        return RIG_PTT_NONE;
    }
}

void copyPath(char (&target)[HAMLIB_FILPATHLEN], const QByteArray &path)
{
    const auto length = std::min<qsizetype>(path.size(), HAMLIB_FILPATHLEN - 1);
    std::memcpy(target, path.constData(), static_cast<size_t>(length));
    target[length] = '\0';
}

} // namespace

void configureRigPorts(RIG *rig, const RigConfig &config)
{
    hamlib_port_t &port = rig->state.rigport;
    // A rig without a port (the dummy) refuses any path as an invalid
    // configuration, yet the settings need some text to connect at start.
    if (rig->caps->port_type != RIG_PORT_NONE)
        copyPath(port.pathname, config.port.toLocal8Bit());
    port.timeout = k_portTimeoutMs;
    port.parm.serial.rate = config.baudRate;
    port.parm.serial.data_bits = config.dataBits;
    port.parm.serial.stop_bits = config.stopBits;
    port.parm.serial.parity = parityFor(config.parity);
    port.parm.serial.handshake = handshakeFor(config.handshake);
    port.parm.serial.dtr_state = signalFor(config.dtrState);
    port.parm.serial.rts_state = signalFor(config.rtsState);

    hamlib_port_t &ptt = rig->state.pttport;
    ptt.type.ptt = pttFor(config.pttType);
    // Line PTT keys through the rig's own serial port.
    if (ptt.type.ptt == RIG_PTT_SERIAL_DTR || ptt.type.ptt == RIG_PTT_SERIAL_RTS)
        copyPath(ptt.pathname, config.port.toLocal8Bit());
}
