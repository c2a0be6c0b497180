// These definitions come before those of the C library, of Qt and of the stand-ins. A command that
// the driver does not build like this is a fault: so nothing from outside reaches a shell unquoted.
#include "fuzz/Machine.h"

#include "SimPanel.h"
#include "common/Mutex.h"
#include "fuzz/Fuzz.h"
#include "gui/ScreenPicture.h"
#include "hxdpanel/sandbox/GuardedCalls.h"
#include "olma_host.h"

#include <dlfcn.h>
#include <errno.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/reboot.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <QImage>
#include <QProcess>

#include <cctype>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <thread>

#define HXD_EXPORT __attribute__((visibility("default")))

std::atomic<bool> machine::driven{false};
std::string machine::kernelLog;
std::atomic<bool> machine::commandsFail{false};
std::atomic<bool> machine::pingAnswers{true};
std::atomic<int> machine::clockStepSeconds{0};

namespace {

constexpr long SPEED = 2000;
constexpr long TICK_SPEED = 250;  // of workers that wait for events
std::atomic<bool> g_rebooted{false};

const std::thread::id g_driving = std::this_thread::get_id();

bool IsDriving() {
    return std::this_thread::get_id() == g_driving;
}

timespec Shortened(long long nanoseconds, long speed = SPEED) {
    const long long left = nanoseconds / speed;
    return {static_cast<time_t>(left / 1000000000), static_cast<long>(left % 1000000000)};
}

// Workers rest until the thread that drives the device waits for them, and it until one of them
// rests again.
hxd::Mutex g_restLock;
unsigned g_ticks HXD_GUARDED_BY(g_restLock) = 0;
std::condition_variable g_tick;
std::condition_variable g_atRest;
constexpr std::chrono::microseconds UNTIL_REST(200);  // a worker may have ended
constexpr std::chrono::milliseconds LONGEST_REST(100);

void Tick() HXD_REQUIRES(g_restLock) {
    ++g_ticks;
    g_tick.notify_all();
}

// What a shell would make of the word; one that it would not take as it stands ends the program.
std::string Unquoted(const std::string& word) {
    std::string text;
    bool quoted = false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const char c = word[i];
        const bool escaped = !quoted && c == '\\' && word.compare(i + 1, 1, "'") == 0;
        if (c == '\'')
            quoted = !quoted;
        else if (escaped)
            text += word[++i];
        else if (quoted || std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                 std::strchr("._/-", c) != nullptr)
            text += c;
        else
            std::abort();
    }
    FUZZ_EXPECT(!quoted);
    return text;
}

void MakeFolders(const std::string& path) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos;
         end = path.find('/', end + 1))
        ::mkdir(path.substr(0, end).c_str(), 0755);
    ::mkdir(path.c_str(), 0755);
}

bool Begins(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool SetsTheClock(const std::string& command) {
    const std::string beginning = "date -s \"";
    return Begins(command, beginning) &&
           command.find_first_not_of("0123456789-: ", beginning.size()) == command.size() - 1 &&
           command.back() == '"';
}

}  // namespace

extern "C" {

HXD_EXPORT int system(const char* command) {
    if (!machine::driven)  // the fuzzer itself
        return reinterpret_cast<decltype(&::system)>(::dlsym(RTLD_NEXT, "system"))(command);
    const std::string text = command;
    const std::string makeFolders = "mkdir -p ";
    const bool fillsLog = text == "dmesg > /tmp/dmesg.log";
    const bool removesLog = text == "rm /tmp/dmesg.log";
    FUZZ_EXPECT(Begins(text, makeFolders) || fillsLog || removesLog || SetsTheClock(text));
    const std::string folder =
        Begins(text, makeFolders) ? Unquoted(text.substr(makeFolders.size())) : "";
    if (machine::commandsFail)
        return 256;
    if (!folder.empty())
        MakeFolders(folder);
    else if (fillsLog)
        std::ofstream("/tmp/dmesg.log", std::ios::binary) << machine::kernelLog;
    else if (removesLog)
        ::unlink("/tmp/dmesg.log");
    return 0;
}

// Prints the paths where SystemFiles() has put the attributes.
HXD_EXPORT FILE* popen(const char* command, const char*) {
    const std::string text = command;
    const std::string find = "find /sys/devices/platform -name ";
    FUZZ_EXPECT(Begins(text, find) || text == "mount -t debugfs none /sys/kernel/debug" ||
                text == "umount -l /sys/kernel/debug");
    if (machine::commandsFail)
        return nullptr;
    const int output = ::memfd_create("output", MFD_CLOEXEC);
    if (output < 0)
        return nullptr;
    const std::string path =
        "/sys/devices/platform/" +
        (Begins(text, find) ? Unquoted(text.substr(find.size())) : std::string());
    if (Begins(text, find) && ::access(path.c_str(), F_OK) == 0)
        ::syscall(SYS_write, output, (path + "\n").c_str(), path.size() + 1);
    ::lseek(output, 0, SEEK_SET);
    return ::fdopen(output, "r");
}
HXD_EXPORT int pclose(FILE* pipe) {
    return std::fclose(pipe);
}
HXD_EXPORT int posix_spawnp(pid_t*, const char*, const posix_spawn_file_actions_t*,
                            const posix_spawnattr_t*, char* const*, char* const*) {
    return EAGAIN;
}

HXD_EXPORT int reboot(int) noexcept {
    g_rebooted = true;
    errno = EPERM;
    return -1;
}
HXD_EXPORT void sync() noexcept {}
HXD_EXPORT int fsync(int) {
    return 0;
}

HXD_EXPORT int poll(pollfd* watched, nfds_t count, int timeoutMs) {
    const timespec timeout = Shortened(timeoutMs * 1000000LL, IsDriving() ? SPEED : TICK_SPEED);
    return ::ppoll(watched, count, timeoutMs < 0 ? nullptr : &timeout, nullptr);
}
HXD_EXPORT int nanosleep(const timespec* time, timespec*) {
    const timespec shortened = Shortened(time->tv_sec * 1000000000LL + time->tv_nsec);
    return static_cast<int>(::syscall(SYS_nanosleep, &shortened, nullptr));
}
HXD_EXPORT int usleep(useconds_t microseconds) {
    const timespec time = {static_cast<time_t>(microseconds / 1000000),
                           static_cast<long>(microseconds % 1000000 * 1000)};
    return ::nanosleep(&time, nullptr);
}

HXD_EXPORT void Olma_Sleep(unsigned int) {
    static thread_local unsigned seen = UINT_MAX;
    const bool isDriving = IsDriving();
    hxd::MutexLock locker(g_restLock);
    if (isDriving)
        Tick();
    else
        g_atRest.notify_one();
    const auto now = std::chrono::steady_clock::now();
    if (isDriving)
        locker.WaitUntil(g_atRest, now + UNTIL_REST);
    else if (seen == g_ticks)
        locker.WaitUntil(g_tick, now + LONGEST_REST);
    seen = g_ticks;
}
HXD_EXPORT int pthread_join(pthread_t thread, void** result) {
    static const auto next =
        reinterpret_cast<decltype(&::pthread_join)>(::dlsym(RTLD_NEXT, "pthread_join"));
    {
        const hxd::MutexLock locker(g_restLock);
        Tick();  // it need not rest any longer
    }
    return next(thread, result);
}

HXD_EXPORT int gettimeofday(timeval* now, void*) noexcept {
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME, &time);
    *now = {time.tv_sec + machine::clockStepSeconds, time.tv_nsec / 1000};
    return 0;
}

}  // extern "C"

// The driver's only QProcess is the ping, whose script holds an address and nothing else from
// outside.
HXD_EXPORT void QProcess::start(const QString&, const QStringList&, OpenMode) {
    std::ifstream script("/tmp/ping.sh");
    const std::string beginning = "ping -c 1 -W 2 ";
    std::string shell, ping;
    if (!std::getline(script, shell) || !std::getline(script, ping))
        return;  // reading is refused
    const std::size_t end = ping.find_first_not_of("0123456789.", beginning.size());
    FUZZ_EXPECT(Begins(ping, beginning) && end > beginning.size() &&
                ping.substr(std::min(end, ping.size())) == " > /dev/null 2>&1 ");
}
HXD_EXPORT bool QProcess::waitForFinished(int) {
    return true;
}
HXD_EXPORT QProcess::ProcessState QProcess::state() const {
    return QProcess::NotRunning;
}
HXD_EXPORT QProcess::ExitStatus QProcess::exitStatus() const {
    return QProcess::NormalExit;
}
HXD_EXPORT int QProcess::exitCode() const {
    return machine::pingAnswers ? 0 : 1;
}

// Drawing the real one takes longer than all else.
HXD_EXPORT QImage sim::DrawScreen(const sim::ScreenContent&) {
    QImage small(40, 24, QImage::Format_RGB32);
    small.fill(0);
    return small;
}

// Does not wait for what happens every so often, as scripts do that let days pass.
HXD_EXPORT void sim::SimClock::Pass(long long milliseconds) {
    Advance(milliseconds);
}

// In the place of hxdpanel's, which hands on what it finds harmless.
namespace guard {

void Enable() {}
bool Enabled() {
    return false;
}
std::vector<std::string> Calls() {
    return {};
}
void ForgetCalls() {}
void HoldReboots() {}
bool TakeReboot() {
    return g_rebooted.exchange(false);
}

}  // namespace guard
