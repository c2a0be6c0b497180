// Help on the lines that the console takes; needs no driver.
#ifndef HXDPANEL_HELP_H
#define HXDPANEL_HELP_H

#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>

// topic: a command of the driver, one of console, a line of scripts, a channel, or empty for the
// list. json: as one object; null for text. Returns an ExitCode.
int PrintHelp(std::FILE* out, const std::string& topic, const JsonLayout* json);

#endif
