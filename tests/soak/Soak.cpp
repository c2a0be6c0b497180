// Endurance: three devices in one process, each with a host's thread of its own, and a second
// process on the same settings, while the panel's clock runs 2,000 times as fast. Fails when a
// setting is lost, when anybody makes no progress, or when memory, descriptors or threads are not
// given back.
#include "FakeHost.h"
#include "FakeLink.h"
#include "Resources.h"
#include "SimPanel.h"
#include "TestFiles.h"
#include "WaitStatus.h"
#include "common/AppSettings.h"
#include "common/FileLock.h"
#include "common/IniOperator.h"
#include "driver/record/ChannelTable.h"
#include "ntp/ntpCfgParam.h"
#include "tests/ntp/TimeServer.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr double CLOCK_SPEED = 2000.0;
constexpr int PATIENCE_S = 60;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long MOST_GROWTH_KIB = 1 << 30;  // a sanitizer keeps what was freed
#else
constexpr long MOST_GROWTH_KIB = 1024;  // the stand-ins keep the last records of each kind
#endif

std::atomic<bool> g_going{true};
std::atomic<int> g_faults{0};

void Check(bool holds, const char* what, long number = 0) {
    if (holds)
        return;
    std::fprintf(stderr, "soak: %s (%ld)\n", what, number);
    ++g_faults;
}

const char* const COMMANDS[] = {
    "REFLESH()",
    "GetMacInfo(i,t,t)",
    "SetNetworkMode(i,i,r)",
    "SetNetworkMode(i,one,r)",
    "STRSHA256(server,t)",
    "ModVncPwd(server,r)",
    "ModVncPwd(t,r)",
    "SetNTPServer(server,server,,)",
    "ReadAppLog(i,one,t,r)",
    "ReadSysLog(i,one,t,r)",
    "SAVESCREEN($OLMA_DIR_USR/soak.png,0,0,20,20)",
    "BACKLIGHTOFF()",
    "BACKLIGHTON()",
    "Nothing(1)",
    "REFLESH()",
};

// A device and what its host does with it.
class Host {
public:
    // channel: a setting that nobody else writes.
    Host(unsigned seed, Channel channel) : m_channel(*FindChannel(channel)), m_random(seed) {
        m_host.ints = {{"i", 0}, {"one", 1}, {"r", 0}};
        m_host.texts = {{"t", "text"}, {"server", "127.0.0.11"}};
        Create();
    }
    ~Host() { DestroyDeviceCtrl(m_device); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void Drive() {
        for (; g_going; ++m_steps)
            Step();
    }
    void Step() {
        switch (m_random() % 64) {
            case 0:
                Check(m_device->CleanupDevice() == 0, "the clean-up has failed");
                return Init();
            case 1:
                DestroyDeviceCtrl(m_device);
                return Create();
            case 2:
                ++m_synchronisations;
                Command("ExecNTP(r)");
                return Check(m_host.ints["r"] == 0, "no synchronisation", m_host.ints["r"]);
            default:
                break;
        }
        if (m_random() % 4 == 0)
            return ChangeSetting();
        Command(COMMANDS[m_random() % (sizeof COMMANDS / sizeof *COMMANDS)]);
        Collect();
    }
    long Steps() const { return m_steps; }
    static long Synchronisations() { return m_synchronisations; }
    static long Starts() { return m_starts; }

private:
    void Create() {
        m_device = CreateDeviceCtrl("soak", &m_host);
        m_device->UpdataCommunication(&m_link);
        Init();
    }
    void Init() {
        const unsigned char blob[] = {2, 0, 0, 0, 1, 0, 0, 0, 200, 0, 0, 0};
        ++m_starts;
        Check(m_device->InitDevice(blob, sizeof blob) == 0, "the start has failed");
        for (const char* command :
             {"SetNTPServer(server,,,)", "SetNTPFreq(one)", "SetNTPMode(one)", "EnableNTP(one)"})
            Command(command);
        Collect();
        m_link.deviceName.clear();
    }
    void Command(const char* text) {
        const int status = m_device->DevIOCtrl(text);
        Check(status == 0, text, status);
    }
    void Collect() {
        const std::vector<int> channels(32, 1);
        const int status = m_device->CollectDevData(channels.data(), 32);
        Check(status == 0, "the collection has failed", status);
    }
    void ChangeSetting() {
        const int index = m_channel.number - 1;
        const auto values = static_cast<unsigned>(m_channel.maximum - m_channel.minimum + 1);
        int value = m_channel.minimum + static_cast<int>(m_random() % values);
        const int status = m_device->WriteChannel(index, DATATYPE_INTEGER, &value);
        Check(status == 0, "the write has failed", status);
        Collect();
        Check(m_host.numberChannels[index] == value, "a setting was lost", m_channel.number);
    }

    FakeHost m_host;
    FakeLink m_link;
    IDeviceCtrl* m_device = nullptr;
    const ChannelRow& m_channel;
    std::minstd_rand m_random;
    std::atomic<long> m_steps{0};
    static std::atomic<long> m_synchronisations;  // that were asked for, by all
    static std::atomic<long> m_starts;            // of devices, by all
};
std::atomic<long> Host::m_synchronisations{0};
std::atomic<long> Host::m_starts{0};

// The other process that shares the settings: the GUI of a panel, in short.
int BeNeighbour() {
    static volatile sig_atomic_t ended = 0;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::signal(SIGTERM, [](int) { ended = 1; });
    const QString file = hxd::AppConfigDirectory() + QLatin1String("/olma_app_conf.ini");
    const QString section = QLatin1String("NEIGHBOUR");
    const QString key = QLatin1String("count");
    HXDCTRL::FileLock lock;
    if (!lock.open("/tmp/olma_app_conf.lck"))
        return 1;
    for (int count = 0; ended == 0; ++count) {
        ::usleep(2000);
        QString kept;
        const HXDCTRL::FileLocker locker(lock);
        IniOperator::FileIniReadValue(file, section, key, kept, QLatin1String("0"));
        if (kept.toInt() != count)
            return 2;
        IniOperator::FileIniWriteValue(file, section, key, QString::number(count + 1));
    }
    return 0;
}

// Looks every second until the end whether everybody makes progress.
void Watch(const std::vector<std::unique_ptr<Host>>& hosts, int seconds) {
    std::vector<long> steps(hosts.size());
    std::vector<int> silent(hosts.size());
    // At least, in each third: a picture or a log that is at work just now does not count.
    long leastMemoryKib[] = {LONG_MAX, LONG_MAX, LONG_MAX};
    for (int second = 1; second <= seconds && g_faults == 0; ++second) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        for (std::size_t i = 0; i < hosts.size(); ++i) {
            silent[i] = hosts[i]->Steps() == steps[i] ? silent[i] + 1 : 0;
            steps[i] = hosts[i]->Steps();
            Check(silent[i] < PATIENCE_S, "a device makes no progress", static_cast<long>(i));
        }
        const Resources used = Resources::Used();
        Check(used.descriptors < 150, "descriptors", used.descriptors);
        Check(used.threads < 100, "threads", used.threads);
        long& least = leastMemoryKib[(second - 1) * 3 / seconds];
        least = std::min(least, used.memoryKib);
    }
    const long growth = leastMemoryKib[2] - leastMemoryKib[1];
    Check(g_faults > 0 || seconds < 6 || growth < MOST_GROWTH_KIB, "memory has grown by KiB",
          growth);
}

// One that is stuck cannot be waited for: the alarm ends the program.
void End(std::vector<std::thread>& threads) {
    g_going = false;
    ::signal(SIGALRM, [](int) {
        const char text[] = "soak: a device does not come to its end\n";
        const ssize_t ignored = ::write(STDERR_FILENO, text, sizeof text - 1);
        static_cast<void>(ignored);
        ::_exit(1);
    });
    ::alarm(PATIENCE_S);
    for (std::thread& thread : threads)
        thread.join();
    ::alarm(0);
}

long Soak(int seconds) {
    std::vector<std::unique_ptr<Host>> hosts;
    hosts.push_back(std::make_unique<Host>(1, CHANNEL_BUZZER_DURATION));
    hosts.push_back(std::make_unique<Host>(2, CHANNEL_BACKLIGHT_DELAY));
    hosts.push_back(std::make_unique<Host>(3, CHANNEL_BACKLIGHT_AUTO_OFF));
    std::vector<std::thread> threads;
    threads.reserve(hosts.size());
    for (const auto& host : hosts)
        threads.emplace_back(&Host::Drive, host.get());
    Watch(hosts, seconds);
    End(threads);
    long steps = 0;
    for (const auto& host : hosts)
        steps += host->Steps();
    return steps;
}

void PreparePanel() {
    ::mkdir("/run/shims", 0755);
    writeFile("/run/shims/ping", "exit 0\n");
    writeFile("/etc/timezone", "Etc/UTC\n");
    writeFile("/etc/resolv.conf", "nameserver 127.0.0.53\n");
    writeFile("/etc/iot_cfg/vncConfig.ini", "[VNCCONFIG]\npasswd=panel\n");
    writeFile("/storage/log/restart.log", std::string(5000, 'x'));
    sim::SimPanel::Instance().RunClock(CLOCK_SPEED);
}

int Run(int seconds, pid_t neighbour) {
    PreparePanel();
    const TimeServer server("127.0.0.11", TimeServer::Showing(1900000000));
    Host(9, CHANNEL_BUZZER_DURATION).Step();  // whatever is made once
    const Resources before = Resources::Used();
    const long steps = Soak(seconds);
    const Resources after = Resources::Used(before.threads);
    Check(after.descriptors == before.descriptors, "descriptors are left", after.descriptors);
    Check(after.threads == before.threads, "threads are left", after.threads);
    // One that is asked for makes two requests at most.
    const long byThemselves = server.Requests() - 2 * Host::Synchronisations();
    Check(byThemselves > seconds / 10, "synchronisations are missing", byThemselves);
    // Each start and each hour of each device, likewise.
    const long due = Host::Starts() + 3 * static_cast<long>(seconds * CLOCK_SPEED / 3600);
    Check(byThemselves <= 2 * due, "more synchronisations than are due", byThemselves);
    ntpCfgParam time;
    time.ReadCfg();
    Check(time.ntpSwitch == 1 && time.freq == 1, "a time setting was lost", time.freq);
    ::kill(neighbour, SIGTERM);
    const int status = WaitStatus(neighbour);
    Check(status == 0, "the other process has lost a setting", status);
    std::fprintf(stderr,
                 "soak: %d s, %ld steps, %d requests for the time, %ld KiB, %ld descriptors, "
                 "%ld threads: %s\n",
                 seconds, steps, server.Requests(), after.memoryKib, after.descriptors,
                 after.threads, g_faults == 0 ? "passed" : "FAILED");
    return g_faults == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (::access("/run/hxd-panel", F_OK) != 0 || seconds < 1) {
        std::fprintf(stderr, "%s SECONDS runs in the sandbox only: ./dev soak\n", argv[0]);
        return 1;
    }
    if (std::freopen("/dev/null", "w", stdout) == nullptr)  // what the driver prints
        return 1;
    const pid_t neighbour = ::fork();
    if (neighbour == 0)
        return BeNeighbour();
    QCoreApplication application(argc, argv);
    return Run(seconds, neighbour);
}
