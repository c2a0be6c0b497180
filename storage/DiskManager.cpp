#include "storage/DiskManager.h"

#include "storage/EmmcDiskMgr.h"
#include "storage/NandDiskMgr.h"

#include <unistd.h>

std::unique_ptr<DiskInterface> MakeDiskManager() {
    if (::access("/dev/mtd0", F_OK) == 0)
        return std::make_unique<NandDiskMgr>();
    return std::make_unique<EmmcDiskMgr>();
}
