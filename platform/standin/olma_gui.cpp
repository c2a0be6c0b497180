// libolma-gui: what the host's GUI process offers, on the simulated panel.
#include "olma_gui.h"

#include "Remember.h"
#include "ScreenPicture.h"
#include "SimPanel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

using sim::PanelState;
using sim::SimPanel;

namespace {

// A setting that the GUI reads from its file when it is told to, and remembers.
struct GuiSetting {
    const char* function;
    const char* key;
    int value;
};
GuiSetting g_buzzing = {"__gui_get_buzzing_time", "buzz_duration", 0};
GuiSetting g_lightStatus = {"__gui_get_lcdlight_status", "backlight_status", 0};
GuiSetting g_lightTime = {"__gui_get_lcdlight_time", "backlight_duration", 0};
std::mutex g_settingsLock;  // guards the values

QString SettingsFile() {
    const PanelState state = SimPanel::instance().state();
    if (!state.settingsFile.empty())
        return QString::fromStdString(state.settingsFile);
    const auto directory = state.directories.find(1);
    return QString::fromStdString(directory != state.directories.end() ? directory->second : "") +
           QStringLiteral("/olma_app_conf.ini");
}

int Read(GuiSetting& setting, int reload) {
    SimPanel::instance().change([&](PanelState& state) {
        sim::Remember(state.guiCalls,
                      std::string(setting.function) + "(" + std::to_string(reload) + ")");
    });
    int result = 0;
    if (SimPanel::instance().shallFail(setting.function, result))
        return result;
    const std::lock_guard<std::mutex> locker(g_settingsLock);
    if (reload != 0) {
        const QSettings settings(SettingsFile(), QSettings::IniFormat);
        const QString text =
            settings.value(QStringLiteral("DEVICE/") + QLatin1String(setting.key)).toString();
        setting.value = text == QLatin1String("true") ? 1 : text.toInt();
    }
    return setting.value;
}

bool SavePicture(const std::string& relativePath) {
    const PanelState state = SimPanel::instance().state();
    const auto directory = state.directories.find(8);
    if (directory == state.directories.end() || relativePath.empty())
        return false;
    const QString path = QString::fromStdString(directory->second + "/" + relativePath);
    return QDir().mkpath(QFileInfo(path).path()) && sim::DrawScreen(state).save(path, "BMP");
}

}  // namespace

int __gui_screen_capture(const char* dirMacro, const char* relativePath, int flag, int x, int y,
                         int width, int height) {
    if (dirMacro == nullptr || relativePath == nullptr)
        return -1;
    const sim::Capture capture = {dirMacro, relativePath, flag, x, y, width, height};
    SimPanel::instance().change([&](PanelState& state) { sim::Remember(state.captures, capture); });
    int result = 0;
    if (SimPanel::instance().shallFail(__func__, result))
        return result;
    return capture.dirMacro == "$OLMA_DIR_USER" && SavePicture(capture.relativePath) ? 0 : -1;
}

const char* __gui_get_serial_number(void) {
    static sim::TextPool* const pool = new sim::TextPool;
    int result = 0;
    if (SimPanel::instance().shallFail(__func__, result))
        return "";
    return pool->Keep(SimPanel::instance().state().serialNumber);
}

int __gui_get_buzzing_time(int reload) {
    return Read(g_buzzing, reload);
}

int __gui_get_lcdlight_status(int reload) {
    return Read(g_lightStatus, reload);
}

int __gui_get_lcdlight_time(int reload) {
    return Read(g_lightTime, reload);
}

void __gui_reset_lcdlight_timer(void) {
    SimPanel::instance().change([](PanelState& state) {
        sim::Remember<std::string>(state.guiCalls, "__gui_reset_lcdlight_timer()");
    });
}
