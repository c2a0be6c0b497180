// The panel's CPU use and memory: this machine's, or what the user has set.
#ifndef HXDPANEL_SYSTEMLOAD_H
#define HXDPANEL_SYSTEMLOAD_H

#include "hxdpanel/panel/HardwareResult.h"

#include <string>
#include <vector>

class SystemLoad {
public:
    using Words = std::vector<std::string>;

    // panels: the panel's folders; what they have of /proc stays until the user sets something.
    explicit SystemLoad(const std::vector<std::string>& panels);

    HardwareResult Cpu(const Words& words);     // 0..1 or "machine"
    HardwareResult Memory(const Words& words);  // a size or "machine"
    // Before each call of the driver, which reads the files: the machine's go on, and a use that
    // was set becomes true of the time since the call before.
    void BringUpToDate();
    // As it was at the start.
    void Reset();

    enum Source { PANEL, MACHINE, USER };  // the panel's files, this machine, a command
    Source CpuSource() const { return m_eCpu; }
    Source MemorySource() const { return m_eMemory; }
    // What USER has set.
    double CpuUse() const { return m_dUse; }
    long long MemoryBytes() const { return m_llMemory; }

private:
    HardwareResult FollowMachine(Source& source, const char* name, int channel);
    void AdvanceCounters();

    std::vector<std::string> m_panels;
    Source m_eCpu = PANEL;
    Source m_eMemory = PANEL;
    double m_dUse = 0.0;
    long long m_llMemory = 0;
    long long m_llBusy = 0;  // jiffies, as /proc/stat shows them
    long long m_llIdle = 0;
};

#endif
