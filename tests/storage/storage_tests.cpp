// The arithmetic of flash wear, and the two managers at work. The cases of EmmcHealth run on the
// panel "emmc" of tests/panels/, those of NandHealth on "nand", and change its files.
#include "Adversity.h"
#include "Record.h"
#include "SystemCalls.h"
#include "TestFiles.h"
#include "storage/DiskCommon.h"
#include "storage/DiskManager.h"
#include "storage/Wear.h"
#include "sysinfo/DoCmd.h"

#include <sys/stat.h>
#include <unistd.h>
#include <QStringList>
#include <limits>
#include <thread>

namespace {

constexpr long long HIGHEST = std::numeric_limits<long long>::max();
constexpr long long LOWEST = std::numeric_limits<long long>::min();
constexpr long long HOUR_MS = 3600000;
constexpr unsigned TICK_MS = 200;

QVector<QString> Lines(const char* text) {
    return QString::fromLatin1(text).split(QLatin1Char('\n')).toVector();
}

// A manager of the panel's storage, under a held clock: its worker makes one pass a tick.
class StorageHealth : public testing::Test {
protected:
    StorageHealth() { panel.HoldClock(); }
    ~StorageHealth() override {
        Stop();
        panel.Reset();
    }
    void Stop() {
        panel.RunClock(1000.0);  // the worker's last sleep
        disk.reset();
        panel.HoldClock();
    }
    bool Init() { return disk->init() && panel.WaitForSleepers(1); }
    void Advance(long long milliseconds) {
        panel.AdvanceClock(milliseconds);
        ASSERT_TRUE(panel.WaitForSleepers(1));
    }
    // As the collection asks: request, and one pass later the answer.
    int GearNow() {
        disk->refresh();
        EXPECT_FALSE(disk->refreshRes());
        Advance(TICK_MS);
        EXPECT_TRUE(disk->refreshRes());
        return disk->getDiskIO();
    }

    sim::SimPanel& panel = sim::SimPanel::Instance();
    std::unique_ptr<DiskInterface> disk = MakeDiskManager();
};

class EmmcHealth : public StorageHealth {
protected:
    static std::string Attribute(const char* name, const char* card = "mmc0:0001") {
        return "/sys/devices/platform/soc/2100000.bus/2194000.mmc/mmc_host/mmc0/" +
               std::string(card) + "/" + name;
    }
    static void SetWritten(long long sectors) {
        writeFile("/proc/diskstats", "179 0 mmcblk0 1 1 1 1 1 1 " + std::to_string(sectors) + "\n");
    }
};

class NandHealth : public StorageHealth {
protected:
    static constexpr const char* TABLE = "/sys/kernel/debug/ubi/ubi0/detailed_erase_block_info";
    static void SetErased(long long sum) {
        writeFile(TABLE, "number\terase_count\n0 " + std::to_string(sum - 1) + "\n1\n2 1 used\n");
    }
    // Each count mounts and unmounts.
    static std::string Counts(int count) {
        std::string log;
        for (int i = 0; i < count; ++i)
            log += "mount\t-t debugfs none /sys/kernel/debug\numount\t-l /sys/kernel/debug\n";
        return log;
    }
    static std::string CommandLog() { return readFile("/run/panel-commands.log"); }
};
constexpr const char* NandHealth::TABLE;

}  // namespace

TEST(Wear, IsJudgedAgainstTheHoursShareOfFiveYears) {
    EXPECT_EQ(wear::HourlyAllowance(7634944, wear::EmmcEndurance(524288)), 522941);
    EXPECT_EQ(wear::HourlyAllowance(438, wear::EmmcEndurance(131072)), 500);
    EXPECT_EQ(wear::HourlyAllowance(438, wear::EmmcEndurance(4194304)), 60);
    EXPECT_EQ(wear::HourlyAllowance(4096, 100000), 9351);
    EXPECT_EQ(wear::HourlyAllowance(HIGHEST, 100000), HIGHEST / 43800);
    EXPECT_EQ(wear::HourlyAllowance(LOWEST, 100000), LOWEST / 43800);
    for (const long long most : {HIGHEST / 100000, LOWEST / 100000})
        EXPECT_EQ(wear::HourlyAllowance(most, 100000), most * 100000 / 43800) << "not cut yet";
    // The highest amount written that a gear allows, per allowance.
    const struct {
        long long allowance, first, second, third;
    } cases[] = {
        {1000, 300, 600, 1000},
        {11, 3, 6, 11},
        {522941, 156882, 313764, 522941},
        {HIGHEST / 43800, 63173781074347LL, 126347562148695LL, HIGHEST / 43800},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(wear::Gear(LOWEST, c.allowance), 1);
        const long long limits[] = {c.first, c.second, c.third};
        for (int gear = 1; gear <= 3; ++gear) {
            EXPECT_EQ(wear::Gear(limits[gear - 1], c.allowance), gear) << c.allowance;
            EXPECT_EQ(wear::Gear(limits[gear - 1] + 1, c.allowance), gear + 1) << c.allowance;
        }
        EXPECT_EQ(wear::Gear(HIGHEST, c.allowance), 4);
    }
    EXPECT_EQ(wear::Gear(0, 0), 1);
    EXPECT_EQ(wear::Gear(1, 0), 4);
    EXPECT_EQ(wear::Gear(-1, 0), 1);
    EXPECT_EQ(wear::Gear(-5, -15), 1);  // tenths below 0 are rounded down as well
    EXPECT_EQ(wear::Gear(-4, -15), 4);
    EXPECT_EQ(wear::Increase(7, 5), -2);  // a counter that was reset
    EXPECT_EQ(wear::Increase(-1, 5), 6);
    EXPECT_EQ(wear::Increase(-1, HIGHEST), HIGHEST);
    EXPECT_EQ(wear::Increase(1, LOWEST), LOWEST);
    EXPECT_EQ(wear::Sum(HIGHEST, 1), HIGHEST);
    EXPECT_EQ(wear::Sum(LOWEST, -1), LOWEST);
    EXPECT_EQ(wear::Sum(3, -1), 2);
}

TEST(Wear, OfEmmcFollowsWhatTheDeviceReports) {
    const struct {
        const char* line;
        int fromEstimates, fromPreEol;
    } cases[] = {
        {"", 100, 100},
        {"0x02 0x01", 80, 100},
        {"1 a", 0, 100},
        {"0x01\t0x03", 70, 100},
        {"0x0b 0x01", 0, 100},
        {"0x02", 80, 20},
        {"3", 70, 10},
        {"0x04", 60, 0},
        {"0x05", 50, 0},
        {"-1", 100, 100},
        {"0xffffffffff", 100, 100},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(wear::LifeFromEstimates(QLatin1String(c.line)), c.fromEstimates) << c.line;
        EXPECT_EQ(wear::LifeFromPreEol(QLatin1String(c.line)), c.fromPreEol) << c.line;
    }
    EXPECT_EQ(wear::SectorsWritten(Lines("179 0 mmcblk0 1 2 3 4 5 6 70\n"
                                         "179 1 mmcblk0p1 1 2 3 4 5 6 5000 8 9\n"
                                         "179 0 mmcblk0gp0 1 2 3 4 5 6 900 8 9\n"
                                         " 179   0 mmcblk0 1 2 3 4 5 6 90000000000 8 9\n"
                                         "179 0 mmcblk0 1 2 3 4 5 6")),  // too short to count
              90000000900);
    EXPECT_EQ(wear::SectorsWritten({}), 0);
}

TEST(Wear, OfNandFollowsEraseCountersAndBadBlocks) {
    EXPECT_EQ(wear::EraseSum(Lines("header 7\n0 10 used\n1\n\n2\t9000000000\n3 none")), 9000000010);
    EXPECT_EQ(wear::EraseSum({}), 0);
    const struct {
        long long eraseSum, blocks;
        int bad, reserved, life;
    } cases[] = {
        {41000000, 4096, 0, 0, 90},
        {0, 4096, 5, 15, 88},
        {2000000, 100, 0, 20, 80},
        {2500000, 100, 30, 70, 70},
        {11000000, 100, 0, 1, -10},
        {0, 0, 0, 0, 100},
        {99, 0, 1, 1, 50},
        {99, 0, 0, 1, 100},
        {99, 1, 7, -7, 100},
        {HIGHEST, 1, 0, 0, -999999900},
        {LOWEST, -1, 2147483647, 2147483647, -999999900},
    };
    for (const auto& c : cases)
        EXPECT_EQ(wear::NandLife(c.eraseSum, c.blocks, c.bad, c.reserved), c.life)
            << c.eraseSum << " in " << c.blocks << ", " << c.bad << " bad of " << c.reserved;
}

TEST(StorageFiles, AreReadByLines) {
    const std::string longLine(3000000, 'x');
    writeFile("/tmp/lines", " first \t\r\n\n" + longLine + "\nlast");
    QVector<QString> lines;
    EXPECT_TRUE(DiskCommon::readFileOfLine(QLatin1String("/tmp/lines"), lines));
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines.at(0) == QLatin1String("first") && lines.at(1).isEmpty());
    EXPECT_EQ(lines.at(2).size(), 3000000);
    EXPECT_TRUE(lines.at(3) == QLatin1String("last"));
    // A file of the kernel that tells no size; what was read before stays.
    EXPECT_TRUE(DiskCommon::readFileOfLine(QLatin1String("/proc/self/status"), lines));
    EXPECT_TRUE(lines.size() > 20 && lines.at(4).startsWith(QLatin1String("Name:")));
    EXPECT_FALSE(DiskCommon::FirstLineOf(QLatin1String("/dev/null")));
}

TEST_F(EmmcHealth, IsMeasuredOnRequestInTheFirstHourAndHourlyAfterwards) {
    SetWritten(1000);
    writeFile("/sys/class/block/mmcblk0/size", "7634953\n");  // one more would allow 522,942
    ASSERT_TRUE(Init());
    EXPECT_TRUE(disk->init()) << "already";
    EXPECT_EQ(disk->getDiskLifeTime(), 80);
    EXPECT_EQ(disk->getDiskIO(), 1);
    SetWritten(1000 + 156882);  // 3/10 of an hour's 522,941
    g_systemCalls.throwingTicks = 1;
    EXPECT_EQ(GearNow(), 1);
    EXPECT_EQ(g_systemCalls.throwingTicks, 0) << "a pass may throw";
    SetWritten(1000 + 156883);  // always counted from the start
    EXPECT_EQ(GearNow(), 2);
    SetWritten(1000 + 522942);
    writeFile(Attribute("life_time"), "0x05 0x01\n");
    Advance(TICK_MS);  // unasked
    EXPECT_EQ(disk->getDiskIO(), 2);
    Advance(HOUR_MS - 4 * TICK_MS);
    EXPECT_EQ(GearNow(), 2);  // the hour is over, no request is acted on, nothing is due yet
    EXPECT_EQ(disk->getDiskLifeTime(), 80);
    Advance(TICK_MS);
    EXPECT_EQ(disk->getDiskIO(), 4);
    EXPECT_EQ(disk->getDiskLifeTime(), 50);

    SetWritten(1000 + 522942 + 300000);  // in the second hour, counted from its start
    ::unlink(Attribute("life_time").c_str());
    EXPECT_EQ(GearNow(), 4);
    Advance(HOUR_MS - TICK_MS);
    EXPECT_EQ(disk->getDiskIO(), 4);  // exactly an hour is not more than one
    Advance(TICK_MS);
    EXPECT_EQ(disk->getDiskIO(), 2);
    EXPECT_EQ(disk->getDiskLifeTime(), 100);  // from the spare blocks now
}

// Whatever takes longer than the timer's interval is interrupted: the commands do each time, a
// pipe's reader twice.
TEST_F(EmmcHealth, IsReadUnderATimerThatRestartsNothing) {
    ASSERT_EQ(::mkfifo("/tmp/slow", 0600), 0);
    std::thread writer(
        [] { DoCmd::doCmdOnly("sleep 0.03; { echo one; sleep 0.03; echo two; } >/tmp/slow"); });
    const InterruptingTimer timer;
    QVector<QString> lines;
    EXPECT_TRUE(DiskCommon::readFileOfLine(QLatin1String("/tmp/slow"), lines));
    writer.join();
    EXPECT_EQ(lines.size(), 2);
    for (int round = 0; round < 10; ++round) {
        ASSERT_TRUE(Init());
        EXPECT_EQ(disk->getDiskLifeTime(), 80);
        EXPECT_EQ(GearNow(), 1);
        Stop();
        disk = MakeDiskManager();
    }
}

TEST_F(EmmcHealth, IsUnknownWhileAnAttributeIsMissingOrAmbiguousOrThreadsAre) {
    const std::string eraseSize = Attribute("erase_size");
    const std::string second = Attribute("erase_size", "mmc0:0002");
    ::unlink(eraseSize.c_str());
    EXPECT_FALSE(disk->init());
    writeFile(eraseSize, "131072\n");
    ASSERT_EQ(::mkdir(Attribute("", "mmc0:0002").c_str(), 0755), 0);
    writeFile(second, "512\n");
    EXPECT_FALSE(disk->init());
    ::unlink(second.c_str());
    ::unlink(Attribute("life_time").c_str());
    ::unlink(Attribute("pre_eol_info").c_str());
    g_systemCalls.threads = 0;
    EXPECT_FALSE(disk->init());
    g_systemCalls.threads = -1;
    SetWritten(0);
    writeFile("/sys/class/block/mmcblk0/size", "");
    ASSERT_TRUE(Init());
    EXPECT_EQ(disk->getDiskLifeTime(), wear::LIFE_UNKNOWN);
    SetWritten(1);
    EXPECT_EQ(GearNow(), 4) << "without a size nothing is allowed";
}

TEST_F(NandHealth, MountsDebugfsForEachCountOnly) {
    SetErased(1000000);
    ASSERT_TRUE(Init());
    EXPECT_EQ(disk->getDiskLifeTime(), 90);  // 3 per cent erased, 2 bad
    EXPECT_EQ(CommandLog(), Counts(1));
    SetErased(1000000 + 585);  // of an hour's 584
    EXPECT_EQ(GearNow(), 4);
    EXPECT_EQ(CommandLog(), Counts(2));
    SetErased(20 * 256000);
    Advance(HOUR_MS);
    EXPECT_EQ(disk->getDiskLifeTime(), 80);
    EXPECT_EQ(CommandLog(), Counts(3));
    SetErased(20 * 256000 + 200);
    GearNow();
    EXPECT_EQ(CommandLog(), Counts(3));
    g_systemCalls.debugfsLooks = -1;  // somebody else's
    Advance(HOUR_MS);
    EXPECT_EQ(CommandLog(), Counts(3));
    g_systemCalls.debugfsLooks = 1;  // gone before the table is read: again, with one of its own
    testing::internal::CaptureStdout();
    for (const char* file :
         {TABLE, "/sys/class/ubi/ubi0/bad_peb_count", "/sys/class/ubi/ubi0/reserved_for_bad"})
        ::unlink(file);
    Advance(HOUR_MS + TICK_MS);
    EXPECT_EQ(disk->getDiskLifeTime(), 100);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "can not load file!can not load file!can not load file!can not load file!");
    EXPECT_EQ(CommandLog(), Counts(4));
    EXPECT_EQ(disk->getDiskIO(), 1);  // nothing is known to be erased
    EXPECT_EQ(CommandLog(), Counts(4));
    Advance(HOUR_MS + TICK_MS);  // the one that it has mounted has no table
    EXPECT_EQ(CommandLog(), Counts(5));
}

TEST_F(NandHealth, StartsAtTheThirdAttemptAndEndsInEveryState) {
    const char* const total = "/sys/class/ubi/ubi0/total_eraseblocks";
    disk.reset();  // never initialised
    disk = MakeDiskManager();
    ::unlink(total);
    EXPECT_FALSE(disk->init());
    EXPECT_FALSE(disk->init());
    writeFile(total, "");
    EXPECT_FALSE(disk->init());
    EXPECT_EQ(disk->getDiskLifeTime(), 0);
    EXPECT_EQ(CommandLog(), "");
    writeFile(total, "256\n");
    ASSERT_TRUE(Init());
    EXPECT_EQ(disk->getDiskLifeTime(), 89);
    Stop();  // asleep

    disk = MakeDiskManager();
    ASSERT_TRUE(disk->init());
    Stop();  // just started

    // Within a measurement: it comes to its end, and debugfs is unmounted again.
    disk = MakeDiskManager();
    ASSERT_EQ(::mkdir("/run/shims", 0755), 0);
    ASSERT_TRUE(Init());
    writeFile("/run/shims/mount", "sleep 0.2\n");
    disk->refresh();
    panel.AdvanceClock(TICK_MS);
    while (readFile("/run/panel-commands.log").size() <= Counts(3).size())
        ::usleep(1000);
    Stop();
    EXPECT_EQ(CommandLog(), Counts(4));
}

// What the worker has read by the time of the second request may be older than the request.
TEST_F(NandHealth, ARequestDuringAMeasurementIsAnsweredByTheNextOne) {
    SetErased(1000000);
    ASSERT_TRUE(Init());
    ASSERT_EQ(::mkdir("/run/shims", 0755), 0);
    writeFile("/run/shims/umount", ": >/tmp/read; until [ -e /tmp/go ]; do sleep 0.01; done\n");
    disk->refresh();
    panel.AdvanceClock(TICK_MS);
    while (::access("/tmp/read", F_OK) != 0)
        ::usleep(1000);
    EXPECT_FALSE(disk->refreshRes());
    SetErased(1000000 + 585);
    disk->refresh();
    writeFile("/tmp/go", "");
    ASSERT_TRUE(panel.WaitForSleepers(1));
    EXPECT_FALSE(disk->refreshRes());
    EXPECT_EQ(disk->getDiskIO(), 1);
    Advance(TICK_MS);
    EXPECT_TRUE(disk->refreshRes());
    EXPECT_EQ(disk->getDiskIO(), 4);
}
