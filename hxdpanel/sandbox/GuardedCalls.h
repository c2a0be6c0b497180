// Running without the sandbox. This program exports reboot(), system() and popen(), and the loader
// binds the driver's calls to them before those of the C library. Inside the sandbox they call
// through; in guarded mode they run only what is known to be harmless, and remember the rest.
#ifndef HXDPANEL_GUARDEDCALLS_H
#define HXDPANEL_GUARDEDCALLS_H

#include <string>
#include <vector>

namespace guard {

void Enable();  // before the driver is loaded
bool Enabled();

// The calls in guarded mode, oldest first, the newest 1,000: "refused: date -s ...", "run: find
// ...".
std::vector<std::string> Calls();
void ForgetCalls();

// From now on a reboot does not happen but is noted, and the driver goes on as after one that has
// failed.
void HoldReboots();
bool TakeReboot();  // true when there was one since the last call

}  // namespace guard

#endif
