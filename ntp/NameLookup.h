// The IPv4 addresses of a host name, without being held up by name servers that do not answer.
#ifndef HXD_NAMELOOKUP_H
#define HXD_NAMELOOKUP_H

#include <netinet/in.h>

#include <string>
#include <vector>

// In the place of one of getaddrinfo()'s codes, which are all 0 or negative.
constexpr int LOOK_UP_STOPPED = 1;

// getaddrinfo() takes as long as the name servers let it wait, minutes when several of them are
// silent, and nothing ends it. So it runs on a thread of its own, which the caller leaves alone
// when stopDescriptor becomes readable, or after ten minutes with EAI_AGAIN: the thread then lives
// on until the look-up has ended, with all it needs, and ends without a trace. No more than 32 live
// at a time in the process; beyond that the answer is EAI_AGAIN at once.
//
// 0, with the addresses in the order in which they were found and at port 0; a code of
// getaddrinfo(); LOOK_UP_STOPPED. Throws std::bad_alloc.
int LookUpName(const std::string& name, int stopDescriptor, std::vector<sockaddr_in>& addresses);

#endif
