#include "hxdpanel/panel/PanelNetwork.h"

#include "common/File.h"
#include "hxdpanel/sandbox/GuardedCalls.h"
#include "network/ResolverText.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

const char* const PINGED_FOR_ADDRESSES = "223.5.5.5";  // by the driver, for servers without a name
const char* const RESOLVER_FILE = "/etc/resolv.conf";  // its first server, for those with one
const char* const PING = "/usr/bin/ping";
const char* const SCRIPT_FOLDER = "/run/shims";
const char* const PING_SCRIPT = "/run/shims/ping";       // the panel's ping runs it instead of PING
const char* const PUT_AWAY = "/run/shims/ping.plugged";  // the script while no cable is plugged in
const char* const NO_ANSWER = "exit 1  # no cable is plugged in\n";

std::vector<std::string> PingedAddresses() {
    std::vector<std::string> addresses = {PINGED_FOR_ADDRESSES};
    std::vector<std::string> nameServers;
    HXDCTRL::File file;
    if (file.open(RESOLVER_FILE, O_RDONLY | O_NONBLOCK) &&
        ParseNameServers(file.readAll(), nameServers) && !nameServers.empty())
        addresses.push_back(nameServers.front());
    return addresses;
}

// As the system's calls read it: "08" is no number to all of them.
bool ParseAddress(const std::string& text, sockaddr_in& address) {
    address.sin_family = AF_INET;
    return ::inet_pton(AF_INET, text.c_str(), &address.sin_addr) == 1;
}

// Only this machine's own addresses can be bound to.
bool IsOwn(int socket, const sockaddr_in& address) {
    return ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool Set(int socket, unsigned long request, const std::string& interface,
         const sockaddr_in& value) {
    ifreq argument = {};
    interface.copy(argument.ifr_name, IFNAMSIZ - 1);
    std::memcpy(&argument.ifr_addr, &value, sizeof value);
    return ::ioctl(socket, request, &argument) == 0;
}

// The alias is a name of the loopback interface, with one address of its own.
bool AddToLoopback(const std::string& alias, const std::string& text) {
    sockaddr_in address = {};
    sockaddr_in mask = {};
    ParseAddress("255.255.255.255", mask);
    const HXDCTRL::File socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return ParseAddress(text, address) && (IsOwn(socket.Descriptor(), address) ||
                                           (Set(socket.Descriptor(), SIOCSIFADDR, alias, address) &&
                                            Set(socket.Descriptor(), SIOCSIFNETMASK, alias, mask)));
}

bool AddToLoopback(const std::vector<std::string>& addresses) {
    bool added = true;
    for (std::size_t i = 0; i < addresses.size(); ++i)
        added = AddToLoopback("lo:" + std::to_string(i + 1), addresses[i]) && added;
    return added;
}

bool AnswerByScript(const std::vector<std::string>& addresses) {
    if (::access(PING_SCRIPT, F_OK) == 0)
        return true;
    ::mkdir(SCRIPT_FOLDER, 0755);
    std::ofstream script(PING_SCRIPT);
    script << "for address; do :; done  # the last argument\ncase $address in\n";
    for (const std::string& address : addresses)
        script << "    " << address << ") exit 0 ;;\n";
    script << "esac\nexit 1\n";
    script.close();
    return script.good();
}

}  // namespace

bool AnswerReachCheck() {
    const std::vector<std::string> addresses = PingedAddresses();
    const bool added = AddToLoopback(addresses);
    return (added && ::access(PING, X_OK) == 0) || AnswerByScript(addresses);
}

void SetReachable(bool reachable) {
    std::string script;
    std::getline(std::ifstream(PING_SCRIPT), script);
    const bool isOff = !script.empty() && script + "\n" == NO_ANSWER;
    if (reachable == !isOff || guard::Enabled())
        return;
    if (reachable) {
        ::unlink(PING_SCRIPT);
        std::rename(PUT_AWAY, PING_SCRIPT);  // fails where there was none
        return;
    }
    ::mkdir(SCRIPT_FOLDER, 0755);
    std::rename(PING_SCRIPT, PUT_AWAY);
    std::ofstream(PING_SCRIPT) << NO_ANSWER;
}
