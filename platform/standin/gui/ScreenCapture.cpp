#include "Guarded.h"
#include "gui/ScreenPicture.h"
#include "olma_gui.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <arpa/inet.h>

#include <cstring>
#include <ctime>
#include <string>

using sim::PanelState;
using sim::ScreenContent;
using sim::SimPanel;

namespace {

const char* const USER_DIRECTORY_MACRO = "$OLMA_DIR_USER";
const int USER_DIRECTORY_KIND = 8;

std::string TextOfAddress(uint32_t address) {
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}

std::string WallClock() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

std::string DisplayState(const PanelState& state) {
    std::string text = state.lightOn ? "light on" : "light off";
    if (state.brightness >= 0)
        text += ", brightness " + std::to_string(state.brightness) + " %";
    return text;
}

// What a panel shows whose host has not filled the table: its own ports.
std::vector<std::pair<std::string, std::string>> PortRows(const PanelState& state) {
    std::vector<std::pair<std::string, std::string>> rows;
    for (const sim::Interface& port : state.interfaces) {
        const std::string name(port.record.name,
                               strnlen(port.record.name, sizeof port.record.name));
        rows.emplace_back(name + " address", TextOfAddress(port.record.address));
        rows.emplace_back(name + " netmask", TextOfAddress(port.record.netmask));
        rows.emplace_back(name + " MAC", port.macAddress);
    }
    for (int port = 1; port <= 4; ++port) {
        const bool present = state.uarts[port - 1].present;
        rows.emplace_back("COM" + std::to_string(port), present ? "present" : "-");
    }
    return rows;
}

ScreenContent ContentOf(const PanelState& state) {
    ScreenContent content;
    content.title = "HMI panel";
    content.serialNumber = state.serialNumber.empty() ? "-" : state.serialNumber;
    content.clock = WallClock();
    content.footer = DisplayState(state);
    content.rows = state.screenRows.empty() ? PortRows(state) : state.screenRows;
    return content;
}

// A path with ".." could lead out of the user directory.
bool StaysBelow(const QString& relativePath) {
    return !relativePath.isEmpty() && !relativePath.endsWith(QLatin1Char('/')) &&
           !relativePath.split(QLatin1Char('/')).contains(QLatin1String(".."));
}

int Save(const QImage& picture, const std::string& directory, const QString& relativePath) {
    const QString path = QFile::decodeName(directory.c_str()) + QLatin1Char('/') + relativePath;
    if (!QDir().mkpath(QFileInfo(path).path()))
        return -EACCES;
    return picture.save(path, "BMP") ? 0 : -EIO;
}

int Capture(const std::string& dirMacro, const std::string& relativePath) {
    int result = 0;
    if (SimPanel::Instance().ShallFail("__gui_screen_capture", result))
        return result;
    const QString path = QFile::decodeName(relativePath.c_str());
    if (dirMacro != USER_DIRECTORY_MACRO || !StaysBelow(path))
        return -EINVAL;

    std::string directory;
    ScreenContent content;
    SimPanel::Instance().Change([&](PanelState& state) {
        const auto found = state.directories.find(USER_DIRECTORY_KIND);
        if (found != state.directories.end())
            directory = found->second;
        content = ContentOf(state);
    });
    if (directory.empty())
        return -ENOENT;
    return Save(sim::DrawScreen(content), directory, path);
}

}  // namespace

int __gui_screen_capture(const char* dirMacro, const char* relativePath, int flag, int x, int y,
                         int width, int height) {
    try {
        const sim::Capture request = {
            dirMacro ? dirMacro : "", relativePath ? relativePath : "", flag, x, y, width, height};
        SimPanel::Instance().Change([&](PanelState& state) { sim::Keep(state.captures, request); });
        return Capture(request.dirMacro, request.relativePath);
    } catch (...) {
        return -ENOMEM;
    }
}
