#include "Guarded.h"
#include "olma_hal.h"

int hal_set_rtc_time(const struct tm* time) {
    return sim::Guarded(__func__, [time](sim::PanelState& state) {
        if (!time)
            return -EINVAL;
        std::tm setting = *time;
        setting.tm_zone = nullptr;  // points into the caller's time-zone data
        state.rtcSetAt = std::chrono::system_clock::now();
        sim::Keep(state.rtcSettings, setting);
        return 0;
    });
}
