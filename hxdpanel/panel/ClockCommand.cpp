#include "hxdpanel/panel/ClockCommand.h"

#include "SimPanel.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/Text.h"

namespace {

const char* const USAGE =
    "usage: clock +1h (or +10s, +5m, +2d), clock x60, clock hold, or clock run";

constexpr double FASTEST = 100000.0;
constexpr double SLOWEST = 0.001;

}  // namespace

std::string ClockState() {
    const double speed = sim::SimPanel::Instance().ClockSpeed();
    if (speed <= 0.0)
        return "is held; what the driver waits for moves it";
    return speed == 1.0 ? "runs" : "runs " + NumberText(speed) + " times as fast";
}

HardwareResult Clock(const std::vector<std::string>& words) {
    sim::SimPanel& panel = sim::SimPanel::Instance();
    if (words.empty())
        return HardwareResult::Done("the clock " + ClockState(), {});
    const std::string& word = words[0];
    long long milliseconds = 0;
    double speed = 0.0;
    std::string moved;
    if (words.size() > 1)
        return HardwareResult::Refused(USAGE);
    if (word == "hold") {
        panel.HoldClock();
    } else if (word == "run") {
        panel.RunClock();
    } else if (word[0] == '+' && ParseDuration(word.substr(1), milliseconds)) {
        panel.PassClock(milliseconds);
        moved = word.substr(1) + " later; ";
    } else if (word[0] == 'x' && ParseNumber(word.substr(1), speed) && speed >= SLOWEST &&
               speed <= FASTEST) {
        panel.RunClock(speed);
    } else {
        return HardwareResult::Refused(USAGE);
    }
    return HardwareResult::Done(moved + "the clock " + ClockState(),
                                {CHANNEL_STORAGE_LIFE, CHANNEL_STORAGE_GEAR});
}
