#include "hxdpanel/page/Witness.h"

#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/PanelReport.h"

#include <cstdio>

namespace page {

namespace {

constexpr std::size_t NOTICE_COLUMNS = 160;
constexpr std::size_t MAX_LINES = 1000;  // of the driver, for one command

const char* LevelName(int level) {
    static const char* const names[] = {"?", "error", "warning", "info", "trace"};
    return names[level >= 1 && level <= 4 ? level : 0];
}

}  // namespace

Witness::Witness(EventHub& hub, SharedRun& shared, DriverOutput& output,
                 std::function<void()> changed)
    : m_hub(hub), m_shared(shared), m_output(output), m_changed(std::move(changed)) {
    {
        const hxd::MutexLock turn(m_shared.turn);
        m_shared.watcher = this;
    }
    sim::SimPanel::Instance().SetObserver(this);
    m_output.SetTap([this](const std::string& line) { PrintedByDriver(line); });
}

Witness::~Witness() {
    m_output.SetTap(nullptr);
    sim::SimPanel::Instance().SetObserver(nullptr);
    const hxd::MutexLock turn(m_shared.turn);
    m_shared.watcher = nullptr;
}

// Who sits at the console sees what the page does.
void Witness::Acted(const std::string& by, const std::string& line, int status,
                    const std::string& meaning) {
    if (by != "console") {
        const std::string text = by + ": " + Visible(line) + ": " + std::to_string(status) + " (" +
                                 Visible(meaning) + ")";
        std::fprintf(
            stderr, "%s\n",
            terminal::Styled(stderr, terminal::FAINT, Shortened(text, NOTICE_COLUMNS)).c_str());
    }
    m_hub.Publish(
        "acted",
        {{"time", IsoTime()}, {"by", by}, {"line", line}, {"status", JsonStatus(status, meaning)}});
    m_changed();
}

void Witness::Restarted(const std::string& why) {
    ++m_nRestarts;
    m_hub.Publish("restarted",
                  {{"time", IsoTime()}, {"why", why}, {"restarts", m_nRestarts.load()}});
}

void Witness::Did(const char* kind, const std::string& text, const Json& more) {
    Json event = {{"time", IsoTime()}, {"kind", kind}, {"text", text}};
    event.update(more);
    m_hub.Publish("did", event);
}

void Witness::Did(const sim::Beep& beep) {
    Did("beep", EventText(beep),
        {{"frequencyHz", beep.frequencyHz}, {"milliseconds", beep.milliseconds}});
}

void Witness::Did(const sim::Capture& capture) {
    Did("capture", EventText(capture));
}

void Witness::Did(const std::string& guiCall) {
    Did("settings", guiCall);
}

void Witness::Did(const hal_network_t& appliedRecord) {
    Did("interface", EventText(appliedRecord));
}

void Witness::Did(const std::tm& rtcSetting) {
    Did("clock", TimeText(rtcSetting));
}

void Witness::Did(const sim::LogLine& line) {
    if (!m_bLogMuted)
        Log(LevelName(line.level), "[" + line.tag + "] " + line.function + ": " + line.text);
}

void Witness::PrintedByDriver(const std::string& line) {
    {
        const hxd::MutexLock lock(m_lock);
        if (m_bCollecting && m_lines.size() < MAX_LINES)
            m_lines.push_back(line);
    }
    Log("output", line);
}

void Witness::Log(const char* level, const std::string& text) {
    m_hub.Publish("log", {{"time", IsoTime()}, {"level", level}, {"text", text}});
}

void Witness::CollectLines() {
    const hxd::MutexLock lock(m_lock);
    m_bCollecting = true;
    m_lines.clear();
}

std::vector<std::string> Witness::TakeLines() {
    const hxd::MutexLock lock(m_lock);
    m_bCollecting = false;
    return std::move(m_lines);
}

}  // namespace page
