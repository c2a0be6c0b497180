#include "sysinfo/DoCmd.h"

#include "common/Retry.h"

#include <unistd.h>
#include <cstdio>
#include <memory>

namespace {

struct PipeCloser {
    void operator()(FILE* pipe) const { ::pclose(pipe); }
};
using Pipe = std::unique_ptr<FILE, PipeCloser>;  // its end waits for the command

// "e": the pipe does not reach programs that other threads start meanwhile.
Pipe Start(const std::string& cmd) {
    return Pipe(::popen(cmd.c_str(), "re"));
}

}  // namespace

bool DoCmd::doCmdSync(const std::string& cmd, std::string& output) {
    const Pipe pipe = Start(cmd);
    if (pipe == nullptr) {
        std::fputs("do_cmd_sync popen failed!\n", stderr);
        return false;
    }
    output.clear();
    char buffer[1024];
    for (;;) {
        // Not fread, which ends at a signal as at the end.
        const ssize_t count = hxd::RetryInterrupted(
            [&] { return ::read(::fileno(pipe.get()), buffer, sizeof buffer - 1); });
        if (count < 1)
            return true;
        output.append(buffer, static_cast<std::size_t>(count));
    }
}

bool DoCmd::doCmdOnly(const std::string& cmd) {
    if (Start(cmd) != nullptr)
        return true;
    std::fputs("do_cmd_only popen failed!\n", stderr);
    return false;
}
