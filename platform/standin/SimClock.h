// The clock behind Olma_GetTickCount and Olma_Sleep: runs with real time, faster or slower, or is
// held and moved by hand. It never goes back. Every function may be called from any thread.
#ifndef SIMCLOCK_H
#define SIMCLOCK_H

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

namespace sim {

class SimClock {
public:
    SimClock();

    // While held, the clock moves only by advance().
    void hold();
    // Moves the clock, held or running. Wakes those sleepers whose time has come and no other; a
    // number below 0 moves nothing.
    void advance(long long milliseconds);
    // Moves the clock like advance(), but in steps, and after each of them waits until the sleepers
    // whose time had come have gone to sleep again: what they do every so often happens so often.
    void pass(long long milliseconds);
    // From now on a sleep of the calling thread moves a held clock to its end instead of waiting
    // for somebody to do so. One thread can have this.
    void moveHeld();
    // Ends a hold. A sleeper's remaining time passes at the new speed; speeds that are not positive
    // and finite count as 1.
    void run(double speed = 1.0);

    long long tick() const;  // milliseconds
    double speed() const;    // 0 while the clock is held
    void sleep(unsigned int milliseconds);

    // Threads in sleep() whose time has not come. advance() lowers it at once, so the next thread
    // counted has come to rest anew.
    int sleepers() const;
    // Waits (real time) until at least count threads are counted; false if that takes too long.
    bool waitForSleepers(int count, unsigned int timeoutMs) const;

private:
    using RealClock = std::chrono::steady_clock;

    struct Sleeper {
        long long wakeTick = 0;
        std::condition_variable changed;  // the clock's speed or position, in a way that matters
    };

    void step(long long milliseconds, unsigned int atRestMs);
    long long tickLocked() const;
    int sleepersLocked() const;
    RealClock::time_point realTimeOf(long long tick) const;
    void setBase(long long tick);

    mutable std::mutex m_lock;  // guards everything below
    mutable std::condition_variable m_sleeperArrived;
    bool m_bHeld = false;
    double m_dSpeed = 1.0;
    std::thread::id m_mover;
    long long m_llBaseTick;            // the clock's position ...
    RealClock::time_point m_baseTime;  // ... at this moment
    std::list<Sleeper*> m_sleepers;    // they live on the stacks of their threads
};

}  // namespace sim

#endif
