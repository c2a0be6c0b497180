#include "FaultyMemory.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

#include <dlfcn.h>
#include <execinfo.h>
#include <netdb.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <initializer_list>

namespace {

// Allocations until the one that is refused; 0 and less: none is.
thread_local int g_left = 0;
std::atomic<int> g_othersLeft{0};
thread_local bool g_isTester = false;
std::atomic<bool> g_refused{false};

bool IsRefused() {
    const bool isLast =
        g_isTester ? g_left > 0 && --g_left == 0 : g_othersLeft > 0 && --g_othersLeft == 0;
    if (!isLast)
        return false;
    g_refused = true;
    errno = ENOMEM;
    return true;
}

bool Contains(const char* text, const char* part) {
    return text != nullptr && std::strstr(text, part) != nullptr;
}

// The innermost that is none of the language's, the system's or the test's.
Dl_info InnermostFunction() {
    void* frames[64];
    const int count = ::backtrace(frames, 64);
    for (int i = 1; i < count; ++i) {
        Dl_info where = {};
        if (::dladdr(frames[i], &where) != 0 && !Contains(where.dli_fname, "/libc.so") &&
            !Contains(where.dli_fname, "libstdc++") && !Contains(where.dli_fname, "libgcc_s") &&
            !Contains(where.dli_fname, "_tests"))
            return where;
    }
    return {"nobody", nullptr, nullptr, nullptr};
}

constexpr int TICK_MICROSECONDS = 250000;
constexpr int MOST_TICKS = 40;  // for anybody but Qt
volatile std::sig_atomic_t g_ticks = 0;
bool g_judges = false;

void BeginTicks() {
    if (!g_judges)
        return;
    const itimerval interval = {{0, TICK_MICROSECONDS}, {0, TICK_MICROSECONDS}};
    g_ticks = 0;
    ::setitimer(ITIMER_REAL, &interval, nullptr);
}

// Who is in a function of Qt's at a tick waits for a lock that Qt has kept, or the machine is slow,
// and this allocation goes untried; anybody else has time.
void JudgeEnd(int signal) {
    const Dl_info where = InnermostFunction();
    const bool isQts = Contains(where.dli_fname, "/libQt");
    g_ticks = g_ticks + 1;
    if (signal == SIGALRM && !isQts && g_ticks < MOST_TICKS)
        return;
    const char* const name = where.dli_sname != nullptr ? where.dli_sname : where.dli_fname;
    const char* const parts[] = {"ended in ", name, "\n"};
    for (const char* part : parts) {
        if (::write(STDERR_FILENO, part, std::strlen(part)) < 0)
            break;  // nobody reads it
    }
    ::_exit(isQts ? faulty_memory::QTS_END : 78);
}

}  // namespace

void faulty_memory::Refuse(int number) {
    BeginTicks();
    g_isTester = true;
    g_refused = false;
    g_left = number;
}

void faulty_memory::RefuseOthers(int number) {
    addrinfo* found = nullptr;  // the first look-up without memory would keep a lock for ever
    if (::getaddrinfo("localhost", nullptr, nullptr, &found) == 0)
        ::freeaddrinfo(found);
    Refuse(0);
    g_othersLeft = number;
}

bool faulty_memory::Stop() {
    BeginTicks();
    g_left = 0;
    g_othersLeft = 0;
    return g_refused;
}

void faulty_memory::TellQtsEnds() {
    void* frame = nullptr;
    ::backtrace(&frame, 1);  // loads what it needs
    for (const int end : {SIGSEGV, SIGABRT, SIGALRM})
        std::signal(end, JudgeEnd);
    g_judges = true;
}

// NOLINTBEGIN(readability-identifier-naming): the C library's
#pragma GCC visibility push(default)
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_realloc(block, size);
}
}
#pragma GCC visibility pop
// NOLINTEND(readability-identifier-naming)

#endif
