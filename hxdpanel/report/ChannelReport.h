// The channels as people and as programs read them, in the order of the channel table.
#ifndef HXDPANEL_CHANNELREPORT_H
#define HXDPANEL_CHANNELREPORT_H

#include "hxdpanel/host/HostDatabase.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

struct ChannelRow;

void PrintChannelTable(std::FILE* out, const HostDatabase& database);
void PrintChannelsJson(std::FILE* out, const HostDatabase& database);
void PrintCsvHeader(std::FILE* out, const HostDatabase& database);
void PrintCsvLine(std::FILE* out, const HostDatabase& database);

// "21 Brightness = 40 %"
std::string ChannelText(const HostDatabase& database, int number);
// What a write to the channel may be: "channel 4 takes 0 to 6500".
std::string AcceptedText(const ChannelRow& row);
// Name and value of each channel, for the picture of the panel's screen.
std::vector<std::pair<std::string, std::string>> ScreenRows(const HostDatabase& database);

// The local time, to the second, as in ISO 8601.
std::string IsoTime();

#endif
