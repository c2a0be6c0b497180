#include "hxdcheck/panel/PanelChecks.h"

#include "common/File.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

namespace {

std::string ContentOf(const char* path) {
    HXDCTRL::File file;
    return file.open(path, O_RDONLY) ? file.readAll() : std::string();
}

bool MayDo(int capability) {
    const std::string status = ContentOf("/proc/self/status");
    const std::size_t line = status.find("\nCapEff:");
    if (line == std::string::npos)
        return ::geteuid() == 0;
    return (std::strtoull(status.c_str() + line + 8, nullptr, 16) >> capability & 1) != 0;
}

// The file that a shell would start, or "".
std::string FindProgram(const std::string& name) {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/usr/sbin:/usr/bin:/sbin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        folder.append("/").append(name);
        if (::access(folder.c_str(), X_OK) == 0)
            return folder;
    }
    return "";
}

Finding CheckAccount() {
    const std::string id = std::to_string(::geteuid());
    return ::geteuid() == 0 ? Ok("root")
                            : Look("account " + id + ", not root; what follows holds for it",
                                   "start hxdcheck under the account of the HMI runtime");
}

Finding MayOrNot(int capability, const char* capabilityName, const char* consequence) {
    if (MayDo(capability))
        return Ok("allowed");
    return Look(std::string("not allowed to this account: ") + consequence,
                std::string("run the HMI runtime as root, or give it ") + capabilityName);
}

Finding CheckClock() {
    return MayOrNot(CAP_SYS_TIME, "CAP_SYS_TIME", "ExecNTP cannot set the clock");
}

Finding CheckDebugfs() {
    if (::access("/dev/mtd0", F_OK) != 0)
        return Ok("not needed: no raw flash (/dev/mtd0)");
    if (ContentOf("/proc/filesystems").find("\tdebugfs\n") == std::string::npos)
        return Look("the kernel has no debugfs; channels 26 and 27 stay -1",
                    "enable CONFIG_DEBUG_FS");
    return MayOrNot(CAP_SYS_ADMIN, "CAP_SYS_ADMIN",
                    "channels 26 and 27 stay -1, unless debugfs is mounted when the panel starts");
}

Finding CheckRestart() {
    return MayOrNot(CAP_SYS_BOOT, "CAP_SYS_BOOT", "REBOOT() does nothing");
}

// A ping needs the right itself, a program that brings it along, or a kernel that lets everybody.
Finding CheckPing() {
    const std::string program = FindProgram("ping");
    struct stat status = {};
    if (program.empty() || ::stat(program.c_str(), &status) != 0)
        return Look("there is no ping; ExecNTP fails", "install ping, with the options -c and -W");
    int first = 1;
    int last = 0;
    std::istringstream(ContentOf("/proc/sys/net/ipv4/ping_group_range")) >> first >> last;
    const bool everybody =
        first <= static_cast<int>(::getegid()) && static_cast<int>(::getegid()) <= last;
    if (MayDo(CAP_NET_RAW) || (status.st_mode & S_ISUID) != 0 || everybody)
        return Ok("allowed");
    return Look("not allowed to this account, unless " + program + " has the right itself",
                "chmod u+s " + program + ", or widen net.ipv4.ping_group_range");
}

Finding CheckPrograms() {
    std::string missing;
    for (const char* const name :
         {"sh", "date", "mkdir", "rm", "find", "dmesg", "mount", "umount"}) {
        if (FindProgram(name).empty())
            missing += std::string(missing.empty() ? "" : ", ") + name;
    }
    return missing.empty() ? Ok("all in the PATH")
                           : Wrong("not in the PATH: " + missing, "install them (busybox has all)");
}

const Check RIGHTS[] = {
    {"account", CheckAccount}, {"set the clock", CheckClock}, {"mount debugfs", CheckDebugfs},
    {"restart", CheckRestart}, {"ping", CheckPing},           {"programs", CheckPrograms},
};

Finding CheckZone() {
    if (::access("/etc/localtime", R_OK) == 0)
        return Ok("/etc/localtime");
    if (::access("/etc/timezone", R_OK) == 0)
        return Ok("/etc/timezone");
    return Look(
        "neither /etc/localtime nor /etc/timezone: the panel counts as eight hours east of "
        "Greenwich, and from 16:00 UTC on its clock cannot be set",
        "ln -s /usr/share/zoneinfo/ZONE /etc/localtime");
}

const Check ZONE[] = {{"time zone", CheckZone}};

}  // namespace

void CheckRights(Findings& findings) {
    RunAll(findings, "Rights", RIGHTS);
}

void CheckTimeZone(Findings& findings) {
    RunAll(findings, "Time", ZONE);
}
