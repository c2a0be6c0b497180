// Operations "ReadAppLog" and "ReadSysLog": the newest part of the panel's logs.
#ifndef HXD_LOGREADERS_H
#define HXD_LOGREADERS_H

#include "sysinfo/DevLiunxBase.h"

// Arguments and results as DevLiunxBase::DevSetContext. A log file that is missing or unreadable is
// delivered as an empty text. The whole file is read into memory before its tail is cut.

// Restarts of the runtime: "/storage/log/restart.log".
class DevLiunxAppLog : public DevLiunxBase {
public:
    int DevOpear(OLMA_DATA& data, std::vector<std::string>& args) override;
};

// Kernel log kept from the last crash: "/storage/log/dmesg.log".
class DevLinuxAppExecpLog : public DevLiunxBase {
public:
    int DevOpear(OLMA_DATA& data, std::vector<std::string>& args) override;
};

// Signals that the runtime received: "/storage/log/signal_recieved.log".
class DevLiunxAppDealLog : public DevLiunxBase {
public:
    int DevOpear(OLMA_DATA& data, std::vector<std::string>& args) override;
};

// The live kernel log, through the command dmesg; -3, with nothing written, when that fails.
class DevLinuxSysExecpLog : public DevLiunxBase {
public:
    int DevOpear(OLMA_DATA& data, std::vector<std::string>& args) override;
};

#endif
