// The socket at which the panel's page is asked for. It is opened on the machine and handed into
// the sandbox, which has no network of the machine's.
#ifndef HXDPANEL_PAGESOCKET_H
#define HXDPANEL_PAGESOCKET_H

#include <string>

namespace sandbox {

// A listening TCP socket, at any free port for port 0; -1, with the reason, when it cannot be had.
// address: IPv4.
int OpenPageSocket(const std::string& address, int port, std::string& error);

}  // namespace sandbox

#endif
