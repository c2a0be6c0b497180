#include "sysinfo/LogReaders.h"

#include "common/PublicFolder.h"
#include "common/ResultCodes.h"

#include <unistd.h>
#include <cstdlib>
#include <utility>

namespace {

constexpr const char* SCRATCH_PATH = "/tmp/dmesg.log";

// So that the shell writes into a file of ours and not through somebody's link. The kernel's log is
// not for everybody's eyes.
bool MakeScratchFile() {
    HXDCTRL::File scratch;
    return hxd::MakeAnew(SCRATCH_PATH, 0600, scratch);
}

}  // namespace

int DevLiunxAppLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    return DevSetContext(data, DevReadFile("/storage/log/restart.log"), args);
}

int DevLinuxAppExecpLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    return DevSetContext(data, DevReadFile("/storage/log/dmesg.log"), args);
}

int DevLiunxAppDealLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    return DevSetContext(data, DevReadFile("/storage/log/signal_recieved.log"), args);
}

int DevLinuxSysExecpLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    if (!MakeScratchFile())
        return RESULT_KERNEL_LOG_FAILED;
    if (std::system("dmesg > /tmp/dmesg.log") != 0) {
        ::unlink(SCRATCH_PATH);
        return RESULT_KERNEL_LOG_FAILED;
    }
    FileText text = DevReadFile(SCRATCH_PATH);
    if (std::system("rm /tmp/dmesg.log") != 0)
        ::unlink(SCRATCH_PATH);
    return DevSetContext(data, std::move(text), args);
}
