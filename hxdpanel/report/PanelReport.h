// What the simulated panel is, and what it has been told to do.
#ifndef HXDPANEL_PANELREPORT_H
#define HXDPANEL_PANELREPORT_H

#include "host.h"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

// plugin: null when the host runs without the remote-view plug-in. filesOutside: where the panel's
// files lie on the machine; empty when they are gone after this run.
void PrintPanel(std::FILE* out, const IVNCLock* plugin, const std::string& filesOutside);

// The commands that the driver ran, oldest first, each with its arguments.
std::vector<std::string> CommandsRun();

std::string TimeText(const std::tm& time);

// address: IPv4, network byte order.
std::string AddressText(std::uint32_t address);

#endif
