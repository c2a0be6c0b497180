// The storage managers over time: the clock is held, so that hours pass by advancing it.
#include "SimPanel.h"
#include "TestFiles.h"
#include "storage/DiskManager.h"
#include "storage/EmmcDiskMgr.h"
#include "storage/NandDiskMgr.h"

#include <gtest/gtest.h>

#include <QDir>

#include <unistd.h>
#include <atomic>
#include <cstdlib>
#include <thread>

namespace {

constexpr long long HOUR_MS = 3600000;
constexpr long long TICK_MS = 200;
const char* const UBI = "/sys/class/ubi/ubi0/";
const char* const CARD = "/sys/devices/platform/soc/mmc_host/mmc2/mmc2:0001/";

void Put(const std::string& path, const std::string& text) {
    QDir().mkpath(QString::fromStdString(path.substr(0, path.rfind('/'))));
    writeFile(path, text);
}

// The sum of the erase counters.
void PutErases(long long sum) {
    Put("/sys/kernel/debug/ubi/ubi0/detailed_erase_block_info",
        "physical_block_number\terase_count\n0\t" + std::to_string(sum - 1) + "\n1\t1\n");
}

void PutSectorsWritten(long long sectors) {
    writeFile("/proc/diskstats", " 179 0 mmcblk0 1 2 3 4 5 6 " + std::to_string(sectors) + " 8\n");
}

class Storage : public testing::Test {
protected:
    Storage() {
        panel.reset();
        panel.holdClock();
    }
    ~Storage() override {
        panel.runClock();
        disk.reset();
        panel.reset();
    }

    // A flash of 43,800 blocks, for which 100,000 erasures an hour are allowed.
    void StartNand() {
        Put(UBI + std::string("total_eraseblocks"), "43800\n");
        PutErases(1000000);
        Start(std::make_unique<NandDiskMgr>());
    }
    void Start(std::unique_ptr<DiskInterface> manager) {
        disk = std::move(manager);
        ASSERT_TRUE(disk->init());
        startTick = panel.tick();
    }
    void WaitUntilAsleep() { ASSERT_TRUE(panel.waitForSleepers(1, 60000)); }
    void Advance() { panel.advanceClock(TICK_MS); }

    // The gear that the worker's pass at that time answers a request with.
    int GearAt(long long msSinceStart) {
        WaitUntilAsleep();
        disk->refresh();
        EXPECT_FALSE(disk->refreshRes());
        panel.advanceClock(startTick + msSinceStart - panel.tick());
        WaitUntilAsleep();
        EXPECT_TRUE(disk->refreshRes());
        return disk->getDiskIO();
    }
    void DestroyWithinATick() {
        WaitUntilAsleep();
        std::atomic<bool> gone{false};
        std::thread owner([&] {
            disk.reset();
            gone = true;
        });
        EXPECT_FALSE(gone);
        Advance();
        owner.join();
    }

    sim::SimPanel& panel = sim::SimPanel::instance();
    std::unique_ptr<DiskInterface> disk;
    long long startTick = 0;
};

}  // namespace

TEST_F(Storage, GearIsJudgedSinceStartInTheFirstHourAndByTheHourLater) {
    StartNand();
    EXPECT_EQ(disk->getDiskIO(), 1);
    EXPECT_EQ(disk->getDiskLifeTime(), 100);
    const struct {
        long long ms, erases;
        const char* bad;
        int gear, life;
    } moments[] = {
        {200, 1030000, "0", 1, 100},
        {400, 1030001, "0", 2, 100},
        {600, 1100000, "0", 3, 100},  // all since the start, not since the last request
        {1800000, 1100001, "5", 4, 100},
        {HOUR_MS - 1, 1060001, "5", 3, 100},
        {HOUR_MS, 1060002, "5", 3, 100},  // answered, not acted on
        {HOUR_MS + 200, 1060000, "5", 2, 88},
        {HOUR_MS + 400, 9999999, "9", 2, 88},
        {2 * HOUR_MS + 200, 9999999, "9", 2, 88},  // not more than an hour yet
        {2 * HOUR_MS + 400, 1160001, "9", 4, 87},
        {3 * HOUR_MS + 800, 1160001, "0", 1, 100},
    };
    Put(UBI + std::string("reserved_for_bad"), "15\n");
    for (const auto& moment : moments) {
        PutErases(moment.erases);
        Put(UBI + std::string("bad_peb_count"), moment.bad);
        EXPECT_EQ(GearAt(moment.ms), moment.gear) << moment.ms;
        EXPECT_EQ(disk->getDiskLifeTime(), moment.life) << moment.ms;
    }
    // The start, five requests of the first hour and three hourly measurements.
    std::string commands;
    for (int i = 0; i < 1 + 5 + 3; ++i)
        commands += "mount\t-t debugfs none /sys/kernel/debug\numount\t-l /sys/kernel/debug\n";
    EXPECT_EQ(readFile("/run/panel-commands.log"), commands);
    DestroyWithinATick();
}

TEST_F(Storage, NandStartsAsSoonAsItsBlocksAreKnown) {
    disk = std::make_unique<NandDiskMgr>();
    EXPECT_FALSE(disk->init());
    Put(UBI + std::string("total_eraseblocks"), "");
    EXPECT_FALSE(disk->init());
    EXPECT_FALSE(disk->refreshRes());
    disk->refresh();
    EXPECT_EQ(readFile("/run/panel-commands.log"), "");
    StartNand();
    EXPECT_TRUE(disk->init());  // no second worker
    EXPECT_EQ(panel.tick(), startTick);
    WaitUntilAsleep();
    EXPECT_EQ(panel.sleepers(), 1);

    // Without the table nothing counts as erased, and what was mounted is unmounted.
    ASSERT_EQ(::unlink("/sys/kernel/debug/ubi/ubi0/detailed_erase_block_info"), 0);
    EXPECT_EQ(GearAt(200), 1);
    const std::string commands = readFile("/run/panel-commands.log");
    EXPECT_EQ(commands.substr(commands.rfind('\n', commands.size() - 2) + 1),
              "umount\t-l /sys/kernel/debug\n");
}

// The second request comes while the worker measures for the first one: what that has read may be
// older than the request.
TEST_F(Storage, ARequestDuringAMeasurementIsAnsweredByTheNextOne) {
    StartNand();
    WaitUntilAsleep();
    Put("/run/shims/umount", ": >/tmp/measured; while [ ! -e /tmp/go ]; do sleep 0.01; done\n");
    disk->refresh();
    Advance();
    while (::access("/tmp/measured", F_OK) != 0)
        std::this_thread::yield();
    EXPECT_FALSE(disk->refreshRes());
    PutErases(1100001);
    disk->refresh();
    writeFile("/tmp/go", "");
    WaitUntilAsleep();
    EXPECT_FALSE(disk->refreshRes());
    EXPECT_EQ(disk->getDiskIO(), 1);
    Advance();
    WaitUntilAsleep();
    EXPECT_TRUE(disk->refreshRes());
    EXPECT_EQ(disk->getDiskIO(), 4);
}

TEST_F(Storage, ManagersEndInEveryState) {
    { NandDiskMgr unused; }
    {
        EmmcDiskMgr refused;
        EXPECT_FALSE(refused.init());
    }
    StartNand();
    WaitUntilAsleep();
    disk->refresh();  // pending
    DestroyWithinATick();
    panel.runClock(1000);
    for (int i = 0; i < 20; ++i) {  // as soon as it has started, and while it measures
        StartNand();
        disk->refresh();
        disk.reset();
    }
}

TEST_F(Storage, LifeOfAnEmmcComesFromTheBestAttributeItHas) {
    Put(CARD + std::string("erase_size"), "524288\n");
    const struct {
        const char* lifeTime;  // null: no such attribute
        const char* preEol;
        int life;
    } cases[] = {
        {nullptr, nullptr, -2}, {nullptr, "0x02\n", 20},     {"", "0x02\n", 20},
        {"\n", "0x02\n", 100},  {"0x02 0x01\n", "0x03", 80}, {"0x0b 0x01", nullptr, 0},
    };
    for (const auto& c : cases) {
        for (const auto& file :
             {std::make_pair("life_time", c.lifeTime), std::make_pair("pre_eol_info", c.preEol)}) {
            if (file.second != nullptr)
                Put(CARD + std::string(file.first), file.second);
            else
                ::unlink((CARD + std::string(file.first)).c_str());
        }
        Start(std::make_unique<EmmcDiskMgr>());
        EXPECT_EQ(disk->getDiskLifeTime(), c.life) << c.life;
        DestroyWithinATick();
    }
}

// The panels of this folder, by what their channels 26 and 27 are to show.
TEST_F(Storage, OfThePanelsIsFound) {
    const struct {
        const char* panel;
        bool nand, found;
        int life;
    } cases[] = {
        {"emmc", false, true, 80}, {"emmc-old", false, true, 20},
        {"none", false, false, 0}, {"emmc-two-matches", false, false, 0},
        {"nand", true, true, 90},  {"nand-worn", true, true, 86},
    };
    for (const auto& c : cases) {
        const std::string root = std::string(HXD_SOURCE_DIR "/tests/panels/") + c.panel + "/root/";
        ASSERT_EQ(std::system(("rm -rf /sys/* /dev/mtd* && cp -rd " + root + "sys /").c_str()), 0);
        if (c.nand) {
            ASSERT_EQ(std::system(("cp " + root + "dev/mtd0 /dev").c_str()), 0);
        }
        disk = MakeDiskManager();
        EXPECT_EQ(dynamic_cast<NandDiskMgr*>(disk.get()) != nullptr, c.nand) << c.panel;
        EXPECT_EQ(disk->init(), c.found) << c.panel;
        EXPECT_EQ(disk->getDiskLifeTime(), c.life) << c.panel;
        if (c.found)
            DestroyWithinATick();
    }
}

// Needs the private /proc/diskstats of the panel "emmc": in-panel --panel tests/panels/emmc.
TEST_F(Storage, OfThePanelEmmcCountsSectors) {
    if (std::getenv("HXD_PANEL_DIR") == nullptr)
        GTEST_SKIP() << "not on a panel with its own /proc/diskstats";
    PutSectorsWritten(5000000);
    Start(MakeDiskManager());
    const struct {
        long long ms, sectors;
        int gear;
    } moments[] = {{200, 5156882, 1},           {400, 5156883, 2},
                   {600, 5313764, 2},           {800, 5313765, 3},
                   {1000, 5522941, 3},          {1200, 5522942, 4},
                   {HOUR_MS + 200, 5522942, 4}, {2 * HOUR_MS + 600, 5600000, 1}};
    for (const auto& moment : moments) {
        PutSectorsWritten(moment.sectors);
        EXPECT_EQ(GearAt(moment.ms), moment.gear) << moment.ms;
    }
}
