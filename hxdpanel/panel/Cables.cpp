#include "hxdpanel/panel/Cables.h"

#include "SimPanel.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/PanelNetwork.h"

#include <algorithm>

namespace {

using cables::Words;

// Of the interfaces at a place in the list and behind it, which move by one place. The driver goes
// on showing the hardware addresses that it has read before.
std::vector<int> ChannelsFrom(std::size_t place) {
    std::vector<int> channels;
    if (place == 0)
        channels = {CHANNEL_IP_ADDRESS_1, CHANNEL_NETMASK_1};
    if (place <= 1)
        channels.insert(channels.end(), {CHANNEL_IP_ADDRESS_2, CHANNEL_NETMASK_2});
    return channels;
}

HardwareResult SetPlugged(const Words& words, bool plugged) {
    const std::string action = plugged ? "plug" : "unplug";
    if (words.size() != 1)
        return HardwareResult::Refused("usage: " + action + " NAME, for example " + action +
                                       " eth1");
    bool found = false;
    bool any = false;
    std::size_t place = 0;
    sim::SimPanel::Instance().Change([&](sim::PanelState& state) {
        for (sim::Interface& interface : state.interfaces) {
            if (interface.record.name == words[0]) {
                interface.plugged = plugged;
                found = true;
            }
            place += interface.plugged && !found ? 1 : 0;
            any = any || interface.plugged;
        }
    });
    if (!found) {
        const std::string names = Visible(Joined(cables::InterfaceNames(), " "));
        return HardwareResult::Refused("the panel has no interface " + Quoted(words[0]) +
                                       "; it has: " + (names.empty() ? "none" : names));
    }
    SetReachable(any);
    return HardwareResult::Done(words[0] + (plugged ? " is there again" : " is gone") +
                                    (any ? "" : "; no time server can be reached"),
                                ChannelsFrom(place));
}

// "1" and "COM1".
bool ParsePort(std::string text, long long& port) {
    if (EqualNames(text.substr(0, 3), "com"))
        text.erase(0, 3);
    return ParseWhole(text, 1, 4, port);
}

}  // namespace

HardwareResult cables::Unplug(const Words& words) {
    return SetPlugged(words, false);
}

HardwareResult cables::Plug(const Words& words) {
    return SetPlugged(words, true);
}

Words cables::InterfaceNames() {
    Words names;
    for (const sim::Interface& interface : sim::SimPanel::Instance().State().interfaces)
        names.emplace_back(interface.record.name);
    return names;
}

// The driver's formula is fourth * 100 / (first + second).
HardwareResult cables::Com(const Words& words) {
    long long port = 0;
    long long percent = 0;
    const bool isOff = words.size() == 2 && words[1] == "off";
    if (words.size() != 2 || !ParsePort(words[0], port) ||
        (!isOff && !ParseWhole(words[1], 0, 100, percent)))
        return HardwareResult::Refused(
            "usage: com PORT PERCENT, or com PORT off, for example com 1 75");
    sim::Uart uart;
    uart.present = !isOff;
    uart.counters = {60, 40, 0, static_cast<int32_t>(percent)};
    sim::SimPanel::Instance().Change([&](sim::PanelState& state) { state.uarts[port - 1] = uart; });
    return HardwareResult::Done(
        "COM" + std::to_string(port) + (isOff ? " is gone" : " is used to " + words[1] + " %"),
        {CHANNEL_UART_1 + static_cast<int>(port) - 1});
}
