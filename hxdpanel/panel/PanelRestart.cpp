#include "hxdpanel/panel/PanelRestart.h"

#include "SimPanel.h"
#include "common/Retry.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/panel/CommandsRun.h"
#include "hxdpanel/panel/HardwareMemory.h"
#include "hxdpanel/panel/PanelFile.h"
#include "hxdpanel/sandbox/Sandbox.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <numeric>
#include <utility>

#include <QDir>
#include <QFile>
#include <QStringList>

namespace {

std::vector<int> AllChannels() {
    std::vector<int> numbers(CHANNEL_COUNT);
    std::iota(numbers.begin(), numbers.end(), 1);
    return numbers;
}

void ForgetEvents(sim::PanelState& state) {
    state.lightOn = true;
    state.guiSettings = sim::GuiSettings();
    state.beeps.clear();
    state.captures.clear();
    state.guiCalls.clear();
    state.appliedRecords.clear();
    state.rtcSettings.clear();
}

// The stand-ins' factory state, but for what this program has set up.
void ForgetHardware() {
    sim::SimPanel& panel = sim::SimPanel::Instance();
    const sim::PanelState before = panel.State();
    panel.Change([&](sim::PanelState& state) {
        state = sim::PanelState();
        state.directories = before.directories;
        state.echoLogLevel = before.echoLogLevel;
        state.screenRows = before.screenRows;
    });
}

void RestoreProc(const std::string& panel) {
    const QDir folder(QFile::decodeName((panel + "/root/proc").c_str()));
    for (const QString& name : folder.entryList(QDir::Files)) {
        std::string text;
        if (panelfile::Read(QFile::encodeName(folder.filePath(name)).constData(), text))
            panelfile::Write("/proc/" + std::string(QFile::encodeName(name).constData()), text);
    }
}

// Not a QProcess, which an emulated program could not wait for.
bool RunScript(const std::string& script, const std::string& panels) {
    std::string words[] = {"sh", script, panels, "reset"};
    char* const arguments[] = {&words[0][0], &words[1][0], &words[2][0], &words[3][0], nullptr};
    pid_t child = -1;
    if (::posix_spawnp(&child, "sh", nullptr, nullptr, arguments, environ) != 0)
        return false;
    int status = 0;
    return hxd::RetryInterrupted([&] { return ::waitpid(child, &status, 0); }) == child &&
           WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

PanelRestart::PanelRestart(const PanelFiles& files, HardwareMemory& memory,
                           std::function<bool()> restartDriver)
    : m_files(files), m_memory(memory), m_restartDriver(std::move(restartDriver)) {}

// The clock runs meanwhile: ending the device waits for threads that sleep by it.
HardwareResult PanelRestart::Restart() {
    sim::SimPanel& panel = sim::SimPanel::Instance();
    m_memory.Save();
    panel.Change(ForgetEvents);
    ForgetCommandsRun();
    const double speed = panel.ClockSpeed();
    panel.RunClock();
    const bool started = m_restartDriver();
    if (speed > 0.0)
        panel.RunClock(speed);
    else
        panel.HoldClock();
    return started ? HardwareResult::Done("the panel has restarted", AllChannels())
                   : HardwareResult::Refused("the driver refuses to start again");
}

HardwareResult PanelRestart::Reset() {
    std::string error;
    if (!(m_files.IsPrivate() ? RestoreFiles() : ResetSettings(m_files)))
        return HardwareResult::Refused("the panel's files cannot be restored");
    ForgetHardware();
    if (!LoadDescription(m_files, error))
        return HardwareResult::Refused(error);
    m_memory.Forget();
    HardwareResult result = Restart();
    if (!result.ok)
        return result;
    return HardwareResult::Done(m_files.IsPrivate()
                                    ? "the panel is as it was delivered"
                                    : "hardware and settings are as delivered; without the "
                                      "sandbox what lies in /etc, /storage and /tmp stays",
                                result.channels);
}

bool PanelRestart::RestoreFiles() const {
    std::string panels;
    for (const std::string& panel : m_files.panels)
        panels += panel + "\n";
    const std::string script = sandbox::Companion("sandbox/panel-files");
    if (script.empty() || !RunScript(script, panels))
        return false;
    for (const std::string& panel : m_files.panels)
        RestoreProc(panel);
    return true;
}
