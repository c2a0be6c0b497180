#include "hxdpanel/panel/HardwareCommands.h"

#include "SimPanel.h"
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/Cables.h"
#include "hxdpanel/panel/ClockCommand.h"
#include "hxdpanel/panel/Faults.h"
#include "hxdpanel/panel/StorageWear.h"

namespace {

using Hardware = HardwareCommands;
using Words = Hardware::Words;

HardwareResult Light(Hardware&, const Words& words) {
    if (words.size() != 1 || (words[0] != "on" && words[0] != "off"))
        return HardwareResult::Refused("usage: light on, or light off");
    sim::SimPanel::Instance().Change(
        [&](sim::PanelState& state) { state.lightOn = words[0] == "on"; });
    return HardwareResult::Done("the light is " + words[0], {});
}

HardwareResult Brightness(Hardware&, const Words& words) {
    long long percent = HAL_NO_SUCH_DEVICE;
    const bool isNone = words.size() == 1 && words[0] == "none";
    if (words.size() != 1 || (!isNone && !ParseWhole(words[0], 0, 100, percent)))
        return HardwareResult::Refused(
            "usage: brightness PERCENT, or brightness none for a panel without the control");
    sim::SimPanel::Instance().Change(
        [&](sim::PanelState& state) { state.brightness = static_cast<int>(percent); });
    return HardwareResult::Done(
        isNone ? "the panel has no brightness control" : "the brightness is " + words[0] + " %",
        {CHANNEL_BRIGHTNESS});
}

template <HardwareResult (PanelRestart::*RUN)()>
HardwareResult SwitchOffAndOn(Hardware& hardware, const Words& words) {
    return words.empty() ? (hardware.Restart().*RUN)()
                         : HardwareResult::Refused("this takes no " + Quoted(words[0]));
}

HardwareResult Reset(Hardware& hardware, const Words& words) {
    if (words.empty())
        hardware.Load().Reset();
    return SwitchOffAndOn<&PanelRestart::Reset>(hardware, words);
}

template <HardwareResult (*RUN)(const Words& words)>
HardwareResult Plain(Hardware&, const Words& words) {
    return RUN(words);
}

Words Functions(const Words& words) {
    return words.empty() ? sim::FailableFunctions() : Words();
}

Words Failing(const Words& words) {
    Words names;
    if (!words.empty())
        return names;
    for (const auto& failure : sim::SimPanel::Instance().State().failures)
        names.push_back(failure.first);
    names.emplace_back("all");
    return names;
}

Words Interfaces(const Words& words) {
    return words.empty() ? cables::InterfaceNames() : Words();
}

Words OnOff(const Words& words) {
    return words.empty() ? Words{"on", "off"} : Words();
}
Words Machine(const Words& words) {
    return words.empty() ? Words{"machine"} : Words();
}
Words Ports(const Words& words) {
    if (words.size() == 1)
        return {"off"};
    return words.empty() ? Words{"1", "2", "3", "4"} : Words();
}
Words NoControl(const Words& words) {
    return words.empty() ? Words{"none"} : Words();
}
Words ClockWords(const Words& words) {
    return words.empty() ? Words{"+1h", "x60", "hold", "run"} : Words();
}
Words Nothing(const Words&) {
    return {};
}

}  // namespace

const std::vector<Hardware::Row>& HardwareCommands::Table() {
    static const std::vector<Row> table = {
        {"fail",
         "NAME [RESULT[,TIMES]]",
         "let a function of the platform fail, with -1 and every time if not told",
         Plain<faults::Fail>,
         Functions,
         {"RESULT is what the function returns instead of working, TIMES how many calls are "
          "concerned. panel lists the failures with their hits; Tab completes NAME."},
         {"fail hal_uart_info", "fail hal_display_get_backlight_brightness -5",
          "fail hal_get_network -1,2"}},
        {"slow",
         "NAME MS[,TIMES]",
         "let it take longer",
         Plain<faults::Slow>,
         Functions,
         {"MS are milliseconds of real time, up to 600000; TIMES how many calls are concerned. It "
          "takes the place of a failure of the same function."},
         {"slow hal_set_ip_addr 2000", "slow hal_uart_info 300,1"}},
        {"mend",
         "NAME|all",
         "let it work again",
         Plain<faults::Mend>,
         Failing,
         {},
         {"mend hal_uart_info", "mend all"}},
        {"unplug",
         "NAME",
         "take a network interface away",
         Plain<cables::Unplug>,
         Interfaces,
         {"The interfaces after it move up by one place. With all of them gone no time server can "
          "be reached."},
         {"unplug eth1"}},
        {"plug", "NAME", "put it back", Plain<cables::Plug>, Interfaces, {}, {"plug eth1"}},
        {"com",
         "PORT PERCENT|off",
         "how much a serial port is used, or that it is not there",
         Plain<cables::Com>,
         Ports,
         {"PORT is 1 to 4, or COM1 to COM4."},
         {"com 1 75", "com COM2 off"}},
        {"disk",
         "[write SIZE | wear WHAT VALUE...]",
         "write to the flash (disk write 300M) or wear it: life_time 0x05 [0x02], pre_eol_info "
         "0x02, erase_count N or +N, bad_blocks N",
         Plain<storagewear::Disk>,
         storagewear::Candidates,
         {"Without arguments it says how worn the flash is. Channel 27 counts what is written hour "
          "by hour; life is measured once an hour and at the start, so clock +1h or restart shows "
          "it.",
          "life_time and pre_eol_info are an eMMC's (none: it does not tell them), erase_count and "
          "bad_blocks NAND flash's."},
         {"disk write 300M", "clock +1h", "disk wear life_time 0x05 0x02",
          "disk wear bad_blocks 12"}},
        {"memory", "SIZE|machine", "memory that is available, or this machine's",
         [](Hardware& hardware, const Words& words) { return hardware.Load().Memory(words); },
         Machine},
        {"cpu", "USE|machine", "CPU use from 0 to 1, or this machine's",
         [](Hardware& hardware, const Words& words) { return hardware.Load().Cpu(words); },
         Machine},
        {"light", "on|off", "the light behind the display", Light, OnOff},
        {"brightness", "PERCENT|none", "the display's brightness, or that it cannot be set",
         Brightness, NoControl},
        {"clock",
         "[+TIME | xSPEED | hold | run]",
         "let time pass (clock +1h), faster (clock x60), or not at all",
         Plain<::Clock>,
         ClockWords,
         {"It is the clock by which the driver measures hours and pauses, not the time of day. "
          "Units: ms, s, m, h, d. While it is held, the driver's own waiting moves it."},
         {"clock +1h", "clock x60", "clock hold", "clock run"}},
        {"restart", "", "switch the panel off and on; files, settings and hardware stay",
         SwitchOffAndOn<&PanelRestart::Restart>, Nothing},
        {"reset", "", "the panel as it was delivered: settings, logs and hardware", Reset, Nothing},
    };
    return table;
}

const Hardware::Row* HardwareCommands::Find(const std::string& name) {
    for (const Row& row : Table()) {
        if (name == row.name)
            return &row;
    }
    return nullptr;
}

Words HardwareCommands::Candidates(const std::string& line) {
    Words words = SplitWords(line);
    const bool isUnfinished = !line.empty() && line.back() != ' ';
    const std::string begun = isUnfinished && !words.empty() ? words.back() : "";
    if (isUnfinished && !words.empty())
        words.pop_back();
    const Row* const row = words.empty() ? nullptr : Find(words[0]);
    return row != nullptr ? Beginning(begun, row->candidates(Words(words.begin() + 1, words.end())))
                          : Words();
}

HardwareCommands::HardwareCommands(const PanelRestart& restart,
                                   const std::vector<std::string>& panels)
    : m_restart(restart), m_load(panels) {
    sim::SimPanel::Instance().MoveHeldClock();
}

// Fast, because the device that ends now waits for threads that sleep by this clock.
HardwareCommands::~HardwareCommands() {
    sim::SimPanel::Instance().RunClock(1000.0);
}

HardwareResult HardwareCommands::Run(const std::string& line) {
    const Words words = SplitWords(line);
    const Row* const row = words.empty() ? nullptr : Find(words[0]);
    if (row == nullptr)
        return HardwareResult::Refused("this is no command of the hardware");
    return row->run(*this, Words(words.begin() + 1, words.end()));
}
