// These definitions come before those of the C library and of the sanitizers, and end in them.
#undef _FORTIFY_SOURCE
#include "fuzz/Refusals.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#define HXD_EXPORT __attribute__((visibility("default")))

namespace {

enum class Call {
    DESCRIPTOR,  // whatever opens one
    THREAD,
    FLOCK,
    FSTAT,
    WRITE,
    READ,
    FCHOWN,
    FUTIMENS,
    FCHMOD,
    RENAME,
    MKDTEMP,
    STATFS,
    RECV,
    SENDTO,
    POLL,
};

constexpr int EVERY = 1 << 30;
constexpr int DIFFERENT = 0;  // no error: a write() of half, a debugfs

struct Refusal {
    Call call;
    int error;
    int granted;  // so many first
    int refused;  // then so many
};

constexpr Refusal REFUSALS[] = {
    {Call::DESCRIPTOR, EMFILE, 0, EVERY}, {Call::DESCRIPTOR, EMFILE, 1, EVERY},
    {Call::DESCRIPTOR, EMFILE, 2, EVERY}, {Call::DESCRIPTOR, EMFILE, 3, EVERY},
    {Call::DESCRIPTOR, EMFILE, 4, EVERY}, {Call::THREAD, EAGAIN, 0, EVERY},
    {Call::THREAD, EAGAIN, 1, EVERY},     {Call::THREAD, EAGAIN, 2, EVERY},
    {Call::FLOCK, EINTR, 0, 3},           {Call::FLOCK, ENOLCK, 0, EVERY},
    {Call::FLOCK, EWOULDBLOCK, 0, 3},     {Call::FSTAT, EIO, 0, EVERY},
    {Call::FSTAT, EIO, 1, EVERY},         {Call::FSTAT, EIO, 2, EVERY},
    {Call::FSTAT, EIO, 3, EVERY},         {Call::WRITE, EINTR, 0, 3},
    {Call::WRITE, DIFFERENT, 0, EVERY},   {Call::WRITE, ENOSPC, 0, EVERY},
    {Call::WRITE, ENOSPC, 1, EVERY},      {Call::WRITE, ENOSPC, 2, EVERY},
    {Call::WRITE, ENOSPC, 3, EVERY},      {Call::READ, EINTR, 0, 3},
    {Call::READ, EIO, 0, EVERY},          {Call::READ, EIO, 1, EVERY},
    {Call::FCHOWN, EPERM, 0, EVERY},      {Call::FCHOWN, EIO, 0, EVERY},
    {Call::FUTIMENS, EPERM, 0, EVERY},    {Call::FUTIMENS, EPERM, 1, EVERY},
    {Call::FUTIMENS, EPERM, 2, EVERY},    {Call::FCHMOD, EPERM, 0, EVERY},
    {Call::RENAME, EACCES, 0, EVERY},     {Call::MKDTEMP, EACCES, 0, EVERY},
    {Call::STATFS, EIO, 0, EVERY},        {Call::STATFS, EIO, 1, EVERY},
    {Call::STATFS, DIFFERENT, 0, EVERY},  {Call::RECV, EAGAIN, 0, EVERY},
    {Call::SENDTO, ENETUNREACH, 0, EVERY}, {Call::POLL, ENOMEM, 0, EVERY},
};
constexpr int REFUSAL_COUNT = sizeof REFUSALS / sizeof *REFUSALS;

std::atomic<const Refusal*> g_refusal{nullptr};
std::atomic<int> g_calls{0};

// True when this one is refused; errno says why.
bool IsRefused(Call call) {
    const Refusal* const refusal = g_refusal;
    if (refusal == nullptr || refusal->call != call)
        return false;
    const int number = g_calls++;
    if (number < refusal->granted || number - refusal->granted >= refusal->refused)
        return false;
    errno = refusal->error;
    return true;
}

// The sanitizers' own, or that of the C library.
template <class CALL>
CALL* Next(CALL* /*declared*/, const char* name) {
    void* const sanitizers = ::dlsym(RTLD_DEFAULT, (std::string("__interceptor_") + name).c_str());
    return reinterpret_cast<CALL*>(sanitizers != nullptr ? sanitizers
                                                         : ::dlsym(RTLD_NEXT, name));
}

void LimitDescriptors() {
    static const rlimit usual = [] {
        rlimit limit = {};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        return limit;
    }();
    rlimit limit = usual;
    const Refusal* const refusal = g_refusal;
    if (refusal != nullptr && refusal->call == Call::DESCRIPTOR) {
        const int lowest = ::dup(STDERR_FILENO);
        ::close(lowest);
        limit.rlim_cur = static_cast<rlim_t>(lowest + refusal->granted);
    }
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

void machine::Refuse(int number) {
    const bool known = number >= 0 && number < REFUSAL_COUNT;
    if (!known && g_refusal == nullptr)
        return;
    g_calls = 0;
    g_refusal = known ? &REFUSALS[number] : nullptr;
    LimitDescriptors();
}

#define HXD_REFUSABLE(call, result, name, parameters, arguments, exceptions) \
    HXD_EXPORT result name parameters exceptions {                           \
        static auto* const next = Next(&::name, #name);                      \
        return IsRefused(Call::call) ? -1 : next arguments;                  \
    }

extern "C" {

HXD_REFUSABLE(FLOCK, int, flock, (int file, int operation), (file, operation), noexcept)
HXD_REFUSABLE(FSTAT, int, fstat, (int file, struct stat* status), (file, status), noexcept)
HXD_REFUSABLE(READ, ssize_t, read, (int file, void* data, size_t size), (file, data, size), )
HXD_REFUSABLE(FCHOWN, int, fchown, (int file, uid_t user, gid_t group), (file, user, group),
              noexcept)
HXD_REFUSABLE(FUTIMENS, int, futimens, (int file, const timespec* times), (file, times), noexcept)
HXD_REFUSABLE(FCHMOD, int, fchmod, (int file, mode_t mode), (file, mode), noexcept)
HXD_REFUSABLE(RENAME, int, rename, (const char* from, const char* to), (from, to), noexcept)
HXD_REFUSABLE(RECV, ssize_t, recv, (int file, void* data, size_t size, int flags),
              (file, data, size, flags), )
HXD_REFUSABLE(SENDTO, ssize_t, sendto,
              (int file, const void* data, size_t size, int flags, const sockaddr* to,
               socklen_t length),
              (file, data, size, flags, to, length), )

HXD_REFUSABLE(POLL, int, ppoll,
              (pollfd * watched, nfds_t count, const timespec* timeout, const sigset_t* signals),
              (watched, count, timeout, signals), )

HXD_EXPORT ssize_t write(int file, const void* data, size_t size) {
    static auto* const next = Next(&::write, "write");
    if (!IsRefused(Call::WRITE))
        return next(file, data, size);
    return errno == DIFFERENT ? next(file, data, (size + 1) / 2) : -1;
}

HXD_EXPORT int statfs(const char* path, struct statfs* status) noexcept {
    static auto* const next = Next(&::statfs, "statfs");
    const bool refused = IsRefused(Call::STATFS);
    if (refused && errno != DIFFERENT)
        return -1;
    const int result = next(path, status);
    if (refused)
        status->f_type = DEBUGFS_MAGIC;
    return result;
}

HXD_EXPORT char* mkdtemp(char* path) noexcept {
    static auto* const next = Next(&::mkdtemp, "mkdtemp");
    return IsRefused(Call::MKDTEMP) ? nullptr : next(path);
}

HXD_EXPORT int pthread_create(pthread_t* __restrict thread, const pthread_attr_t* __restrict how,
                              void* (*run)(void*), void* __restrict of) noexcept {
    static auto* const next = Next(&::pthread_create, "pthread_create");
    return IsRefused(Call::THREAD) ? errno : next(thread, how, run, of);
}

}  // extern "C"
