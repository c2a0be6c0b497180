#include "sysinfo/CpuSample.h"

#include "common/Numbers.h"

#include <cstdint>

namespace cpu {

std::vector<std::string> SplitAtBlanks(const std::string& line) {
    std::vector<std::string> pieces;
    const std::string closed = line + ' ';
    for (std::size_t start = 0; start < closed.size();) {
        const std::size_t blank = closed.find(' ', start);
        pieces.push_back(closed.substr(start, blank - start));
        start = blank + 1;
    }
    return pieces;
}

cpu_occupy_ ParseSample(const std::vector<std::string>& pieces) {
    cpu_occupy_ sample;
    if (pieces.size() < SAMPLE_PIECES)
        return sample;
    sample.name = pieces[0];
    int* const counters[] = {&sample.user,   &sample.nice, &sample.system, &sample.idle,
                             &sample.iowait, &sample.irq,  &sample.softirq};
    std::size_t piece = 2;
    for (int* counter : counters)
        *counter = hxd::ParseInt(pieces[piece++].c_str());
    return sample;
}

long long TotalJiffies(const cpu_occupy_& sample) {
    std::uint32_t total = 0;
    for (const int counter : {sample.user, sample.nice, sample.system, sample.idle, sample.iowait,
                              sample.irq, sample.softirq})
        total += static_cast<std::uint32_t>(counter);
    return total;
}

long long IdleJiffies(const cpu_occupy_& sample) {
    return static_cast<std::uint32_t>(sample.idle);
}

int BusyHundredths(double use) {
    return hxd::ToInt((use + 0.005) * 100.0);
}

}  // namespace cpu
