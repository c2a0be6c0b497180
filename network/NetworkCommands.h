// The commands on network interfaces. Arguments are names of host parameters, separated by commas.
// Called under the dispatcher's mutex; results are ResultCodes.
#ifndef HXD_NETWORKCOMMANDS_H
#define HXD_NETWORKCOMMANDS_H

#include "driver/record/OlmaData.h"
#include "mfc/CString.h"

namespace network_commands {

// "GetMacInfo(index,name,mac)": writes the interface's name and its MAC address in upper case. 0,
// RESULT_BAD_ARGUMENTS (also for an index outside) or RESULT_HARDWARE_FAILED.
int GetMacInfo(OLMA_DATA& data, const CString& args);

// "SetNetworkMode(index,mode,result)": switches the interface to mode 0 or 1 and waits until that
// is done. 0 or the platform's code, which is also what result receives; RESULT_BAD_ARGUMENTS,
// RESULT_NO_INTERFACE; RESULT_REFUSED with 4 in result for an index or mode outside. While an
// earlier request is executing: 0, with a line on standard output and result left alone.
int SetNetworkMode(OLMA_DATA& data, const CString& args);

}  // namespace network_commands

#endif
