#include "hxdpanel/report/HardwareReport.h"

#include "SimPanel.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/ClockCommand.h"
#include "hxdpanel/panel/StorageWear.h"
#include "hxdpanel/panel/SystemLoad.h"

#include <chrono>
#include <cstdint>

namespace {

constexpr double MEBIBYTE = 1048576.0;

std::string SourceText(SystemLoad::Source source, const std::string& byHand) {
    switch (source) {
        case SystemLoad::MACHINE:
            return "this machine's";
        case SystemLoad::USER:
            return byHand + ", set by hand";
        case SystemLoad::PANEL:
            break;
    }
    return "as the panel's files have it";
}

// byHand: null unless it was set.
Json SourceJson(SystemLoad::Source source, const char* member, const Json& byHand) {
    static const char* const names[] = {"panel", "machine", "hand"};
    return {{"source", names[source]},
            {member, source == SystemLoad::USER ? byHand : Json(nullptr)}};
}

// As the driver counts it.
long long UsePercent(const sim::Uart& port) {
    const long long all = 0LL + port.counters.first + port.counters.second;
    return all != 0 ? port.counters.fourth * 100LL / all : 0;
}

std::string PortsText() {
    const sim::PanelState state = sim::SimPanel::Instance().State();
    std::string text;
    int number = 1;
    for (const sim::Uart& port : state.uarts) {
        text += (number > 1 ? ", COM" : "COM") + std::to_string(number) +
                (port.present ? " " + std::to_string(UsePercent(port)) + " %" : " none");
        ++number;
    }
    return text;
}

Json PortsJson(const sim::PanelState& state) {
    Json list = Json::array();
    for (const sim::Uart& port : state.uarts)
        list.push_back({{"port", list.size() + 1},
                        {"present", port.present},
                        {"percent", port.present ? Json(UsePercent(port)) : Json(nullptr)}});
    return list;
}

Json FlashJson() {
    const storagewear::Flash flash = storagewear::State();
    switch (flash.kind) {
        case storagewear::Flash::EMMC:
            return {{"kind", "eMMC"},
                    {"lifeTime", TextOrNull(flash.lifeTime)},
                    {"preEolInfo", TextOrNull(flash.preEolInfo)},
                    {"eraseSize", TextOrNull(flash.eraseSize)},
                    {"sectorsWritten", flash.sectorsWritten}};
        case storagewear::Flash::NAND:
            return {{"kind", "NAND"},
                    {"blocks", flash.blocks},
                    {"erasures", flash.erasures},
                    {"badBlocks", flash.badBlocks},
                    {"reservedBlocks", flash.reservedBlocks}};
        case storagewear::Flash::NONE:
            break;
    }
    return nullptr;
}

Json ClockJson() {
    using std::chrono::milliseconds;
    const sim::SimPanel& panel = sim::SimPanel::Instance();
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const std::int64_t real = std::chrono::duration_cast<milliseconds>(now).count();
    return {{"held", panel.ClockSpeed() <= 0.0},
            {"speed", JsonValue(HostValue::Double(panel.ClockSpeed()))},
            {"aheadMs", panel.Tick() - real}};
}

Json FailuresJson(const sim::PanelState& state) {
    Json list = Json::array();
    for (const auto& entry : state.failures)
        list.push_back(FailureJson(entry.first, entry.second));
    return list;
}

}  // namespace

Json FailureJson(const std::string& function, const sim::Failure& failure) {
    return {{"function", function},
            {"result", failure.fails ? Json(failure.result) : Json(nullptr)},
            {"slowMs", failure.delayMs},
            {"timesLeft", failure.times >= 0 ? Json(failure.times) : Json(nullptr)},
            {"after", failure.after},
            {"hits", failure.hits}};
}

std::vector<std::pair<const char*, std::string>> HardwareLines(const SystemLoad& load) {
    return {
        {"Clock", ClockState()},
        {"CPU use", SourceText(load.CpuSource(), NumberText(load.CpuUse()))},
        {"Memory",
         SourceText(load.MemorySource(),
                    NumberText(static_cast<double>(load.MemoryBytes()) / MEBIBYTE) + " MiB")},
        {"Serial ports", PortsText()},
        {"Flash", storagewear::StateText()},
    };
}

Json HardwareMembers(const SystemLoad& load) {
    const sim::PanelState state = sim::SimPanel::Instance().State();
    return {
        {"clock", ClockJson()},
        {"cpu", SourceJson(load.CpuSource(), "use", JsonValue(HostValue::Double(load.CpuUse())))},
        {"memory", SourceJson(load.MemorySource(), "bytes", load.MemoryBytes())},
        {"serialPorts", PortsJson(state)},
        {"flash", FlashJson()},
        {"failures", FailuresJson(state)}};
}
