#include "HardwareMemory.h"

#include "PanelReport.h"
#include "SimPanel.h"

#include <cstdio>

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QSaveFile>

namespace {

std::string InterfaceSettings(std::size_t number, const sim::Interface& interface) {
    const hal_network_t& record = interface.record;
    return "[interface" + std::to_string(number) + "]\nname=" + record.name +
           "\naddress=" + AddressText(record.address) + "\nnetmask=" + AddressText(record.netmask) +
           "\ngateway=" + AddressText(record.gateway) +
           "\nmode=" + std::to_string(record.flags & 3) + "\nmac=" + interface.macAddress + "\n";
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
    const QByteArray settings = QByteArray::fromStdString(Settings());
    m_described =
        "; kept for the description " +
        QCryptographicHash::hash(settings, QCryptographicHash::Sha1).toHex().toStdString();
    QFile kept(QString::fromStdString(file));
    std::string error;
    if (kept.open(QIODevice::ReadOnly) && kept.readLine().trimmed().toStdString() == m_described &&
        !sim::SimPanel::instance().loadIni(file, error))
        std::fprintf(stderr, "hxdpanel: %s is damaged:\n%s", file.c_str(), error.c_str());
    m_saved = Settings();
}

void HardwareMemory::Save() {
    const std::string settings = Settings();
    if (settings == m_saved)
        return;
    m_saved = settings;
    const QByteArray text = QByteArray::fromStdString(m_described + "\n" + settings);
    QSaveFile file(QString::fromStdString(m_file));
    const bool written = file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    if (!written || !file.commit())
        std::fprintf(stderr, "hxdpanel: cannot keep the hardware's settings in %s\n",
                     m_file.c_str());
}
