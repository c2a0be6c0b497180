// The channels as people and as programs read them, in the order of the channel table.
#ifndef HXDPANEL_CHANNELREPORT_H
#define HXDPANEL_CHANNELREPORT_H

#include "hxdpanel/host/ShownChannel.h"
#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

struct ChannelRow;

// What may be asked for: the table's channels, and others that were delivered.
int HighestChannel(const HostDatabase& database);

void PrintChannelTable(std::FILE* out, const ShownChannels& channels);
Json ChannelJson(const ShownChannel& channel);
Json ChannelsJson(const ShownChannels& channels);
void PrintCsvHeader(std::FILE* out, const ShownChannels& channels);
void PrintCsvLine(std::FILE* out, const ShownChannels& channels);

// "21 Brightness = 40 %"
std::string ChannelText(const ShownChannel& channel);
// What a write to the channel may be: "channel 4 takes 0 to 6500".
std::string AcceptedText(const ChannelRow& row);
// Name and value of each channel, for the picture of the panel's screen.
std::vector<std::pair<std::string, std::string>> ScreenRows(const HostDatabase& database);

#endif
