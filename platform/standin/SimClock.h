// The clock behind Olma_GetTickCount and Olma_Sleep: runs with real time, faster or slower, or is
// held and moved by hand. It never goes back. Every function may be called from any thread.
#ifndef SIMCLOCK_H
#define SIMCLOCK_H

#include "common/Mutex.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <thread>

namespace sim {

class SimClock {
public:
    SimClock();

    // While held, the clock moves only by Advance().
    void Hold();
    // Moves the clock, held or running. Wakes those sleepers whose time has come and no other; a
    // number below 0 moves nothing.
    void Advance(long long milliseconds);
    // Moves the clock like Advance(), but in steps, and after each of them waits until the sleepers
    // whose time had come have gone to sleep again: what they do every so often happens so often.
    void Pass(long long milliseconds);
    // From now on a sleep of the calling thread moves a held clock to its end instead of waiting
    // for somebody to do so. One thread can have this.
    void MoveHeld();
    // Ends a hold. A sleeper's remaining time passes at the new speed; speeds that are not positive
    // and finite count as 1.
    void Run(double speed = 1.0);

    long long Tick() const;  // milliseconds
    double Speed() const;    // 0 while the clock is held
    void Sleep(unsigned int milliseconds);

    // Threads in Sleep() whose time has not come. Advance() lowers it at once, so the next thread
    // counted has come to rest anew.
    int Sleepers() const;
    // Waits (real time) until at least count threads are counted; false if that takes too long.
    bool WaitForSleepers(int count, unsigned int timeoutMs) const;

private:
    using RealClock = std::chrono::steady_clock;

    struct Sleeper {
        long long wakeTick = 0;
        std::condition_variable changed;  // the clock's speed or position, in a way that matters
    };

    void Step(long long milliseconds, unsigned int atRestMs);
    bool IsMover() const;  // whether a sleep of this thread moves the clock
    long long TickLocked() const HXD_REQUIRES(m_lock);
    int SleepersLocked() const HXD_REQUIRES(m_lock);
    RealClock::time_point RealTimeOf(long long tick) const HXD_REQUIRES(m_lock);
    void SetBase(long long tick) HXD_REQUIRES(m_lock);

    mutable hxd::Mutex m_lock;
    mutable std::condition_variable m_sleeperArrived;
    bool m_bHeld HXD_GUARDED_BY(m_lock) = false;
    double m_dSpeed HXD_GUARDED_BY(m_lock) = 1.0;
    std::thread::id m_mover HXD_GUARDED_BY(m_lock);
    long long m_llBaseTick HXD_GUARDED_BY(m_lock);            // the clock's position ...
    RealClock::time_point m_baseTime HXD_GUARDED_BY(m_lock);  // ... at this moment
    // They live on the stacks of their threads.
    std::list<Sleeper*> m_sleepers HXD_GUARDED_BY(m_lock);
};

}  // namespace sim

#endif
