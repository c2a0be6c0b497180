// A mutex whose use clang checks: a member marked with HXD_GUARDED_BY is touched only under its
// mutex, and a function marked with HXD_REQUIRES is called only under it, or the build with
// -Wthread-safety (./dev lint) refuses. Other compilers see plain mutexes of the C++ library.
#ifndef HXD_MUTEX_H
#define HXD_MUTEX_H

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define HXD_THREAD_ANNOTATION(annotation) __attribute__((annotation))
#else
#define HXD_THREAD_ANNOTATION(annotation)
#endif

#define HXD_GUARDED_BY(mutex) HXD_THREAD_ANNOTATION(guarded_by(mutex))
#define HXD_REQUIRES(mutex) HXD_THREAD_ANNOTATION(exclusive_locks_required(mutex))

namespace hxd {

class HXD_THREAD_ANNOTATION(lockable) Mutex {
private:
    friend class MutexLock;
    std::mutex m_mutex;
};

// Holds the mutex while it lives. A wait gives it up meanwhile and may end without a reason, so it
// stands in a loop that tests what is waited for (a lambda for that would escape the check).
class HXD_THREAD_ANNOTATION(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) HXD_THREAD_ANNOTATION(exclusive_lock_function(mutex))
        : m_lock(mutex.m_mutex) {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    ~MutexLock() HXD_THREAD_ANNOTATION(unlock_function()) = default;

    void Wait(std::condition_variable& changed) { changed.wait(m_lock); }
    // False when the time has come. Not for the driver: a panel's older C++ library waits by the
    // system clock, which is set there.
    bool WaitUntil(std::condition_variable& changed, std::chrono::steady_clock::time_point time) {
        return changed.wait_until(m_lock, time) == std::cv_status::no_timeout;
    }

private:
    std::unique_lock<std::mutex> m_lock;
};

// One that the thread that holds it may take again.
class HXD_THREAD_ANNOTATION(lockable) RecursiveMutex {
private:
    friend class RecursiveMutexLock;
    std::recursive_mutex m_mutex;
};

class HXD_THREAD_ANNOTATION(scoped_lockable) RecursiveMutexLock {
public:
    explicit RecursiveMutexLock(RecursiveMutex& mutex)
        HXD_THREAD_ANNOTATION(exclusive_lock_function(mutex))
        : m_lock(mutex.m_mutex) {}
    RecursiveMutexLock(const RecursiveMutexLock&) = delete;
    RecursiveMutexLock& operator=(const RecursiveMutexLock&) = delete;
    ~RecursiveMutexLock() HXD_THREAD_ANNOTATION(unlock_function()) = default;

private:
    std::lock_guard<std::recursive_mutex> m_lock;
};

}  // namespace hxd

#endif
