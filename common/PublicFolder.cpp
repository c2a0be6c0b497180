#include "common/PublicFolder.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>

namespace {

bool IsRegular(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// Moves what lies at path to where nobody else can reach it. moved: its new path, in a folder of
// its own.
bool MoveAside(const std::string& path, std::string& folder, std::string& moved) {
    folder = path + ".XXXXXX";
    if (::mkdtemp(&folder[0]) == nullptr)
        return false;
    moved = folder + "/planted";
    if (::rename(path.c_str(), moved.c_str()) == 0)
        return true;
    ::rmdir(folder.c_str());
    return false;
}

// Both fail for a folder with something in it, which is left for somebody to look at.
void RemoveMoved(const std::string& folder, const std::string& moved) {
    std::remove(moved.c_str());
    ::rmdir(folder.c_str());
}

bool Remove(const std::string& path) {
    if (::unlink(path.c_str()) == 0 || errno == ENOENT)
        return true;
    std::string folder;
    std::string moved;
    if (!MoveAside(path, folder, moved))
        return false;
    RemoveMoved(folder, moved);
    return true;
}

}  // namespace

bool hxd::MakeAnew(const std::string& path, mode_t mode, HXDCTRL::File& file) {
    return Remove(path) && file.open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
}

// By moving first and looking afterwards: another process may have put a lock file of its own in
// the place meanwhile. That one goes back, unless there is a third one already.
bool hxd::RemoveUnlessRegular(const std::string& path) {
    if (IsRegular(path))
        return false;
    std::string folder;
    std::string moved;
    if (!MoveAside(path, folder, moved))
        return false;
    if (IsRegular(moved)) {
        const int thereIsAnother = ::link(moved.c_str(), path.c_str());
        static_cast<void>(thereIsAnother);
    }
    RemoveMoved(folder, moved);
    return true;
}
