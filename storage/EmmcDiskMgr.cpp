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
    QString line;
    const QString file = QLatin1String(path);
    return QFile::exists(file) && DiskCommon::readFirstLine(file, line) ? line.toLongLong() : 0;
}

bool ReadAttribute(const QString& path, QString& line) {
    return !path.isEmpty() && DiskCommon::readFirstLine(path, line);
}

}  // namespace

bool EmmcDiskMgr::FindStorage(long long& hourlyAllowance) {
    FindAttribute("find /sys/devices/platform -name erase_size", m_strEraseSizePath);
    FindAttribute("find /sys/devices/platform -name life_time", m_strLifeTimePath);
    FindAttribute("find /sys/devices/platform -name pre_eol_info", m_strPreEolPath);
    QString eraseSize;
    if (!ReadAttribute(m_strEraseSizePath, eraseSize))
        return false;
    const long long capacity = wear::Sum(Capacity("/sys/class/block/mmcblk0/size"),
                                         Capacity("/sys/class/block/mmcblk0gp0/size"));
    hourlyAllowance = wear::HourlyAllowance(capacity, wear::EmmcEndurance(eraseSize.toLongLong()));
    return true;
}

long long EmmcDiskMgr::ReadWear() {
    QVector<QString> diskstats;
    DiskCommon::readFileOfLine(QLatin1String("/proc/diskstats"), diskstats);
    return wear::SectorsWritten(diskstats);
}

int EmmcDiskMgr::ReadLifePercent(long long /*wear*/) {
    QString line;
    if (ReadAttribute(m_strLifeTimePath, line))
        return wear::LifeFromEstimates(line);
    if (ReadAttribute(m_strPreEolPath, line))
        return wear::LifeFromPreEol(line);
    return wear::LIFE_UNKNOWN;
}
