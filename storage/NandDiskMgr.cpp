#include "storage/NandDiskMgr.h"

#include "storage/DiskCommon.h"
#include "storage/Wear.h"
#include "sysinfo/DoCmd.h"

#include <linux/magic.h>
#include <sys/statfs.h>

#include <string>

namespace {

constexpr long long CYCLES_OF_A_BLOCK = 100000;

// Mounts debugfs for as long as it lives. A debugfs that is mounted already stays as it is: the
// unmount would take it from whoever mounted it.
class DebugfsMount {
public:
    DebugfsMount() : m_bOurs(!IsMounted()) {
        if (m_bOurs)
            DoCmd::doCmdOnly("mount -t debugfs none /sys/kernel/debug");
    }
    DebugfsMount(const DebugfsMount&) = delete;
    DebugfsMount& operator=(const DebugfsMount&) = delete;
    ~DebugfsMount() {
        if (m_bOurs)
            DoCmd::doCmdOnly(m_strUnmount);
    }

    // False once somebody else has unmounted his.
    bool IsThere() const { return m_bOurs || IsMounted(); }

private:
    static bool IsMounted() {
        struct statfs status = {};
        return ::statfs("/sys/kernel/debug", &status) == 0 &&
               static_cast<long>(status.f_type) == DEBUGFS_MAGIC;
    }

    const bool m_bOurs;
    // Made before the mount, so that the destructor need not allocate.
    const std::string m_strUnmount{"umount -l /sys/kernel/debug"};
};

// False when the debugfs that was there has gone before the table was read.
bool ReadEraseTable(QVector<QString>& table) {
    const DebugfsMount debugfs;
    return DiskCommon::readFileOfLine(
               QLatin1String("/sys/kernel/debug/ubi/ubi0/detailed_erase_block_info"), table) ||
           debugfs.IsThere();
}

int ReadCount(const char* path) {
    const hxd::Maybe<QString> line = DiskCommon::FirstLineOf(QLatin1String(path));
    return line ? line->toInt() : 0;
}

}  // namespace

hxd::Maybe<long long> NandDiskMgr::FindStorage() {
    const hxd::Maybe<QString> total =
        DiskCommon::FirstLineOf(QLatin1String("/sys/class/ubi/ubi0/total_eraseblocks"));
    if (!total)
        return {};
    m_llTotalBlocks = total->toLongLong();
    return wear::HourlyAllowance(m_llTotalBlocks, CYCLES_OF_A_BLOCK);
}

long long NandDiskMgr::ReadWear() {
    QVector<QString> table;
    if (!ReadEraseTable(table))  // another device's mount: now with one of our own
        ReadEraseTable(table);
    return wear::EraseSum(table);
}

int NandDiskMgr::ReadLifePercent(long long eraseSum) {
    return wear::NandLife(eraseSum, m_llTotalBlocks, ReadCount("/sys/class/ubi/ubi0/bad_peb_count"),
                          ReadCount("/sys/class/ubi/ubi0/reserved_for_bad"));
}
