// libolma-hal: display, network, clock and serial ports of the simulated panel.
#include "olma_hal.h"

#include "Remember.h"
#include "SimPanel.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

using sim::PanelState;
using sim::SimPanel;

namespace {

constexpr int DONE = 0;
constexpr int FAILED = -1;

// What most functions do: fail if they are told to, else work on the state under its lock.
template <class WORK>
int Perform(const char* function, WORK work) {
    SimPanel& panel = SimPanel::instance();
    int result = DONE;
    if (!panel.shallFail(function, result))
        panel.change([&](PanelState& state) { result = work(state); });
    return result;
}

sim::Interface* FindInterface(PanelState& state, const char* name) {
    const auto found = std::find_if(
        state.interfaces.begin(), state.interfaces.end(), [name](const sim::Interface& interface) {
            return std::strncmp(interface.record.name, name, sizeof interface.record.name) == 0;
        });
    return found != state.interfaces.end() ? &*found : nullptr;
}

}  // namespace

int hal_display_get_backlight_brightness(void) {
    return Perform(__func__, [](PanelState& state) { return state.brightness; });
}

int hal_display_set_backlight_brightness(int percent) {
    return Perform(__func__, [=](PanelState& state) {
        if (percent < 0 || percent > 100 || state.brightness < 0)
            return FAILED;
        state.brightness = percent;
        return DONE;
    });
}

int hal_set_lcd_status(int off) {
    return Perform(__func__, [=](PanelState& state) {
        state.lightOn = off == 0;
        return DONE;
    });
}

int hal_get_network_count(unsigned int* count) {
    return Perform(__func__, [=](PanelState& state) {
        if (count == nullptr)
            return FAILED;
        *count = static_cast<unsigned int>(state.interfaces.size());
        return DONE;
    });
}

int hal_get_network(unsigned int index, hal_network_t* record) {
    return Perform(__func__, [=](PanelState& state) {
        if (record == nullptr || index >= state.interfaces.size())
            return FAILED;
        *record = state.interfaces[index].record;
        return DONE;
    });
}

int hal_get_network_byname(const char* name, hal_network_t* record) {
    return Perform(__func__, [=](PanelState& state) {
        const sim::Interface* const interface =
            name != nullptr && record != nullptr ? FindInterface(state, name) : nullptr;
        if (interface == nullptr)
            return FAILED;
        *record = interface->record;
        return DONE;
    });
}

int hal_set_ip_addr(const hal_network_t* record) {
    return Perform(__func__, [=](PanelState& state) {
        sim::Interface* const interface =
            record != nullptr ? FindInterface(state, record->name) : nullptr;
        if (interface == nullptr)
            return FAILED;
        interface->record = *record;
        sim::Remember(state.appliedRecords, *record);
        return DONE;
    });
}

int hal_get_mac_address(const char* name, char* text) {
    return Perform(__func__, [=](PanelState& state) {
        const sim::Interface* const interface =
            name != nullptr && text != nullptr ? FindInterface(state, name) : nullptr;
        if (interface == nullptr || interface->macAddress.empty())
            return FAILED;
        std::snprintf(text, 20, "%s", interface->macAddress.c_str());
        return DONE;
    });
}

int hal_set_rtc_time(const struct tm* time) {
    return Perform(__func__, [=](PanelState& state) {
        if (time == nullptr)
            return FAILED;
        sim::Remember(state.rtcSettings, *time);
        return DONE;
    });
}

int hal_uart_info(int port, hal_uart_info_t* info) {
    return Perform(__func__, [=](PanelState& state) {
        if (info == nullptr || port < 1 || port > 4 || !state.uarts[port - 1].present)
            return FAILED;
        *info = state.uarts[port - 1].counters;
        return DONE;
    });
}
