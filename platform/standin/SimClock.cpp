#include "SimClock.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Far beyond any test, and far enough from the type's limits to add a sleep to it.
const long long LAST_TICK = std::numeric_limits<long long>::max() / 4;

const long long STEP_MS = 1000;      // short beside what happens every hour
const long long MOST_STEPS = 50000;  // of one pass
const unsigned AWAKE_MS = 1000;      // real time for what a sleeper does between two sleeps
const unsigned BUSY_MS = 50;         // real time for a thread that may be about to sleep

}  // namespace

namespace sim {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;

SimClock::SimClock()
    : m_llBaseTick(
          duration_cast<std::chrono::milliseconds>(RealClock::now().time_since_epoch()).count()),
      m_baseTime(RealClock::now()) {}

void SimClock::Hold() {
    const hxd::MutexLock guard(m_lock);
    SetBase(TickLocked());
    m_bHeld = true;
    for (Sleeper* sleeper : m_sleepers)
        sleeper->changed.notify_one();  // it must not wake by real time any more
}

void SimClock::Advance(long long milliseconds) {
    const hxd::MutexLock guard(m_lock);
    const long long now = TickLocked();
    SetBase(now + std::min(std::max(milliseconds, 0LL), std::max(LAST_TICK - now, 0LL)));
    for (Sleeper* sleeper : m_sleepers) {
        // With the clock running, the others must compute their deadline anew.
        if (!m_bHeld || sleeper->wakeTick <= m_llBaseTick)
            sleeper->changed.notify_one();
    }
}

void SimClock::MoveHeld() {
    const hxd::MutexLock guard(m_lock);
    m_mover = std::this_thread::get_id();
}

// A thread that does not come back has ended, and is not waited for in the next step.
void SimClock::Step(long long milliseconds, unsigned int atRestMs) {
    const int before = Sleepers();
    Advance(milliseconds);
    if (before > 0)
        WaitForSleepers(before, AWAKE_MS);
    else
        WaitForSleepers(1, atRestMs);
}

void SimClock::Pass(long long milliseconds) {
    const long long length = std::max(STEP_MS, milliseconds / MOST_STEPS);
    WaitForSleepers(1, BUSY_MS);
    for (long long left = milliseconds; left > 0; left -= length)
        Step(std::min(left, length), 0);
}

void SimClock::Run(double speed) {
    const hxd::MutexLock guard(m_lock);
    SetBase(TickLocked());
    m_bHeld = false;
    m_dSpeed = std::isfinite(speed) && speed > 0.0 ? std::min(std::max(speed, 1e-3), 1e6) : 1.0;
    for (Sleeper* sleeper : m_sleepers)
        sleeper->changed.notify_one();
}

double SimClock::Speed() const {
    const hxd::MutexLock guard(m_lock);
    return m_bHeld ? 0.0 : m_dSpeed;
}

long long SimClock::Tick() const {
    const hxd::MutexLock guard(m_lock);
    return TickLocked();
}

bool SimClock::IsMover() const {
    const hxd::MutexLock guard(m_lock);
    return m_bHeld && m_mover == std::this_thread::get_id();
}

void SimClock::Sleep(unsigned int milliseconds) {
    if (IsMover()) {
        Step(milliseconds, BUSY_MS);  // what the caller waits for may be somebody's real work
        return;
    }
    Sleeper self;
    hxd::MutexLock guard(m_lock);
    self.wakeTick = TickLocked() + milliseconds;
    const auto place = m_sleepers.insert(m_sleepers.end(), &self);
    m_sleeperArrived.notify_all();
    while (TickLocked() < self.wakeTick) {
        if (m_bHeld)
            guard.Wait(self.changed);
        else
            guard.WaitUntil(self.changed, RealTimeOf(self.wakeTick));
    }
    m_sleepers.erase(place);
}

int SimClock::Sleepers() const {
    const hxd::MutexLock guard(m_lock);
    return SleepersLocked();
}

bool SimClock::WaitForSleepers(int count, unsigned int timeoutMs) const {
    const auto deadline = RealClock::now() + std::chrono::milliseconds(timeoutMs);
    hxd::MutexLock guard(m_lock);
    while (SleepersLocked() < count) {
        if (!guard.WaitUntil(m_sleeperArrived, deadline))
            return SleepersLocked() >= count;
    }
    return true;
}

long long SimClock::TickLocked() const {
    if (m_bHeld)
        return m_llBaseTick;
    const auto passed = duration_cast<nanoseconds>(RealClock::now() - m_baseTime);
    return m_llBaseTick +
           static_cast<long long>(static_cast<double>(passed.count()) * m_dSpeed / 1e6);
}

int SimClock::SleepersLocked() const {
    const long long now = TickLocked();
    return static_cast<int>(
        std::count_if(m_sleepers.begin(), m_sleepers.end(),
                      [now](const Sleeper* sleeper) { return sleeper->wakeTick > now; }));
}

// At most an hour ahead: a sleeper whose time has not come by then asks again.
SimClock::RealClock::time_point SimClock::RealTimeOf(long long tick) const {
    const double ahead = static_cast<double>(tick - m_llBaseTick) * 1e6 / m_dSpeed;
    const auto limit = RealClock::now() + std::chrono::hours(1);
    const double toLimit =
        static_cast<double>(duration_cast<nanoseconds>(limit - m_baseTime).count());
    return ahead < toLimit ? m_baseTime + nanoseconds(static_cast<long long>(std::ceil(ahead)))
                           : limit;
}

void SimClock::SetBase(long long tick) {
    m_llBaseTick = tick;
    m_baseTime = RealClock::now();
}

}  // namespace sim
