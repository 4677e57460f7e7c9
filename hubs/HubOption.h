#pragma once

#include "platform/Outcome.h"

class DeviceClocks;
class IniUtility;
struct Options;

/// The hubs' counter option, the number of tickets called: `FromToval` of the settings, 1 to 10.
class HubOption {
public:
    /// The references must outlive this object.
    HubOption(DeviceClocks& devices, Options& options, IniUtility& ini);

    /// Takes what the user typed, sends it to every hub, and saves it if all answered.
    /// @return refused if the number is not from 1 to 10: nothing was sent and the user may type another. Failed too if
    /// it could not be saved.
    QCoro::Task<Outcome> Apply(QString typed);

private:
    DeviceClocks& m_devices;
    Options& m_options;
    IniUtility& m_ini;
};
