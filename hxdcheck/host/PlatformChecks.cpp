#include "hxdcheck/host/HostChecks.h"

#include "common/ResultCodes.h"
#include "hxdpanel/base/Text.h"
#include "mfc/CArray.h"
#include "mfc/CString.h"
#include "olma_gui.h"
#include "olma_hal.h"
#include "olma_host.h"
#include "toolscom.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace {

constexpr float SLOW_MS = 200.0F;

// A record that the platform fills, with bytes behind it that it must leave alone.
template <class RECORD>
class Guarded {
public:
    // Calls fill twice, with different bytes behind the record; its first result.
    template <class FILL>
    int Call(FILL fill) {
        int result = 0;
        for (const std::uint8_t guard : {std::uint8_t(0xA5), std::uint8_t(0x5A)}) {
            std::memset(&m_space, 0, sizeof m_space.record);
            std::memset(m_space.guard, guard, sizeof m_space.guard);
            result = fill(&m_space.record);
            for (std::size_t i = 0; i < sizeof m_space.guard; ++i) {
                if (m_space.guard[i] != guard)
                    m_nBeyond = std::max(m_nBeyond, i + 1);
            }
        }
        return result;
    }

    const RECORD& Get() const { return m_space.record; }

    // The finding unless the record was overrun.
    Finding Or(const Finding& finding, const char* name) const {
        if (m_nBeyond == 0)
            return finding;
        return Wrong("the library writes at least " + std::to_string(m_nBeyond) + " bytes beyond " +
                         name + " of " + std::to_string(sizeof(RECORD)) +
                         " bytes; the driver would crash",
                     "bring the type in olma_hal.h into line with the vendor's, field by field, "
                     "and build again");
    }

private:
    struct {
        RECORD record;
        unsigned char guard[256];
    } m_space = {};
    std::size_t m_nBeyond = 0;
};

std::string ResultText(int result) {
    return "gives " + std::to_string(result);
}

std::string NetworkText(const hal_network_t& network) {
    return std::string(network.name, ::strnlen(network.name, sizeof network.name)) + " " +
           AddressText(network.address) + " mask " + AddressText(network.netmask) + " mode " +
           std::to_string(network.flags & 3);
}

Finding JudgeNetwork(int result, const Guarded<hal_network_t>& record) {
    if (result != 0)
        return record.Or(Wrong(ResultText(result), "channels 1, 2, 8 and 9 stay empty"),
                         "hal_network_t");
    const std::string text = NetworkText(record.Get());
    const std::size_t length = ::strnlen(record.Get().name, sizeof record.Get().name);
    if (length == 0 || length == sizeof record.Get().name)
        return record.Or(Wrong("the name is empty or has no end",
                               "compare hal_network_t in olma_hal.h with the vendor's"),
                         "hal_network_t");
    return record.Or(Ok(text), "hal_network_t");
}

Finding CheckBrightness() {
    const int percent = hal_display_get_backlight_brightness();
    const std::string none = std::to_string(HAL_NO_SUCH_DEVICE);
    if (percent == HAL_NO_SUCH_DEVICE)
        return Ok("no brightness control (" + none + "); channel 21 shows 100");
    return percent >= 0 && percent <= 100
               ? Ok(std::to_string(percent) + " %")
               : Wrong(ResultText(percent),
                       "must give 0 to 100, or " + none + "; a wrapper can translate");
}

Finding CheckNetworkCount() {
    unsigned int count = 0;
    const int result = hal_get_network_count(&count);
    if (result != 0)
        return Wrong(ResultText(result), "channels 1, 2, 8, 9, 22 and 23 stay empty");
    const std::string text = std::to_string(count) + (count == 1 ? " interface" : " interfaces");
    return count == 1 || count == 2
               ? Ok(text)
               : Look(text, "the driver shows addresses only on panels with one or two");
}

Finding CheckNetwork() {
    unsigned int count = 0;
    if (hal_get_network_count(&count) != 0 || count == 0)
        return Look("no interface to read", "see hal_get_network_count");
    std::string text;
    for (unsigned int i = 0; i < count && i < 16; ++i) {
        Guarded<hal_network_t> record;
        const int result =
            record.Call([i](hal_network_t* filled) { return hal_get_network(i, filled); });
        Finding finding = JudgeNetwork(result, record);
        if (finding.status != Finding::OK)
            return finding;
        text += (i > 0 ? "; " : "") + finding.text;
    }
    return Ok(text);
}

Finding CheckNetworkByName() {
    hal_network_t first[2] = {};  // the second: room for a record that is longer than ours
    if (hal_get_network(0, first) != 0)
        return Look("no interface to name", "see hal_get_network");
    first->name[sizeof first->name - 1] = '\0';
    Guarded<hal_network_t> record;
    const int result = record.Call(
        [&](hal_network_t* filled) { return hal_get_network_byname(first->name, filled); });
    Finding finding = JudgeNetwork(result, record);
    if (finding.status == Finding::OK && record.Get().address != first->address)
        return Wrong(finding.text + ", but hal_get_network says " + AddressText(first->address),
                     "one of the two is not what olma_hal.h describes");
    return finding;
}

bool IsMacAddress(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool fits =
            i % 3 == 2 ? text[i] == ':' : std::isxdigit(static_cast<unsigned char>(text[i])) != 0;
        if (!fits)
            return false;
    }
    return text.size() == 17;
}

Finding CheckMac(const char* name) {
    struct Text {
        char bytes[20];
    };
    Guarded<Text> text;
    const int result =
        text.Call([name](Text* filled) { return hal_get_mac_address(name, filled->bytes); });
    const std::string shown(text.Get().bytes, ::strnlen(text.Get().bytes, sizeof(Text)));
    if (result != 0)
        return text.Or(Look(ResultText(result), std::string("no interface named ") + name +
                                                    "? Then its channel 22 or 23 stays empty"),
                       "the text");
    return text.Or(
        IsMacAddress(shown) ? Ok(shown) : Wrong("\"" + shown + "\"", "must be aa:bb:cc:dd:ee:ff"),
        "the text");
}

Finding CheckUarts() {
    std::string text;
    for (int port = 1; port <= 4; ++port) {
        Guarded<hal_uart_info_t> info;
        const int result =
            info.Call([port](hal_uart_info_t* filled) { return hal_uart_info(port, filled); });
        Finding overrun = info.Or(Ok(""), "hal_uart_info_t");
        if (overrun.status != Finding::OK)
            return overrun;
        const hal_uart_info_t& counters = info.Get();
        text += (port > 1 ? "; " : "") + ("COM" + std::to_string(port)) + " ";
        text += result != 0
                    ? "none (" + std::to_string(result) + ")"
                    : std::to_string(counters.first) + " " + std::to_string(counters.second) + " " +
                          std::to_string(counters.third) + " " + std::to_string(counters.fourth);
    }
    return Ok(text);
}

Finding CheckDirectories() {
    std::string text;
    for (const int kind : {1, 2, 8}) {
        const char* const directory = Olma_GetDirectory(kind);
        if (directory == nullptr)
            return Wrong("gives null for kind " + std::to_string(kind),
                         "must give a text; a wrapper can turn null into \"\"");
        text += (kind == 1 ? "" : "; ") + std::to_string(kind) + " \"" + directory + "\"";
    }
    return Ok(text);
}

Finding CheckMountPath() {
    const char* const directory = Olma_GetDirectory(2);
    const int result = Olma_Check_Mount_Path(directory != nullptr ? directory : "");
    return Ok(ResultText(result) + (result == 0 ? ": directory 2 is on the root file system"
                                                : ": directory 2 is on a storage of its own"));
}

Finding CheckSerialNumber() {
    const char* const number = __gui_get_serial_number();
    if (number == nullptr)
        return Wrong("gives null", "must give a text; a wrapper can turn null into \"\"");
    return *number != '\0' ? Ok(number) : Look("none; channel 20 shows -1", "store one");
}

Finding CheckGuiSettings() {
    return Ok("buzzer " + std::to_string(__gui_get_buzzing_time(0)) + " ms, light " +
              std::to_string(__gui_get_lcdlight_status(0)) + " after " +
              std::to_string(__gui_get_lcdlight_time(0)) + " ms");
}

Finding CheckSplit() {
    std::vector<FF::utils::String> pieces;
    const int count = SplitCsvStr("a, b ,,", ',', pieces);
    if (count != 4 || pieces.size() != 4 || pieces[1] != " b " || pieces[1].trim() != "b")
        return Wrong("\"a, b ,,\" becomes " + std::to_string(pieces.size()) + " pieces",
                     "must be four, with empty ones; see toolscom.h");
    return Ok("keeps empty pieces");
}

Finding CheckMfc() {
    CString text;
    text.Format("%s-%d", " ab", 7);
    const CString trimmed = text.Mid(0, 3).TrimLeft();
    CArray<double, double> numbers;
    numbers.SetSize(2);
    const bool zeros = numbers.GetSize() == 2 && numbers[0] == 0.0 && numbers[1] == 0.0;
    numbers.SetSize(-1);
    if (text.GetLength() != 5 || text.Find("-7") != 3 || std::strcmp(trimmed, "ab") != 0)
        return Wrong("CString gives \"" + std::string(text, 5) + "\"", "see mfc/CString.h");
    if (!zeros || numbers.GetSize() != 0)
        return Wrong("CArray: new elements are not zero, or -1 does not empty it",
                     "see mfc/CArray.h");
    return Ok("as the headers say");
}

const Check PLATFORM[] = {
    {"CString, CArray", CheckMfc},
    {"SplitCsvStr, trim", CheckSplit},
    {"hal_display_get_backlight_brightness", CheckBrightness},
    {"hal_get_network_count", CheckNetworkCount},
    {"hal_get_network", CheckNetwork},
    {"hal_get_network_byname", CheckNetworkByName},
    {"hal_get_mac_address eth0", [] { return CheckMac("eth0"); }},
    {"hal_get_mac_address eth1", [] { return CheckMac("eth1"); }},
    {"hal_uart_info", CheckUarts},
    {"Olma_GetDirectory", CheckDirectories},
    {"Olma_Check_Mount_Path", CheckMountPath},
    {"__gui_get_serial_number", CheckSerialNumber},
    {"__gui_get_buzzing_time, lcdlight", CheckGuiSettings},
};

}  // namespace

void CheckPlatform(Findings& findings) {
    findings.Group("The platform's functions");
    for (const Check& check : PLATFORM)
        findings.Run(
            check.name, [&] { return Timed(SLOW_MS, check.run); }, 10,
            "its header differs from the vendor's: compare the signature and the records, and "
            "build again");
}
