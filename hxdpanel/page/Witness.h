// Tells the page what happens to the panel, as it happens, whoever has caused it.
#ifndef HXDPANEL_WITNESS_H
#define HXDPANEL_WITNESS_H

#include "SimPanel.h"
#include "common/Mutex.h"
#include "hxdpanel/console/SharedRun.h"
#include "hxdpanel/host/DriverOutput.h"
#include "hxdpanel/page/EventHub.h"

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace page {

class Witness : public RunWatcher, public sim::Observer {
public:
    // changed: called when something has been done that the next reading may show. From here on
    // until the end; all that is passed outlives the object.
    Witness(EventHub& hub, SharedRun& shared, DriverOutput& output, std::function<void()> changed);
    ~Witness() override;
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    void Acted(const std::string& by, const std::string& line, int status,
               const std::string& meaning) override;
    void Restarted(const std::string& why) override;

    void Did(const sim::Beep& beep) override;
    void Did(const sim::Capture& capture) override;
    void Did(const std::string& guiCall) override;
    void Did(const hal_network_t& appliedRecord) override;
    void Did(const std::tm& rtcSetting) override;
    void Did(const sim::LogLine& line) override;
    void Did(const char* kind, const std::string& text, const Json& more = Json::object());

    // Lines of the driver from here on; what there was before is forgotten.
    void CollectLines();
    std::vector<std::string> TakeLines();

    int Restarts() const { return m_nRestarts; }

private:
    friend class MutedLog;
    void PrintedByDriver(const std::string& line);
    void Log(const char* level, const std::string& text);

    EventHub& m_hub;
    SharedRun& m_shared;
    DriverOutput& m_output;
    const std::function<void()> m_changed;
    std::atomic<bool> m_bLogMuted{false};
    std::atomic<int> m_nRestarts{0};

    hxd::Mutex m_lock;
    bool m_bCollecting HXD_GUARDED_BY(m_lock) = false;
    std::vector<std::string> m_lines HXD_GUARDED_BY(m_lock);
};

// Made in the session's turn, and gone with it: readings log the same every time, and nothing of it
// is told.
class MutedLog {
public:
    explicit MutedLog(Witness& witness) : m_witness(witness) { m_witness.m_bLogMuted = true; }
    ~MutedLog() { m_witness.m_bLogMuted = false; }
    MutedLog(const MutedLog&) = delete;
    MutedLog& operator=(const MutedLog&) = delete;

private:
    Witness& m_witness;
};

}  // namespace page

#endif
