#include "SystemCalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <pthread.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>

SystemCalls g_systemCalls;

namespace {

template <class CALL>
CALL Next(const char* name) {
    return reinterpret_cast<CALL>(::dlsym(RTLD_NEXT, name));
}

void Tell(const char* call) {
    if (g_systemCalls.onFlush)
        g_systemCalls.onFlush(call);
}

}  // namespace

// The program's own functions come before the libraries', for these as well.
#pragma GCC visibility push(default)
extern "C" {

int fsync(int descriptor) {
    Tell("fsync");
    return Next<int (*)(int)>("fsync")(descriptor);
}

void sync() noexcept {
    Tell("sync");
    Next<void (*)()>("sync")();
}

int pthread_create(pthread_t* __restrict thread, const pthread_attr_t* __restrict attributes,
                   void* (*run)(void*), void* __restrict argument) noexcept {
    if (g_systemCalls.threads == 0)
        return EAGAIN;
    if (g_systemCalls.threads > 0)
        --g_systemCalls.threads;
    return Next<decltype(&pthread_create)>("pthread_create")(thread, attributes, run, argument);
}

int statfs(const char* path, struct statfs* status) noexcept {
    const int file = ::open(path, O_PATH | O_CLOEXEC);
    const int result = ::fstatfs(file, status);
    if (file >= 0)
        ::close(file);
    if (result == 0 && g_systemCalls.hasDebugfs)
        status->f_type = DEBUGFS_MAGIC;
    return result;
}
}
#pragma GCC visibility pop
