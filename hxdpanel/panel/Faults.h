// Calls of the platform that fail or are slow.
#ifndef HXDPANEL_FAULTS_H
#define HXDPANEL_FAULTS_H

#include "hxdpanel/panel/HardwareResult.h"

#include <string>
#include <vector>

namespace faults {

using Words = std::vector<std::string>;

HardwareResult Fail(const Words& words);  // NAME [RESULT[,TIMES]]
HardwareResult Slow(const Words& words);  // NAME MS[,TIMES]
HardwareResult Mend(const Words& words);  // NAME or all

// "hal_uart_info  fails with -1, 2 more calls; 3 hits" for each.
std::vector<std::string> List();

}  // namespace faults

#endif
