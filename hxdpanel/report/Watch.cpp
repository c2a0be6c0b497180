#include "hxdpanel/report/Watch.h"

#include "hxdpanel/base/Interrupt.h"
#include "hxdpanel/report/ChannelReport.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace {

const char* const CLEAR_SCREEN = "\033[H\033[J";

void PrintReading(std::FILE* out, const HostDatabase& database, const WatchOptions& options,
                  bool first) {
    if (options.csv) {
        if (first)
            PrintCsvHeader(out, database);
        PrintCsvLine(out, database);
    } else if (::isatty(::fileno(out)) != 0) {
        std::fprintf(out, "%s%s   Ctrl-C ends\n\n", CLEAR_SCREEN, IsoTime().c_str());
        PrintChannelTable(out, database);
    } else {
        std::fprintf(out, "%s%s\n", first ? "" : "\n", IsoTime().c_str());
        PrintChannelTable(out, database);
    }
    std::fflush(out);
}

}  // namespace

int Watch(std::FILE* out, const HostDatabase& database, const WatchOptions& options,
          const std::function<int()>& read) {
    using Clock = std::chrono::steady_clock;
    const auto interval = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(options.interval));
    int result = 0;
    Clock::time_point next = Clock::now();
    for (int i = 0; options.count == 0 || i < options.count; ++i) {
        const int status = read();
        result = result == 0 ? status : result;
        PrintReading(out, database, options, i == 0);
        if (std::ferror(out) != 0 || i + 1 == options.count)
            break;
        // A reading that took longer than the interval does not cause a burst afterwards.
        next = std::max(next + interval, Clock::now());
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(next - Clock::now());
        if (interrupt::Wait(static_cast<int>(left.count())))
            break;
    }
    if (!interrupt::EndRequested())
        interrupt::Clear();
    return result;
}
