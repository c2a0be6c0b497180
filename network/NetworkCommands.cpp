#include "network/NetworkCommands.h"

#include "common/ResultCodes.h"
#include "driver/record/Call.h"
#include "network/InterfaceSettings.h"
#include "network/NetworkTask.h"
#include "olma_hal.h"

#include <cstdio>

namespace {

// Reads a number that must be 0 or more and below limit.
bool ReadBelow(const Call& call, std::size_t index, unsigned int limit, int& value) {
    return call.Read(index, value) && value >= 0 && static_cast<unsigned int>(value) < limit;
}

int ReportMac(const Call& call) {
    unsigned int count = 0;
    if (hal_get_network_count(&count) != 0)
        return RESULT_HARDWARE_FAILED;
    int index = 0;
    call.Read(0, index);  // unreadable: the first interface
    // An index equal to the count is left to the platform to refuse.
    if (index < 0 || static_cast<unsigned int>(index) > count)
        return RESULT_BAD_ARGUMENTS;

    hal_network_t record = {};
    if (hal_get_network(static_cast<unsigned int>(index), &record) != 0)
        return RESULT_HARDWARE_FAILED;
    const CString interfaceName = CDevBas::InterfaceName(record);
    call.Write(1, interfaceName);
    const hxd::Maybe<CString> mac = CDevBas::ReadMacAddress(interfaceName);
    if (!mac)
        return RESULT_HARDWARE_FAILED;
    call.Write(2, *mac);
    return RESULT_DONE;
}

// The answer to a request that comes while another one is executing.
int SayExecuting() {
    std::puts("network task is executing.......");
    return RESULT_DONE;
}

int SwitchMode(const Call& call, NetworkTask& task) {
    if (task.GetState() == NetworkTask::STATE_EXECUTING)
        return SayExecuting();

    unsigned int count = 0;
    if (hal_get_network_count(&count) != 0 || count == 0)
        return RESULT_NO_INTERFACE;
    int index = 0;
    int mode = 0;
    if (!ReadBelow(call, 0, count, index) || !ReadBelow(call, 1, 2, mode)) {
        call.WriteResult(-RESULT_REFUSED);
        return RESULT_REFUSED;
    }
    int result = RESULT_NO_INTERFACE;  // when the task's thread is gone
    // A command that the host sent from within the reads above may have begun one meanwhile.
    if (task.Execute(index, mode, result) == NetworkTask::REQUEST_BUSY)
        return SayExecuting();
    // As it is, not its negation: a platform's positive code is no status.
    return call.WriteResult(result) ? result : RESULT_REFUSED;
}

}  // namespace

namespace network_commands {

int GetMacInfo(OLMA_DATA& data, const CString& args) {
    return RunCall(data, COMMAND_GET_MAC_INFO, args, ReportMac);
}

int SetNetworkMode(OLMA_DATA& data, const CString& args) {
    return RunCall(data, COMMAND_SET_NETWORK_MODE, args, &DEV_CONTEXT::m_pNetworkTask, SwitchMode);
}

}  // namespace network_commands
