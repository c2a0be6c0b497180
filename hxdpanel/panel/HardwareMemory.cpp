#include "hxdpanel/panel/HardwareMemory.h"

#include "SimPanel.h"
#include "common/File.h"
#include "common/Retry.h"
#include "hxdpanel/base/Text.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <QByteArray>
#include <QCryptographicHash>

namespace {

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

HardwareMemory::Settings HardwareMemory::Current() {
    const sim::PanelState state = sim::SimPanel::Instance().State();
    Settings settings = {
        {"panel/brightness", state.brightness < 0 ? "none" : std::to_string(state.brightness)}};
    if (state.interfaces.empty())
        settings["panel/interfaces"] = "0";
    for (std::size_t i = 0; i < state.interfaces.size(); ++i) {
        const std::string section = "interface" + std::to_string(i + 1) + "/";
        const hal_network_t& record = state.interfaces[i].record;
        settings[section + "name"] = record.name;
        settings[section + "address"] = AddressText(record.address);
        settings[section + "netmask"] = AddressText(record.netmask);
        settings[section + "gateway"] = AddressText(record.gateway);
        settings[section + "mode"] = std::to_string(record.flags & 3);
        settings[section + "mac"] = state.interfaces[i].macAddress;
    }
    return settings;
}

// As in a panel.ini, which this file is read like at the start.
std::string HardwareMemory::Text(const Settings& settings) {
    std::string text;
    std::string section;
    for (const auto& setting : settings) {
        const std::size_t slash = setting.first.find('/');
        if (setting.first.substr(0, slash) != section) {
            section = setting.first.substr(0, slash);
            text += "[" + section + "]\n";
        }
        text += setting.first.substr(slash + 1) + "=" + setting.second + "\n";
    }
    return text;
}

HardwareMemory::Settings HardwareMemory::Parse(const std::string& text) {
    Settings settings;
    std::istringstream lines(text);
    std::string section;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        if (line.size() > 2 && line[0] == '[')
            section = line.substr(1, line.size() - 2);
        else if (equals != std::string::npos && line[0] != ';')
            settings[section + "/" + line.substr(0, equals)] = line.substr(equals + 1);
    }
    return settings;
}

std::string HardwareMemory::TitleOf(const Settings& described) {
    return "; kept for the description " + Digest(Text(described));
}

HardwareMemory::HardwareMemory(const std::string& file) : m_strFile(file), m_described(Current()) {
    m_strTitle = TitleOf(m_described);
    std::string firstLine;
    std::getline(std::ifstream(file), firstLine);
    std::string error;
    if (firstLine == m_strTitle && !sim::SimPanel::Instance().LoadIni(file, error))
        std::fprintf(stderr, "hxdpanel: %s is damaged:\n%s", file.c_str(), error.c_str());
    m_saved = Current();
}

// Under the folder's lock: between reading what other runs have left and replacing it.
void HardwareMemory::Save() {
    const Settings current = Current();
    if (current == m_saved)
        return;
    HXDCTRL::File folder;
    folder.open(m_strFile.substr(0, m_strFile.rfind('/')), O_RDONLY | O_DIRECTORY);
    if (folder.IsOpen())
        hxd::RetryInterrupted([&] { return ::flock(folder.Descriptor(), LOCK_EX); });
    HXDCTRL::File present;
    present.open(m_strFile, O_RDONLY);
    const std::string text = present.IsOpen() ? present.readAll() : "";
    Settings merged = text.compare(0, m_strTitle.size(), m_strTitle) == 0 ? Parse(text) : m_saved;
    for (const auto& setting : m_saved) {
        if (current.count(setting.first) == 0)
            merged.erase(setting.first);
    }
    for (const auto& setting : current) {
        const auto saved = m_saved.find(setting.first);
        if (saved == m_saved.end() || saved->second != setting.second)
            merged[setting.first] = setting.second;
    }
    m_saved = current;
    if (!Replace(m_strFile, m_strTitle + "\n" + Text(merged)))
        std::fprintf(stderr, "hxdpanel: cannot keep the hardware's settings in %s\n",
                     m_strFile.c_str());
}

void HardwareMemory::Forget() {
    std::remove(m_strFile.c_str());
    m_described = m_saved = Current();
    m_strTitle = TitleOf(m_described);
}

std::vector<std::string> HardwareMemory::Differences() const {
    std::vector<std::string> lines;
    for (const auto& setting : Current()) {
        const auto described = m_described.find(setting.first);
        const bool isNew = described == m_described.end();
        if (isNew || described->second != setting.second)
            lines.push_back(setting.first + " = " + Visible(setting.second) +
                            (isNew ? "" : " (described as " + Visible(described->second) + ")"));
    }
    return lines;
}
