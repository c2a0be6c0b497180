// Which storage manager a panel needs.
#ifndef HXD_DISKMANAGER_H
#define HXD_DISKMANAGER_H

#include "storage/DiskInterface.h"

#include <memory>

// NAND for a panel with raw flash ("/dev/mtd0" exists), otherwise eMMC; not initialised. Never
// null.
std::unique_ptr<DiskInterface> MakeDiskManager();

#endif
