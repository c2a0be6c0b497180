// Commands that act on the panel: light and restart. Called by the dispatcher under g_halMutex;
// each returns a ResultCode.
#ifndef HXD_PANELACTIONS_H
#define HXD_PANELACTIONS_H

#include "driver/record/OlmaData.h"

namespace panel_actions {

// -9 when the hardware layer cannot switch the light.
int BacklightOn(OLMA_DATA& data, const CString& args);
int BacklightOff(OLMA_DATA& data, const CString& args);

// Restarts the machine at once: nothing is flushed, nobody is asked. Returns only on failure.
int Reboot(OLMA_DATA& data, const CString& args);

}  // namespace panel_actions

#endif
