// The end of a device, in every state of its time synchronisation that can last.
#include "driver/record/ChannelTable.h"
#include "host.h"
#include "network/NerworkCheck.h"
#include "tests/ntp/TimePanel.h"
#include "tests/ntp/TimeServer.h"

#include <fcntl.h>
#include <sys/file.h>

namespace {

// Locks out every other process, and here the driver as well: each opens the file by itself.
class HeldLock {
public:
    explicit HeldLock(const char* path) {
        if (path != nullptr && m_file.open(path, O_RDONLY | O_CREAT))
            ::flock(m_file.Descriptor(), LOCK_EX);
    }

private:
    HXDCTRL::File m_file;
};

class Stopping : public TimePanel {
protected:
    Stopping() {
        OnPing("exit 0");
        writeFile("/etc/nsswitch.conf", "hosts: dns\n");
    }
    ~Stopping() override { writeFile("/etc/nsswitch.conf", "hosts: files\n"); }

    // Synchronises at once.
    IDeviceCtrl* Start(const std::vector<std::string>& servers) {
        const unsigned char blob[] = {2, 0, 0, 0, 1, 0, 0, 0, 200, 0, 0, 0};
        const int channel = 1;
        Settings("1", "1", "2", servers);
        IDeviceCtrl* const device = CreateDeviceCtrl("panel", &host);
        device->InitDevice(blob, sizeof blob);
        device->CollectDevData(&channel, 1);
        return device;
    }
    static long long StopMs(IDeviceCtrl* device) {
        const Stopwatch watch;
        DestroyDeviceCtrl(device);
        return watch.Ms();
    }
    static std::size_t Threads() { return EntriesOf("/proc/self/task"); }
};

// Each of six queries of a look-up waits for two seconds.
constexpr const char* SILENT_NAME_SERVERS =
    "search a.test b.test\nnameserver 127.0.0.53\nnameserver 127.0.0.54\n"
    "options timeout:2 attempts:1\n";

}  // namespace

TEST_F(Stopping, TakesLittleTimeInEveryState) {
    const TimeServer silent("127.0.0.11", nullptr);
    const TimeServer good("127.0.0.12", TimeServer::Showing(1900000000));
    const TimeServer silentNames("127.0.0.53", nullptr, 53);
    const TimeServer silentNamesToo("127.0.0.54", nullptr, 53);
    writeFile("/etc/resolv.conf", SILENT_NAME_SERVERS);
    IDeviceCtrl* device = nullptr;
    // The second synchronisation waits for what is left of the first one, at the silent server.
    const auto askedTwice = [&] {
        int hours = 3;
        if (!Panel().rtcSettings.empty())
            device->WriteChannel(CHANNEL_NTP_PERIOD - 1, DATATYPE_INTEGER, &hours);
        return Runs("ping") > 3;  // two for each
    };
    constexpr const char* NO_LOCK = nullptr;
    const auto pinged = [] { return Runs("ping") > 0; };
    const auto soon = [] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        return true;
    };
    const struct {
        const char* name;
        const char* ping;
        const char* lock;
        std::vector<std::string> servers;
        std::function<bool()> reached;
        long long limitMs;
    } cases[] = {
        {"idle", "exit 0", NO_LOCK, {}, soon, 1500},
        {"no network", "exit 1", NO_LOCK, {"127.0.0.11"}, pinged, 1500},
        {"waiting", "exit 0", NO_LOCK, {"127.0.0.11"}, [&] { return silent.Requests() > 2; }, 1500},
        {"posting", "exit 0", NO_LOCK, {"127.0.0.11", "127.0.0.12"}, askedTwice, 1500},
        {"resolving",
         "exit 0",
         NO_LOCK,
         {"time.test"},
         [&] { return silentNames.Requests() > 0; },
         1500},
        {"pinging", "exec sleep 9", NO_LOCK, {"127.0.0.11"}, pinged, 1500},
        {"ping's lock is held", "exit 0", NerworkCheck::pingLckPath, {"127.0.0.11"}, soon, 1500},
        {"resolver's lock is held", "exit 0", HXDCTRL::dnsFileLockPath, {"time.test"}, soon, 1500},
    };
    testing::internal::CaptureStderr();
    for (const auto& c : cases) {
        ::unlink(COMMANDS);
        OnPing(c.ping);
        const HeldLock lock(c.lock);
        device = Start(c.servers);
        EXPECT_TRUE(WaitFor(c.reached)) << c.name;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_LT(StopMs(device), c.limitMs) << c.name;
        EXPECT_EQ(Runs("ping") > 0, c.lock == nullptr && !c.servers.empty()) << c.name;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("getaddrinfo error"), std::string::npos)
        << "what is given up has not failed";
}

TEST_F(Stopping, OfFiveDevicesThatPingInTurnIsNotInTurn) {
    OnPing("exec sleep 9");
    IDeviceCtrl* devices[5];
    for (IDeviceCtrl*& device : devices)
        device = Start({"127.0.0.11"});
    EXPECT_TRUE(WaitFor([] { return Runs("ping") > 0; }));
    for (IDeviceCtrl* const device : devices)
        EXPECT_LT(StopMs(device), 1500);
}

// Look-ups outlive their devices, but only so many, and only for their time.
TEST_F(Stopping, LeavesNothingForGood) {
    const TimeServer silent("127.0.0.11", nullptr);
    const TimeServer silentNames("127.0.0.53", nullptr, 53);
    const TimeServer silentNamesToo("127.0.0.54", nullptr, 53);
    writeFile("/etc/resolv.conf", SILENT_NAME_SERVERS);
    StopMs(Start({"127.0.0.11"}));
    const std::size_t descriptors = EntriesOf("/proc/self/fd");
    const std::size_t threads = Threads();
    for (int i = 0; i < 20; ++i) {
        IDeviceCtrl* const device = Start({"a.test", "b.test", "c.test", "d.test"});
        std::this_thread::sleep_for(std::chrono::milliseconds(100 + i * 10));
        EXPECT_LT(StopMs(device), 1500);
    }
    EXPECT_GT(Threads(), threads);
    EXPECT_LE(Threads(), threads + 32 + 4);  // an ended thread is listed for a moment longer
    for (int i = 0; i < 30; ++i) {
        IDeviceCtrl* const device = Start({"127.0.0.11"});
        std::this_thread::sleep_for(std::chrono::milliseconds(i));
        StopMs(device);
    }
    EXPECT_TRUE(WaitFor([=] { return Threads() <= threads; }));
    EXPECT_TRUE(WaitFor([=] { return EntriesOf("/proc/self/fd") <= descriptors; }));
}
