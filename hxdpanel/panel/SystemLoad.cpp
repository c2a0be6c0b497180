#include "hxdpanel/panel/SystemLoad.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/PanelFile.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

const std::string PROC = "/proc/";
const std::string MACHINE_FILES = "/run/machine/";

// So many that what the machine's counters went on since the last reading does not matter.
constexpr long long STEP_JIFFIES = 100000;
constexpr long long LARGEST_COUNTER = 1000000000;   // the driver reads 32 bits
constexpr long long MOST_MEMORY = (2LL << 40) - 1;  // so does it the KiB of memory

bool CopyFromMachine(const char* name) {
    std::string text;
    return panelfile::Read(MACHINE_FILES + name, text) && !text.empty() &&
           panelfile::Write(PROC + name, text);
}

// Counters of the first line, after its name; the fourth is the idle one.
void ReadCounters(long long& busy, long long& idle) {
    std::string text;
    panelfile::Read(PROC + "stat", text);
    std::istringstream line(text.substr(0, text.find('\n')));
    std::string name;
    line >> name;
    long long counter = 0;
    busy = idle = 0;
    for (int i = 0; i < 7 && line >> counter; ++i)
        (i == 3 ? idle : busy) += counter;
}

std::string WithAvailable(const std::string& text, long long kiB) {
    const std::string key = "MemAvailable:";
    const std::string line = key + "   " + std::to_string(kiB) + " kB";
    const std::size_t start = text.find(key);
    if (start == std::string::npos)
        return line + "\n" + text;
    const std::size_t end = std::min(text.find('\n', start), text.size());
    return text.substr(0, start) + line + text.substr(end);
}

HardwareResult NotOwn(const char* name) {
    return HardwareResult::Refused("this panel's " + PROC + name +
                                   " is the machine's own and cannot be changed");
}

}  // namespace

SystemLoad::SystemLoad(const std::vector<std::string>& panels) : m_panels(panels) {
    Reset();
}

void SystemLoad::Reset() {
    const auto source = [this](const std::string& name) {
        const auto isIn = [&](std::string panel) {
            panel.append("/root/proc/").append(name);
            return ::access(panel.c_str(), F_OK) == 0;
        };
        if (std::any_of(m_panels.begin(), m_panels.end(), isIn))
            return PANEL;
        return ::access((MACHINE_FILES + name).c_str(), F_OK) == 0 ? MACHINE : PANEL;
    };
    m_eCpu = source("stat");
    m_eMemory = source("meminfo");
}

void SystemLoad::BringUpToDate() {
    if (m_eCpu == MACHINE)
        CopyFromMachine("stat");
    else if (m_eCpu == USER)
        AdvanceCounters();
    if (m_eMemory == MACHINE)
        CopyFromMachine("meminfo");
}

void SystemLoad::AdvanceCounters() {
    const long long busy = std::llround(m_dUse * STEP_JIFFIES);
    if (m_llBusy > LARGEST_COUNTER || m_llIdle > LARGEST_COUNTER)
        m_llBusy = m_llIdle = 0;  // the reading in which they go back repeats the one before
    m_llBusy += busy;
    m_llIdle += STEP_JIFFIES - busy;
    const std::string counters =
        std::to_string(m_llBusy) + " 0 0 " + std::to_string(m_llIdle) + " 0 0 0 0 0 0\n";
    panelfile::Write(PROC + "stat", "cpu  " + counters + "cpu0 " + counters);
}

HardwareResult SystemLoad::FollowMachine(Source& source, const char* name, int channel) {
    if (!CopyFromMachine(name))
        return NotOwn(name);
    source = MACHINE;
    return HardwareResult::Done(channel == CHANNEL_CPU_USE ? "the CPU use is this machine's"
                                                           : "the memory is this machine's",
                                {channel});
}

HardwareResult SystemLoad::Cpu(const Words& words) {
    double use = 0.0;
    if (words.size() == 1 && words[0] == "machine")
        return FollowMachine(m_eCpu, "stat", CHANNEL_CPU_USE);
    if (words.size() != 1 || !ParseNumber(words[0], use) || use < 0.0 || use > 1.0)
        return HardwareResult::Refused(
            "usage: cpu USE, from 0 to 1, or cpu machine for this machine's");
    std::string text;
    if (!panelfile::Read(PROC + "stat", text) || !panelfile::Write(PROC + "stat", text))
        return NotOwn("stat");
    if (m_eCpu != USER)
        ReadCounters(m_llBusy, m_llIdle);
    m_eCpu = USER;
    m_dUse = use;
    return HardwareResult::Done("the CPU is busy for " + NumberText(use) + " of the time",
                                {CHANNEL_CPU_USE});
}

HardwareResult SystemLoad::Memory(const Words& words) {
    long long bytes = 0;
    if (words.size() == 1 && words[0] == "machine")
        return FollowMachine(m_eMemory, "meminfo", CHANNEL_MEMORY_AVAILABLE);
    if (words.size() != 1 || !ParseSize(words[0], bytes))
        return HardwareResult::Refused(
            "usage: memory SIZE, for example memory 512M, or memory machine for this machine's");
    if (bytes > MOST_MEMORY)
        return HardwareResult::Refused("the driver counts memory up to 2T only");
    std::string text;
    if (!panelfile::Read(PROC + "meminfo", text) ||
        !panelfile::Write(PROC + "meminfo", WithAvailable(text, bytes / 1024)))
        return NotOwn("meminfo");
    m_eMemory = USER;
    m_llMemory = bytes;
    return HardwareResult::Done(
        NumberText(static_cast<double>(bytes) / 1048576.0) + " MiB of memory are available",
        {CHANNEL_MEMORY_AVAILABLE});
}
