// Health of raw NAND flash under UBI: life and load from the blocks' erase counters.
#ifndef HXD_NANDDISKMGR_H
#define HXD_NANDDISKMGR_H

#include "storage/DiskWorker.h"

class NandDiskMgr final : public DiskWorker {
public:
    ~NandDiskMgr() override { StopWorker(); }

private:
    hxd::Maybe<long long> FindStorage() override;
    long long ReadWear() override;
    int ReadLifePercent(long long eraseSum) override;

    long long m_llTotalBlocks = 0;  // erase blocks of the UBI device
};

#endif
