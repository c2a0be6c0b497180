// IPv4 addresses in texts, and the name servers of a resolver configuration ("/etc/resolv.conf").
#ifndef HXD_RESOLVERTEXT_H
#define HXD_RESOLVERTEXT_H

#include <string>
#include <vector>

// True for four decimal numbers 0 to 255 with dots between and nothing else. A number below 100 may
// have two digits, as in "08".
bool IsDottedAddress(const std::string& text);

// Takes the IPv4 addresses of the lines "nameserver ADDRESS", with a blank right behind the word
// and perhaps a comment behind "#". False, with nothing in servers, when a line with that word in
// it looks different or names anything but an address: the file may be half written. Other lines
// and lines in a comment do not matter; there may be no server at all.
bool ParseNameServers(const std::string& text, std::vector<std::string>& servers);

#endif
