// What a panel does to its programs.
#ifndef HXD_TESTS_ADVERSITY_H
#define HXD_TESTS_ADVERSITY_H

#include <linux/capability.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>
#include <cstdint>

// Interrupts whatever the process does every so often, with a handler that restarts nothing.
class InterruptingTimer {
public:
    explicit InterruptingTimer(int microseconds = 10000) {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &action, nullptr);
        Every(microseconds);
    }
    ~InterruptingTimer() { Every(0); }
    InterruptingTimer(const InterruptingTimer&) = delete;
    InterruptingTimer& operator=(const InterruptingTimer&) = delete;

private:
    static void Every(int microseconds) {
        const itimerval interval = {{0, microseconds}, {0, microseconds}};
        ::setitimer(ITIMER_REAL, &interval, nullptr);
    }
};

// No descriptor above a number is given out while it lives.
class DescriptorLimit {
public:
    explicit DescriptorLimit(int most) {
        ::getrlimit(RLIMIT_NOFILE, &m_usual);
        const rlimit limit = {static_cast<rlim_t>(most), m_usual.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &m_usual); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    rlimit m_usual = {};
};

// While it lives, this thread does not stand above permissions; where it does not anyway, nothing
// changes.
class OrdinaryUser {
public:
    OrdinaryUser() { OverrideModes(false); }
    ~OrdinaryUser() { OverrideModes(true); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static void OverrideModes(bool on) {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct sets[2] = {};
        ::syscall(SYS_capget, &header, sets);
        const std::uint32_t rights = 1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH;
        sets[0].effective =
            on ? sets[0].effective | (sets[0].permitted & rights) : sets[0].effective & ~rights;
        ::syscall(SYS_capset, &header, sets);
    }
};

// Nothing in /tmp can be made or removed by this thread while it lives.
class FrozenTmp {
public:
    FrozenTmp() { ::chmod("/tmp", 0555); }
    ~FrozenTmp() { ::chmod("/tmp", 01777); }
    FrozenTmp(const FrozenTmp&) = delete;
    FrozenTmp& operator=(const FrozenTmp&) = delete;

private:
    OrdinaryUser m_user;
};

#endif
