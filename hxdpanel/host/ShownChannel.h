// A channel as people see it: what was delivered, with what the table knows about it.
#ifndef HXDPANEL_SHOWNCHANNEL_H
#define HXDPANEL_SHOWNCHANNEL_H

#include "hxdpanel/host/HostDatabase.h"

#include <string>
#include <vector>

// A number beyond the table is known by its number only.
struct ShownChannel {
    int number;
    std::string name;
    std::string unit;
    bool isText;
    HostDatabase::Received received;

    std::string Value() const;
    std::string UnitSuffix() const;  // " MiB", " (0..1)" or ""
    const char* Meaning() const;     // of a special value; null for an ordinary one
};
using ShownChannels = std::vector<ShownChannel>;

ShownChannel ShowChannel(const HostDatabase& database, int number);
ShownChannels ShowChannels(const HostDatabase& database, const std::vector<int>& numbers);

#endif
