// These definitions come before those of the C library and of the sanitizers, and end in them.
#undef _FORTIFY_SOURCE
#include "fuzz/Refusals.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#define HXD_EXPORT __attribute__((visibility("default")))

namespace {

enum class Kind {
    DESCRIPTOR,  // what opens one; no limit of the process, which the sanitizers would feel
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
    Kind kind;
    int error;
    int granted;  // so many first
    int refused;  // then so many
};

constexpr Refusal REFUSALS[] = {
    {Kind::DESCRIPTOR, EMFILE, 0, EVERY},
    {Kind::DESCRIPTOR, EMFILE, 1, EVERY},
    {Kind::DESCRIPTOR, EMFILE, 2, EVERY},
    {Kind::DESCRIPTOR, EMFILE, 3, EVERY},
    {Kind::DESCRIPTOR, EMFILE, 4, EVERY},
    {Kind::THREAD, EAGAIN, 0, EVERY},
    {Kind::THREAD, EAGAIN, 1, EVERY},
    {Kind::THREAD, EAGAIN, 2, EVERY},
    {Kind::FLOCK, EINTR, 0, 3},
    {Kind::FLOCK, ENOLCK, 0, EVERY},
    {Kind::FLOCK, EWOULDBLOCK, 0, 3},
    {Kind::FSTAT, EIO, 0, EVERY},
    {Kind::FSTAT, EIO, 1, EVERY},
    {Kind::FSTAT, EIO, 2, EVERY},
    {Kind::FSTAT, EIO, 3, EVERY},
    {Kind::WRITE, EINTR, 0, 3},
    {Kind::WRITE, DIFFERENT, 0, EVERY},
    {Kind::WRITE, ENOSPC, 0, EVERY},
    {Kind::WRITE, ENOSPC, 1, EVERY},
    {Kind::WRITE, ENOSPC, 2, EVERY},
    {Kind::WRITE, ENOSPC, 3, EVERY},
    {Kind::READ, EINTR, 0, 3},
    {Kind::READ, EIO, 0, EVERY},
    {Kind::READ, EIO, 1, EVERY},
    {Kind::FCHOWN, EPERM, 0, EVERY},
    {Kind::FCHOWN, EIO, 0, EVERY},
    {Kind::FUTIMENS, EPERM, 0, EVERY},
    {Kind::FUTIMENS, EPERM, 1, EVERY},
    {Kind::FUTIMENS, EPERM, 2, EVERY},
    {Kind::FCHMOD, EPERM, 0, EVERY},
    {Kind::RENAME, EACCES, 0, EVERY},
    {Kind::MKDTEMP, EACCES, 0, EVERY},
    {Kind::STATFS, EIO, 0, EVERY},
    {Kind::STATFS, EIO, 1, EVERY},
    {Kind::STATFS, DIFFERENT, 0, EVERY},
    {Kind::RECV, EAGAIN, 0, EVERY},
    {Kind::SENDTO, ENETUNREACH, 0, EVERY},
    {Kind::POLL, ENOMEM, 0, EVERY},
};
constexpr int REFUSAL_COUNT = sizeof REFUSALS / sizeof *REFUSALS;

std::atomic<const Refusal*> g_refusal{nullptr};
std::atomic<int> g_calls{0};

// True when this one is refused; errno says why.
bool IsRefused(Kind kind) {
    const Refusal* const refusal = g_refusal;
    if (refusal == nullptr || refusal->kind != kind)
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
    return reinterpret_cast<CALL*>(sanitizers != nullptr ? sanitizers : ::dlsym(RTLD_NEXT, name));
}

}  // namespace

bool machine::Refuse(int number) {
    const bool known = number >= 0 && number < REFUSAL_COUNT;
    if (!known && g_refusal == nullptr)
        return false;
    g_calls = 0;
    g_refusal = known ? &REFUSALS[number] : nullptr;
    return known;
}

#define HXD_REFUSABLE(kind, result, name, parameters, arguments, exceptions) \
    HXD_EXPORT result name parameters exceptions {                           \
        static auto* const next = Next(&::name, #name);                      \
        return IsRefused(Kind::kind) ? -1 : next arguments;                  \
    }

extern "C" {

HXD_REFUSABLE(DESCRIPTOR, int, socket, (int family, int type, int protocol),
              (family, type, protocol), noexcept)
HXD_REFUSABLE(DESCRIPTOR, int, eventfd, (unsigned start, int flags), (start, flags), noexcept)
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
              (pollfd * watched, nfds_t count, const timespec* timeout, const sigset_t* mask),
              (watched, count, timeout, mask), )

HXD_EXPORT int open(const char* path, int flags, ...) {
    static auto* const next = Next(&::open, "open");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return IsRefused(Kind::DESCRIPTOR) ? -1 : next(path, flags, mode);
}
HXD_EXPORT int openat(int folder, const char* path, int flags, ...) {
    static auto* const next = Next(&::openat, "openat");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return IsRefused(Kind::DESCRIPTOR) ? -1 : next(folder, path, flags, mode);
}

HXD_EXPORT ssize_t write(int file, const void* data, size_t size) {
    static auto* const next = Next(&::write, "write");
    if (!IsRefused(Kind::WRITE))
        return next(file, data, size);
    return errno == DIFFERENT ? next(file, data, (size + 1) / 2) : -1;
}

HXD_EXPORT int statfs(const char* path, struct statfs* status) noexcept {
    static auto* const next = Next(&::statfs, "statfs");
    const bool refused = IsRefused(Kind::STATFS);
    if (refused && errno != DIFFERENT)
        return -1;
    const int result = next(path, status);
    if (refused)
        status->f_type = DEBUGFS_MAGIC;
    return result;
}

HXD_EXPORT char* mkdtemp(char* path) noexcept {
    static auto* const next = Next(&::mkdtemp, "mkdtemp");
    return IsRefused(Kind::MKDTEMP) ? nullptr : next(path);
}

HXD_EXPORT int pthread_create(pthread_t* __restrict thread, const pthread_attr_t* __restrict how,
                              void* (*run)(void*), void* __restrict of) noexcept {
    static auto* const next = Next(&::pthread_create, "pthread_create");
    return IsRefused(Kind::THREAD) ? errno : next(thread, how, run, of);
}

}  // extern "C"
