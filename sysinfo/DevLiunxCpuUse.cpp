#include "sysinfo/DevLiunxCpuUse.h"

#include "common/Numbers.h"
#include "common/ResultCodes.h"
#include "driver/record/DevContext.h"
#include "sysinfo/Trace.h"

int DevLiunxCpuUse::DevOpear(OLMA_DATA& data, std::vector<std::string>& args) {
    const double use = DevCalcCpuUse();
    if (args.empty())
        return RESULT_DONE;
    const int channel = hxd::ParseInt(args[0].c_str());
    DEV_TRACE("CPUUSE DevOpear begin", "Chl = %d", channel);
    data.m_pContext->m_dCpuUse = use;  // whose registry runs this
    DEV_TRACE("CPUUSE DevOpear end", "Chl = %d,CpuUse = %lf", channel, use);
    return RESULT_DONE;
}

double DevLiunxCpuUse::DevCalcCpuUse() {
    std::string path = "/proc/stat";
    const std::string line = DevReadFile(path, 0, READ_FIRST_LINE);
    DEV_TRACE("DevCalcCpuUse begin", "strFileContext = %s", line.c_str());
    const std::vector<std::string> pieces = cpu::SplitAtBlanks(line);
    if (pieces.size() >= cpu::SAMPLE_PIECES)
        DEV_TRACE("DevCalcCpuUse begin",
                  "m_cpuname = %s,m_user = %s,m_nice=%s,m_system = %s,m_idle=%s,m_iowait=%s,m_irq="
                  "%s,m_softirq=%s",
                  pieces[0].c_str(), pieces[2].c_str(), pieces[3].c_str(), pieces[4].c_str(),
                  pieces[5].c_str(), pieces[6].c_str(), pieces[7].c_str(), pieces[8].c_str());
    const cpu_occupy_ sample = cpu::ParseSample(pieces);
    DEV_TRACE("DevCalcCpuUse begin",
              "m_cpuname = %s,m_user = %d,m_nice=%d,m_system = %d,m_idle=%d,m_iowait=%d,m_irq=%d,"
              "m_softirq=%d",
              sample.name.c_str(), sample.user, sample.nice, sample.system, sample.idle,
              sample.iowait, sample.irq, sample.softirq);
    return DevCalcCpuUse_1(sample);
}

double DevLiunxCpuUse::DevCalcCpuUse_1(const cpu_occupy_& sample) {
    const long long total = cpu::TotalJiffies(sample);
    const long long idle = cpu::IdleJiffies(sample);
    DEV_TRACE("CPUUSE DevOpear begin", "od = %lld,_cpu_jiff_all=%lld", total, m_llCpuJiffAll);
    DEV_TRACE("CPUUSE DevOpear begin", "sd = %lld,_cpu_jiff_idle=%lld", idle, m_llCpuJiffIdle);
    const long long allDelta = total - m_llCpuJiffAll;
    const long long idleDelta = idle - m_llCpuJiffIdle;
    if (allDelta < 1 || idleDelta < 0)
        DEV_ERROR("CPUUSE DevOpear calc error",
                  "od=%lld,_cpu_jiff_all=%lld,sd=%lld,_cpu_jiff_idle=%lld", total, m_llCpuJiffAll,
                  idle, m_llCpuJiffIdle);
    // Also a sample that makes no sense is the next one's base, so that it spoils one value only.
    m_llCpuJiffAll = total;
    m_llCpuJiffIdle = idle;
    if (allDelta < 1 || idleDelta < 0)
        return m_dCpuUseLast;

    const double use = 1.0 - static_cast<double>(idleDelta) / static_cast<double>(allDelta);
    DEV_TRACE("CPUUSE DevOpear calc end", "cpu_use = %lf", use);
    const int hundredths = cpu::BusyHundredths(use);
    if (hundredths < 0 || hundredths > 100) {
        DEV_ERROR("CPUUSE DevOpear calc error(out of range)", "cpu_use = %lf", m_dCpuUseLast);
        return m_dCpuUseLast;
    }
    m_dCpuUseLast = hundredths / 100.0;
    DEV_TRACE("CPUUSE DevOpear end", "cpu_use = %lf", m_dCpuUseLast);
    return m_dCpuUseLast;
}
