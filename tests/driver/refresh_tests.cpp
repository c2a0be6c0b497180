#include "Adversity.h"
#include "Record.h"
#include "TestFiles.h"
#include "common/AppSettings.h"
#include "driver/RefreshCycle.h"
#include "driver/record/ChannelTable.h"
#include "ntp/NtpCtrl.h"
#include "storage/DiskInterface.h"

#include <sys/stat.h>
#include <unistd.h>
#include <fstream>

namespace {

class Refresh : public RecordTest {
protected:
    void Run() {
        EXPECT_EQ(CDevBas::refleshData(record, record.m_arrValue, record.m_arrStrValue), 1);
    }
    double Value(int channel) { return record.m_arrValue[channel]; }
    std::string Text(int channel) {
        return static_cast<const char*>(record.m_arrStrValue[channel]);
    }
    void PresetTexts(const char* text) {
        for (int i = 0; i < record.m_arrStrValue.GetSize(); ++i)
            record.m_arrStrValue[i] = text;
    }
};

// A storage manager whose init() fails so many times, and which is ready 200 ms after a request.
class FakeDisk final : public DiskInterface {
public:
    FakeDisk(int failures, std::string& calls) : m_nFailures(failures), m_calls(calls) {}
    bool init() override {
        m_calls += "i";
        return m_nFailures-- <= 0;
    }
    int getDiskLifeTime() override { return 77; }
    int getDiskIO() override { return 2; }
    void refresh() override {
        m_tick = sim::SimPanel::Instance().Tick();
        m_calls += "r";
    }
    bool refreshRes() override {
        const bool isReady = sim::SimPanel::Instance().Tick() >= m_tick + 200;
        m_calls += isReady ? "!" : "?";
        return isReady;
    }

private:
    int m_nFailures;
    long long m_tick = 0;
    std::string& m_calls;
};

}  // namespace

TEST_F(Refresh, InitialisesTheStorageManagerUntilThatWorksAndThenRefreshesIt) {
    std::string calls;
    context.m_pDisk = std::make_unique<FakeDisk>(2, calls);
    context.m_bDiskInitPending = true;
    const struct {
        const char* calls;
        double life, gear;
    } rounds[] = {{"i", -1, -1}, {"ii", -1, -1}, {"iii", 77, 2}, {"iiir?!", 77, 2}};
    sim::SimPanel::Instance().RunClock(1.0);
    for (const auto& round : rounds) {
        Run();
        EXPECT_EQ(calls, round.calls);
        EXPECT_EQ(Value(26), round.life);
        EXPECT_EQ(Value(27), round.gear);
    }
}

TEST_F(Refresh, ShowsOneOrTwoInterfacesAndLeavesOtherNumbersAlone) {
    const struct {
        std::size_t interfaces;
        const char* texts[4];
    } cases[] = {
        {0, {"old", "old", "old", "old"}},
        {1, {"192.168.1.20", "255.255.255.0", "", ""}},
        {2, {"192.168.1.20", "255.255.255.0", "10.0.0.20", "255.255.255.0"}},
        {3, {"old", "old", "old", "old"}},
    };
    for (const auto& c : cases) {
        sim::SimPanel::Instance().Reset();
        ChangePanel([&](sim::PanelState& state) { state.interfaces.resize(c.interfaces); });
        PresetTexts("old");
        Run();
        const int channels[] = {1, 2, 8, 9};
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(Text(channels[i]), c.texts[i]) << c.interfaces;
    }
    // A MAC address that cannot be read leaves its text as it was.
    sim::SimPanel::Instance().Reset();
    ChangePanel([](sim::PanelState& state) {
        state.interfaces[1].macAddress.clear();
        state.interfaces[0].macAddress = "aa:bb:0c:dd:ee:ff";
    });
    PresetTexts("old");
    Run();
    EXPECT_EQ(Text(22), "AA:BB:0C:DD:EE:FF");
    EXPECT_EQ(Text(23), "old");
    sim::SimPanel::Instance().Fail("hal_get_network_count", {});
    PresetTexts("old");
    Run();
    EXPECT_EQ(Text(1) + Text(22), "oldold");
}

TEST_F(Refresh, MakesNumbersOfTheSettings) {
    const struct {
        const char* buzz;
        const char* status;
        const char* duration;
        double channels[4];  // 3 to 6, from -7 each
    } cases[] = {
        {"30", "true", "2500", {1, 30, 1, 2}},     {"0", "false", "-2500", {0, 0, 0, -2}},
        {"-5", "1", "abc", {1, -5, 1, 0}},         {"0x10", "0", "999", {0, 0, 0, 0}},
        {"", "yes", "99999999999", {0, 0, -7, 0}},
    };
    for (const auto& c : cases) {
        hxd::AppSettings settings;
        settings.Write(hxd::KEY_BUZZ_DURATION, QString::fromLatin1(c.buzz));
        settings.Write(hxd::KEY_BACKLIGHT_STATUS, QString::fromLatin1(c.status));
        settings.Write(hxd::KEY_BACKLIGHT_DURATION, QString::fromLatin1(c.duration));
        for (int i = 0; i < 4; ++i)
            record.m_arrValue[3 + i] = -7;
        Run();
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(Value(3 + i), c.channels[i]) << c.buzz << " channel " << 3 + i;
    }
}

TEST_F(Refresh, ShowsTimeSettingsAndPassword) {
    writeFile("/etc/iot_cfg/vncConfig.ini", "[VNCCONFIG]\npasswd=secret\n");
    writeFile("/usr/olma_app/config/ntp_param_cfg.ini",
              "[NTP_PARAM]\nntp_switch=2\nntp_mode=3\nntp_freq=4\nntp_server1=five\n"
              "ntp_server2=six\nntp_server3=seven\nntp_server4=eight\n");
    context.m_pNtpCtrl = std::make_unique<NtpCtrl>();
    Run();
    EXPECT_TRUE(Value(12) == 2 && Value(13) == 3 && Value(14) == 4);
    EXPECT_EQ(Text(15) + Text(16) + Text(17) + Text(18), "fivesixseveneight");
    EXPECT_EQ(Text(19), "secret");
}

TEST_F(Refresh, ShowsSentinelsForWhatIsMissing) {
    ChangePanel([](sim::PanelState& state) {
        state.serialNumber.clear();
        state.brightness = -19;
        state.uarts[0] = {true, {7350, 2650, 0, 4200}};
        state.uarts[1].counters = {5, -5, 0, 9};
        state.uarts[2] = {true, {2147483647, 2147483647, 0, 2147483647}};
        state.storageMounted = true;
        state.directories[2] = "/nowhere";
    });
    testing::internal::CaptureStdout();
    Run();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "hal_uart_info failed,com:4, res:-19\n");
    EXPECT_EQ(Text(20), "-1");
    EXPECT_EQ(Value(21), 100.0);
    EXPECT_EQ(Value(26), -1.0);
    EXPECT_EQ(Value(27), -1.0);
    EXPECT_EQ(Value(28), 0.0);  // its directory's file system cannot be asked
    EXPECT_EQ(Value(29), 42.0);
    EXPECT_EQ(Value(30), 0.0);
    EXPECT_EQ(Value(31), 50.0);
    EXPECT_EQ(Value(32), -2.0);
    EXPECT_EQ(Text(19), "");
    ChangePanel([](sim::PanelState& state) { state.directories[2] = "/storage"; });
    Run();
    const double both = Value(28);
    ChangePanel([](sim::PanelState& state) { state.storageMounted = false; });
    Run();
    EXPECT_GT(both, Value(28) + 50);  // 64 MiB of a storage of its own
}

TEST_F(Refresh, StaysInsideTheArrays) {
    record.m_arrValue.SetSize(CHANNEL_BRIGHTNESS);  // of each, the next would be written
    record.m_arrStrValue.SetSize(CHANNEL_NETMASK_1);
    Run();
    EXPECT_EQ(record.m_arrValue.GetSize(), CHANNEL_BRIGHTNESS);
    EXPECT_EQ(Text(1), "192.168.1.20");
}

TEST_F(Refresh, StopsAfterTheInterfacesWithoutTheLockFile) {
    ::unlink("/tmp/olma_app_conf.lck");
    const FrozenTmp frozen;
    Run();
    EXPECT_EQ(Text(1), "192.168.1.20");
    EXPECT_EQ(Text(20), "");
    EXPECT_EQ(Value(29), 0.0);
}
