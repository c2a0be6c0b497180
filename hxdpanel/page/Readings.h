// Reads the panel for those who listen, as often as the page is refreshed, and tells them what has
// changed. While nobody listens it sleeps.
#ifndef HXDPANEL_READINGS_H
#define HXDPANEL_READINGS_H

#include "common/File.h"
#include "hxdpanel/console/Session.h"
#include "hxdpanel/page/EventHub.h"
#include "hxdpanel/page/Witness.h"

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace page {

class Readings {
public:
    // What is passed outlives the object.
    Readings(Session& session, EventHub& hub, Witness& witness);
    ~Readings();
    Readings(const Readings&) = delete;
    Readings& operator=(const Readings&) = delete;

    // Somebody has begun to listen, or something has changed: a reading as soon as one is due.
    void Wake();

private:
    using Clock = std::chrono::steady_clock;

    void Run();
    void Read();
    int MillisecondsToNext() const;
    void TellChannels(const Json& channels, int status);
    void TellPanel(const Json& panel);
    void TellCommands(const std::vector<std::string>& commands);
    void TellScreen();

    Session& m_session;
    EventHub& m_hub;
    Witness& m_witness;

    HXDCTRL::File m_wakeEvent;  // eventfd
    std::atomic<bool> m_bStop{false};

    // The thread's own.
    Clock::time_point m_last;
    Clock::time_point m_lastSign;
    bool m_bFirst = true;  // since somebody listens
    Json m_channels = Json::array();
    Json m_watched;  // the event with all channels
    Json m_panel;
    std::size_t m_nCommands = 0;
    std::string m_strLight;
    std::string m_strScreen;
    Clock::time_point m_lastScreen;
    unsigned m_nScreen = 0;

    std::thread m_thread;  // started last
};

}  // namespace page

#endif
