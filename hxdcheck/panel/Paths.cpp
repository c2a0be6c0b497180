#include "hxdcheck/panel/Paths.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr unsigned long long ENOUGH_ROOM = 1 << 20;  // bytes; a screenshot takes about as much

bool IsFolder(PathNeeds::Kind kind) {
    return kind == PathNeeds::READ_FOLDER || kind == PathNeeds::WRITE_FOLDER;
}

bool IsWritten(PathNeeds::Kind kind) {
    return kind != PathNeeds::READ_FILE && kind != PathNeeds::READ_FOLDER;
}

std::string Parent(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

Finding CheckMissing(const PathNeeds& needs) {
    if (needs.ifMissing != Finding::OK)
        return {needs.ifMissing, "is not there: " + std::string(needs.usedFor),
                (IsFolder(needs.kind) ? "mkdir -p " : "make ") + needs.path};
    std::string folder = Parent(needs.path);
    while (::access(folder.c_str(), F_OK) != 0 && folder != "/")
        folder = Parent(folder);
    if (::access(folder.c_str(), W_OK) != 0)
        return Wrong("is not there and cannot be made in " + folder + " (" + std::strerror(errno) +
                         "): " + needs.usedFor,
                     "mkdir or mount it, writable for the HMI runtime");
    return Ok("not there yet, can be made");
}

// What lies where a scratch file is to be made: links and files of others are refused by the
// driver.
Finding CheckScratch(const std::string& path, const struct stat& status) {
    if (!S_ISREG(status.st_mode))
        return Wrong("is no ordinary file, so it is neither followed nor used", "rm -r " + path);
    if (::access(path.c_str(), R_OK) != 0)
        return Look("belongs to another account and cannot be read", "rm " + path);
    return Ok("there");
}

Finding CheckRoom(const std::string& path) {
    struct statvfs room = {};
    if (::statvfs(path.c_str(), &room) != 0)
        return Look(std::string("its room cannot be told: ") + std::strerror(errno), "");
    const unsigned long long bytes = static_cast<unsigned long long>(room.f_bavail) * room.f_frsize;
    const std::string text = std::to_string(bytes >> 20) + " MiB free";
    return bytes >= ENOUGH_ROOM ? Ok("writable, " + text) : Wrong("full: " + text, "make room");
}

}  // namespace

Finding CheckPath(const PathNeeds& needs) {
    const char* const path = needs.path.c_str();
    struct stat status = {};
    if (needs.kind == PathNeeds::SCRATCH_FILE && ::lstat(path, &status) == 0)
        return CheckScratch(needs.path, status);
    if (::stat(path, &status) != 0)
        return CheckMissing(needs);
    if (S_ISDIR(status.st_mode) != IsFolder(needs.kind))
        return Wrong(IsFolder(needs.kind) ? "is no folder" : "is a folder",
                     std::string("it is used for: ") + needs.usedFor);
    if (::access(path, IsFolder(needs.kind) ? R_OK | X_OK : R_OK) != 0)
        return Wrong(std::string("cannot be read (") + std::strerror(errno) + "): " + needs.usedFor,
                     "let the HMI runtime's account read it");
    if (IsWritten(needs.kind) && ::access(path, W_OK) != 0)
        return Wrong(
            std::string("cannot be written (") + std::strerror(errno) + "): " + needs.usedFor,
            "mount it writable, or let the HMI runtime's account write it");
    return IsWritten(needs.kind) ? CheckRoom(needs.path) : Ok("readable");
}
