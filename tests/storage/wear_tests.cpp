// The arithmetic of flash wear, and the texts it starts from.
#include "storage/DiskCommon.h"
#include "storage/StringCommon.h"
#include "storage/Wear.h"

#include "TestFiles.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr long long MAX = std::numeric_limits<long long>::max();
constexpr long long MIN = std::numeric_limits<long long>::min();

QVector<QString> Lines(const char* text) {
    writeFile("/tmp/lines", text);
    QVector<QString> lines;
    EXPECT_TRUE(DiskCommon::readFileOfLine(QLatin1String("/tmp/lines"), lines));
    return lines;
}

}  // namespace

TEST(Wear, SpreadsTheEnduranceOverFiveYears) {
    const struct {
        long long amount, endurance, allowance;
    } cases[] = {{7634944, wear::EmmcEndurance(524288), 522941},
                 {7634944, wear::EmmcEndurance(131072), 8715689},
                 {7634944, wear::EmmcEndurance(4194304), 1045882},
                 {4096, 100000, 9351},
                 {0, 100000, 0},
                 {-43800, 3000, -3000},
                 {MAX, 100000, MAX / 43800},
                 {MIN, 100000, MIN / 43800}};
    for (const auto& c : cases)
        EXPECT_EQ(wear::HourlyAllowance(c.amount, c.endurance), c.allowance) << c.amount;
    EXPECT_EQ(wear::Increase(MIN, 1), MAX);
    EXPECT_EQ(wear::Increase(MAX, -2), MIN);
    EXPECT_EQ(wear::Increase(50, 20), -30);
    EXPECT_EQ(wear::Sum(MAX, 1), MAX);
    EXPECT_EQ(wear::Sum(MIN, -1), MIN);
}

TEST(Wear, GearChangesAtThreeSixAndTenTenthsOfTheAllowance) {
    const struct {
        long long allowance;
        long long highest[3];  // of gears 1 to 3
    } cases[] = {
        {1000, {300, 600, 1000}},
        {9, {2, 5, 9}},
        {MAX - 1, {2767011611056432741, 5534023222112865483, MAX - 1}},
    };
    for (const auto& c : cases) {
        for (int gear = 1; gear <= 3; ++gear) {
            EXPECT_EQ(wear::Gear(c.highest[gear - 1], c.allowance), gear) << c.allowance;
            EXPECT_EQ(wear::Gear(c.highest[gear - 1] + 1, c.allowance), gear + 1) << c.allowance;
        }
        EXPECT_EQ(wear::Gear(-5, c.allowance), 1);
        EXPECT_EQ(wear::Gear(MIN, c.allowance), 1);
        EXPECT_EQ(wear::Gear(MAX, -c.allowance), 4);
    }
    EXPECT_EQ(wear::Gear(0, 0), 1);
    EXPECT_EQ(wear::Gear(1, 0), 4);
    EXPECT_EQ(wear::Gear(-3, -9), 1);
    EXPECT_EQ(wear::Gear(-2, -9), 4);
}

TEST(Wear, LifeOfAnEmmc) {
    const struct {
        const char* line;
        int byEstimates, byPreEol;
    } cases[] = {{"0x02 0x01", 80, 100},  {"0x0b 0x01", 0, 100},  {"", 100, 100},
                 {"0x00 0x00", 100, 100}, {"0x01\t0x0A", 0, 100}, {"2", 80, 20},
                 {"0x03", 70, 10},        {"0x04", 60, 0},        {"0x05", 50, 0},
                 {"0x7fffffff", 0, 0},    {"-1", 100, 100},       {"0xffffffff", 100, 100},
                 {"life 3 ??", 70, 100},  {"0x01", 90, 100},      {"10", 0, 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(wear::LifeFromEstimates(QLatin1String(c.line)), c.byEstimates) << c.line;
        EXPECT_EQ(wear::LifeFromPreEol(QLatin1String(c.line)), c.byPreEol) << c.line;
    }
}

TEST(Wear, LifeOfNand) {
    const int lives[][2] = {{0, 100}, {1, 90},  {10, 90}, {15, 89},
                            {20, 80}, {25, 88}, {99, 81}, {100, 0}};  // used, left
    for (const auto& life : lives) {
        EXPECT_EQ(wear::NandLife(1000LL * life[0] + 999, 1, 0, 80), life[1]) << life[0];
        EXPECT_EQ(wear::NandLife(0, 1, life[0], 100 - life[0]), life[1]) << life[0];
    }
    const struct {
        long long eraseSum, blocks;
        int bad, reserved, life;
    } cases[] = {{41000000, 4096, 0, 0, 90},
                 {41000000, 4096, 5, 15, 88},
                 {250000, 1, 0, 1, -150},
                 {105000, 1, 0, 1, 80},
                 {0, 0, 0, 0, 100},
                 {5000000, 0, 1, 3, 88},
                 {41000000, 4096, 7, -7, 90},
                 {0, 1, 2147483647, 2147483647, 50},
                 {MAX, 1, 0, 0, 100 - 1000000000},
                 {MIN, -1, -1, 0, 100 - 1000000000}};
    for (const auto& c : cases)
        EXPECT_EQ(wear::NandLife(c.eraseSum, c.blocks, c.bad, c.reserved), c.life)
            << c.eraseSum << ' ' << c.blocks << ' ' << c.bad << ' ' << c.reserved;
}

TEST(Wear, CountsWhatTheKernelReports) {
    const struct {
        const char* diskstats;
        long long sectors;
    } cases[] = {
        {" 179 0 mmcblk0 1 2 3 4 5 6 700 8\n 179 1 mmcblk0p1 1 2 3 4 5 6 70 8\n"
         " 179 16 mmcblk0gp0 1 2 3 4 5 6 11 8\n",
         711},
        {"179 0 mmcblk0 1 2 3 4 5 6 700\n179 24 mmcblk1 1 2 3 4 5 6 9 8", 700},
        {"179 0 mmcblk0 1 2 3 4 5 6\n", 0},
        {"179 0 mmcblk0 1 2 3 4 5 6 5\n179 0 mmcblk0 1 2 3 4 5 6 6\n", 6},
        {"179 0 mmcblk0 1 2 3 4 5 6 5\n179 0 mmcblk0 1 2 3 4 5 6 x\n", 0},
        {"179 0 mmcblk0 1 2 3 4 5 6 9223372036854775807\n179 0 mmcblk0gp0 1 2 3 4 5 6 5\n", MAX},
        {"", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(wear::SectorsWritten(Lines(c.diskstats)), c.sectors) << c.diskstats;

    EXPECT_EQ(wear::EraseSum(Lines("block 5\n0 10\n1\n\n2 \t 20 ffff\n3 x\n4 -1")), 29);
    EXPECT_EQ(wear::EraseSum(Lines("0 9223372036854775807\n1 9223372036854775807\n2 7\n")), MAX);
    EXPECT_EQ(wear::EraseSum(Lines("only 10")), 0);
    EXPECT_EQ(wear::EraseSum({}), 0);
}

TEST(StorageFiles, AreReadByLines) {
    const std::string longLine(3000000, 'x');
    QVector<QString> lines = Lines((" first \t\r\n\n" + longLine + "\nlast").c_str());
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines.at(0) == QLatin1String("first") && lines.at(1).isEmpty());
    EXPECT_EQ(lines.at(2).size(), 3000000);
    EXPECT_TRUE(lines.at(3) == QLatin1String("last"));

    // A file of the kernel that tells no size; what was read before stays.
    EXPECT_TRUE(DiskCommon::readFileOfLine(QLatin1String("/proc/self/status"), lines));
    EXPECT_TRUE(lines.size() > 20 && lines.at(4).startsWith(QLatin1String("Name:")));

    testing::internal::CaptureStdout();
    EXPECT_FALSE(DiskCommon::readFileOfLine(QLatin1String("/sys/one\n/sys/two"), lines));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "can not load file!");
    QString line;
    EXPECT_FALSE(DiskCommon::readFirstLine(QLatin1String("/dev/null"), line));

    QVector<QString> words(7);
    StringCommon::splitString(QLatin1String(" \tone  two\n\vthree "), words);
    EXPECT_EQ(words, QVector<QString>()
                         << QLatin1String("one") << QLatin1String("two") << QLatin1String("three"));
    StringCommon::splitString(QLatin1String(" \n"), words);
    EXPECT_TRUE(words.isEmpty());
}
