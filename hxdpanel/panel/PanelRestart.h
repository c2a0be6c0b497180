// Switching the simulated panel off and on.
#ifndef HXDPANEL_PANELRESTART_H
#define HXDPANEL_PANELRESTART_H

#include "hxdpanel/panel/HardwareResult.h"
#include "hxdpanel/panel/SimulatedPanel.h"

#include <functional>

class HardwareMemory;

class PanelRestart {
public:
    // restartDriver: ends the device and makes it anew; false when the driver refuses.
    PanelRestart(const PanelFiles& files, HardwareMemory& memory,
                 std::function<bool()> restartDriver);

    // The panel comes back with its files, its settings and its hardware as it is: worn flash,
    // pulled cables and failures stay. What it was told to do is forgotten.
    HardwareResult Restart();
    // As it was delivered: hardware and description, settings and logs. What lies in the user's
    // data area and on the USB stick stays.
    HardwareResult Reset();

private:
    bool RestoreFiles() const;

    PanelFiles m_files;
    HardwareMemory& m_memory;
    std::function<bool()> m_restartDriver;
};

#endif
