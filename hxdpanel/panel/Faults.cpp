#include "hxdpanel/panel/Faults.h"

#include "SimPanel.h"
#include "hxdpanel/base/Text.h"

#include <algorithm>

namespace {

// Where a function's failure shows: channels, and commands or writes.
struct Concern {
    const char* function;
    std::vector<int> channels;
    const char* actions;
};

const std::vector<Concern>& Concerns() {
    static const std::vector<Concern> table = {
        {"Olma_Beep", {7}, "writes to 7"},
        {"Olma_Check_Mount_Path", {28}, ""},
        {"Olma_GetDirectory", {3, 4, 5, 6, 28}, "settings and SAVESCREEN"},
        {"__gui_get_buzzing_time", {3, 4}, "what the GUI hears of writes to 3 and 4"},
        {"__gui_get_lcdlight_status", {5}, "what the GUI hears of writes to 5"},
        {"__gui_get_lcdlight_time", {6}, "what the GUI hears of writes to 6"},
        {"__gui_get_serial_number", {20}, ""},
        {"__gui_reset_lcdlight_timer", {5, 6}, "what the GUI hears of writes to 5 and 6"},
        {"__gui_screen_capture", {}, "SAVESCREEN"},
        {"hal_display_get_backlight_brightness", {21}, ""},
        {"hal_display_set_backlight_brightness", {21}, "writes to 21"},
        {"hal_get_mac_address", {22, 23}, "GetMacInfo"},
        {"hal_get_network", {1, 2, 8, 9}, "GetMacInfo, SetNetworkMode"},
        {"hal_get_network_byname", {1, 2, 8, 9}, "writes to 1, 2, 8, 9"},
        {"hal_get_network_count", {1, 2, 8, 9, 22, 23}, "GetMacInfo, SetNetworkMode"},
        {"hal_set_ip_addr", {1, 2, 8, 9}, "writes to 1, 2, 8, 9, SetNetworkMode"},
        {"hal_set_lcd_status", {}, "BACKLIGHTON, BACKLIGHTOFF"},
        {"hal_set_rtc_time", {}, "ExecNTP"},
        {"hal_uart_info", {29, 30, 31, 32}, ""},
    };
    return table;
}

const Concern* FindConcern(const std::string& function) {
    for (const Concern& concern : Concerns()) {
        if (function == concern.function)
            return &concern;
    }
    return nullptr;
}

std::string CallsText(int times) {
    if (times < 0)
        return "every call";
    return times == 1 ? "1 call" : std::to_string(times) + " calls";
}

std::string EffectText(const sim::Failure& failure) {
    return failure.fails ? "fails with " + std::to_string(failure.result)
                         : "takes " + std::to_string(failure.delayMs) + " ms longer";
}

bool IsFunction(const std::string& name, std::string& error) {
    const std::vector<std::string>& known = sim::FailableFunctions();
    if (std::binary_search(known.begin(), known.end(), name))
        return true;
    const std::string closest = Closest(name, known);
    error = Quoted(name) + " is no function of the platform" +
            (closest.empty() ? "; they are: " : "; did you mean " + closest + "?");
    for (std::size_t i = 0; closest.empty() && i < known.size(); ++i)
        error += (i == 0 ? "" : ", ") + known[i];
    return false;
}

HardwareResult Inject(const std::string& function, const std::string& text,
                      const std::string& usage) {
    std::string error;
    sim::Failure failure;
    if (!IsFunction(function, error))
        return HardwareResult::Refused(error);
    if (!sim::ParseFailure(text, failure))
        return HardwareResult::Refused("usage: " + usage);
    sim::SimPanel::Instance().Fail(function, failure);
    const Concern* const concern = FindConcern(function);
    const std::string actions = concern != nullptr ? concern->actions : "";
    return HardwareResult::Done(function + " " + EffectText(failure) + ", " +
                                    CallsText(failure.times) +
                                    (actions.empty() ? "" : "; seen in " + actions),
                                concern != nullptr ? concern->channels : std::vector<int>());
}

}  // namespace

HardwareResult faults::Fail(const Words& words) {
    const std::string usage =
        "fail NAME [RESULT[,TIMES]], for example fail hal_uart_info -5,3; -1 and every call if not "
        "told";
    if (words.empty() || words.size() > 2)
        return HardwareResult::Refused("usage: " + usage);
    return Inject(words[0], words.size() > 1 ? words[1] : "-1", usage);
}

HardwareResult faults::Slow(const Words& words) {
    const std::string usage =
        "slow NAME MS[,TIMES], up to 600000 ms, for example slow hal_set_ip_addr 2000";
    if (words.size() != 2)
        return HardwareResult::Refused("usage: " + usage);
    return Inject(words[0], "slow," + words[1], usage);
}

HardwareResult faults::Mend(const Words& words) {
    std::string error;
    if (words.size() != 1)
        return HardwareResult::Refused("usage: mend NAME, or mend all");
    const bool all = words[0] == "all";
    if (!all && !IsFunction(words[0], error))
        return HardwareResult::Refused(error);
    std::vector<int> channels;
    std::string mended;
    for (const auto& entry : sim::SimPanel::Instance().State().failures) {
        if (!all && entry.first != words[0])
            continue;
        sim::SimPanel::Instance().Mend(entry.first);
        mended += (mended.empty() ? "" : ", ") + entry.first;
        const Concern* const concern = FindConcern(entry.first);
        if (concern != nullptr)
            channels.insert(channels.end(), concern->channels.begin(), concern->channels.end());
    }
    if (mended.empty())
        return HardwareResult::Done(all ? "nothing is failing" : words[0] + " is not failing", {});
    std::sort(channels.begin(), channels.end());
    channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    return HardwareResult::Done(
        mended + (mended.find(',') == std::string::npos ? " works" : " work") + " again", channels);
}

std::vector<std::string> faults::List() {
    std::vector<std::string> lines;
    for (const auto& entry : sim::SimPanel::Instance().State().failures) {
        const sim::Failure& failure = entry.second;
        lines.push_back(entry.first + "  " + EffectText(failure) + ", " +
                        (failure.times > 0    ? CallsText(failure.times) + " more"
                         : failure.times == 0 ? "no more"
                                              : CallsText(failure.times)) +
                        "; " + std::to_string(failure.hits) +
                        (failure.hits == 1 ? " hit" : " hits"));
    }
    return lines;
}
