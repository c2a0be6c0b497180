#include "ntp/PanelClock.h"

#include "ntp/ClockText.h"
#include "olma_hal.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

// Hours east of Greenwich where a panel is taken to be that knows no time zone.
constexpr int ASSUMED_ZONE_HOURS = 8;

bool KnowsTimeZone() {
    return ::access("/etc/localtime", F_OK) == 0 || ::access("/etc/timezone", F_OK) == 0;
}

// The hour of the assumed zone is not carried into the day, so late evening gives hours 24 to 31.
// Both clocks are handed the same fields, and what they make of them is theirs.
bool ToLocalTime(std::int32_t seconds, std::tm& local) {
    const std::time_t time = seconds;
    ::tzset();  // the zone may have been set since
    if (::localtime_r(&time, &local) == nullptr)
        return false;
    if (!KnowsTimeZone())
        local.tm_hour += ASSUMED_ZONE_HOURS;
    return true;
}

}  // namespace

bool SetPanelClock(std::int32_t seconds) {
    std::tm local = {};
    if (!ToLocalTime(seconds, local))
        return false;
    std::printf("%s\n", ClockReport(local).c_str());
    // Whether this worked does not count: the real-time clock is set in any case, and decides.
    const int status = std::system(ClockCommand(local).c_str());
    static_cast<void>(status);
    return hal_set_rtc_time(&local) == 0;
}
