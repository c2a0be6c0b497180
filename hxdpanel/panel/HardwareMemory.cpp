#include "hxdpanel/panel/HardwareMemory.h"

#include "SimPanel.h"
#include "common/File.h"
#include "hxdpanel/base/Text.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <QByteArray>
#include <QCryptographicHash>

namespace {

std::string InterfaceSettings(std::size_t number, const sim::Interface& interface) {
    const hal_network_t& record = interface.record;
    return "[interface" + std::to_string(number) + "]\nname=" + record.name +
           "\naddress=" + AddressText(record.address) + "\nnetmask=" + AddressText(record.netmask) +
           "\ngateway=" + AddressText(record.gateway) +
           "\nmode=" + std::to_string(record.flags & 3) + "\nmac=" + interface.macAddress + "\n";
}

std::string Digest(const std::string& text) {
    const QByteArray bytes(text.data(), static_cast<int>(text.size()));
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().constData();
}

// The whole text or what was there before, also with other runs on the same files.
bool Replace(const std::string& path, const std::string& text) {
    std::string replacement = path + ".XXXXXX";
    const HXDCTRL::File file(::mkstemp(&replacement[0]));
    if (!file.IsOpen())
        return false;
    const bool replaced =
        ::write(file.Descriptor(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
        std::rename(replacement.c_str(), path.c_str()) == 0;
    if (!replaced)
        std::remove(replacement.c_str());
    return replaced;
}

}  // namespace

// As in a panel.ini, which this file is read like.
std::string HardwareMemory::Settings() {
    const sim::PanelState state = sim::SimPanel::instance().state();
    std::string text = "[panel]\nbrightness=" + std::to_string(state.brightness) + "\n" +
                       (state.interfaces.empty() ? "interfaces=0\n" : "");
    for (std::size_t i = 0; i < state.interfaces.size(); ++i)
        text += InterfaceSettings(i + 1, state.interfaces[i]);
    return text;
}

HardwareMemory::HardwareMemory(const std::string& file) : m_file(file) {
    m_described = "; kept for the description " + Digest(Settings());
    std::string firstLine;
    std::getline(std::ifstream(file), firstLine);
    std::string error;
    if (firstLine == m_described && !sim::SimPanel::instance().loadIni(file, error))
        std::fprintf(stderr, "hxdpanel: %s is damaged:\n%s", file.c_str(), error.c_str());
    m_saved = Settings();
}

void HardwareMemory::Save() {
    const std::string settings = Settings();
    if (settings == m_saved)
        return;
    m_saved = settings;
    if (!Replace(m_file, m_described + "\n" + settings))
        std::fprintf(stderr, "hxdpanel: cannot keep the hardware's settings in %s\n",
                     m_file.c_str());
}
