#include "SimPanel.h"

#include <arpa/inet.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

sim::Interface DefaultInterface(const char* name, const char* address, const char* gateway,
                                const char* macAddress) {
    sim::Interface made = {};
    std::snprintf(made.record.name, sizeof made.record.name, "%s", name);
    inet_pton(AF_INET, address, &made.record.address);
    inet_pton(AF_INET, "255.255.255.0", &made.record.netmask);
    inet_pton(AF_INET, gateway, &made.record.gateway);
    made.macAddress = macAddress;
    return made;
}

sim::Uart PresentUart(int32_t first, int32_t second, int32_t third, int32_t fourth) {
    sim::Uart made;
    made.present = true;
    made.counters = {first, second, third, fourth};
    return made;
}

}  // namespace

namespace sim {

PanelState::PanelState()
    : serialNumber("HX2024060017"),
      brightness(80),
      lightOn(true),
      interfaces{DefaultInterface("eth0", "192.168.1.20", "192.168.1.1", "02:1a:7d:00:3c:11"),
                 DefaultInterface("eth1", "10.0.0.20", "0.0.0.0", "02:1a:7d:00:3c:12")},
      uarts{PresentUart(5820, 4180, 0, 2300), PresentUart(960, 640, 2, 120), Uart(), Uart()},
      directories{{1, "/usr/olma_app/config"}, {2, "/usr/olma_app"}, {8, "/tmp/olma_user"}},
      storageMounted(false) {}

const std::vector<std::string>& FailableFunctions() {
    static const auto& names = *new std::vector<std::string>{
        "Olma_Beep",
        "Olma_Check_Mount_Path",
        "Olma_GetDirectory",
        "__gui_get_buzzing_time",
        "__gui_get_lcdlight_status",
        "__gui_get_lcdlight_time",
        "__gui_get_serial_number",
        "__gui_reset_lcdlight_timer",
        "__gui_screen_capture",
        "hal_display_get_backlight_brightness",
        "hal_display_set_backlight_brightness",
        "hal_get_mac_address",
        "hal_get_network",
        "hal_get_network_byname",
        "hal_get_network_count",
        "hal_set_ip_addr",
        "hal_set_lcd_status",
        "hal_set_rtc_time",
        "hal_uart_info",
    };
    return names;
}

SimPanel& SimPanel::Instance() {
    static SimPanel& panel = *new SimPanel;
    return panel;
}

void SimPanel::Reset() {
    static const PanelState& asMade = *new PanelState;  // for threads, like the panel itself
    Change([](PanelState& state) { state = asMade; });
    m_clock.Run();
}

PanelState SimPanel::State() const {
    const hxd::MutexLock guard(m_lock);
    return m_state;
}

void SimPanel::Change(const std::function<void(PanelState&)>& edit) {
    const hxd::MutexLock guard(m_lock);
    edit(m_state);
}

void SimPanel::SetObserver(Observer* observer) {
    const hxd::MutexLock guard(m_lock);
    m_pObserver = observer;
}

void SimPanel::Fail(const std::string& function, const Failure& failure) {
    const auto& known = FailableFunctions();
    if (!std::binary_search(known.begin(), known.end(), function)) {
        std::fprintf(stderr, "no platform function '%s' can be made to fail\n", function.c_str());
        std::abort();
    }
    Change([&](PanelState& state) { state.failures[function] = failure; });
}

void SimPanel::Mend(const std::string& function) {
    Change([&](PanelState& state) { state.failures.erase(function); });
}

bool SimPanel::ShallFail(const char* function, int& result) {
    Failure failure;
    {
        const hxd::MutexLock guard(m_lock);
        if (m_state.failures.empty())
            return false;
        const auto found = m_state.failures.find(function);
        if (found == m_state.failures.end())
            return false;
        if (found->second.times == 0)
            return false;
        if (found->second.after > 0) {
            --found->second.after;
            return false;
        }
        ++found->second.hits;
        if (found->second.times > 0)
            --found->second.times;
        failure = found->second;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(failure.delayMs));
    result = failure.result;
    return failure.fails;
}

const char* SimPanel::KeepText(const std::string& text) {
    return text.empty() ? "" : m_texts.Keep(text);
}

}  // namespace sim
