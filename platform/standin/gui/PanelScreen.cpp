#include "gui/PanelScreen.h"

#include "gui/ScreenPicture.h"

#include <QBuffer>
#include <QByteArray>

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>
#include <ctime>

using sim::PanelState;
using sim::ScreenContent;

namespace {

const int FAST = 80;  // of 100, packed least: it matters more how soon the file is there

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

// A display at 0 % still glimmers.
double LightOf(const PanelState& state) {
    const int percent = state.brightness < 0 ? 100 : state.brightness;
    return state.lightOn ? 0.06 + 0.94 * percent / 100.0 : 0.0;
}

void Dim(QImage& picture, double light) {
    unsigned char shades[256];
    for (int shade = 0; shade < 256; ++shade)
        shades[shade] = static_cast<unsigned char>(shade * light);
    for (int y = 0; y < picture.height(); ++y) {
        QRgb* const line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        std::transform(line, line + picture.width(), line, [&shades](QRgb colour) {
            return qRgb(shades[qRed(colour)], shades[qGreen(colour)], shades[qBlue(colour)]);
        });
    }
}

}  // namespace

ScreenContent sim::ContentOf(const PanelState& state) {
    ScreenContent content;
    content.title = "HMI panel";
    content.serialNumber = state.serialNumber.empty() ? "-" : state.serialNumber;
    content.clock = WallClock();
    content.footer = DisplayState(state);
    content.rows = state.screenRows.empty() ? PortRows(state) : state.screenRows;
    return content;
}

std::string sim::PanelScreenPng() {
    ScreenContent content;
    double light = 1.0;
    SimPanel::Instance().Change([&](PanelState& state) {
        content = ContentOf(state);
        light = LightOf(state);
    });
    QImage picture = DrawScreen(content);
    if (light < 1.0)
        Dim(picture, light);
    QByteArray file;
    QBuffer buffer(&file);
    if (!buffer.open(QIODevice::WriteOnly) || !picture.save(&buffer, "PNG", FAST))
        return "";
    return std::string(file.constData(), static_cast<std::size_t>(file.size()));
}
