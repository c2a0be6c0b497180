#include "hxdcheck/host/HostChecks.h"

#include "olma_hal.h"
#include "olma_host.h"

#include <algorithm>
#include <csignal>

namespace {

constexpr unsigned SHOWN_MS = 2000;

int Beep() {
    return Olma_Beep(900, 300);
}

int Dim() {
    const int before = hal_display_get_backlight_brightness();
    if (before < 0)
        return before;
    const int result = hal_display_set_backlight_brightness(std::max(before / 2, 10));
    Olma_Sleep(SHOWN_MS);
    return std::min(result, hal_display_set_backlight_brightness(before));
}

int LightOff() {
    const int result = hal_set_lcd_status(1);
    Olma_Sleep(SHOWN_MS);
    return std::min(result, hal_set_lcd_status(0));
}

struct Act {
    const char* name;
    const char* question;
    int (*run)();
    const char* seen;
};

const Act ACTS[] = {
    {"beep", "Sound the buzzer?", Beep, "Was it to be heard?"},
    {"dim", "Halve the brightness for two seconds?", Dim,
     "Did the display get darker and come back?"},
    {"light", "Switch the light off for two seconds?", LightOff, "Did it go off and on?"},
};

Finding Try(FindingPipe& findings, const Act& act) {
    if (!findings.Ask(act.question))
        return Ok("not tried");
    const int result = act.run();
    if (result != 0)
        return Wrong("the platform gives " + std::to_string(result), "look at its function");
    return findings.Ask(act.seen)
               ? Ok("works")
               : Look("done, but not noticed", "look at the platform's function");
}

}  // namespace

void ActVisibly(FindingPipe& findings) {
    std::signal(SIGINT, SIG_IGN);  // light and brightness are put back in any case
    findings.Group("Visible acts");
    for (const Act& act : ACTS)
        findings.Run(
            act.name, [&] { return Try(findings, act); }, 0);
}
