#include "storage/DiskWorker.h"

#include "olma_host.h"
#include "storage/Wear.h"

#include <system_error>

namespace {

constexpr long long HOUR_MS = 3600000;
constexpr unsigned TICK_MS = 200;

}  // namespace

void DiskWorker::StopWorker() {
    m_bRunning = false;
    if (m_thread.joinable())
        m_thread.join();
}

bool DiskWorker::init() {
    if (m_thread.joinable())
        return true;
    const hxd::Maybe<long long> hourlyAllowance = FindStorage();
    if (!hourlyAllowance)
        return false;
    m_llHourlyAllowance = *hourlyAllowance;
    m_llBaseline = ReadWear();
    m_nLifePercent = ReadLifePercent(m_llBaseline);
    try {
        m_thread = std::thread(&DiskWorker::Run, this);
    } catch (const std::system_error&) {
        return false;  // too many threads just now; the caller tries again
    }
    return true;
}

void DiskWorker::refresh() {
    ++m_nRequested;
}

void DiskWorker::Run() {
    const long long startTick = Olma_GetTickCount();
    m_llLastLifeRefresh = startTick;
    while (m_bRunning) {
        const unsigned request = m_nRequested;
        try {
            Pass(startTick, request);
        } catch (...) {
            // No memory for a measurement: the values stay, the next pass tries again.
        }
        m_nAnswered = request;
        Olma_Sleep(TICK_MS);
    }
}

void DiskWorker::Pass(long long startTick, unsigned request) {
    if (Olma_GetTickCount() - startTick < HOUR_MS) {
        if (request != m_nMeasured) {
            RefreshGear(ReadWear());
            m_nMeasured = request;
        }
    } else if (Olma_GetTickCount() - m_llLastLifeRefresh > HOUR_MS) {
        const long long wear = ReadWear();
        m_nLifePercent = ReadLifePercent(wear);
        RefreshGear(wear);
        m_llBaseline = wear;
        m_llLastLifeRefresh = Olma_GetTickCount();
    }
}

void DiskWorker::RefreshGear(long long wear) {
    m_nGear = wear::Gear(wear::Increase(m_llBaseline, wear), m_llHourlyAllowance);
}
