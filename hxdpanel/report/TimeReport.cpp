#include "hxdpanel/report/TimeReport.h"

#include "SimPanel.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/CommandsRun.h"
#include "hxdpanel/report/ChannelReport.h"

#include <algorithm>

namespace {

// The newest "date -s" that the driver ran, with a word on it when it was refused; empty: none.
std::string LastClockCommand() {
    std::string last;
    for (const std::string& line : CommandsRun()) {
        if (line.compare(0, 8, "date -s ") == 0 || line.compare(0, 17, "refused: date -s ") == 0)
            last = line;
    }
    return last;
}

// What the real-time clock was set to last, and when; both empty: it was not.
struct RtcSetting {
    std::string value;
    std::string when;
};
RtcSetting LastRtcSetting() {
    const sim::PanelState state = sim::SimPanel::Instance().State();
    if (state.rtcSettings.empty())
        return {};
    return {TimeText(state.rtcSettings.back()), IsoTime(state.rtcSetAt)};
}

ShownChannels Settings(const HostDatabase& database) {
    ShownChannels channels;
    for (int number = CHANNEL_NTP_SWITCH; number <= CHANNEL_NTP_SERVER_4; ++number)
        channels.push_back(ShowChannel(database, number));
    return channels;
}

}  // namespace

void PrintTime(std::FILE* out, const HostDatabase& database, const std::string& lastResult) {
    for (const ShownChannel& channel : Settings(database))
        std::fprintf(out, "%s\n", ChannelText(channel).c_str());
    const std::string clock = LastClockCommand();
    const std::string realTimeClock = LastRtcSetting().value;
    std::fprintf(out, "\nSystem clock     %s\n",
                 clock.empty() ? "not set in this run" : clock.c_str());
    std::fprintf(
        out, "Real-time clock  %s\n",
        realTimeClock.empty() ? "not set in this run" : ("set to " + realTimeClock).c_str());
    std::fprintf(out, "Last ExecNTP     %s\n",
                 lastResult.empty() ? "none in this run" : lastResult.c_str());
    if (clock.empty())
        std::fputs(
            "\nTo try it: start with --time-server, then EnableNTP(1), set result 99, "
            "ExecNTP(result).\n",
            out);
}

Json TimeJson(const HostDatabase& database, const std::string& lastResult) {
    const RtcSetting realTimeClock = LastRtcSetting();
    return {{"settings", ChannelsJson(Settings(database))},
            {"systemClock", TextOrNull(LastClockCommand())},
            {"realTimeClock", TextOrNull(realTimeClock.value)},
            {"realTimeClockSetAt", TextOrNull(realTimeClock.when)},
            {"lastSynchronisation", TextOrNull(lastResult)}};
}
