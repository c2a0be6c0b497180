#include "sysinfo/DevLiunxMemUse.h"

#include "common/File.h"
#include "common/Numbers.h"
#include "common/ResultCodes.h"
#include "driver/record/DevContext.h"
#include "sysinfo/MemInfo.h"
#include "sysinfo/Trace.h"

#include <fcntl.h>
#include <sstream>
#include <string>

namespace {

constexpr const char* MEMINFO_PATH = "/proc/meminfo";

}  // namespace

int DevLiunxMemUse::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    HXDCTRL::File file;
    if (!file.open(MEMINFO_PATH, O_RDONLY))
        return RESULT_MALFORMED;
    const hxd::Maybe<int> kernelsFigure = meminfo::ParseAvailable(file.readAll());
    int availableKb = *kernelsFigure;
    if (!kernelsFigure && DevCalcMemNoUseOld(availableKb) != 0)
        return RESULT_MALFORMED;
    if (args.empty())
        return RESULT_DONE;
    const int channel = hxd::ParseInt(args[0].c_str());
    DEV_TRACE("CPUMem DevOpear begin", "Chl = %d", channel);
    const int wholeMib = availableKb / 1024;
    const double availableMib = wholeMib;
    data.m_pContext->m_dMemAvail = availableMib;  // whose registry runs this
    DEV_TRACE("CPUMem DevOpear end", "Chl = %d,Mem = %lf", channel, availableMib);
    return RESULT_DONE;
}

int DevLiunxMemUse::DevCalcMemNoUseOld(int& freeKb) {
    freeKb = -1;
    HXDCTRL::File file;
    if (!file.open(MEMINFO_PATH, O_RDONLY))
        return -1;
    std::istringstream lines(file.readAll());
    meminfo::OldEstimate estimate;
    auto state = meminfo::OldEstimate::MORE;
    std::string line;
    while (state == meminfo::OldEstimate::MORE && std::getline(lines, line)) {
        if (!lines.eof())  // the last line may have no end
            line += '\n';
        state = estimate.Feed(&line[0]);
    }
    freeKb = estimate.FreeKb();
    return state == meminfo::OldEstimate::COMPLETE ? 0 : -1;
}
