// The arithmetic of flash wear, apart from where its inputs are read. All counts are 64-bit; what
// would overflow stops at the limit.
#ifndef HXD_WEAR_H
#define HXD_WEAR_H

#include "driver/record/ChannelTable.h"

#include <QString>
#include <QVector>

namespace wear {

constexpr int LIFE_UNKNOWN = STORAGE_LIFE_UNKNOWN;

// --- load: how much is written or erased in an hour

// amount * endurance spread over the hours of five 365-day years.
long long HourlyAllowance(long long amount, long long endurance);

// now - before; also for counters that were reset or make no sense.
long long Increase(long long before, long long now);

// a + b of two counts.
long long Sum(long long a, long long b);

// The gear for what was written or erased since the start of the interval: 1 up to 3/10 of the
// allowance, 2 up to 6/10, 3 up to all of it, else 4. With an allowance of 0: 1 without an
// increase, else 4.
int Gear(long long increase, long long allowance);

// --- eMMC

// Program/erase cycles of a cell, by the device's erase size in bytes: the size tells its kind.
long long EmmcEndurance(long long eraseSize);

// Sectors written to the user area and the first general-purpose partition, from the lines of
// /proc/diskstats; a later line of the same device counts instead of an earlier one.
long long SectorsWritten(const QVector<QString>& diskstats);

// Life left in per cent from the device's two estimates ("0x01 0x02"; the higher one counts). A
// line without words gives 100.
int LifeFromEstimates(const QString& line);

// Life left in per cent from the state of the spare blocks ("0x01"): 1 normal, 2 and 3 warnings.
int LifeFromPreEol(const QString& line);

// --- NAND under UBI

// Sum of the erase counters (second column) of UBI's table, whose first line is a header.
long long EraseSum(const QVector<QString>& table);

// Life left in per cent from erase counters and blocks that went bad; may go below 0.
int NandLife(long long eraseSum, long long totalBlocks, int badBlocks, int reservedBlocks);

}  // namespace wear

#endif
