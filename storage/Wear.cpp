#include "storage/Wear.h"

#include "storage/StringCommon.h"

#include <algorithm>
#include <limits>

namespace {

constexpr long long HOURS_IN_FIVE_YEARS = 5LL * 365 * 24;

constexpr long long MAX = std::numeric_limits<long long>::max();
constexpr long long MIN = std::numeric_limits<long long>::min();

// factor above 0
long long Product(long long value, long long factor) {
    if (value > MAX / factor)
        return MAX;
    if (value < MIN / factor)
        return MIN;
    return value * factor;
}

// The largest whole number that is not above the tenths of amount. Exact, and within the range of
// the type for up to ten tenths.
long long Tenths(int tenths, long long amount) {
    long long quotient = amount / 10;
    long long rest = amount % 10;
    if (rest < 0) {
        rest += 10;
        --quotient;
    }
    return quotient * tenths + rest * tenths / 10;
}

// Per cent used, by the number the device reports. The tables are longer than the indices used.
constexpr int emmcLifeGradePercent[13] = {0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 100, 100};
constexpr int MAX_LIFE_GRADE = 10;
constexpr int emmcEolGradePercent[5] = {0, 0, 80, 90, 100};

}  // namespace

long long wear::Sum(long long a, long long b) {
    if (b > 0 && a > MAX - b)
        return MAX;
    if (b < 0 && a < MIN - b)
        return MIN;
    return a + b;
}

long long wear::Increase(long long before, long long now) {
    if (before < 0 && now > MAX + before)
        return MAX;
    if (before > 0 && now < MIN + before)
        return MIN;
    return now - before;
}

long long wear::HourlyAllowance(long long amount, long long endurance) {
    return Product(amount, endurance) / HOURS_IN_FIVE_YEARS;
}

int wear::Gear(long long increase, long long allowance) {
    if (increase <= Tenths(3, allowance))
        return 1;
    if (increase <= Tenths(6, allowance))
        return 2;
    return increase <= allowance ? 3 : 4;
}

long long wear::EmmcEndurance(long long eraseSize) {
    switch (eraseSize) {
        case 131072:
            return 50000;
        case 4194304:
            return 6000;
        default:
            return 3000;
    }
}

long long wear::SectorsWritten(const QVector<QString>& diskstats) {
    constexpr int NAME = 2;
    constexpr int SECTORS_WRITTEN = 9;
    long long userArea = 0;
    long long partition = 0;
    QVector<QString> words;
    for (const QString& line : diskstats) {
        if (!line.contains(QLatin1String("mmcblk0")))
            continue;  // most lines are other devices'
        StringCommon::splitString(line, words);
        if (words.size() <= SECTORS_WRITTEN)
            continue;
        if (words.at(NAME) == QLatin1String("mmcblk0"))
            userArea = words.at(SECTORS_WRITTEN).toLongLong();
        else if (words.at(NAME) == QLatin1String("mmcblk0gp0"))
            partition = words.at(SECTORS_WRITTEN).toLongLong();
    }
    return Sum(userArea, partition);
}

int wear::LifeFromEstimates(const QString& line) {
    QVector<QString> words;
    StringCommon::splitString(line, words);
    if (words.isEmpty())
        return 100;
    int grade = 0;
    for (const QString& word : static_cast<const QVector<QString>&>(words))
        grade = std::max(grade, word.toInt(nullptr, 16));
    return 100 - emmcLifeGradePercent[std::min(grade, MAX_LIFE_GRADE)];
}

int wear::LifeFromPreEol(const QString& line) {
    const int state = line.toInt(nullptr, 16);
    if (state < 0)
        return 100;
    return state < 5 ? 100 - emmcEolGradePercent[state] : 0;
}

long long wear::EraseSum(const QVector<QString>& table) {
    constexpr int ERASE_COUNTER = 1;
    long long sum = 0;
    for (int i = 1; i < table.size(); ++i)  // thousands of blocks; 0 for a line without a counter
        sum = Sum(sum, StringCommon::WordAt(table.at(i), ERASE_COUNTER).toLongLong());
    return sum;
}

int wear::NandLife(long long eraseSum, long long totalBlocks, int badBlocks, int reservedBlocks) {
    const long long spare = static_cast<long long>(badBlocks) + reservedBlocks;
    const long long badPercent = spare == 0 ? 0 : 100LL * badBlocks / spare;
    // A cell lasts 100,000 erasures, so a thousandth of their number per block is per cent.
    const long long wearPercent = totalBlocks == 0 ? 0 : eraseSum / 1000 / totalBlocks;
    constexpr long long ENOUGH = 1000000000;
    const int used =
        static_cast<int>(std::max(-ENOUGH, std::min(ENOUGH, std::max(wearPercent, badPercent))));
    // Projects know the steps of this formula (15 used shows 89, 20 shows 80): keep it.
    return used % 10 == 0 ? 100 - used : 90 - used / 10;
}
