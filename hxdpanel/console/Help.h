// The console's help; needs no driver.
#ifndef HXDPANEL_HELP_H
#define HXDPANEL_HELP_H

#include <cstdio>
#include <string>

struct ChannelRow;

// topic: a command of the driver or the console, the number of a channel, or empty for the list.
// Returns an ExitCode.
int PrintHelp(std::FILE* out, const std::string& topic);

// What a write to the channel may be: "channel 4 takes 0 to 6500".
std::string AcceptedText(const ChannelRow& row);

#endif
