#include "FaultyMemory.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

#include <dlfcn.h>
#include <execinfo.h>
#include <netdb.h>
#include <sys/time.h>
#include <unistd.h>
#include <QtGlobal>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <iterator>

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

// Of the innermost library's functions at work the outermost that has a name. Not counted: the
// language's, the system's and the test's.
Dl_info EnteredFunction() {
    void* frames[64];
    const int count = ::backtrace(frames, 64);
    Dl_info entered = {"nobody", nullptr, nullptr, nullptr};
    for (int i = 1; i < count; ++i) {
        Dl_info where = {};
        if (::dladdr(frames[i], &where) == 0 || Contains(where.dli_fname, "/libc.so") ||
            Contains(where.dli_fname, "libstdc++") || Contains(where.dli_fname, "libgcc_s") ||
            Contains(where.dli_fname, "_tests"))
            continue;
        if (entered.dli_fbase != nullptr && entered.dli_fbase != where.dli_fbase)
            break;
        if (entered.dli_sname == nullptr || where.dli_sname != nullptr)
            entered = where;
    }
    return entered;
}

// What ends in Qt 5 without memory, or waits for ever: an object that is made or connected, a
// process that was not started, settings that are written, the first message of a program.
constexpr const char* ENDS_OF_QT[] = {"_ZN14QObjectPrivateD1Ev", "_ZN7QObject7connectE",
                                      "_Z12qt_safe_poll",        "_ZN9QSettingsD1Ev",
                                      "_ZN9QSettings4syncEv",    "_ZNK14QMessageLogger5debugE"};

bool IsKnownEnd(const Dl_info& where) {
#if QT_VERSION < 0x050000  // half of what it is refused ends there
    return Contains(where.dli_fname, "/libQt");
#else
    return Contains(where.dli_fname, "/libQt") &&
           std::any_of(std::begin(ENDS_OF_QT), std::end(ENDS_OF_QT),
                       [&](const char* name) { return Contains(where.dli_sname, name); });
#endif
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

// Who is in one of those at a tick waits for a lock, or the machine is slow, and this allocation
// goes untried; anybody else has time.
void JudgeEnd(int signal) {
    const Dl_info where = EnteredFunction();
    const bool isQts = IsKnownEnd(where);
    g_ticks = g_ticks + 1;
    if (signal == SIGALRM && !isQts && g_ticks < MOST_TICKS)
        return;
    const char* const name = where.dli_sname != nullptr ? where.dli_sname : where.dli_fname;
    const char* const parts[] = {signal == SIGALRM ? "waits in " : "ended in ", name, "\n"};
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

// The C library's names.
// NOLINTBEGIN(readability-identifier-naming,readability-inconsistent-declaration-parameter-name)
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
// NOLINTEND(readability-identifier-naming,readability-inconsistent-declaration-parameter-name)

#endif
