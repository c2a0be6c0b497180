#include "storage/FreeSpace.h"

#include "olma_host.h"

#include <sys/statfs.h>

namespace {

// Adds the bytes that are free around path; false when its file system cannot be asked.
bool AddFreeBytes(const char* path, unsigned long long& bytes) {
    struct statfs status = {};
    if (::statfs(path, &status) != 0)
        return false;
    bytes += static_cast<unsigned long long>(status.f_bavail) *
             static_cast<unsigned long long>(status.f_frsize);
    return true;
}

}  // namespace

double FreeStorageMiB() {
    constexpr int DATA_DIRECTORY = 2;
    const char* const directory = Olma_GetDirectory(DATA_DIRECTORY);
    const bool ownStorage = Olma_Check_Mount_Path(directory) != 0;
    unsigned long long bytes = 0;
    if (!AddFreeBytes("/", bytes) || (ownStorage && !AddFreeBytes(directory, bytes)))
        return 0.0;
    return static_cast<double>(bytes >> 20);
}
