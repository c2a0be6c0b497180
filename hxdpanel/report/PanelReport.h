// What the simulated panel is, and what it has been told to do.
#ifndef HXDPANEL_PANELREPORT_H
#define HXDPANEL_PANELREPORT_H

#include "host.h"

#include <cstdio>
#include <string>

// plugin: null when the host runs without the remote-view plug-in. filesOutside: where the panel's
// files lie on the machine; empty when they are gone after this run.
void PrintPanel(std::FILE* out, const IVNCLock* plugin, const std::string& filesOutside);

#endif
