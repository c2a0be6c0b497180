#include "ntp/NtpTriggers.h"

namespace {
constexpr long long HOUR_MS = 3600000;
}

NtpTriggers CompareSettings(const ntpCfgParam& before, const ntpCfgParam& now) {
    return {before.ntpSwitch == 0 && now.ntpSwitch == 1, before.mode == 0 && now.mode == 1,
            before.freq != now.freq};
}

bool SynchronisationDue(const ntpCfgParam& now, const NtpTriggers& triggers, long long elapsedMs) {
    if (now.ntpSwitch != 1 || now.mode != 1)
        return false;
    return triggers.justEnabled || triggers.switchedToAutomatic || triggers.periodChanged ||
           elapsedMs >= now.freq * HOUR_MS;
}
