// The commands on time synchronisation. Arguments are names of host parameters, separated by
// commas. Called under the dispatcher's mutex; results are ResultCodes. Without a time controller
// they do nothing and return 0 once the number of arguments has been found right.
#ifndef HXD_NTPCOMMANDS_H
#define HXD_NTPCOMMANDS_H

#include "driver/record/OlmaData.h"
#include "mfc/CString.h"

// "EnableNTP", "SetNTPMode", "SetNTPFreq", "SetNTPServer", "ExecNTP"
constexpr int NTP_CTRL_CMD_COUNT = 5;
extern const CString NTP_CTRL_CMD[NTP_CTRL_CMD_COUNT];

namespace CDevBas {

enum NTP_CTRL_TYPE : int {
    NTP_CTRL_ENABLE = 0,
    NTP_CTRL_MODE = 1,
    NTP_CTRL_FREQ = 2,
};

// "value[,result]": applies the value to the setting that type names. result receives 0, or the
// error number of a refused value (4), an unreadable one (4) or an unknown type (5). The command
// itself succeeds also with a refused value: RESULT_DONE; RESULT_REFUSED when value cannot be read
// or result cannot be written; RESULT_BAD_ARGUMENTS for another number of arguments or type.
int execSameCtrl(OLMA_DATA& data, const CString& args, NTP_CTRL_TYPE type);

// execSameCtrl with its three types.
int EnableNtp(OLMA_DATA& data, const CString& args);
int SetNtpMode(OLMA_DATA& data, const CString& args);
int SetNtpFreq(OLMA_DATA& data, const CString& args);

// "server1,server2,server3,server4[,result]": replaces all four servers. result receives 0, or 4
// when a server cannot be read. RESULT_DONE; RESULT_REFUSED when a server cannot be read or result
// cannot be written; RESULT_BAD_ARGUMENTS.
int SetNtpServer(OLMA_DATA& data, const CString& args);

// "[result]", the whole text: synchronises and waits for it. result receives 0 or 10. RESULT_DONE,
// also after a failed synchronisation; RESULT_REFUSED when result cannot be written.
int ExecNtp(OLMA_DATA& data, const CString& args);

}  // namespace CDevBas

#endif
