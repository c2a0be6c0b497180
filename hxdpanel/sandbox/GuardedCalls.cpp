#include "hxdpanel/sandbox/GuardedCalls.h"

#include "common/Mutex.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/sandbox/HarmlessCommand.h"

#include <dlfcn.h>
#include <sys/reboot.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <deque>

#define HXD_EXPORT extern "C" __attribute__((visibility("default")))

namespace guard {

namespace {

constexpr std::size_t MAX_CALLS = 1000;

std::atomic<bool> g_enabled{false};
std::atomic<bool> g_holdReboots{false};
std::atomic<bool> g_rebooted{false};

// Never destroyed: a thread of the driver may call until the very end.
struct Log {
    hxd::Mutex lock;
    std::deque<std::string> calls HXD_GUARDED_BY(lock);
};
Log& TheLog() {
    static Log* const log = new Log;
    return *log;
}

void Remember(const std::string& outcome, const std::string& command) {
    const std::string line = outcome + ": " + Visible(command);
    Log& log = TheLog();
    const hxd::MutexLock locker(log.lock);
    log.calls.push_back(line);
    if (log.calls.size() > MAX_CALLS)
        log.calls.pop_front();
}

void Refuse(const std::string& command) {
    Remember("refused", command);
    std::fprintf(stderr, "hxdpanel: without the sandbox the driver may not run: %s\n",
                 Visible(command).c_str());
    errno = EPERM;
}

// True when the command may run now.
bool Admit(const char* command) {
    if (!g_enabled)
        return true;
    if (!IsHarmless(command)) {
        Refuse(command);
        return false;
    }
    Remember("run", command);
    return true;
}

// The definition that this program's own one hides.
template <class FUNCTION>
FUNCTION* Hidden(FUNCTION* const, const char* name) {
    return reinterpret_cast<FUNCTION*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

void Enable() {
    g_enabled = true;
}

bool Enabled() {
    return g_enabled;
}

std::vector<std::string> Calls() {
    Log& log = TheLog();
    const hxd::MutexLock locker(log.lock);
    return {log.calls.begin(), log.calls.end()};
}

void ForgetCalls() {
    Log& log = TheLog();
    const hxd::MutexLock locker(log.lock);
    log.calls.clear();
}

void HoldReboots() {
    g_holdReboots = true;
}

bool TakeReboot() {
    return g_rebooted.exchange(false);
}

}  // namespace guard

HXD_EXPORT int reboot(int howto) noexcept {
    if (guard::g_holdReboots) {
        guard::g_rebooted = true;
        return -1;
    }
    if (guard::Enabled()) {
        guard::Refuse("reboot");
        return -1;
    }
    static auto* const hidden = guard::Hidden(&reboot, "reboot");
    return hidden != nullptr ? hidden(howto) : -1;
}

HXD_EXPORT int system(const char* command) {
    if (command != nullptr && !guard::Admit(command))
        return -1;
    static auto* const hidden = guard::Hidden(&system, "system");
    return hidden != nullptr ? hidden(command) : -1;
}

HXD_EXPORT FILE* popen(const char* command, const char* modes) {
    if (command == nullptr || !guard::Admit(command))
        return nullptr;
    static auto* const hidden = guard::Hidden(&popen, "popen");
    return hidden != nullptr ? hidden(command, modes) : nullptr;
}
