#include "hxdpanel/panel/CommandsRun.h"

#include "hxdpanel/base/Text.h"
#include "hxdpanel/sandbox/GuardedCalls.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace {

const char* const COMMAND_LOG = "/run/panel-commands.log";  // of the sandbox's command stand-ins

}  // namespace

std::vector<std::string> CommandsRun() {
    if (guard::Enabled())
        return guard::Calls();
    std::vector<std::string> lines;
    std::ifstream log(COMMAND_LOG);
    for (std::string line; std::getline(log, line);) {
        std::replace(line.begin(), line.end(), '\t', ' ');
        lines.push_back(Visible(line));
    }
    return lines;
}

void ForgetCommandsRun() {
    if (guard::Enabled())
        guard::ForgetCalls();
    else if (::access(COMMAND_LOG, F_OK) == 0)
        std::ofstream(COMMAND_LOG, std::ios::trunc);
}
