#include "Guarded.h"
#include "common/ResultCodes.h"
#include "olma_hal.h"

using sim::Guarded;
using sim::PanelState;

int hal_display_get_backlight_brightness(void) {
    return Guarded(__func__, [](PanelState& state) { return state.brightness; });
}

int hal_display_set_backlight_brightness(int percent) {
    return Guarded(__func__, [percent](PanelState& state) {
        if (state.brightness == HAL_NO_SUCH_DEVICE)
            return HAL_NO_SUCH_DEVICE;
        if (percent < 0 || percent > 100)
            return -EINVAL;
        state.brightness = percent;
        return 0;
    });
}

int hal_set_lcd_status(int off) {
    return Guarded(__func__, [off](PanelState& state) {
        if (off != 0 && off != 1)
            return -EINVAL;
        state.lightOn = off == 0;
        return 0;
    });
}
