#include "Guarded.h"
#include "olma_gui.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

using sim::GuiSettings;
using sim::PanelState;
using sim::SimPanel;

namespace {

// The lock that everyone who reads or writes the shared settings file holds meanwhile.
class SettingsFileLock {
public:
    // O_NONBLOCK: a pipe that somebody put in the file's place is not waited for.
    SettingsFileLock()
        : m_nFd(open("/tmp/olma_app_conf.lck", O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)) {
        while (m_nFd >= 0 && flock(m_nFd, LOCK_SH) != 0 && errno == EINTR) {
        }
    }
    ~SettingsFileLock() {
        if (m_nFd >= 0)
            close(m_nFd);
    }
    SettingsFileLock(const SettingsFileLock&) = delete;
    SettingsFileLock& operator=(const SettingsFileLock&) = delete;

private:
    int m_nFd;  // -1: nobody has made the lock file yet, so nobody writes
};

std::string Trimmed(const std::string& text) {
    const char* const whiteSpace = " \t\r";
    const std::size_t first = text.find_first_not_of(whiteSpace);
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(whiteSpace) - first + 1);
}

// The keys of section DEVICE. Not read with QSettings: its process-wide memory of files would show
// the GUI what the driver in this process believes to be in the file, rather than what is.
std::map<std::string, std::string> ReadDeviceSection(const std::string& path) {
    std::map<std::string, std::string> values;
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return values;  // opening a pipe would wait for its other end
    const SettingsFileLock lock;
    std::ifstream file(path);
    bool inSection = false;
    for (std::string line; std::getline(file, line);) {
        line = Trimmed(line);
        const std::size_t equals = line.find('=');
        if (!line.empty() && line[0] == '[')
            inSection = line == "[DEVICE]";
        else if (inSection && equals != std::string::npos)
            values[Trimmed(line.substr(0, equals))] = Trimmed(line.substr(equals + 1));
    }
    return values;
}

// What the GUI cannot read as a number leaves the setting as it was.
void TakeNumber(const std::string& text, int& setting) {
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (!text.empty() && *end == '\0')
        setting = static_cast<int>(std::min(std::max(number, -1000000000L), 1000000000L));
    else if (text == "true" || text == "false")
        setting = text == "true" ? 1 : 0;
}

void ReadSettingsFile(const std::string& path, GuiSettings& settings) {
    auto values = ReadDeviceSection(path);
    TakeNumber(values["buzz_duration"], settings.buzzingTime);
    TakeNumber(values["backlight_status"], settings.lightStatus);
    TakeNumber(values["backlight_duration"], settings.lightTime);
    settings.loaded = true;
}

std::string SettingsPath(const PanelState& state) {
    if (!state.settingsFile.empty())
        return state.settingsFile;
    const auto found = state.directories.find(1);
    const bool known = found != state.directories.end() && !found->second.empty();
    return (known ? found->second : "/usr/olma_app/config") + "/olma_app_conf.ini";
}

void NoteCall(const std::string& call) {
    SimPanel::Instance().Change([&](PanelState& state) { sim::Keep(state.guiCalls, call); });
}

// The file is read outside the panel's lock: its own lock may be held by another process.
void Reload(bool always) {
    GuiSettings settings;
    std::string path;
    SimPanel::Instance().Change([&](PanelState& state) {
        settings = state.guiSettings;
        path = SettingsPath(state);
    });
    if (settings.loaded && !always)
        return;
    ReadSettingsFile(path, settings);
    SimPanel::Instance().Change([&](PanelState& state) { state.guiSettings = settings; });
}

int Setting(const char* function, int reload, int GuiSettings::*setting) noexcept {
    try {
        NoteCall(function + ("(" + std::to_string(reload) + ")"));
        int result = 0;
        if (SimPanel::Instance().ShallFail(function, result))
            return result;
        Reload(reload == 1);
        SimPanel::Instance().Change(
            [&](PanelState& state) { result = state.guiSettings.*setting; });
        return result;
    } catch (...) {
        return -ENOMEM;
    }
}

}  // namespace

int __gui_get_buzzing_time(int reload) {
    return Setting(__func__, reload, &GuiSettings::buzzingTime);
}

int __gui_get_lcdlight_status(int reload) {
    return Setting(__func__, reload, &GuiSettings::lightStatus);
}

int __gui_get_lcdlight_time(int reload) {
    return Setting(__func__, reload, &GuiSettings::lightTime);
}

void __gui_reset_lcdlight_timer(void) {
    try {
        NoteCall(std::string(__func__) + "()");
        int ignored = 0;
        SimPanel::Instance().ShallFail(__func__, ignored);
    } catch (...) {
        // No memory to note the call down; there is nothing else to do.
    }
}
