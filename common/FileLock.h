// Advisory locks between processes, on lock files of their own.
//
// Order of life: a FileLock owns the open lock file; a FileLocker holds the exclusive lock while it
// lives, so it must die before its FileLock. Lock files are never removed: a process that had one
// open would otherwise lock a file that nobody else sees.
#ifndef HXD_FILELOCK_H
#define HXD_FILELOCK_H

#include "common/File.h"

#include <atomic>
#include <memory>
#include <string>

namespace HXDCTRL {

class FileLock {
public:
    FileLock();

    // Opens the lock file, making it if it is missing. Only a regular file is one: lock files lie
    // in a directory where anybody may put a link, a pipe or a folder in their place. Such a thing
    // is removed; false where that is not permitted.
    bool open(const std::string& path);

    int Descriptor() const { return m_pFile->Descriptor(); }

private:
    bool OpenRegular(const std::string& path);

    std::unique_ptr<File> m_pFile;
};

// Takes the exclusive lock on construction; without an open file it does nothing.
class FileLocker {
public:
    // Waits for it as long as it takes.
    explicit FileLocker(FileLock& lock);
    // Waits until wanted is false, for those who must not be held up by another process. The lock
    // may be taken up to 20 ms after it is free, and those who wait in flock() come first.
    FileLocker(FileLock& lock, const std::atomic<bool>& wanted);
    FileLocker(const FileLocker&) = delete;
    FileLocker& operator=(const FileLocker&) = delete;
    ~FileLocker();

    bool IsHeld() const { return m_bHeld; }

private:
    FileLock& m_lock;
    bool m_bHeld = false;
};

}  // namespace HXDCTRL

#endif
