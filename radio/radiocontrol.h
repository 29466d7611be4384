#pragma once

#include <QString>

// The radio operations that the Hamlib link and the companion-program bridge
// both offer, so the router can hand a request to either without knowing which.
// Values are passed as given: the rig side clamps them, the bridge forwards them.
class RadioControl
{
public:
    virtual ~RadioControl() = default;

    virtual void tune(double kHz, const QString &mode) = 0;
    virtual void setFrequency(double kHz) = 0;
    virtual void setVolume(int volume) = 0;
    virtual void setRfPower(int power) = 0;
    virtual void setMute(bool muted) = 0;
    virtual void setFilter(int filter) = 0;
    virtual void setKeySpeed(int wpm) = 0;
    // The antenna tuner's cycle (it transmits).
    virtual void startTune() = 0;

protected:
    RadioControl() = default;
    RadioControl(const RadioControl &) = default;
    RadioControl &operator=(const RadioControl &) = default;
};
