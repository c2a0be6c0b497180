// SimPanel::LoadIni: one table per kind of section says which keys there are and what they take.
#include "SimPanel.h"
#include "common/ResultCodes.h"

#include <QFile>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <sstream>
#include <utility>

namespace {

using sim::Failure;
using sim::Interface;
using sim::PanelState;
using sim::Uart;

// Section -> key -> text.
using Section = std::map<std::string, std::string>;
using Sections = std::map<std::string, Section>;

const std::size_t MOST_INTERFACES = 16;
const unsigned LONGEST_DELAY_MS = 600000;

// ---- Reading the file -------------------------------------------------------------------------

std::string Utf8(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

// Qt only tells that there is such a line.
std::string SyntaxProblem(QFile& file) {
    const std::string problem = "neither [section] nor key=value";
    for (int number = 1; !file.atEnd(); ++number) {
        const QByteArray line = file.readLine().trimmed();
        const bool isSection = line.startsWith('[') && line.endsWith(']');
        if (!line.isEmpty() && !line.startsWith(';') && !line.startsWith('#') && !isSection &&
            line.indexOf('=') < 1)
            return "line " + std::to_string(number) + ": " + problem;
    }
    return "a line is " + problem;
}

// False when the file cannot be read; problem may be set nevertheless. Qt splits a value at its
// commas and puts keys before the first section into "General", which it leaves out of the name.
bool ReadSections(const std::string& path, Sections& sections, std::string& problem) {
    const QString name = QFile::decodeName(path.c_str());
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        problem = Utf8(file.errorString());
        return false;
    }
    QSettings ini(name, QSettings::IniFormat);
    ini.setIniCodec("UTF-8");
    const QStringList keys = ini.allKeys();
    if (ini.status() != QSettings::NoError)
        problem = SyntaxProblem(file);
    for (const QString& key : keys) {
        const bool sectionNamed = key.contains(QLatin1Char('/'));
        const QString section =
            sectionNamed ? key.section(QLatin1Char('/'), 0, -2) : QString::fromLatin1("General");
        const QString value = ini.value(key).toStringList().join(QLatin1String(","));
        sections[Utf8(section)][Utf8(key.section(QLatin1Char('/'), -1))] = Utf8(value);
    }
    return true;
}

// ---- Values -----------------------------------------------------------------------------------

bool TakeInteger(const std::string& text, long long least, long long most, long long& value) {
    errno = 0;
    char* end = nullptr;
    const long long number = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || number < least || number > most)
        return false;
    value = number;
    return true;
}

bool TakeInt32(const std::string& text, int32_t& value) {
    long long number = 0;
    if (!TakeInteger(text, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(),
                     number))
        return false;
    value = static_cast<int32_t>(number);
    return true;
}

bool TakeSwitch(const std::string& text, bool& value) {
    static const char* const words[][2] = {
        {"off", "on"}, {"no", "yes"}, {"false", "true"}, {"0", "1"}};
    for (const auto& pair : words) {
        if (text == pair[0] || text == pair[1]) {
            value = text == pair[1];
            return true;
        }
    }
    return false;
}

bool TakeAddress(const std::string& text, uint32_t& address) {
    in_addr parsed = {};
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1)
        return false;
    address = parsed.s_addr;
    return true;
}

bool IsMacAddress(const std::string& text) {
    if (text.size() != 17)
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool fits =
            i % 3 == 2 ? text[i] == ':' : std::isxdigit(static_cast<unsigned char>(text[i])) != 0;
        if (!fits)
            return false;
    }
    return true;
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
    std::vector<std::string> pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, ',');)
        pieces.push_back(piece);
    return pieces;
}

// ---- Keys -------------------------------------------------------------------------------------

// take sets target from text, or leaves it alone and returns false; expected completes "must be".
template <class TARGET>
struct Key {
    const char* name;
    const char* expected;
    bool (*take)(const std::string& text, TARGET& target);
};

const char* const SWITCH_WORDS = "on or off";
const char* const ADDRESS_FORM = "an IPv4 address";
const char* const COUNTER_FORM = "a whole number of 32 bits";

const Key<PanelState> PANEL_KEYS[] = {
    {"serial", "a text",
     [](const std::string& text, PanelState& state) {
         state.serialNumber = text;
         return true;
     }},
    {"brightness", "0 to 100, or none (-19) for no brightness control",
     [](const std::string& text, PanelState& state) {
         const bool isNone = text == "none" || text == std::to_string(HAL_NO_SUCH_DEVICE);
         long long percent = HAL_NO_SUCH_DEVICE;
         if (!isNone && !TakeInteger(text, 0, 100, percent))
             return false;
         state.brightness = static_cast<int>(percent);
         return true;
     }},
    {"light", SWITCH_WORDS,
     [](const std::string& text, PanelState& state) { return TakeSwitch(text, state.lightOn); }},
    {"storage_mounted", SWITCH_WORDS,
     [](const std::string& text, PanelState& state) {
         return TakeSwitch(text, state.storageMounted);
     }},
    {"interfaces", "0 (no network interface); others are described in [interface1], ...",
     [](const std::string& text, PanelState& state) {
         if (text != "0")
             return false;
         state.interfaces.clear();
         return true;
     }},
};

const Key<Interface> INTERFACE_KEYS[] = {
    {"name", "1 to 31 bytes",
     [](const std::string& text, Interface& port) {
         if (text.empty() || text.size() >= sizeof port.record.name)
             return false;
         std::snprintf(port.record.name, sizeof port.record.name, "%s", text.c_str());
         return true;
     }},
    {"address", ADDRESS_FORM,
     [](const std::string& text, Interface& port) {
         return TakeAddress(text, port.record.address);
     }},
    {"netmask", ADDRESS_FORM,
     [](const std::string& text, Interface& port) {
         return TakeAddress(text, port.record.netmask);
     }},
    {"gateway", ADDRESS_FORM,
     [](const std::string& text, Interface& port) {
         return TakeAddress(text, port.record.gateway);
     }},
    {"mode", "0 or 1",
     [](const std::string& text, Interface& port) {
         if (text != "0" && text != "1")
             return false;
         port.record.flags = text == "1" ? 1 : 0;
         return true;
     }},
    {"mac", "a MAC address like 02:1a:7d:00:3c:11, or empty for one that cannot be read",
     [](const std::string& text, Interface& port) {
         if (!text.empty() && !IsMacAddress(text))
             return false;
         port.macAddress = text;
         return true;
     }},
};

const Key<Uart> UART_KEYS[] = {
    {"present", SWITCH_WORDS,
     [](const std::string& text, Uart& uart) { return TakeSwitch(text, uart.present); }},
    {"first", COUNTER_FORM,
     [](const std::string& text, Uart& uart) { return TakeInt32(text, uart.counters.first); }},
    {"second", COUNTER_FORM,
     [](const std::string& text, Uart& uart) { return TakeInt32(text, uart.counters.second); }},
    {"third", COUNTER_FORM,
     [](const std::string& text, Uart& uart) { return TakeInt32(text, uart.counters.third); }},
    {"fourth", COUNTER_FORM,
     [](const std::string& text, Uart& uart) { return TakeInt32(text, uart.counters.fourth); }},
};

// ---- Sections ---------------------------------------------------------------------------------

// Takes sections out of a file's content and into a state, collecting what was wrong.
class PanelReader {
public:
    PanelReader(const std::string& path, Sections sections)
        : m_strPath(path), m_sections(std::move(sections)) {}

    void ApplyTo(PanelState& state) {
        ApplyTable("panel", PANEL_KEYS, state);
        ApplyInterfaces(state);
        for (int port = 1; port <= 4; ++port)
            ApplyUart("uart" + std::to_string(port), state.uarts[port - 1]);
        for (const auto& entry : Taken("directories"))
            ApplyDirectory(entry.first, entry.second, state);
        for (const auto& entry : Taken("failures"))
            ApplyFailure(entry.first, entry.second, state);
        for (const auto& section : m_sections)
            Report(section.first, "",
                   "unknown section (interfaces count from 1 without gaps to 16, uarts to 4)");
    }

    const std::string& Errors() const { return m_strErrors; }

private:
    // Removes the section, so that what is left in the end is unknown.
    Section Taken(const std::string& name) {
        Section section;
        const auto found = m_sections.find(name);
        if (found != m_sections.end()) {
            section.swap(found->second);
            m_sections.erase(found);
        }
        return section;
    }

    // One line, whatever the file holds.
    void Report(const std::string& section, const std::string& key, const std::string& problem) {
        std::string line =
            m_strPath + ": [" + section + "]" + (key.empty() ? "" : " " + key) + ": " + problem;
        std::replace_if(
            line.begin(), line.end(),
            [](char byte) { return static_cast<unsigned char>(byte) < ' ' || byte == 0x7F; }, '?');
        m_strErrors += line + "\n";
    }

    template <class TARGET, std::size_t COUNT>
    void ApplyTable(const std::string& name, const Key<TARGET> (&keys)[COUNT], TARGET& target) {
        for (const auto& entry : Taken(name)) {
            const auto key = std::find_if(
                std::begin(keys), std::end(keys),
                [&](const Key<TARGET>& candidate) { return entry.first == candidate.name; });
            if (key == std::end(keys))
                Report(name, entry.first, "unknown key");
            else if (!key->take(entry.second, target))
                Report(name, entry.first, "'" + entry.second + "': must be " + key->expected);
        }
    }

    // Interfaces in the file take the place of all that were there; they are numbered from 1
    // without gaps, so a later one that is left over is reported as an unknown section.
    void ApplyInterfaces(PanelState& state) {
        std::vector<Interface> ports;
        while (ports.size() < MOST_INTERFACES) {
            const std::string number = std::to_string(ports.size() + 1);
            if (m_sections.find("interface" + number) == m_sections.end())
                break;
            Interface port = {};
            std::snprintf(port.record.name, sizeof port.record.name, "eth%zu", ports.size());
            TakeAddress("255.255.255.0", port.record.netmask);
            ApplyTable("interface" + number, INTERFACE_KEYS, port);
            ports.push_back(port);
        }
        if (!ports.empty())
            state.interfaces = ports;
    }

    // A port that is described is there, unless the section says otherwise.
    void ApplyUart(const std::string& name, Uart& uart) {
        if (m_sections.find(name) == m_sections.end())
            return;
        uart = Uart();
        uart.present = true;
        ApplyTable(name, UART_KEYS, uart);
    }

    void ApplyDirectory(const std::string& key, const std::string& path, PanelState& state) {
        long long kind = 0;
        if (!TakeInteger(key, 0, 1000, kind))
            Report("directories", key, "unknown key: must be a directory's number");
        else if (!path.empty() && path[0] != '/')
            Report("directories", key, "'" + path + "': must be an absolute path, or empty");
        else
            state.directories[static_cast<int>(kind)] = path;
    }

    void ApplyFailure(const std::string& key, const std::string& text, PanelState& state) {
        const auto& known = sim::FailableFunctions();
        Failure failure;
        if (!std::binary_search(known.begin(), known.end(), key))
            Report("failures", key, "unknown platform function");
        else if (!sim::ParseFailure(text, failure))
            Report("failures", key,
                   "'" + text + "': must be RESULT, or RESULT,TIMES, or slow,MS, or slow,MS,TIMES");
        else
            state.failures[key] = failure;
    }

    std::string m_strPath;
    Sections m_sections;
    std::string m_strErrors;
};

}  // namespace

bool sim::ParseFailure(const std::string& text, Failure& failure) {
    std::vector<std::string> pieces = SplitAtCommas(text);
    Failure taken;
    if (!pieces.empty() && pieces[0] == "slow") {
        long long delay = 0;
        if (pieces.size() < 2 || !TakeInteger(pieces[1], 1, LONGEST_DELAY_MS, delay))
            return false;
        taken.delayMs = static_cast<unsigned>(delay);
        taken.fails = false;
        pieces.erase(pieces.begin());
    } else if (pieces.empty() || !TakeInt32(pieces[0], taken.result)) {
        return false;
    }
    long long times = taken.times;
    if (pieces.size() > 2 ||
        (pieces.size() == 2 && !TakeInteger(pieces[1], 1, std::numeric_limits<int>::max(), times)))
        return false;
    taken.times = static_cast<int>(times);
    failure = taken;
    return true;
}

bool sim::SimPanel::LoadIni(const std::string& path, std::string& error) {
    Sections sections;
    std::string problem;
    if (!ReadSections(path, sections, problem)) {
        error = path + ": " + problem + "\n";
        return false;
    }
    PanelReader reader(path, std::move(sections));
    Change([&](PanelState& state) { reader.ApplyTo(state); });
    error = (problem.empty() ? "" : path + ": " + problem + "\n") + reader.Errors();
    return error.empty();
}
