// The panel's clock, by which the driver measures hours and pauses. Time synchronisation sets
// another one, and its requests take real time.
#ifndef HXDPANEL_CLOCKCOMMAND_H
#define HXDPANEL_CLOCKCOMMAND_H

#include "hxdpanel/panel/HardwareResult.h"

#include <string>
#include <vector>

// +1h, x60, hold, run, or nothing.
HardwareResult Clock(const std::vector<std::string>& words);
// "runs", "runs 60 times as fast", "is held".
std::string ClockState();

#endif
