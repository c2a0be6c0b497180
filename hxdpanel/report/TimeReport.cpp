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

}  // namespace

void PrintTime(std::FILE* out, const HostDatabase& database, const std::string& lastResult) {
    for (int number = CHANNEL_NTP_SWITCH; number <= CHANNEL_NTP_SERVER_4; ++number)
        std::fprintf(out, "%s\n", ChannelText(database, number).c_str());
    const std::string clock = LastClockCommand();
    const auto rtc = sim::SimPanel::instance().state().rtcSettings;
    std::fprintf(out, "\nSystem clock     %s\n",
                 clock.empty() ? "not set in this run" : clock.c_str());
    std::fprintf(out, "Real-time clock  %s\n",
                 rtc.empty() ? "not set in this run" : ("set to " + TimeText(rtc.back())).c_str());
    std::fprintf(out, "Last ExecNTP     %s\n",
                 lastResult.empty() ? "none in this run" : lastResult.c_str());
    if (clock.empty())
        std::fputs(
            "\nTo try it: start with --time-server, then EnableNTP(1), set result 99, "
            "ExecNTP(result).\n",
            out);
}
