// What the simulated panel's screen shows.
#ifndef PANELSCREEN_H
#define PANELSCREEN_H

#include "SimPanel.h"

#include <string>

namespace sim {

struct ScreenContent;

// The table that the host has filled, or the panel's ports.
ScreenContent ContentOf(const PanelState& state);

// The picture as somebody in front of the panel sees it: as bright as the light is, black without
// light. A PNG file; empty when memory is exhausted.
std::string PanelScreenPng();

}  // namespace sim

#endif
