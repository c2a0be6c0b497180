#include "network/InterfaceSettings.h"

#include "common/QtText.h"
#include "driver/record/ChannelTable.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// More than any panel has; a platform that counts wrong must not keep us in a loop.
constexpr unsigned int INTERFACE_LIMIT = 256;

constexpr std::size_t MAC_BUFFER_BYTES = 20;

CString AddressText(std::uint32_t address) {
    char text[INET_ADDRSTRLEN] = {};
    ::inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}

// Reads an optional sign and decimal digits after blanks and steps over them. Numbers too large for
// long become its limits, far outside every range asked for.
bool ReadNumber(const char*& text, long lowest, long highest) {
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    const bool found = end != text;
    text = end;
    return found && number >= lowest && number <= highest;
}

// A dotted address whose first number the channel's row accepts.
bool BeginsWithin(const char* text, const ChannelRow& row) {
    if (text == nullptr || !ReadNumber(text, row.minimum, row.maximum))
        return false;
    for (int i = 1; i < 4; ++i) {
        if (*text++ != '.' || !ReadNumber(text, 0, 255))
            return false;
    }
    return true;
}

// 0 also when they cannot be counted.
unsigned int CountInterfaces() {
    unsigned int count = 0;
    return hal_get_network_count(&count) == 0 ? std::min(count, INTERFACE_LIMIT) : 0;
}

}  // namespace

namespace CDevBas {

CString InterfaceName(const hal_network_t& record) {
    return CString(record.name, static_cast<int>(::strnlen(record.name, sizeof record.name)));
}

std::vector<InterfaceAddress> ListInterfaceAddresses() {
    std::vector<InterfaceAddress> list;
    const unsigned int count = CountInterfaces();
    for (unsigned int i = 0; i < count; ++i) {
        hal_network_t record = {};
        if (hal_get_network(i, &record) != 0)
            break;
        list.push_back({AddressText(record.address), AddressText(record.netmask)});
    }
    return list;
}

hxd::Maybe<CString> ReadMacAddress(const char* interfaceName) {
    char text[MAC_BUFFER_BYTES] = {};
    if (hal_get_mac_address(interfaceName, text) != 0)
        return {};
    CString mac(text, static_cast<int>(::strnlen(text, sizeof text)));
    mac.MakeUpper();
    return mac;
}

bool getLocalcount_name(unsigned int& count, std::vector<QString>& names) {
    const unsigned int found = CountInterfaces();
    if (found == 0)
        return false;
    for (unsigned int i = 0; i < found; ++i) {
        hal_network_t record = {};
        hal_get_network(i, &record);  // one that cannot be read keeps its place in the list
        names.push_back(hxd::FromHost(InterfaceName(record)));
    }
    count = found;
    return true;
}

bool IsAvailableIPAddr(const char* text) {
    return BeginsWithin(text, *FindChannel(CHANNEL_IP_ADDRESS_1));
}

bool IsAvailableMaskAddr(const char* text) {
    return BeginsWithin(text, *FindChannel(CHANNEL_NETMASK_1));
}

bool setLocalIp(QString& address, int which, QString& interfaceName) {
    const QByteArray name = hxd::ToHostBytes(interfaceName);
    char buffer[sizeof hal_network_t::name] = {};
    if (static_cast<std::size_t>(name.size()) >= sizeof buffer)
        return false;
    std::copy(name.constData(), name.constData() + name.size(), buffer);

    hal_network_t record = {};
    if (hal_get_network_byname(buffer, &record) != 0)
        return false;
    if (which == 0 || which == 1) {
        // Numbers with a leading zero are octal here. What the check lets pass and inet_addr cannot
        // read ("10.1.2.3/24") becomes 255.255.255.255: whether that is taken, the platform says.
        (which == 0 ? record.address : record.netmask) =
            ::inet_addr(hxd::ToHostBytes(address).constData());
    }
    return hal_set_ip_addr(&record) == 0;
}

}  // namespace CDevBas
