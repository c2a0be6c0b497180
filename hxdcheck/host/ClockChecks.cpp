#include "hxdcheck/host/HostChecks.h"

#include "olma_host.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Compared with the kernel's clock at every step, so that a busy machine makes no difference.
Finding CheckTick() {
    constexpr int STEPS = 25;
    constexpr double ALLOWED_MS = 20.0;
    const Clock::time_point start = Clock::now();
    const long long first = Olma_GetTickCount();
    long long last = first;
    double worst = 0.0;
    for (int i = 0; i < STEPS; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const double before = Milliseconds(Clock::now() - start);
        const long long tick = Olma_GetTickCount();
        const double after = Milliseconds(Clock::now() - start);
        if (tick < last)
            return Wrong("goes back by " + std::to_string(last - tick) + " ms",
                         "it must be a clock that never steps, such as CLOCK_MONOTONIC");
        const double passed = static_cast<double>(tick - first);
        worst = std::max({worst, before - passed, passed - after});
        last = tick;
    }
    if (last == first)
        return Wrong("stands still", "it must count milliseconds");
    if (worst > ALLOWED_MS)
        return Wrong("is up to " + std::to_string(std::lround(worst)) +
                         " ms away from the kernel's clock within half a second",
                     "it must count milliseconds and never jump");
    return Ok(std::to_string(last - first) + " ms in half a second");
}

Finding CheckSleep() {
    constexpr unsigned ASKED_MS = 50;
    double shortest = 1e9;
    for (int i = 0; i < 5; ++i) {
        const Clock::time_point start = Clock::now();
        Olma_Sleep(ASKED_MS);
        shortest = std::min(shortest, Milliseconds(Clock::now() - start));
    }
    const std::string text = "50 ms asked, " + std::to_string(std::lround(shortest)) + " ms slept";
    if (shortest < 0.9 * ASKED_MS)
        return Wrong(text, "it must sleep milliseconds, and to the end");
    return shortest < 2.0 * ASKED_MS ? Ok(text) : Look(text, "everything timed is late by as much");
}

const Check CLOCK[] = {{"Olma_GetTickCount", CheckTick}, {"Olma_Sleep", CheckSleep}};

}  // namespace

void CheckClock(Findings& findings) {
    RunAll(findings, "Tick and sleep", CLOCK);
}
