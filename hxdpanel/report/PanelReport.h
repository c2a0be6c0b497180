// What the simulated panel is, and what it has been told to do.
#ifndef HXDPANEL_PANELREPORT_H
#define HXDPANEL_PANELREPORT_H

#include "host.h"
#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>
#include <vector>

struct PanelSource {
    const IVNCLock* plugin;         // null when the host runs without the remote-view plug-in
    std::string filesOutside;       // where the panel's files lie on the machine; empty when they
                                    // are gone after this run
    std::vector<std::string> kept;  // settings of the hardware that differ from the description
};

void PrintPanel(std::FILE* out, const PanelSource& source);
Json PanelJson(const PanelSource& source);

#endif
