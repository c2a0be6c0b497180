// The picture of the simulated panel's screen.
#ifndef STANDIN_SCREENPICTURE_H
#define STANDIN_SCREENPICTURE_H

#include "SimPanel.h"

#include <QImage>

namespace sim {

// 800 x 480: title with the serial number, clock, and the panel's rows of names and values. Draws
// letters of its own, so it needs neither fonts nor a GUI application.
QImage DrawScreen(const PanelState& state);

}  // namespace sim

#endif
