#include "hxdpanel/page/Readings.h"

#include "SimPanel.h"
#include "common/ResultCodes.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/CommandsRun.h"
#include "hxdpanel/report/ChannelChoice.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace page {

namespace {

constexpr std::chrono::milliseconds INTERVAL{500};
constexpr std::chrono::seconds SIGN_INTERVAL{10};  // finds those who are gone
// The picture shows a clock and use that changes with every reading, and drawing it costs more than
// a reading does. Light is told at once.
constexpr std::chrono::seconds SCREEN_INTERVAL{2};

// What the picture shows: light, and the texts.
std::pair<std::string, std::string> ScreenTexts() {
    std::string light;
    std::string text;
    sim::SimPanel::Instance().Change([&](sim::PanelState& state) {
        light = (state.lightOn ? "on " : "off ") + std::to_string(state.brightness);
        text = state.serialNumber;
        for (const auto& row : state.screenRows)
            text += "\n" + row.first + "=" + row.second;
    });
    return {light, text};
}

// But for a millisecond between the two clocks that the panel's is compared with.
bool IsSamePanel(Json left, Json right) {
    constexpr long long ROUGHLY = 1000;
    for (Json* panel : {&left, &right}) {
        if (panel->is_object())
            (*panel)["clock"]["aheadMs"] =
                ((*panel)["clock"]["aheadMs"].get<long long>() + ROUGHLY / 2) / ROUGHLY;
    }
    return left == right;
}

}  // namespace

Readings::Readings(Session& session, EventHub& hub, Witness& witness)
    : m_session(session),
      m_hub(hub),
      m_witness(witness),
      m_wakeEvent(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_wakeEvent.IsOpen())
        throw std::system_error(errno, std::generic_category(), "eventfd");
    m_thread = std::thread([this] { Run(); });
}

Readings::~Readings() {
    m_bStop = true;
    Wake();
    m_thread.join();
}

void Readings::Wake() {
    const std::uint64_t one = 1;
    if (::write(m_wakeEvent.Descriptor(), &one, sizeof one) < 0) {
        // It has been set already.
    }
}

// -1: not before somebody listens.
int Readings::MillisecondsToNext() const {
    if (!m_hub.HasListeners())
        return -1;
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(m_last + INTERVAL - Clock::now());
    return static_cast<int>(std::max<long long>(0, left.count() + 1));
}

void Readings::Run() {
    while (!m_bStop) {
        pollfd event = {m_wakeEvent.Descriptor(), POLLIN, 0};
        const int milliseconds = MillisecondsToNext();
        m_bFirst = m_bFirst || milliseconds < 0;
        ::poll(&event, 1, milliseconds);
        std::uint64_t count = 0;
        if (::read(m_wakeEvent.Descriptor(), &count, sizeof count) < 0) {
            // The time has come instead.
        }
        if (m_bStop || !m_hub.HasListeners())
            continue;
        if (Clock::now() >= m_last + INTERVAL)
            Read();
        if (m_hub.HasNewListeners())
            m_hub.PublishEverything({{"channels", m_watched},
                                     {"panel", m_panel},
                                     {"screen", {{"version", m_nScreen}}}});
        if (Clock::now() >= m_lastSign + SIGN_INTERVAL) {
            m_hub.PublishNothing();
            m_lastSign = Clock::now();
        }
    }
}

void Readings::Read() {
    Json channels;
    Json panel;
    std::vector<std::string> commands;
    int status = 0;
    m_last = Clock::now();
    {
        const Session::Turn turn(m_session);
        const MutedLog muted(m_witness);
        status = m_session.Refresh();
        channels = m_session.Channels();
        panel = m_session.Panel();
        commands = CommandsRun();
    }
    panel.erase("events");  // they are told one by one
    TellChannels(channels, status);
    TellCommands(commands);
    TellPanel(panel);
    TellScreen();
    m_bFirst = false;
}

void Readings::TellChannels(const Json& channels, int status) {
    Json changed = Json::array();
    for (std::size_t i = 0; i < channels.size(); ++i) {
        if (i >= m_channels.size() || m_channels[i] != channels[i])
            changed.push_back(channels[i]);
    }
    m_channels = channels;
    Json event = JsonObject("watch", {{"time", IsoTime()},
                                      {"status", JsonStatus(status, StatusMeaning(status))},
                                      {"channels", channels}});
    m_watched = event;
    event["channels"] = changed;
    if (!changed.empty())
        m_hub.Publish("channels", event);
}

// What the driver ran before anybody listened is not told as if it were new.
void Readings::TellCommands(const std::vector<std::string>& commands) {
    const std::size_t known =
        m_bFirst || commands.size() < m_nCommands ? commands.size() : m_nCommands;
    for (std::size_t i = known; i < commands.size(); ++i)
        m_witness.Did("command", commands[i]);
    m_nCommands = commands.size();
}

void Readings::TellPanel(const Json& panel) {
    const Json event = JsonObject("panel", panel);
    const bool isSame = IsSamePanel(event, m_panel);
    const bool isLight = m_panel.is_object() && m_panel["light"] != panel["light"];
    m_panel = event;
    if (isSame)
        return;
    if (isLight && !m_bFirst)
        m_witness.Did("light", panel["light"] ? "the light is on" : "the light is off");
    m_hub.Publish("panel", event);
}

void Readings::TellScreen() {
    const std::pair<std::string, std::string> screen = ScreenTexts();
    const bool isDue = screen.first != m_strLight || m_last >= m_lastScreen + SCREEN_INTERVAL;
    if (!isDue || (screen.first == m_strLight && screen.second == m_strScreen))
        return;
    m_strLight = screen.first;
    m_strScreen = screen.second;
    m_lastScreen = m_last;
    m_hub.Publish("screen", {{"version", ++m_nScreen}});
}

}  // namespace page
