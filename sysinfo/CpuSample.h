// One sample of the kernel's aggregate CPU counters, and the share of busy time between two.
#ifndef HXD_CPUSAMPLE_H
#define HXD_CPUSAMPLE_H

#include <string>
#include <vector>

// Time spent since boot, in jiffies. A counter stops at 2147483647, where the panel's own integers
// end; with the idle time stopped, all time since counts as busy.
struct cpu_occupy_ {
    std::string name;
    int user = 0;
    int nice = 0;
    int system = 0;
    int idle = 0;
    int iowait = 0;
    int irq = 0;
    int softirq = 0;
};

namespace cpu {

// The pieces of a line between single blanks. Two blanks in a row give an empty piece, so the
// kernel's "cpu  1 2 3" has its first counter in piece 2.
std::vector<std::string> SplitAtBlanks(const std::string& line);

// Takes the counters from the pieces of the first line of /proc/stat; later fields (steal, guest)
// are ignored. All counters are 0 when there are too few pieces.
cpu_occupy_ ParseSample(const std::vector<std::string>& pieces);
constexpr std::size_t SAMPLE_PIECES = 9;

// Sums modulo 2^32. Idle alone counts as idle time, iowait does not.
long long TotalJiffies(const cpu_occupy_& sample);
long long IdleJiffies(const cpu_occupy_& sample);

// A busy share (0..1) in hundredths, rounded to the nearest, halves upward; outside 0..100 for
// counters that make no sense.
int BusyHundredths(double use);

}  // namespace cpu

#endif
