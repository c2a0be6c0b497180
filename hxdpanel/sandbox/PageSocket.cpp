#include "hxdpanel/sandbox/PageSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace sandbox {

namespace {

constexpr int BACKLOG = 16;

bool Listen(int opened, const sockaddr_in& address) {
    const int yes = 1;  // or the port of a run that has just ended would be refused
    return opened >= 0 && ::setsockopt(opened, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0 &&
           ::bind(opened, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           ::listen(opened, BACKLOG) == 0;
}

}  // namespace

int OpenPageSocket(const std::string& address, int port, std::string& error) {
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<std::uint16_t>(port));
    if (::inet_pton(AF_INET, address.c_str(), &place.sin_addr) != 1) {
        error = address + " is no IPv4 address";
        return -1;
    }
    const int opened = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (Listen(opened, place))
        return opened;
    error =
        "cannot listen at " + address + ":" + std::to_string(port) + ": " + std::strerror(errno);
    if (opened >= 0)
        ::close(opened);
    return -1;
}

}  // namespace sandbox
