// Reading a panel.ini; its format is described in panel.ini.example.
#include "SimPanel.h"

#include <arpa/inet.h>
#include <QFileInfo>
#include <QRegExp>
#include <QSettings>
#include <QStringList>

namespace sim {

namespace {

// One pass over the file: what is valid goes into the state, what is not into the report.
class IniReader {
public:
    IniReader(PanelState& state, const QString& path)
        : m_state(state), m_settings(path, QSettings::IniFormat) {
        m_settings.setIniCodec("UTF-8");
    }

    std::string Read() {
        ReadPanel();
        ReadDirectories();
        ReadInterfaces();
        ReadUarts();
        ReadFailures();
        for (const QString& group : m_settings.childGroups()) {
            if (!m_groupsDone.contains(group))
                Report(QLatin1Char('[') + group + QLatin1String("] is not a known section"));
        }
        for (const QString& key : m_settings.childKeys())
            Report(key + QLatin1String(" stands outside a section"));
        return m_report;
    }

private:
    void Report(const QString& line) { m_report += line.toStdString() + "\n"; }

    // Removes the key, so that what is left in the end is unknown. The list form keeps values with
    // commas whole.
    QString Take(const QString& key) {
        const QString text = m_settings.value(key).toStringList().join(QLatin1Char(','));
        m_taken << m_settings.group() + QLatin1Char('/') + key;
        return text.trimmed();
    }

    void Enter(const QString& group) {
        m_settings.beginGroup(group);
        m_keys = m_settings.childKeys();
    }

    void Leave() {
        for (const QString& key : m_keys) {
            const QString name = m_settings.group() + QLatin1Char('/') + key;
            if (!m_taken.contains(name))
                Report(name + QLatin1String(" is not a known key"));
        }
        const QString group = m_settings.group();
        m_settings.endGroup();
        m_groupsDone << group;
    }

    template <class TARGET>
    void TakeNumber(const char* key, TARGET& target, int lowest, int highest) {
        const QString name = QLatin1String(key);
        if (!m_keys.contains(name))
            return;
        const QString text = Take(name);
        bool valid = false;
        const int number = text.toInt(&valid);
        if (valid && number >= lowest && number <= highest)
            target = static_cast<TARGET>(number);
        else
            Report(m_settings.group() + QLatin1Char('/') + name + QLatin1String(": ") + text +
                   QString::fromLatin1(" is not a number from %1 to %2").arg(lowest).arg(highest));
    }

    void TakeAddress(const char* key, uint32_t& target) {
        const QString name = QLatin1String(key);
        if (!m_keys.contains(name))
            return;
        const QString text = Take(name);
        in_addr address = {};
        if (::inet_pton(AF_INET, text.toLatin1().constData(), &address) == 1)
            target = address.s_addr;
        else
            Report(m_settings.group() + QLatin1Char('/') + name + QLatin1String(": ") + text +
                   QLatin1String(" is not an IPv4 address"));
    }

    void TakeText(const char* key, std::string& target) {
        if (m_keys.contains(QLatin1String(key)))
            target = Take(QLatin1String(key)).toStdString();
    }

    void ReadPanel() {
        Enter(QStringLiteral("panel"));
        TakeText("serial", m_state.serialNumber);
        TakeNumber("brightness", m_state.brightness, -19, 100);
        TakeNumber("light", m_state.lightOn, 0, 1);
        TakeNumber("storage_mounted", m_state.storageMounted, 0, 1);
        TakeNumber("interfaces", m_interfaces, 0, 64);
        Leave();
    }

    void ReadDirectories() {
        Enter(QStringLiteral("directories"));
        for (const QString& key : m_keys) {
            bool valid = false;
            const int kind = key.toInt(&valid);
            if (valid)
                m_state.directories[kind] = Take(key).toStdString();
        }
        Leave();
    }

    // With "interfaces" or an [interfaceN] in the file, the file describes them all.
    void ReadInterfaces() {
        int described = 0;
        while (HasGroup(QString::fromLatin1("interface%1").arg(described + 1)))
            ++described;
        if (m_interfaces < 0)
            m_interfaces = described > 0 ? described : -1;
        if (m_interfaces < 0)
            return;
        m_state.interfaces.resize(static_cast<std::size_t>(m_interfaces));
        for (int i = 0; i < std::max(m_interfaces, described); ++i) {
            Interface spare = {};
            ReadInterface(
                i, i < m_interfaces ? m_state.interfaces[static_cast<std::size_t>(i)] : spare);
        }
    }

    void ReadInterface(int index, Interface& interface) {
        hal_network_t& record = interface.record;
        std::string name = record.name[0] != '\0' ? record.name : "eth" + std::to_string(index);
        Enter(QString::fromLatin1("interface%1").arg(index + 1));
        TakeText("name", name);
        if (name.size() >= sizeof record.name)
            Report(QString::fromLatin1("interface%1/name is longer than 31 bytes").arg(index + 1));
        std::snprintf(record.name, sizeof record.name, "%s", name.c_str());
        TakeAddress("address", record.address);
        TakeAddress("netmask", record.netmask);
        TakeAddress("gateway", record.gateway);
        TakeNumber("mode", record.flags, 0, 1);
        TakeText("mac", interface.macAddress);
        Leave();
    }

    void ReadUarts() {
        for (int i = 0; i < 4; ++i) {
            Uart& uart = m_state.uarts[i];
            Enter(QString::fromLatin1("uart%1").arg(i + 1));
            TakeNumber("present", uart.present, 0, 1);
            TakeNumber("first", uart.counters.first, INT32_MIN, INT32_MAX);
            TakeNumber("second", uart.counters.second, INT32_MIN, INT32_MAX);
            TakeNumber("third", uart.counters.third, INT32_MIN, INT32_MAX);
            TakeNumber("fourth", uart.counters.fourth, INT32_MIN, INT32_MAX);
            Leave();
        }
    }

    // "-5": fails with -5; "-5,3": three times; "slow,2000": works after 2 s.
    void ReadFailures() {
        Enter(QStringLiteral("failures"));
        for (const QString& key : m_keys) {
            const QString text = Take(key);
            QRegExp failing(QLatin1String("(-?\\d{1,9})(?:,\\s*(\\d{1,6}))?"));
            QRegExp slow(QLatin1String("slow,\\s*(\\d{1,6})"));
            Failure failure;
            if (failing.exactMatch(text)) {
                failure.result = failing.cap(1).toInt();
                failure.times = failing.cap(2).isEmpty() ? -1 : failing.cap(2).toInt();
            } else if (slow.exactMatch(text)) {
                failure.fails = false;
                failure.delayMs = slow.cap(1).toUInt();
            } else {
                Report(QLatin1String("failures/") + key + QLatin1String(": ") + text +
                       QLatin1String(" is neither RESULT, RESULT,TIMES nor slow,MILLISECONDS"));
                continue;
            }
            m_state.failures[key.toStdString()] = failure;
        }
        Leave();
    }

    bool HasGroup(const QString& group) const { return m_settings.childGroups().contains(group); }

    PanelState& m_state;
    QSettings m_settings;
    QStringList m_keys;   // of the section that is being read
    QStringList m_taken;  // full names
    QStringList m_groupsDone;
    int m_interfaces = -1;
    std::string m_report;
};

}  // namespace

bool SimPanel::loadIni(const std::string& path, std::string& error) {
    const QString file = QString::fromStdString(path);
    if (!QFileInfo(file).isReadable()) {
        error = path + " cannot be read\n";
        return false;
    }
    PanelState loaded = state();
    error = IniReader(loaded, file).Read();
    change([&](PanelState& current) { current = loaded; });
    return error.empty();
}

}  // namespace sim
