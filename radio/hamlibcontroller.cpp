#include "radio/hamlibcontroller.h"

#include "radio/rigport.h"

#include <hamlib/rig.h>

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int k_pollFailureLimit = 4; // the fifth failed poll in a row disconnects

// Hamlib 4.5's rigerror() prepends its saved debug trace; rigerror2() is the bare text.
QString rigErrorText(int code)
{
    return QString::fromLocal8Bit(rigerror2(code)).trimmed();
}

// A 0..1 level as a whole percentage, rounded half away from zero.
int levelPercent(float level)
{
    return std::clamp(static_cast<int>(std::lround(static_cast<double>(level) * 100.0)), 0, 100);
}

void setPercentLevel(RIG *rig, setting_t level, int percent)
{
    value_t value;
    value.f = static_cast<float>(std::clamp(percent, 0, 100) / 100.0);
    rig_set_level(rig, RIG_VFO_CURR, level, value);
}

// The rig mode for a spot's mode text; 0 leaves the rig's mode alone.
rmode_t rigModeFor(const QString &mode, double kHz)
{
    const QString upper = mode.toUpper();
    if (upper == QLatin1String("USB"))
        return RIG_MODE_USB;
    if (upper == QLatin1String("LSB"))
        return RIG_MODE_LSB;
    if (upper == QLatin1String("SSB"))
        return kHz < 10000.0 ? RIG_MODE_LSB : RIG_MODE_USB;
    if (upper == QLatin1String("CW"))
        return RIG_MODE_CW;
    if (upper == QLatin1String("CW-R") || upper == QLatin1String("CWR"))
        return RIG_MODE_CWR;
    if (upper == QLatin1String("AM"))
        return RIG_MODE_AM;
    // Broadcast FM is tuned as plain FM on purpose: spots say WFM where rigs mean FM.
    if (upper == QLatin1String("FM") || upper == QLatin1String("NFM") || upper == QLatin1String("WFM"))
        return RIG_MODE_FM;
    return RIG_MODE_NONE;
}

QString modeName(rmode_t mode)
{
    if (mode == RIG_MODE_AM)
        return QStringLiteral("AM");
    if (mode == RIG_MODE_CW)
        return QStringLiteral("CW");
    if (mode == RIG_MODE_USB)
        return QStringLiteral("USB");
    if (mode == RIG_MODE_LSB)
        return QStringLiteral("LSB");
    if (mode == RIG_MODE_RTTY)
        return QStringLiteral("RTTY");
    if (mode == RIG_MODE_FM)
        return QStringLiteral("FM");
    if (mode == RIG_MODE_WFM)
        return QStringLiteral("WFM");
    if (mode == RIG_MODE_CWR)
        return QStringLiteral("CW-R");
    if (mode == RIG_MODE_RTTYR)
        return QStringLiteral("RTTY-R");
    if (mode == RIG_MODE_PKTLSB)
        return QStringLiteral("PKT-L");
    if (mode == RIG_MODE_PKTUSB)
        return QStringLiteral("PKT-U");
    if (mode == RIG_MODE_PKTFM)
        return QStringLiteral("PKT-F");
    return QStringLiteral("?");
}

int collectRig(const rig_caps *caps, rig_ptr_t data)
{
    auto *models = static_cast<QList<RigModelInfo> *>(data);
    models->append({static_cast<int>(caps->rig_model), QString::fromLatin1(caps->mfg_name),
                    QString::fromLatin1(caps->model_name),
                    caps->port_type == RIG_PORT_NETWORK || caps->port_type == RIG_PORT_UDP_NETWORK});
    return 1; // keep walking
}

} // namespace

HamlibController::HamlibController(QObject *parent)
    : QObject(parent)
{
    qRegisterMetaType<RigConfig>("RigConfig");
    qRegisterMetaType<RadioCaps>("RadioCaps");
    qRegisterMetaType<RadioState>("RadioState");
    rig_set_debug(RIG_DEBUG_NONE);
    rig_load_all_backends();
}

HamlibController::~HamlibController()
{
    closeRig();
    leaveConnected();
}

bool HamlibController::isConnected() const
{
    return m_connected.load();
}

bool HamlibController::isReady() const
{
    return m_rig && m_connected.load();
}

void HamlibController::setCapabilityMask(quint64 levels, quint64 funcs)
{
    m_levelMask = levels;
    m_funcMask = funcs;
}

bool HamlibController::canSetLevel(quint64 level) const
{
    return (m_levelMask & level) && rig_has_set_level(m_rig, level);
}

bool HamlibController::canGetLevel(quint64 level) const
{
    return (m_levelMask & level) && rig_has_get_level(m_rig, level);
}

bool HamlibController::canSetFunc(quint64 func) const
{
    return (m_funcMask & func) && rig_has_set_func(m_rig, func);
}

bool HamlibController::canGetFunc(quint64 func) const
{
    return (m_funcMask & func) && rig_has_get_func(m_rig, func);
}

void HamlibController::closeRig()
{
    if (!m_rig)
        return;
    rig_close(m_rig);
    rig_cleanup(m_rig);
    m_rig = nullptr;
}

void HamlibController::leaveConnected()
{
    if (!m_connected.exchange(false))
        return;
    emit connectionChanged(false);
    emit capabilitiesChanged(RadioCaps());
}

bool HamlibController::connectRig(const RigConfig &config)
{
    closeRig();
    leaveConnected();

    RIG *rig = rig_init(static_cast<rig_model_t>(config.rigModel));
    if (!rig) {
        emit error(QStringLiteral("Failed to initialise rig model %1").arg(config.rigModel));
        return false;
    }
    configureRigPorts(rig, config);
    m_pttType = config.pttType;

    const int result = rig_open(rig);
    if (result != RIG_OK) {
        emit error(QStringLiteral("Failed to open rig: %1").arg(rigErrorText(result)));
        rig_cleanup(rig);
        return false;
    }

    // Hamlib's read cache would keep answering polls for a rig that has gone away,
    // hiding the failures that trigger the automatic disconnect.
    rig_set_cache_timeout_ms(rig, HAMLIB_CACHE_ALL, 0);

    m_rig = rig;
    m_pollErrorCount = 0;
    m_connected.exchange(true);
    emit connectionChanged(true);
    emit capabilitiesChanged(queryCaps());
    emit radioStateRead(queryState());
    return true;
}

void HamlibController::disconnectRig()
{
    closeRig();
    leaveConnected();
}

bool HamlibController::setFrequency(double kHz)
{
    if (!isReady()) {
        emit error(QStringLiteral("Radio not connected"));
        return false;
    }
    const int result = rig_set_freq(m_rig, RIG_VFO_CURR, kHz * 1000.0);
    if (result != RIG_OK) {
        emit error(QStringLiteral("Failed to set frequency: %1").arg(rigErrorText(result)));
        return false;
    }
    emit frequencyChanged(kHz);
    return true;
}

bool HamlibController::tune(double kHz, const QString &mode)
{
    if (!setFrequency(kHz))
        return false;

    const rmode_t rigMode = rigModeFor(mode, kHz);
    if (rigMode == RIG_MODE_NONE)
        return true;
    const int result = rig_set_mode(m_rig, RIG_VFO_CURR, rigMode, RIG_PASSBAND_NOCHANGE);
    if (result != RIG_OK)
        emit error(QStringLiteral("Frequency set, but mode change failed: %1").arg(rigErrorText(result)));
    return true;
}

bool HamlibController::tuneWithModes(double kHz, const QStringList &rigModes)
{
    if (!setFrequency(kHz))
        return false;
    for (const QString &name : rigModes) {
        const rmode_t mode = rig_parse_mode(name.toLatin1().constData());
        if (mode != RIG_MODE_NONE && rig_set_mode(m_rig, RIG_VFO_CURR, mode, RIG_PASSBAND_NOCHANGE) == RIG_OK)
            break;
    }
    return true;
}

bool HamlibController::setPtt(bool on)
{
    if (m_pttType == 0)
        return true;
    if (!isReady()) {
        emit error(QStringLiteral("Radio not connected"));
        return false;
    }
    const int result = rig_set_ptt(m_rig, RIG_VFO_CURR, on ? RIG_PTT_ON : RIG_PTT_OFF);
    if (result != RIG_OK) {
        emit error(QStringLiteral("PTT %1 failed: %2")
                       .arg(on ? QStringLiteral("ON") : QStringLiteral("OFF"), rigErrorText(result)));
        return false;
    }
    return true;
}

double HamlibController::getFrequency() const
{
    if (!isReady())
        return 0.0;
    freq_t hz = 0;
    if (rig_get_freq(m_rig, RIG_VFO_CURR, &hz) != RIG_OK)
        return 0.0;
    return hz / 1000.0;
}

QString HamlibController::getMode() const
{
    if (!isReady())
        return QString();
    rmode_t mode = RIG_MODE_NONE;
    pbwidth_t width = 0;
    if (rig_get_mode(m_rig, RIG_VFO_CURR, &mode, &width) != RIG_OK)
        return QString();
    return modeName(mode);
}

void HamlibController::requestPoll()
{
    if (!isReady())
        return;

    freq_t hz = 0;
    if (rig_get_freq(m_rig, RIG_VFO_CURR, &hz) == RIG_OK && hz / 1000.0 > 0) {
        m_pollErrorCount = 0;
        emit pollResult(hz / 1000.0, getMode());
        return;
    }
    if (++m_pollErrorCount <= k_pollFailureLimit)
        return;
    emit error(QStringLiteral("Radio connection lost — auto-disconnecting after repeated errors"));
    closeRig();
    leaveConnected();
}

void HamlibController::setVolume(int volume)
{
    if (isReady())
        setPercentLevel(m_rig, RIG_LEVEL_AF, volume);
}

void HamlibController::setRfPower(int power)
{
    if (isReady())
        setPercentLevel(m_rig, RIG_LEVEL_RFPOWER, power);
}

void HamlibController::setMute(bool mute)
{
    if (!isReady())
        return;
    if (canSetFunc(RIG_FUNC_MUTE)) {
        rig_set_func(m_rig, RIG_VFO_CURR, RIG_FUNC_MUTE, mute ? 1 : 0);
        return;
    }
    // No mute function: turn the AF gain down and remember where it was.
    if (!canSetLevel(RIG_LEVEL_AF))
        return;
    value_t value;
    if (mute) {
        if (rig_get_level(m_rig, RIG_VFO_CURR, RIG_LEVEL_AF, &value) == RIG_OK)
            m_savedVolume = levelPercent(value.f);
        value.f = 0.0f;
    } else {
        value.f = static_cast<float>(m_savedVolume / 100.0);
    }
    rig_set_level(m_rig, RIG_VFO_CURR, RIG_LEVEL_AF, value);
}

void HamlibController::setFilter(int filter)
{
    if (!isReady())
        return;
    rmode_t mode = RIG_MODE_NONE;
    pbwidth_t width = 0;
    if (rig_get_mode(m_rig, RIG_VFO_CURR, &mode, &width) != RIG_OK)
        return;
    switch (filter) {
    case 0:
        width = rig_passband_narrow(m_rig, mode);
        break;
    case 2:
        width = rig_passband_wide(m_rig, mode);
        break;
    default:
        width = rig_passband_normal(m_rig, mode);
        break;
    }
    if (width == 0)
        return;
    rig_set_mode(m_rig, RIG_VFO_CURR, mode, width);
}

void HamlibController::setBreakIn(int breakIn)
{
    if (!isReady())
        return;
    // Switch the wanted function on before the other off, so the rig never
    // passes through "no break-in" on the way.
    switch (breakIn) {
    case 1:
        rig_set_func(m_rig, RIG_VFO_CURR, RIG_FUNC_SBKIN, 1);
        rig_set_func(m_rig, RIG_VFO_CURR, RIG_FUNC_FBKIN, 0);
        break;
    case 2:
        rig_set_func(m_rig, RIG_VFO_CURR, RIG_FUNC_FBKIN, 1);
        rig_set_func(m_rig, RIG_VFO_CURR, RIG_FUNC_SBKIN, 0);
        break;
    default:
        rig_set_func(m_rig, RIG_VFO_CURR, RIG_FUNC_SBKIN, 0);
        rig_set_func(m_rig, RIG_VFO_CURR, RIG_FUNC_FBKIN, 0);
        break;
    }
}

void HamlibController::setKeySpeed(int wpm)
{
    if (!isReady())
        return;
    value_t value;
    value.i = std::clamp(wpm, 5, 60);
    rig_set_level(m_rig, RIG_VFO_CURR, RIG_LEVEL_KEYSPD, value);
}

void HamlibController::startTune()
{
    if (!isReady())
        return;
    rig_vfo_op(m_rig, RIG_VFO_CURR, RIG_OP_TUNE);
}

RadioState HamlibController::queryState() const
{
    RadioState state;
    if (!m_rig)
        return state;

    const auto readLevel = [this](setting_t level, value_t &value) {
        return canGetLevel(level) && rig_get_level(m_rig, RIG_VFO_CURR, level, &value) == RIG_OK;
    };
    const auto funcOn = [this](setting_t func) {
        int status = 0;
        return canGetFunc(func) && rig_get_func(m_rig, RIG_VFO_CURR, func, &status) == RIG_OK && status != 0;
    };

    value_t value;
    if (readLevel(RIG_LEVEL_AF, value))
        state.volume = levelPercent(value.f);
    if (readLevel(RIG_LEVEL_RFPOWER, value))
        state.rfPower = levelPercent(value.f);
    if (readLevel(RIG_LEVEL_KEYSPD, value))
        state.keySpeed = std::clamp(value.i, 5, 60);
    state.muted = funcOn(RIG_FUNC_MUTE);
    if (funcOn(RIG_FUNC_FBKIN))
        state.breakIn = 2;
    else if (funcOn(RIG_FUNC_SBKIN))
        state.breakIn = 1;

    rmode_t mode = RIG_MODE_NONE;
    pbwidth_t width = 0;
    if (rig_get_mode(m_rig, RIG_VFO_CURR, &mode, &width) == RIG_OK && width >= 1) {
        const pbwidth_t narrow = rig_passband_narrow(m_rig, mode);
        const pbwidth_t wide = rig_passband_wide(m_rig, mode);
        if (narrow >= 1 && width <= narrow)
            state.filter = 0;
        else if (wide >= 1 && width >= wide)
            state.filter = 2;
    }
    return state;
}

RadioCaps HamlibController::queryCaps() const
{
    RadioCaps caps;
    if (!m_rig)
        return caps;
    caps.hasVolume = canSetLevel(RIG_LEVEL_AF);
    caps.hasRfPower = canSetLevel(RIG_LEVEL_RFPOWER);
    caps.hasMute = caps.hasVolume || canSetFunc(RIG_FUNC_MUTE);
    caps.hasFilter =
        rig_passband_narrow(m_rig, RIG_MODE_USB) != 0 || rig_passband_wide(m_rig, RIG_MODE_USB) != 0;
    caps.hasBreakInSemi = canSetFunc(RIG_FUNC_SBKIN);
    caps.hasBreakInFull = canSetFunc(RIG_FUNC_FBKIN);
    caps.hasBreakIn = caps.hasBreakInSemi || caps.hasBreakInFull;
    caps.hasKeySpeed = canSetLevel(RIG_LEVEL_KEYSPD);
    caps.hasTune = rig_has_vfo_op(m_rig, RIG_OP_TUNE) != 0;
    return caps;
}

QStringList HamlibController::availableRigs() const
{
    QStringList entries;
    for (const RigModelInfo &rig : rigModels())
        entries.append(rig.entry());
    // Ordinal text order on purpose: the set-up dialog lists models this way.
    std::sort(entries.begin(), entries.end());
    return entries;
}

QList<RigModelInfo> HamlibController::rigModels() const
{
    QList<RigModelInfo> models;
    rig_list_foreach(collectRig, &models);
    return models;
}
