#include "hxdpanel/report/Watch.h"

#include "common/ResultCodes.h"
#include "hxdpanel/base/Interrupt.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/WatchScreen.h"

#include <chrono>
#include <map>
#include <set>

namespace {

using Clock = std::chrono::steady_clock;

class Watcher {
public:
    Watcher(std::FILE* out, const WatchOptions& options)
        : m_pOut(out),
          m_options(options),
          m_bOnScreen(options.form == WatchOptions::TABLE && !options.changes &&
                      terminal::CanRedraw(out)) {}

    void Show(const ShownChannels& channels, int status);
    // False when the user has ended it.
    bool WaitUntil(Clock::time_point next) const;
    void End() const;

private:
    std::set<int> TakeChanges(const ShownChannels& channels);
    void ShowTable(const ShownChannels& channels, int status, const std::set<int>& changed);
    void ShowChanges(const ShownChannels& channels) const;

    std::FILE* m_pOut;
    const WatchOptions& m_options;
    const bool m_bOnScreen;
    bool m_bFirst = true;
    std::map<int, std::string> m_values;
    WatchScreen m_screen;
};

// All at first.
std::set<int> Watcher::TakeChanges(const ShownChannels& channels) {
    std::set<int> changed;
    for (const ShownChannel& channel : channels) {
        std::string& known = m_values[channel.number];
        const std::string value = channel.Value();
        if (known != value)
            changed.insert(channel.number);
        known = value;
    }
    return changed;
}

void Watcher::Show(const ShownChannels& channels, int status) {
    const std::set<int> changed = TakeChanges(channels);
    ShownChannels shown;
    for (const ShownChannel& channel : channels) {
        if (!m_options.changes || changed.count(channel.number) != 0)
            shown.push_back(channel);
    }
    if (m_options.form == WatchOptions::CSV && m_bFirst)
        PrintCsvHeader(m_pOut, channels);
    if (!shown.empty()) {
        if (m_options.form == WatchOptions::CSV)
            PrintCsvLine(m_pOut, channels);
        else if (m_options.form == WatchOptions::JSON)
            PrintJson(m_pOut, JsonLayout::LINE, "watch",
                      {{"time", IsoTime()},
                       {"status", JsonStatus(status, StatusMeaning(status))},
                       {"channels", ChannelsJson(shown)}});
        else if (m_options.changes)
            ShowChanges(shown);
        else
            ShowTable(shown, status, m_bFirst ? std::set<int>() : changed);
    }
    m_bFirst = false;
    std::fflush(m_pOut);
}

void Watcher::ShowTable(const ShownChannels& channels, int status, const std::set<int>& changed) {
    if (!m_bOnScreen) {
        std::fprintf(m_pOut, "%s%s\n", m_bFirst ? "" : "\n", IsoTime().c_str());
        PrintChannelTable(m_pOut, channels);
        return;
    }
    const std::string failure = status != 0 ? std::string("  ") + StatusMeaning(status) : "";
    m_screen.Take(
        IsoTime() + "  every " + NumberText(m_options.interval) + " s, Ctrl-C ends" + failure,
        channels, changed);
    m_screen.Draw(m_pOut);
}

void Watcher::ShowChanges(const ShownChannels& channels) const {
    const std::string time = IsoTime();
    for (const ShownChannel& channel : channels)
        std::fprintf(m_pOut, "%s  %s\n", time.c_str(), ChannelText(channel).c_str());
}

bool Watcher::WaitUntil(Clock::time_point next) const {
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            next - Clock::now() + std::chrono::microseconds(999));
        if (interrupt::Wait(std::max(static_cast<int>(left.count()), 0), terminal::SizeEvent()))
            return false;
        if (left.count() <= 0)
            return true;
        terminal::ClearSizeEvent();
        if (m_bOnScreen && next > Clock::now())
            m_screen.Draw(m_pOut);
    }
}

void Watcher::End() const {
    if (m_bOnScreen)
        std::fputs("\r\n", m_pOut);
}

}  // namespace

int Watch(std::FILE* out, const HostDatabase& database, const WatchOptions& options,
          const std::function<int()>& read) {
    const auto interval = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(options.interval));
    Watcher watcher(out, options);
    int result = 0;
    Clock::time_point next = Clock::now();
    for (int i = 0; options.count == 0 || i < options.count; ++i) {
        const int status = read();
        result = result == 0 ? status : result;
        watcher.Show(ShowChannels(database, options.channels), status);
        if (std::ferror(out) != 0 || i + 1 == options.count)
            break;
        // A reading that took longer than the interval does not cause a burst afterwards.
        next = std::max(next + interval, Clock::now());
        if (!watcher.WaitUntil(next))
            break;
    }
    watcher.End();
    if (!interrupt::EndRequested())
        interrupt::Clear();
    return result;
}
