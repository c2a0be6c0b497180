// Help on the lines that the console takes; needs no driver.
#ifndef HXDPANEL_HELP_H
#define HXDPANEL_HELP_H

#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>
#include <vector>

// A command of the console itself.
struct ConsoleTopic {
    const char* name;
    const char* arguments;
    const char* summary;
};

// topic: a command of the driver or of the console, a channel, or empty for the list. json: as one
// object. Returns an ExitCode.
int PrintHelp(std::FILE* out, const std::string& topic, const std::vector<ConsoleTopic>& console,
              const JsonLayout* json);

#endif
