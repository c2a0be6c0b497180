#include "commands/PanelActions.h"

#include "common/ResultCodes.h"
#include "olma_hal.h"

#include <sys/reboot.h>

namespace {

int SwitchLight(int off) {
    return hal_set_lcd_status(off) == 0 ? RESULT_DONE : RESULT_BACKLIGHT_FAILED;
}

}  // namespace

int panel_actions::BacklightOn(OLMA_DATA& /*data*/, const CString& /*args*/) {
    return SwitchLight(0);
}

int panel_actions::BacklightOff(OLMA_DATA& /*data*/, const CString& /*args*/) {
    return SwitchLight(1);
}

int panel_actions::Reboot(OLMA_DATA& /*data*/, const CString& /*args*/) {
    // No sync(): a panel that hangs on a dead storage must still restart.
    ::reboot(RB_AUTOBOOT);
    return RESULT_DONE;
}
