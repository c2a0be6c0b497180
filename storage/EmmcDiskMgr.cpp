#include "storage/EmmcDiskMgr.h"

#include "common/QtText.h"
#include "storage/DiskCommon.h"
#include "storage/Wear.h"
#include "sysinfo/DoCmd.h"

#include <QFile>

namespace {

// What "find" prints for an attribute below the platform's devices; path stays when it cannot run.
void FindAttribute(const char* command, QString& path) {
    std::string output;
    if (DoCmd::doCmdSync(command, output))
        path = hxd::FromHost(output.data(), static_cast<int>(output.size())).trimmed();
}

// In 512-byte sectors; 0 for a device that is not there.
long long Capacity(const char* path) {
    const QString file = QLatin1String(path);
    if (!QFile::exists(file))
        return 0;
    const hxd::Maybe<QString> line = DiskCommon::FirstLineOf(file);
    return line ? line->toLongLong() : 0;
}

hxd::Maybe<QString> ReadAttribute(const QString& path) {
    return path.isEmpty() ? hxd::Maybe<QString>() : DiskCommon::FirstLineOf(path);
}

}  // namespace

hxd::Maybe<long long> EmmcDiskMgr::FindStorage() {
    FindAttribute("find /sys/devices/platform -name erase_size", m_strEraseSizePath);
    FindAttribute("find /sys/devices/platform -name life_time", m_strLifeTimePath);
    FindAttribute("find /sys/devices/platform -name pre_eol_info", m_strPreEolPath);
    const hxd::Maybe<QString> eraseSize = ReadAttribute(m_strEraseSizePath);
    if (!eraseSize)
        return {};
    const long long capacity = wear::Sum(Capacity("/sys/class/block/mmcblk0/size"),
                                         Capacity("/sys/class/block/mmcblk0gp0/size"));
    return wear::HourlyAllowance(capacity, wear::EmmcEndurance(eraseSize->toLongLong()));
}

long long EmmcDiskMgr::ReadWear() {
    QVector<QString> diskstats;
    DiskCommon::readFileOfLine(QLatin1String("/proc/diskstats"), diskstats);
    return wear::SectorsWritten(diskstats);
}

int EmmcDiskMgr::ReadLifePercent(long long /*wear*/) {
    if (const hxd::Maybe<QString> line = ReadAttribute(m_strLifeTimePath))
        return wear::LifeFromEstimates(*line);
    if (const hxd::Maybe<QString> line = ReadAttribute(m_strPreEolPath))
        return wear::LifeFromPreEol(*line);
    return wear::LIFE_UNKNOWN;
}
