#include "network/NetworkCommands.h"

#include "common/ResultCodes.h"
#include "driver/record/CDevServer.h"
#include "driver/record/DevContext.h"
#include "network/InterfaceSettings.h"
#include "network/NetworkTask.h"
#include "olma_hal.h"

#include <cstdio>
#include <vector>

namespace {

// Reads a number that must be 0 or more and below limit.
bool ReadBelow(OLMA_DATA& data, const char* name, unsigned int limit, int& value) {
    return CDevServer::SvrGetParaValue(data, name, value) == 1 && value >= 0 &&
           static_cast<unsigned int>(value) < limit;
}

// The answer to a request that comes while another one is executing.
int SayExecuting() {
    std::puts("network task is executing.......");
    return RESULT_DONE;
}

}  // namespace

namespace network_commands {

int GetMacInfo(OLMA_DATA& data, const CString& args) {
    // Unlike CDevBas::splitString: blanks around the names stay. A fourth and more are ignored.
    std::vector<FF::utils::String> names;
    if (SplitCsvStr(static_cast<const char*>(args), ',', names) < 3)
        return RESULT_BAD_ARGUMENTS;

    unsigned int count = 0;
    if (hal_get_network_count(&count) != 0)
        return RESULT_HARDWARE_FAILED;
    int index = 0;
    CDevServer::SvrGetParaValue(data, names[0].c_str(), index);  // unreadable: the first interface
    // An index equal to the count is left to the platform to refuse.
    if (index < 0 || static_cast<unsigned int>(index) > count)
        return RESULT_BAD_ARGUMENTS;

    hal_network_t record = {};
    if (hal_get_network(static_cast<unsigned int>(index), &record) != 0)
        return RESULT_HARDWARE_FAILED;
    const CString interfaceName = InterfaceName(record);
    CDevServer::SvrSetParaValue(data, names[1].c_str(), interfaceName);
    CString mac;
    if (!ReadMacAddress(interfaceName, mac))
        return RESULT_HARDWARE_FAILED;
    CDevServer::SvrSetParaValue(data, names[2].c_str(), mac);
    return RESULT_DONE;
}

int SetNetworkMode(OLMA_DATA& data, const CString& args) {
    std::vector<FF::utils::String> names;
    if (CDevBas::splitString(args, ',', names) != 1 || names.size() != 3)
        return RESULT_BAD_ARGUMENTS;
    NetworkTask* const task = ServiceOf(data, &DEV_CONTEXT::m_pNetworkTask);
    if (task == nullptr)
        return RESULT_DONE;
    if (task->GetState() == NetworkTask::STATE_EXECUTING)
        return SayExecuting();

    unsigned int count = 0;
    if (hal_get_network_count(&count) != 0 || count == 0)
        return RESULT_NO_INTERFACE;
    const char* const resultName = names[2].c_str();
    int index = 0;
    int mode = 0;
    if (!ReadBelow(data, names[0].c_str(), count, index) ||
        !ReadBelow(data, names[1].c_str(), 2, mode)) {
        CDevServer::SvrSetParaValue(data, resultName, -RESULT_REFUSED);
        return RESULT_REFUSED;
    }
    int result = RESULT_NO_INTERFACE;  // when the task's thread is gone
    // A command that the host sent from within the reads above may have begun one meanwhile.
    if (task->Execute(index, mode, result) == NetworkTask::REQUEST_BUSY)
        return SayExecuting();
    return CDevServer::SvrSetParaValue(data, resultName, result) == 1 ? result : RESULT_REFUSED;
}

}  // namespace network_commands
