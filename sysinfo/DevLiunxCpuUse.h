// Operation "GetCpuUse": the share of busy CPU time since the previous call.
#ifndef HXD_DEVLIUNXCPUUSE_H
#define HXD_DEVLIUNXCPUUSE_H

#include "sysinfo/CpuSample.h"
#include "sysinfo/DevLiunxBase.h"

// The result, a fraction 0.00 to 1.00, goes to the context's m_dCpuUse; the first call measures
// since boot. Argument: the channel number, for the log only; without it nothing is stored. Always
// returns 0: what cannot be measured leaves the last accepted value.
class DevLiunxCpuUse : public DevLiunxBase {
public:
    int DevOpear(OLMA_DATA& data, std::vector<std::string>& args) override;

private:
    double DevCalcCpuUse();
    double DevCalcCpuUse_1(const cpu_occupy_& sample);

    long long m_llCpuJiffAll = 0;  // of the previous sample, which every call replaces
    long long m_llCpuJiffIdle = 0;
    double m_dCpuUseLast = 0.0;  // last accepted result
};

#endif
