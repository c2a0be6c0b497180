// What the simulated panel is, and what it has been told to do.
#ifndef HXDPANEL_PANELREPORT_H
#define HXDPANEL_PANELREPORT_H

#include "SimPanel.h"
#include "host.h"
#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>
#include <vector>

class SystemLoad;

struct PanelSource {
    const IVNCLock* plugin;         // null when the host runs without the remote-view plug-in
    std::string filesOutside;       // where the panel's files lie on the machine; empty when they
                                    // are gone after this run
    std::vector<std::string> kept;  // settings of the hardware that differ from the description
    const SystemLoad& load;
};

void PrintPanel(std::FILE* out, const PanelSource& source);
Json PanelJson(const PanelSource& source);

// A thing that the panel has done: "900 Hz for 50 ms".
std::string EventText(const sim::Beep& beep);
std::string EventText(const sim::Capture& capture);
std::string EventText(const hal_network_t& record);  // one that was applied, or is now

// What the panel has done since its start, oldest first, by kind: "beeped" gives "900 Hz for 50
// ms".
std::vector<std::string> PanelEvents(const std::string& verb);
// "beeped", "reloaded" (settings, by the GUI), "addressed" (an interface), "clocked", "captured",
// "ran" (a command), "failed" (a call that a failure concerned, by name, while it is listed).
std::vector<std::string> PanelVerbs();

#endif
