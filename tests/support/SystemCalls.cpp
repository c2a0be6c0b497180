// Without the compiler's own versions of some of the functions below.
#undef _FORTIFY_SOURCE
#include "SystemCalls.h"

#include "olma_host.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <thread>
#include <utility>

SystemCalls g_systemCalls;

namespace {

const std::thread::id MAIN_THREAD = std::this_thread::get_id();

template <class CALL>
CALL Next(const char* name) {
    return reinterpret_cast<CALL>(::dlsym(RTLD_NEXT, name));
}

void Tell(const char* call) {
    if (g_systemCalls.onFlush)
        g_systemCalls.onFlush(call);
}

bool IsInterrupted() {
    static std::atomic<unsigned> calls{0};
    const bool isInterrupted = g_systemCalls.interrupts && ++calls % 16 != 0;
    if (isInterrupted)
        errno = EINTR;
    return isInterrupted;
}

}  // namespace

// The program's own functions come before the libraries', for these as well.
#pragma GCC visibility push(default)
extern "C" {

int fsync(int fd) {
    Tell("fsync");
    if (!g_systemCalls.flushes)
        return 0;
    return IsInterrupted() ? -1 : Next<decltype(&fsync)>("fsync")(fd);
}

void sync() noexcept {
    Tell("sync");
    if (g_systemCalls.flushes)
        Next<decltype(&sync)>("sync")();
}

int flock(int fd, int operation) noexcept {
    if (g_systemCalls.onLock)
        std::exchange(g_systemCalls.onLock, nullptr)();
    return IsInterrupted() ? -1 : Next<decltype(&flock)>("flock")(fd, operation);
}

int poll(pollfd* fds, nfds_t nfds, int timeout) {
    if (g_systemCalls.pollFails) {
        errno = ENOMEM;
        return timeout > 60000 ? 0 : -1;  // what waits for minutes has waited
    }
    return IsInterrupted() ? -1 : Next<decltype(&poll)>("poll")(fds, nfds, timeout);
}

int fchown(int fd, uid_t owner, gid_t group) noexcept {
    if (g_systemCalls.chownError != 0) {
        errno = g_systemCalls.chownError;
        return -1;
    }
    return Next<decltype(&fchown)>("fchown")(fd, owner, group);
}

ssize_t write(int fd, const void* buf, size_t n) {
    if (g_systemCalls.diskFull) {
        errno = ENOSPC;
        return -1;
    }
    const size_t most = g_systemCalls.interrupts ? (n + 1) / 2 : n;
    const ssize_t count = IsInterrupted() ? -1 : Next<decltype(&write)>("write")(fd, buf, most);
    if (count > 0 && ::fcntl(fd, F_GETFD) == FD_CLOEXEC)
        g_systemCalls.written += count;
    return count;
}

int pthread_create(pthread_t* __restrict newthread, const pthread_attr_t* __restrict attr,
                   void* (*start_routine)(void*),  // NOLINT(readability-identifier-naming)
                   void* __restrict arg) noexcept {
    if (g_systemCalls.threads == 0)
        return EAGAIN;
    if (g_systemCalls.threads > 0)
        --g_systemCalls.threads;
    return Next<decltype(&pthread_create)>("pthread_create")(newthread, attr, start_routine, arg);
}

long long Olma_GetTickCount() {
    const bool isOther = std::this_thread::get_id() != MAIN_THREAD;
    if (isOther && g_systemCalls.throwingTicks > 0) {
        --g_systemCalls.throwingTicks;
        throw std::bad_alloc();
    }
    return Next<decltype(&Olma_GetTickCount)>("Olma_GetTickCount")();
}

int statfs(const char* file, struct statfs* buf) noexcept {
    const int opened = ::open(file, O_PATH | O_CLOEXEC);
    const int result = ::fstatfs(opened, buf);
    if (opened >= 0)
        ::close(opened);
    if (result == 0 && g_systemCalls.debugfsLooks != 0) {
        buf->f_type = DEBUGFS_MAGIC;
        if (g_systemCalls.debugfsLooks > 0)
            --g_systemCalls.debugfsLooks;
    }
    return result;
}
}
#pragma GCC visibility pop
