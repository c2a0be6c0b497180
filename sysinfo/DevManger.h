// The registry of system-information operations: from a command text to one operation's call.
#ifndef HXD_DEVMANGER_H
#define HXD_DEVMANGER_H

#include "driver/record/OlmaData.h"
#include "sysinfo/DevLinuxOpearDb.h"
#include "sysinfo/DevLiunxBase.h"
#include "sysinfo/ToolsBase.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

enum DEVSYSOPEAR : int {
    SYS_OPEAR_CPU_USE = 0,        // "GetCpuUse"
    SYS_OPEAR_MEM_USE = 1,        // "GetMemUse"
    SYS_OPEAR_APP_LOG = 2,        // "ReadAppLog", mode 0
    SYS_OPEAR_APP_EXECP_LOG = 3,  // "ReadAppLog", mode 1
    SYS_OPEAR_APP_DEAL_LOG = 4,   // "ReadAppLog", mode 2
    SYS_OPEAR_SYS_EXECP_LOG = 5,  // "ReadSysLog", mode 0
};

// Used by one thread at a time: the text of the last command is kept in the object.
class DevManger {
public:
    DevManger();
    DevManger(const DevManger&) = delete;
    DevManger& operator=(const DevManger&) = delete;
    virtual ~DevManger();

    // Creates the operation's provider, unless there is one already; numbers beyond the enumeration
    // get an operation that does nothing.
    void DevRegiter(DEVSYSOPEAR operation);

    // Runs "NAME(ARGUMENTS)". Operation names are case-sensitive. 0 = done, also for a name that no
    // operation has (the answer that scripts for other panels rely on); otherwise a negative
    // ResultCode.
    int DevOpear(OLMA_DATA& data, std::string cmd);

    // The mode (first of exactly four arguments) of a log command. 0; -5 for another number of
    // arguments; -4, and 4.0 in the status parameter, when it cannot be read.
    int GetOpearMode(OLMA_DATA& data, int& mode, const std::vector<std::string>& args);

private:
    int SelectOperation(OLMA_DATA& data, const std::string& name,
                        const std::vector<std::string>& args, int& operation);
    int SelectLog(OLMA_DATA& data, const std::vector<std::string>& args, int modes, int& operation);

    std::unique_ptr<ToolsBase> m_pTools;
    std::unique_ptr<DevLinuxOpearDb> m_pOpearDb;
    // Of the last command; a command works on copies of its own, because the host may send another
    // one from within a parameter call.
    std::string m_strName;
    std::vector<std::string> m_args;
    std::map<DEVSYSOPEAR, std::unique_ptr<DevLiunxBase>> m_providers;
};

#endif
