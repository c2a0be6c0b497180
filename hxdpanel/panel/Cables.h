// What is plugged into the panel: network interfaces and serial ports.
#ifndef HXDPANEL_CABLES_H
#define HXDPANEL_CABLES_H

#include "hxdpanel/panel/HardwareResult.h"

#include <string>
#include <vector>

namespace cables {

using Words = std::vector<std::string>;

// An interface that is unplugged is one that the platform does not list. Without any, nothing
// answers a ping.
HardwareResult Unplug(const Words& words);
HardwareResult Plug(const Words& words);
Words InterfaceNames();

HardwareResult Com(const Words& words);  // PORT PERCENT or off

}  // namespace cables

#endif
