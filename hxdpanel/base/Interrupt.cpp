#include "hxdpanel/base/Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>

namespace interrupt {

namespace {

constexpr int PATIENCE = 3;
constexpr char STILL_BUSY[] = "\nhxdpanel: the driver is busy; once more ends hxdpanel at once\n";

int g_event = -1;
volatile sig_atomic_t g_pending = 0;
volatile sig_atomic_t g_endRequested = 0;

void OnSignal(int signal) {
    const int savedError = errno;
    if (signal != SIGINT)
        g_endRequested = 1;
    g_pending = g_pending + 1;
    if (g_pending >= PATIENCE)
        ::_exit(128 + signal);
    const std::uint64_t one = 1;
    ssize_t written = ::write(g_event, &one, sizeof one);  // fails when it is readable already
    if (g_pending == PATIENCE - 1)
        written = ::write(STDERR_FILENO, STILL_BUSY, sizeof STILL_BUSY - 1);
    static_cast<void>(written);
    errno = savedError;
}

}  // namespace

void Install() {
    g_event = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

void EndWith(int descriptor) {
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    ::fcntl(descriptor, F_SETSIG, SIGTERM);
    ::fcntl(descriptor, F_SETOWN, ::getpid());
    ::fcntl(descriptor, F_SETFL, O_NONBLOCK | O_ASYNC);
}

bool Pending() {
    return g_pending != 0;
}

bool EndRequested() {
    return g_endRequested != 0;
}

void Clear() {
    std::uint64_t count = 0;
    if (::read(g_event, &count, sizeof count) < 0) {
        // Nothing was pending.
    }
    g_pending = 0;
}

bool Wait(int milliseconds, int descriptor) {
    pollfd events[2] = {{g_event, POLLIN, 0}, {descriptor, POLLIN, 0}};
    ::poll(events, 2, milliseconds);
    return Pending();
}

int Descriptor() {
    return g_event;
}

}  // namespace interrupt
