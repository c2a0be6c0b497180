// Calls of the system that a test looks at or has refused, in every thread of its program.
#ifndef HXD_TESTS_SYSTEMCALLS_H
#define HXD_TESTS_SYSTEMCALLS_H

#include <atomic>
#include <functional>
#include <string>

// As long as nothing is set, everything goes its usual way.
struct SystemCalls {
    std::function<void(const std::string& call)> onFlush;  // before each "fsync" and "sync"
    std::function<void()> onLock;                          // before the next flock()
    // Fifteen of sixteen write(), flock(), fsync() and poll() are interrupted, and no write() takes
    // all.
    std::atomic<bool> interrupts{false};
    std::atomic<bool> diskFull{false};  // for every write()
    std::atomic<long long> written{0};  // bytes, by every write() to what no child inherits
    std::atomic<bool> flushes{true};    // false: "fsync" and "sync" do nothing
    std::atomic<bool> pollFails{false};
    std::atomic<int> chownError{0};     // of every fchown(); 0: none
    std::atomic<int> threads{-1};       // how many more can be started; below 0: any number
    std::atomic<int> throwingTicks{0};  // how many more Olma_GetTickCount() of other threads throw
    std::atomic<int> debugfsLooks{0};   // how many more find a debugfs anywhere; below 0: all
};
extern SystemCalls g_systemCalls;

#endif
