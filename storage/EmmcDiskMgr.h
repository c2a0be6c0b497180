// Health of an eMMC: life from the device's own estimates, load from the sectors written.
#ifndef HXD_EMMCDISKMGR_H
#define HXD_EMMCDISKMGR_H

#include "storage/DiskWorker.h"

#include <QString>

class EmmcDiskMgr final : public DiskWorker {
public:
    ~EmmcDiskMgr() override { StopWorker(); }

private:
    hxd::Maybe<long long> FindStorage() override;
    long long ReadWear() override;
    int ReadLifePercent(long long wear) override;

    // Attributes of the device in sysfs; empty when there is none. Several matches stand on lines
    // of their own in one path, which then cannot be opened: which of them is meant, nobody knows.
    QString m_strEraseSizePath;
    QString m_strLifeTimePath;
    QString m_strPreEolPath;
};

#endif
