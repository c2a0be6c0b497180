// Help on the lines that the console takes; needs no driver.
#ifndef HXDPANEL_HELP_H
#define HXDPANEL_HELP_H

#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>
#include <vector>

// A line that is not the driver's.
struct ConsoleTopic {
    enum Section { CONSOLE, HARDWARE, SCRIPT };

    const char* name;
    const char* arguments;
    const char* summary;
    Section section = CONSOLE;
    std::vector<const char*> notes = {};
    std::vector<const char*> examples = {};
};

// Lines that only scripts understand.
const std::vector<ConsoleTopic>& ScriptLines();

// topic: a command of the driver, one of console, a line of scripts, a channel, or empty for the
// list. json: as one object. Returns an ExitCode.
int PrintHelp(std::FILE* out, const std::string& topic, const std::vector<ConsoleTopic>& console,
              const JsonLayout* json);

#endif
