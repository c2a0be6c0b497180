#include "hxdpanel/panel/Faults.h"

#include "SimPanel.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"

#include <algorithm>

namespace {

// Where a function's failure shows: channels, what a write to these channels leads to, and what
// else the panel is asked for.
struct Concern {
    const char* function;
    std::vector<int> channels;
    const char* writes;  // "": nothing
    const char* actions;

    std::string Seen() const {
        std::vector<std::string> places;
        for (const int channel : channels)
            places.push_back(std::to_string(channel));
        const std::string written = *writes == '\0' ? "" : writes + Joined(places);
        return written + (written.empty() || *actions == '\0' ? "" : ", ") + actions;
    }
};

const char* const WRITES = "writes to ";
const char* const WRITES_AT_GUI = "what the GUI hears of writes to ";

const std::vector<Concern>& Concerns() {
    static const std::vector<int> addresses = {CHANNEL_IP_ADDRESS_1, CHANNEL_NETMASK_1,
                                               CHANNEL_IP_ADDRESS_2, CHANNEL_NETMASK_2};
    static const std::vector<Concern> table = {
        {"Olma_Beep", {CHANNEL_BUZZER_TEST}, WRITES, ""},
        {"Olma_Check_Mount_Path", {CHANNEL_STORAGE_FREE}, "", ""},
        {"Olma_GetDirectory",
         {CHANNEL_BUZZER_ENABLED, CHANNEL_BUZZER_DURATION, CHANNEL_BACKLIGHT_AUTO_OFF,
          CHANNEL_BACKLIGHT_DELAY, CHANNEL_STORAGE_FREE},
         "",
         "settings and SAVESCREEN"},
        {"__gui_get_buzzing_time",
         {CHANNEL_BUZZER_ENABLED, CHANNEL_BUZZER_DURATION},
         WRITES_AT_GUI,
         ""},
        {"__gui_get_lcdlight_status", {CHANNEL_BACKLIGHT_AUTO_OFF}, WRITES_AT_GUI, ""},
        {"__gui_get_lcdlight_time", {CHANNEL_BACKLIGHT_DELAY}, WRITES_AT_GUI, ""},
        {"__gui_get_serial_number", {CHANNEL_SERIAL_NUMBER}, "", ""},
        {"__gui_reset_lcdlight_timer",
         {CHANNEL_BACKLIGHT_AUTO_OFF, CHANNEL_BACKLIGHT_DELAY},
         WRITES_AT_GUI,
         ""},
        {"__gui_screen_capture", {}, "", "SAVESCREEN"},
        {"hal_display_get_backlight_brightness", {CHANNEL_BRIGHTNESS}, "", ""},
        {"hal_display_set_backlight_brightness", {CHANNEL_BRIGHTNESS}, WRITES, ""},
        {"hal_get_mac_address", {CHANNEL_MAC_ADDRESS_1, CHANNEL_MAC_ADDRESS_2}, "", "GetMacInfo"},
        {"hal_get_network", addresses, "", "GetMacInfo, SetNetworkMode"},
        {"hal_get_network_byname", addresses, WRITES, ""},
        {"hal_get_network_count",
         {CHANNEL_IP_ADDRESS_1, CHANNEL_NETMASK_1, CHANNEL_IP_ADDRESS_2, CHANNEL_NETMASK_2,
          CHANNEL_MAC_ADDRESS_1, CHANNEL_MAC_ADDRESS_2},
         "",
         "GetMacInfo, SetNetworkMode"},
        {"hal_set_ip_addr", addresses, WRITES, "SetNetworkMode"},
        {"hal_set_lcd_status", {}, "", "BACKLIGHTON, BACKLIGHTOFF"},
        {"hal_set_rtc_time", {}, "", "ExecNTP"},
        {"hal_uart_info",
         {CHANNEL_UART_1, CHANNEL_UART_1 + 1, CHANNEL_UART_1 + 2, CHANNEL_UART_4},
         "",
         ""},
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
            (closest.empty() ? "; they are: " + Joined(known) : "; did you mean " + closest + "?");
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
    const std::string actions = concern != nullptr ? concern->Seen() : "";
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
    std::vector<std::string> mended;
    for (const auto& entry : sim::SimPanel::Instance().State().failures) {
        if (!all && entry.first != words[0])
            continue;
        sim::SimPanel::Instance().Mend(entry.first);
        mended.push_back(entry.first);
        const Concern* const concern = FindConcern(entry.first);
        if (concern != nullptr)
            channels.insert(channels.end(), concern->channels.begin(), concern->channels.end());
    }
    if (mended.empty())
        return HardwareResult::Done(all ? "nothing is failing" : words[0] + " is not failing", {});
    std::sort(channels.begin(), channels.end());
    channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    return HardwareResult::Done(
        Joined(mended) + (mended.size() == 1 ? " works" : " work") + " again", channels);
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
