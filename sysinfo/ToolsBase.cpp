#include "sysinfo/ToolsBase.h"

#include "common/ResultCodes.h"
#include "driver/record/ArgumentSplit.h"
#include "sysinfo/Trace.h"

int ToolsBase::ParaCmd(std::string& name, std::vector<std::string>& args, const std::string& cmd) {
    // Logs the name as it comes in, which the caller has just emptied: log tools know this line as
    // the mark of a parse, not for its text.
    DEV_TRACE("ParaCmd begin", "ordercmd = %s", name.c_str());
    const std::size_t open = cmd.find('(');
    if (open == std::string::npos || cmd.back() != ')')
        return RESULT_BAD_ARGUMENTS;
    name = cmd.substr(0, open);
    const std::string inner = cmd.substr(open + 1, cmd.size() - open - 2);
    SplitWords(inner, CommandOf(FIRST_REGISTRY_COMMAND).separator, args);
    return RESULT_DONE;
}
