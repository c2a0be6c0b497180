// The panel's clocks.
#ifndef HXD_PANELCLOCK_H
#define HXD_PANELCLOCK_H

#include <cstdint>

// Sets the system clock and the real-time clock to a time in seconds since 1970, with one line on
// standard output. False when the time cannot be converted or the real-time clock cannot be set;
// whether the system clock was set is not known. Runs a shell command.
bool SetPanelClock(std::int32_t seconds);

#endif
