#include "sysinfo/LogReaders.h"

#include "common/PublicFolder.h"
#include "common/ResultCodes.h"

#include <unistd.h>
#include <cstdlib>

namespace {

int DeliverFile(DevLiunxBase& reader, const char* path, OLMA_DATA& data,
                const std::vector<std::string>& args) {
    std::string fileName = path;
    return reader.DevSetContext(
        data, reader.DevReadFile(fileName, 0, DevLiunxBase::READ_WHOLE_FILE), args);
}

constexpr const char* SCRATCH_PATH = "/tmp/dmesg.log";

// So that the shell writes into a file of ours and not through somebody's link. The kernel's log is
// not for everybody's eyes.
bool MakeScratchFile() {
    HXDCTRL::File scratch;
    return hxd::MakeAnew(SCRATCH_PATH, 0600, scratch);
}

}  // namespace

int DevLiunxAppLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    return DeliverFile(*this, "/storage/log/restart.log", data, args);
}

int DevLinuxAppExecpLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    return DeliverFile(*this, "/storage/log/dmesg.log", data, args);
}

int DevLiunxAppDealLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    return DeliverFile(*this, "/storage/log/signal_recieved.log", data, args);
}

int DevLinuxSysExecpLog::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    if (!MakeScratchFile())
        return RESULT_KERNEL_LOG_FAILED;
    if (std::system("dmesg > /tmp/dmesg.log") != 0) {
        ::unlink(SCRATCH_PATH);
        return RESULT_KERNEL_LOG_FAILED;
    }
    std::string fileName = SCRATCH_PATH;
    const std::string text = DevReadFile(fileName, 0, READ_WHOLE_FILE);
    if (std::system("rm /tmp/dmesg.log") != 0)
        ::unlink(SCRATCH_PATH);
    return DevSetContext(data, text, args);
}
