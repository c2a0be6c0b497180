// The command line.
#ifndef HXDPANEL_OPTIONS_H
#define HXDPANEL_OPTIONS_H

#include "driver/record/ChannelTable.h"
#include "hxdpanel/host/HostValue.h"
#include "hxdpanel/sandbox/Setup.h"

#include <string>
#include <vector>

struct Options : sandbox::Setup {
    enum Mode { CONSOLE, CHANNELS, READ, EXEC, WRITE, WATCH, PANEL, NTP, SCRIPT, HELP };

    Mode mode = CONSOLE;
    int channels = CHANNEL_COUNT;
    std::vector<unsigned char> blob;
    int logLevel = 0;
    bool lockPlugin = true;
    bool timeServer = false;

    bool json = false;
    std::vector<Definition> variables;
    std::vector<std::string> commands;
    std::vector<std::string> chosen;  // channels as typed
    std::string channel;              // of read and write
    std::string value;
    double interval = 1.0;  // seconds
    int count = 0;          // 0: until interrupted
    bool changes = false;
    bool keepGoing = false;
    bool echo = false;
    bool tap = false;
    std::string helpTopic;
};

// False when there is nothing to do but to leave with exitCode (help shown, or wrong usage).
bool ParseOptions(int argc, const char* const* argv, Options& options, int& exitCode);

#endif
