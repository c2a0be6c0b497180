// What the simulated hardware is like now, as the user's commands and the panel's files have it.
#ifndef HXDPANEL_HARDWAREREPORT_H
#define HXDPANEL_HARDWAREREPORT_H

#include "hxdpanel/report/Json.h"

#include <string>
#include <utility>
#include <vector>

class SystemLoad;
namespace sim {
struct Failure;
}

// Titles and texts for people: clock, load, serial ports, flash.
std::vector<std::pair<const char*, std::string>> HardwareLines(const SystemLoad& load);
// The same for programs, and the failures: members of the panel's object.
Json HardwareMembers(const SystemLoad& load);
// One of these failures.
Json FailureJson(const std::string& function, const sim::Failure& failure);

#endif
