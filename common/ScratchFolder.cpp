#include "common/ScratchFolder.h"

#include "common/Retry.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <vector>

namespace hxd {

namespace {

using HXDCTRL::File;

constexpr int MAX_TRIES = 10;

std::vector<std::string> Entries(const std::string& folder, const std::string& prefix) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder.c_str()), ::closedir);
    if (listing == nullptr)
        return names;
    while (const dirent* const entry = ::readdir(listing.get())) {
        if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0)
            names.emplace_back(entry->d_name);
    }
    return names;
}

// The lock says that the folder has a living owner: the one that opened it, or whom it waits for.
bool OpenLocked(const std::string& path, File& folder) {
    return folder.open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW) &&
           RetryInterrupted([&] { return ::flock(folder.Descriptor(), LOCK_EX | LOCK_NB); }) == 0;
}

void Remove(const std::string& path, const File& folder) {
    for (const std::string& name : Entries(path, ""))
        ::unlinkat(folder.Descriptor(), name.c_str(), 0);  // "." and ".." are refused
    ::rmdir(path.c_str());
}

void RemoveAbandoned(const std::string& parent, const std::string& prefix) {
    for (const std::string& name : Entries(parent, prefix)) {
        File folder;
        if (OpenLocked(parent + name, folder))
            Remove(parent + name, folder);
    }
}

bool StillThere(const std::string& path, const File& folder) {
    struct stat named = {};
    struct stat open = {};
    return ::stat(path.c_str(), &named) == 0 && ::fstat(folder.Descriptor(), &open) == 0 &&
           named.st_dev == open.st_dev && named.st_ino == open.st_ino;
}

}  // namespace

ScratchFolder::ScratchFolder(const std::string& file) {
    const std::size_t slash = file.rfind('/');
    const std::string parent = slash == std::string::npos ? "./" : file.substr(0, slash + 1);
    const std::string prefix = '.' + file.substr(slash + 1) + ".hxd-";
    RemoveAbandoned(parent, prefix);
    // Another process that comes between making and locking takes the folder for abandoned.
    for (int tries = 0; tries < MAX_TRIES; ++tries) {
        m_strPath = parent + prefix + "XXXXXX";
        if (::mkdtemp(&m_strPath[0]) == nullptr)
            return;
        if (OpenLocked(m_strPath, m_folder) && StillThere(m_strPath, m_folder))
            return;
        ::rmdir(m_strPath.c_str());
    }
}

ScratchFolder::~ScratchFolder() {
    try {
        if (m_folder.IsOpen())
            Remove(m_strPath, m_folder);
    } catch (...) {
        // Out of memory: the next change to the file removes it.
    }
}

}  // namespace hxd
