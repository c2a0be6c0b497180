#include "hal/Guarded.h"
#include "olma_gui.h"

#include <QSettings>
#include <QString>
#include <QVariant>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <string>

using sim::GuiSettings;
using sim::PanelState;
using sim::SimPanel;

namespace {

// The lock that everyone who reads or writes the shared settings file holds meanwhile.
class SettingsFileLock {
public:
    SettingsFileLock() : m_nFd(open("/tmp/olma_app_conf.lck", O_RDONLY | O_CLOEXEC | O_NOFOLLOW)) {
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

// What the GUI cannot read as a number leaves the setting as it was.
void ReadNumber(const QSettings& file, const char* key, int& setting) {
    const QString text =
        file.value(QString::fromLatin1("DEVICE/") + QString::fromLatin1(key)).toString().trimmed();
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber)
        setting = number;
    else if (text == QLatin1String("true"))
        setting = 1;
    else if (text == QLatin1String("false"))
        setting = 0;
}

void ReadSettingsFile(const std::string& path, GuiSettings& settings) {
    const SettingsFileLock lock;
    QSettings file(QString::fromUtf8(path.c_str()), QSettings::IniFormat);
    file.setIniCodec("UTF-8");
    ReadNumber(file, "buzz_duration", settings.buzzingTime);
    ReadNumber(file, "backlight_status", settings.lightStatus);
    ReadNumber(file, "backlight_duration", settings.lightTime);
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
    SimPanel::instance().change([&](PanelState& state) { sim::Keep(state.guiCalls, call); });
}

// The file is read outside the panel's lock: its own lock may be held by another process.
void Reload(bool always) {
    GuiSettings settings;
    std::string path;
    SimPanel::instance().change([&](PanelState& state) {
        settings = state.guiSettings;
        path = SettingsPath(state);
    });
    if (settings.loaded && !always)
        return;
    ReadSettingsFile(path, settings);
    SimPanel::instance().change([&](PanelState& state) { state.guiSettings = settings; });
}

int Setting(const char* function, int reload, int GuiSettings::*setting) noexcept {
    try {
        NoteCall(function + ("(" + std::to_string(reload) + ")"));
        int result = 0;
        if (SimPanel::instance().shallFail(function, result))
            return result;
        Reload(reload == 1);
        SimPanel::instance().change(
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
        SimPanel::instance().shallFail(__func__, ignored);
    } catch (...) {
        // No memory to note the call down; there is nothing else to do.
    }
}
