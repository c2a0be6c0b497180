#include "common/FileLock.h"

#include "common/PublicFolder.h"
#include "common/Retry.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr useconds_t SLICE_US = 20000;

bool Lock(int descriptor, int operation) {
    return hxd::RetryInterrupted([=] { return ::flock(descriptor, operation); }) == 0;
}

}  // namespace

namespace HXDCTRL {

FileLock::FileLock() : m_pFile(new File) {}

bool FileLock::open(const std::string& path) {
    return OpenRegular(path) || (hxd::RemoveUnlessRegular(path) && OpenRegular(path));
}

bool FileLock::OpenRegular(const std::string& path) {
    // O_NONBLOCK: opening must not wait for the other end of a pipe that somebody put there.
    const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK;
    // An existing file is opened without O_CREAT, which the kernel refuses in /tmp for files of
    // other accounts.
    struct stat status = {};
    if ((m_pFile->open(path, flags) || m_pFile->open(path, flags | O_CREAT)) &&
        ::fstat(m_pFile->Descriptor(), &status) == 0 && S_ISREG(status.st_mode))
        return true;
    m_pFile->close();
    return false;
}

FileLocker::FileLocker(FileLock& lock) : m_lock(lock) {
    if (m_lock.Descriptor() >= 0)
        m_bHeld = Lock(m_lock.Descriptor(), LOCK_EX);
}

FileLocker::FileLocker(FileLock& lock, const std::atomic<bool>& wanted) : m_lock(lock) {
    while (m_lock.Descriptor() >= 0 && wanted) {
        m_bHeld = Lock(m_lock.Descriptor(), LOCK_EX | LOCK_NB);
        if (m_bHeld || errno != EWOULDBLOCK)
            return;
        ::usleep(SLICE_US);
    }
}

FileLocker::~FileLocker() {
    if (m_bHeld)
        Lock(m_lock.Descriptor(), LOCK_UN);
}

}  // namespace HXDCTRL
