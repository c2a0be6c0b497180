// Settings, triggers, packet arithmetic and clock text.
#include "SystemCalls.h"
#include "common/QtText.h"
#include "ntp/ClockText.h"
#include "ntp/NtpTriggers.h"
#include "ntp/SntpPacket.h"
#include "tests/ntp/TimePanel.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t EPOCH = sntp::SECONDS_1900_TO_1970;
constexpr std::uint32_t MAXIMUM = 0xFFFFFFFFu;

ntpCfgParam Record(int on, int mode, int freq, const char* server = "") {
    ntpCfgParam record;
    record.ntpSwitch = on;
    record.mode = mode;
    record.freq = freq;
    for (int i = 0; i < NTP_SERVER_COUNT; ++i)
        record.servers[i] = QString::fromUtf8(server);
    return record;
}

ntpCfgParam Loaded() {
    ntpCfgParam record;
    record.ReadCfg();
    return record;
}

using TimeSettings = TimePanel;

}  // namespace

TEST(SntpPacket, RequestHasItsBytes) {
    const sntp::Packet request = sntp::MakeRequest({1700000000, 500000});
    sntp::Packet expected{};
    const std::vector<std::pair<std::size_t, int>> bytes = {
        {0, 0x1B},  {2, 4},     {3, 0xFA},  {5, 1},     {9, 1},     {40, 0xE8}, {41, 0xFE},
        {42, 0x6F}, {43, 0x80}, {44, 0x7F}, {45, 0xFF}, {46, 0xFF}, {47, 0xFA}};
    for (const auto& byte : bytes)
        expected[byte.first] = static_cast<unsigned char>(byte.second);
    EXPECT_EQ(request, expected);
    EXPECT_EQ(sntp::USEC(MAXIMUM), 999999u);
    EXPECT_EQ(sntp::NTPFRAC(999999), 4294962990u);
}

TEST(SntpPacket, FourTimestampsGiveTheTime) {
    constexpr std::uint32_t NOW = 1700000000u + EPOCH;
    constexpr std::uint32_t YEARS_30 = 946684800u;
    constexpr std::uint32_t HALF = 0x80000000u;
    using Stamp = sntp::Timestamp;
    const struct {
        const char* name;
        Stamp t1, t2, t3;
        int arrivalUs;  // after 1700000000
        std::int32_t seconds, microseconds;
    } cases[] = {
        {"same clock", {NOW, 0}, {NOW, 0}, {NOW, 0}, 0, 1700000000, 0},
        {"ahead", {NOW, 0}, {NOW + 5, HALF}, {NOW + 5, HALF}, 200000, 1700000005, 599848},
        {"behind", {NOW, 0}, {NOW - 5, HALF}, {NOW - 5, HALF}, 200000, 1699999996, -400152},
        {"30 years behind",
         {NOW, 0},
         {NOW - YEARS_30, 0},
         {NOW - YEARS_30, 0},
         999999,
         753315200,
         499999},
        // More than 32 bits hold: the year 2053 becomes 1917.
        {"30 years ahead",
         {NOW, 0},
         {NOW + YEARS_30, 0},
         {NOW + YEARS_30, 0},
         999999,
         -1648282497,
         1499998},
        {"2036", {NOW, 0}, {0, 0}, {0, HALF}, 0, 2085978496, 250000},
        {"after 2038", {NOW, 0}, {HALF + EPOCH, 0}, {HALF + EPOCH, 0}, 0, -2147483647 - 1, 0},
        {"no originate time", {0, 0}, {NOW, 0}, {NOW, 0}, 0, 1507010752, 0},
        {"nothing", {0, 0}, {0, 0}, {0, 0}, 500000, 1892989247, 1249999},
        {"all bits",
         {MAXIMUM, MAXIMUM},
         {MAXIMUM, MAXIMUM},
         {MAXIMUM, MAXIMUM},
         500000,
         1892989247,
         1249998},
    };
    for (const auto& c : cases) {
        sntp::Packet answer{};
        sntp::WriteTimestamp(answer, 24, c.t1);
        sntp::WriteTimestamp(answer, 32, c.t2);
        sntp::WriteTimestamp(answer, 40, c.t3);
        const sntp::CorrectedTime time = sntp::CorrectTime(answer, {1700000000, c.arrivalUs});
        EXPECT_EQ(time.seconds, c.seconds) << c.name;
        EXPECT_EQ(time.microseconds, c.microseconds) << c.name;
    }
}

TEST(ClockText, KeepsTheFieldsAsTheyAre) {
    std::tm time = {};
    time.tm_year = 124;
    time.tm_mon = 1;
    time.tm_mday = 3;
    time.tm_hour = 28;
    time.tm_sec = 9;
    EXPECT_EQ(ClockCommand(time), "date -s \"2024-2-3 28:0:9\"");
    EXPECT_EQ(ClockReport(time), "date is : 2024-2-3 28:0:9");
}

TEST(NtpTriggers, DecideWhenASynchronisationIsDue) {
    constexpr long long HOUR = 3600000;
    const struct {
        ntpCfgParam before, now;
        long long elapsedMs;
        bool due;
    } cases[] = {
        {ntpCfgParam(), Record(1, 1, 2), 0, true},  // after the start
        {Record(0, 1, 2), Record(1, 1, 2), 0, true},
        {Record(1, 0, 2), Record(1, 1, 2), 0, true},
        {Record(1, 1, 2), Record(1, 1, 3), 0, true},
        {Record(1, 1, 2, "a"), Record(1, 1, 2, "b"), 0, false},
        {Record(0, 0, 2), Record(1, 0, 3), 100 * HOUR, false},
        {Record(0, 0, 2), Record(0, 1, 3), 100 * HOUR, false},
        {Record(2, 2, 2), Record(2, 2, 2), 100 * HOUR, false},
        {Record(1, 1, 24), Record(1, 1, 24), 24 * HOUR - 1, false},
        {Record(1, 1, 24), Record(1, 1, 24), 24 * HOUR, true},
        {Record(1, 1, 2147483647), Record(1, 1, 2147483647), 1LL << 40, false},
        {Record(1, 1, -1), Record(1, 1, -1), 0, true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SynchronisationDue(c.now, CompareSettings(c.before, c.now), c.elapsedMs), c.due)
            << &c - cases;
    }
}

TEST_F(TimeSettings, AreReadAsTheyStandAndWithDefaults) {
    const char* const defaults[] = {"0.pool.ntp.org", "1.pool.ntp.org", "2.pool.ntp.org",
                                    "3.pool.ntp.org"};
    const auto expectDefaults = [&] {
        const ntpCfgParam settings = Loaded();
        EXPECT_EQ(settings.ntpSwitch, 0);
        EXPECT_EQ(settings.mode, 1);
        EXPECT_EQ(settings.freq, 2);
        for (int i = 0; i < NTP_SERVER_COUNT; ++i)
            EXPECT_STREQ(hxd::ToHost(settings.servers[i]), defaults[i]);
    };
    expectDefaults();
    EXPECT_TRUE(ntpCfgParam() == Record(0, 0, 0)) << "nothing has been read";

    writeFile(SETTINGS, "[NTP_PARAM]\nntp_switch=7\nntp_mode=abc\nntp_freq=99\nntp_server2=\n");
    const ntpCfgParam edited = Loaded();
    EXPECT_EQ(edited.ntpSwitch, 7);
    EXPECT_EQ(edited.mode, 0);
    EXPECT_EQ(edited.freq, 99);
    EXPECT_TRUE(edited.servers[1].isEmpty());
    EXPECT_STREQ(hxd::ToHost(edited.servers[3]), defaults[3]);

    ASSERT_EQ(::unlink(SETTINGS), 0);
    ASSERT_EQ(::mkdir(SETTINGS, 0755), 0);
    expectDefaults();
    ::rmdir(SETTINGS);
}

TEST_F(TimeSettings, AreWrittenWholeAndReadBack) {
    writeFile("/storage/linked.ini", "[OTHER]\nkey=kept\n[NTP_PARAM]\nntp_freq=5\n");
    ASSERT_EQ(::symlink("/storage/linked.ini", SETTINGS), 0);
    ntpCfgParam settings = Record(1, 0, 24);
    settings.servers[0] = QLatin1String("10.0.0.1");
    settings.servers[2] = QLatin1String("a, \"b\"=;@ \\n");
    settings.servers[3] = QString::fromUtf8("Zeit\xc3\xbc");
    settings.writeCfg();
    EXPECT_TRUE(Loaded() == settings);
    const std::string text = readFile("/storage/linked.ini");
    for (const char* line :
         {"[NTP_PARAM]", "ntp_switch=1", "ntp_mode=0", "ntp_freq=24", "ntp_server1=10.0.0.1",
          "ntp_server2=", "ntp_server4=Zeit\xc3\xbc", "[OTHER]", "key=kept"})
        EXPECT_NE(text.find(std::string(line) + "\n"), std::string::npos) << line << text;

    settings.servers.clear();  // missing slots are written empty
    settings.writeCfg();
    EXPECT_TRUE(Loaded().servers == Record(0, 0, 0).servers);
    EXPECT_EQ(EntriesOf("/storage"), 5u) << "., .., log, user_dir and the file";
}

TEST_F(TimeSettings, OfTwoDevicesAreWrittenOneAfterTheOther) {
    std::thread other;
    std::atomic<bool> written{false};
    g_systemCalls.onFlush = [&](const std::string&) {
        if (other.joinable())
            return;
        other = std::thread([&] {
            Record(1, 1, 4).writeCfg();
            written = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(written);
    };
    Record(1, 1, 3).writeCfg();
    other.join();
    g_systemCalls.onFlush = nullptr;
    EXPECT_EQ(Loaded().freq, 4);
}

TEST_F(TimeSettings, MakeTheirFoldersOrAreDropped) {
    ChangePanel([](sim::PanelState& state) { state.directories[2] = "/storage/a/b"; });
    Record(1, 1, 3).writeCfg();
    const std::string file = "/storage/a/b/config/ntp_param_cfg.ini";
    EXPECT_NE(readFile(file).find("ntp_freq=3"), std::string::npos)
        << "the folders were to be made";

    ChangePanel([](sim::PanelState& state) { state.directories[2] = "/proc/none"; });
    Record(1, 1, 4).writeCfg();
    EXPECT_EQ(Loaded().freq, 2);
}
