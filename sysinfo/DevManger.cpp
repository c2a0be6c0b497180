#include "sysinfo/DevManger.h"

#include "common/ResultCodes.h"
#include "driver/record/CommandTable.h"
#include "sysinfo/DevLiunxCpuUse.h"
#include "sysinfo/DevLiunxMemUse.h"
#include "sysinfo/LogReaders.h"
#include "sysinfo/Trace.h"

namespace {

using Provider = std::unique_ptr<DevLiunxBase>;

template <class PROVIDER>
Provider Make() {
    return Provider(new PROVIDER);
}

struct ProviderRow {
    DEVSYSOPEAR operation;
    Provider (*make)();
};
constexpr ProviderRow PROVIDERS[] = {
    {SYS_OPEAR_CPU_USE, Make<DevLiunxCpuUse>},
    {SYS_OPEAR_MEM_USE, Make<DevLiunxMemUse>},
    {SYS_OPEAR_APP_LOG, Make<DevLiunxAppLog>},
    {SYS_OPEAR_APP_EXECP_LOG, Make<DevLinuxAppExecpLog>},
    {SYS_OPEAR_APP_DEAL_LOG, Make<DevLiunxAppDealLog>},
    {SYS_OPEAR_SYS_EXECP_LOG, Make<DevLinuxSysExecpLog>},
};

Provider MakeProvider(DEVSYSOPEAR operation) {
    for (const ProviderRow& row : PROVIDERS) {
        if (row.operation == operation)
            return row.make();
    }
    return Make<DevLiunxBase>();
}

// The operation of a command; log commands have one for each mode, in a row.
struct OperationRow {
    Command command;
    int operation;
    int modes;  // 0: the command has no mode
};
constexpr OperationRow OPERATIONS[] = {
    {COMMAND_GET_CPU_USE, SYS_OPEAR_CPU_USE, 0},
    {COMMAND_GET_MEM_USE, SYS_OPEAR_MEM_USE, 0},
    {COMMAND_READ_APP_LOG, SYS_OPEAR_APP_LOG, 3},
    {COMMAND_READ_SYS_LOG, SYS_OPEAR_SYS_EXECP_LOG, 1},
};
static_assert(sizeof OPERATIONS / sizeof *OPERATIONS == COMMAND_COUNT - FIRST_REGISTRY_COMMAND,
              "a command of the registry has no operation here");

constexpr int NO_OPERATION = -1;

}  // namespace

DevManger::DevManger() : m_pTools(new ToolsBase), m_pOpearDb(new DevLinuxOpearDb) {}

// The providers go in the order of their keys, which the map's own end would not keep, then the
// parser and the helper.
DevManger::~DevManger() {
    while (!m_providers.empty())
        m_providers.erase(m_providers.begin());
    m_pTools.reset();
    m_pOpearDb.reset();
}

void DevManger::DevRegiter(DEVSYSOPEAR operation) {
    if (m_providers.count(operation) == 0)
        m_providers[operation] = MakeProvider(operation);
}

int DevManger::DevOpear(OLMA_DATA& data, std::string cmd) {
    DEV_TRACE("DevOpear begin", "strCmd = %s", cmd.c_str());
    int operation = NO_OPERATION;
    std::vector<std::string> args;
    if (!cmd.empty()) {
        std::string name;
        const int parsed = m_pTools->ParaCmd(name, args, cmd);
        m_strName = name;
        m_args = args;
        if (parsed != 0) {
            DEV_TRACE("DevOpear end", "strCmd = %s error", cmd.c_str());
            return RESULT_BAD_ARGUMENTS;
        }
        const int selected = SelectOperation(data, name, args, operation);
        if (selected != RESULT_DONE)
            return selected;
    }
    const auto provider = m_providers.find(static_cast<DEVSYSOPEAR>(operation));
    const int result =
        provider != m_providers.end() ? provider->second->DevOpear(data, args) : RESULT_DONE;
    DEV_TRACE("DevOpear end", "strCmd = %s", cmd.c_str());
    return result;
}

int DevManger::SelectOperation(OLMA_DATA& data, const std::string& name,
                               const std::vector<std::string>& args, int& operation) {
    for (const OperationRow& row : OPERATIONS) {
        if (name != CommandOf(row.command).name)
            continue;
        operation = row.operation;
        return row.modes > 0 ? SelectLog(data, args, row.modes, operation) : RESULT_DONE;
    }
    return RESULT_DONE;
}

int DevManger::SelectLog(OLMA_DATA& data, const std::vector<std::string>& args, int modes,
                         int& operation) {
    int mode = 0;
    const int result = GetOpearMode(data, mode, args);
    if (result != RESULT_DONE)
        return result;
    if (mode < 0 || mode >= modes) {
        m_pOpearDb->DevSetParaValue(data, args[3], STATUS_FAILED);
        return RESULT_REFUSED;
    }
    operation += mode;
    return RESULT_DONE;
}

int DevManger::GetOpearMode(OLMA_DATA& data, int& mode, const std::vector<std::string>& args) {
    if (args.size() != 4)
        return RESULT_BAD_ARGUMENTS;
    int value = 0;
    if (m_pOpearDb->DevGetParaValue(data, args[0], value) != 0) {
        m_pOpearDb->DevSetParaValue(data, args[3], STATUS_FAILED);
        return RESULT_REFUSED;
    }
    mode = value;
    return RESULT_DONE;
}
