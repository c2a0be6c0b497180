// The panel's network interfaces: listing, addresses and hardware addresses. The platform holds the
// settings; nothing is kept here. All functions may be called from any thread.
#ifndef HXD_INTERFACESETTINGS_H
#define HXD_INTERFACESETTINGS_H

#include "common/Maybe.h"
#include "mfc/CString.h"
#include "olma_hal.h"

#include <QString>

#include <vector>

struct InterfaceAddress {
    CString address;  // "192.168.1.10"
    CString netmask;
};

namespace CDevBas {

// The names of the interfaces, appended to names, and their number. False, with nothing changed,
// when they cannot be counted or there are none. An interface that cannot be read has an empty
// name.
bool getLocalcount_name(unsigned int& count, std::vector<QString>& names);

// Four decimal numbers with dots between: the first 1 to 223 (address) or 192 to 255 (mask), the
// others 0 to 255. Blanks before a number and text after the fourth are let pass, and whether the
// bits of a mask are contiguous is not looked at. Null is refused.
bool IsAvailableIPAddr(const char* text);
bool IsAvailableMaskAddr(const char* text);

// Replaces the IPv4 address (which 0) or the netmask (which 1) of an interface; any other number
// applies the settings as they are. address is what inet_addr() makes of it, 255.255.255.255 for a
// text that it cannot read. False when the name has 32 bytes or more, or the interface cannot be
// read or set.
bool setLocalIp(QString& address, int which, QString& interfaceName);

// The interfaces in the platform's order, up to the first that cannot be read; empty when they
// cannot be counted.
std::vector<InterfaceAddress> ListInterfaceAddresses();

// The MAC address as the platform writes it, in upper case.
hxd::Maybe<CString> ReadMacAddress(const char* interfaceName);

// The name inside a record, also when the platform left its end mark out.
CString InterfaceName(const hal_network_t& record);

}  // namespace CDevBas

#endif
