#include "hxdpanel/report/PanelReport.h"

#include "SimPanel.h"
#include "common/ResultCodes.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/CommandsRun.h"
#include "hxdpanel/panel/Faults.h"
#include "hxdpanel/report/HardwareReport.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr std::size_t NEWEST = 20;  // of a longer list only so many are shown

using Lines = std::vector<std::string>;

template <class ITEMS, class TEXT>
Lines Texts(const ITEMS& items, TEXT text) {
    Lines lines;
    std::transform(items.begin(), items.end(), std::back_inserter(lines), text);
    return lines;
}

Lines InterfaceLines(const sim::PanelState& state) {
    return Texts(state.interfaces, [](const sim::Interface& interface) {
        const std::string mac =
            interface.macAddress.empty() ? "(no MAC address)" : Visible(interface.macAddress);
        return EventText(interface.record) + "  " + mac +
               (interface.plugged ? "" : "  (unplugged)");
    });
}

std::string LockText(const IVNCLock* plugin) {
    if (plugin == nullptr)
        return "no remote-view plug-in";
    const auto text = [](bool locked) { return std::string(locked ? "locked" : "free"); };
    return "panel's mouse " + text(plugin->getHMIMouseState()) + ", keyboard " +
           text(plugin->getHMIKeyboardState()) + "; remote mouse " +
           text(plugin->getVNCMouseState()) + ", keyboard " + text(plugin->getVNCKeyboardState());
}

void PrintItem(std::FILE* out, const char* title, const std::string& text) {
    constexpr std::size_t TITLES = 17;
    const std::string line = PadRight(title, TITLES) + text;
    std::fprintf(out, "%s\n", terminal::Wrapped(out, line, TITLES).c_str());
}

// One line with the title, the others below the first; nothing for an empty list.
void PrintList(std::FILE* out, const char* title, const Lines& lines) {
    const std::size_t first = lines.size() > NEWEST ? lines.size() - NEWEST : 0;
    if (first > 0) {
        PrintItem(out, title, "(" + std::to_string(first) + " older ones)");
        title = "";
    }
    for (std::size_t i = first; i < lines.size(); ++i) {
        PrintItem(out, title, lines[i]);
        title = "";
    }
}

// "ping -c 1 192.0.2.1  x73" for a line that was there before, where it was last.
Lines Folded(const Lines& lines) {
    Lines folded;
    std::map<std::string, int> counts;
    for (const std::string& line : lines)
        ++counts[line];
    std::map<std::string, int> left = counts;
    for (const std::string& line : lines) {
        if (--left[line] == 0)
            folded.push_back(line + (counts[line] > 1 ? "  x" + std::to_string(counts[line]) : ""));
    }
    return folded;
}

Lines Hits(const sim::PanelState& state) {
    Lines lines;
    for (const auto& failure : state.failures)
        lines.insert(lines.end(), static_cast<std::size_t>(failure.second.hits), failure.first);
    return lines;
}

template <class ITEMS>
Lines Events(const ITEMS& items) {
    return Texts(items, [](const auto& item) { return EventText(item); });
}

struct EventKind {
    const char* verb;
    const char* title;
    Lines (*list)(const sim::PanelState& state);
};
const EventKind EVENT_KINDS[] = {
    {"beeped", "Beeps", [](const sim::PanelState& state) { return Events(state.beeps); }},
    {"reloaded", "Settings reloads",
     [](const sim::PanelState& state) { return Texts(state.guiCalls, Visible); }},
    {"addressed", "Interfaces set",
     [](const sim::PanelState& state) { return Events(state.appliedRecords); }},
    {"clocked", "Clock set",
     [](const sim::PanelState& state) { return Texts(state.rtcSettings, TimeText); }},
    {"captured", "Screen captures",
     [](const sim::PanelState& state) { return Events(state.captures); }},
    {"ran", "Commands run", [](const sim::PanelState&) { return CommandsRun(); }},
    {"failed", nullptr, Hits},  // the failures' own list tells of them
};

template <class ITEMS, class OBJECT>
Json Objects(const ITEMS& items, OBJECT object) {
    Json list = Json::array();
    for (const auto& item : items)
        list.push_back(object(item));
    return list;
}

Json RecordJson(const hal_network_t& record) {
    return {{"name", Visible(record.name)},
            {"address", AddressText(record.address)},
            {"netmask", AddressText(record.netmask)},
            {"gateway", AddressText(record.gateway)},
            {"mode", record.flags & 3}};
}

Json InterfaceJson(const sim::Interface& interface) {
    Json object = RecordJson(interface.record);
    object["mac"] = interface.macAddress;
    object["plugged"] = interface.plugged;
    return object;
}

Json CaptureJson(const sim::Capture& capture) {
    return {{"path", capture.dirMacro + "/" + capture.relativePath},
            {"x", capture.x},
            {"y", capture.y},
            {"width", capture.width},
            {"height", capture.height}};
}

Json LockJson(const IVNCLock* plugin) {
    if (plugin == nullptr)
        return nullptr;
    return {{"panelMouse", plugin->getHMIMouseState()},
            {"panelKeyboard", plugin->getHMIKeyboardState()},
            {"remoteMouse", plugin->getVNCMouseState()},
            {"remoteKeyboard", plugin->getVNCKeyboardState()}};
}

Json EventsJson(const sim::PanelState& state) {
    return {{"beeps", Objects(state.beeps,
                              [](const sim::Beep& beep) {
                                  return Json{{"frequencyHz", beep.frequencyHz},
                                              {"milliseconds", beep.milliseconds}};
                              })},
            {"settingsReloads", state.guiCalls},
            {"interfacesSet", Objects(state.appliedRecords, RecordJson)},
            {"clockSet", Objects(state.rtcSettings, TimeText)},
            {"screenCaptures", Objects(state.captures, CaptureJson)},
            {"commandsRun", CommandsRun()}};
}

}  // namespace

Json PanelJson(const PanelSource& source) {
    const sim::PanelState state = sim::SimPanel::Instance().State();
    const bool dimmable = state.brightness != HAL_NO_SUCH_DEVICE;
    Json object = {
        {"serialNumber", state.serialNumber},
        {"light", state.lightOn},
        {"brightness", dimmable ? Json(state.brightness) : Json(nullptr)},
        {"locks", LockJson(source.plugin)},
        {"interfaces", Objects(state.interfaces, InterfaceJson)},
        {"files", source.filesOutside.empty() ? Json(nullptr) : Json(source.filesOutside)},
        {"kept", source.kept}};
    object.update(HardwareMembers(source.load));
    object["events"] = EventsJson(state);
    return object;
}

void PrintPanel(std::FILE* out, const PanelSource& source) {
    const sim::PanelState state = sim::SimPanel::Instance().State();
    const bool dimmable = state.brightness != HAL_NO_SUCH_DEVICE;
    PrintItem(out, "Serial number", Quoted(state.serialNumber));
    PrintItem(out, "Display",
              std::string("light ") + (state.lightOn ? "on" : "off") +
                  (dimmable ? ", brightness " + std::to_string(state.brightness) + " %"
                            : ", no brightness control"));
    PrintItem(out, "Input", LockText(source.plugin));
    PrintList(out, "Interfaces", InterfaceLines(state));
    PrintItem(out, "Files",
              source.filesOutside.empty()
                  ? "fresh ones, gone when this run ends"
                  : Visible(source.filesOutside) + ", kept (--fresh runs without, rm -r resets)");
    if (!source.filesOutside.empty())
        PrintList(out, "Kept settings", source.kept);
    for (const auto& line : HardwareLines(source.load))
        PrintItem(out, line.first, line.second);
    PrintList(out, "Failures", faults::List());
    std::fputs("\nSince the start of this run:\n", out);
    bool any = false;
    for (const EventKind& kind : EVENT_KINDS) {
        const Lines events = kind.title != nullptr ? kind.list(state) : Lines();
        PrintList(out, kind.title, Folded(events));
        any = any || !events.empty();
    }
    if (!any)
        std::fputs("no beep, setting, address, picture or command yet\n", out);
}

std::string EventText(const sim::Capture& capture) {
    return Visible(capture.dirMacro + "/" + capture.relativePath) + "  at " +
           std::to_string(capture.x) + "," + std::to_string(capture.y) + "  size " +
           std::to_string(capture.width) + " x " + std::to_string(capture.height);
}

std::string EventText(const sim::Beep& beep) {
    return std::to_string(beep.frequencyHz) + " Hz for " + std::to_string(beep.milliseconds) +
           " ms";
}

std::string EventText(const hal_network_t& record) {
    return Visible(record.name) + "  " + AddressText(record.address) + " / " +
           AddressText(record.netmask) + "  gateway " + AddressText(record.gateway) + "  mode " +
           std::to_string(record.flags & 3);
}

std::vector<std::string> PanelEvents(const std::string& verb) {
    for (const EventKind& kind : EVENT_KINDS) {
        if (verb == kind.verb)
            return kind.list(sim::SimPanel::Instance().State());
    }
    return {};
}

std::vector<std::string> PanelVerbs() {
    std::vector<std::string> verbs;
    for (const EventKind& kind : EVENT_KINDS)
        verbs.emplace_back(kind.verb);
    return verbs;
}
