// The panel's flash: what has been written to it and how worn it is.
#ifndef HXDPANEL_STORAGEWEAR_H
#define HXDPANEL_STORAGEWEAR_H

#include "hxdpanel/panel/HardwareResult.h"

#include <string>
#include <vector>

namespace storagewear {

using Words = std::vector<std::string>;

HardwareResult Disk(const Words& words);  // write SIZE, wear WHAT VALUE..., or nothing
Words Candidates(const Words& words);

}  // namespace storagewear

#endif
