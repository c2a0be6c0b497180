#include "hxdcheck/panel/PanelChecks.h"
#include "hxdcheck/panel/Paths.h"

namespace {

using Needs = PathNeeds;

const PathNeeds PATHS[] = {
    {"/proc/stat", Needs::READ_FILE, Finding::WRONG, "CPU use (channel 10)"},
    {"/proc/meminfo", Needs::READ_FILE, Finding::WRONG, "memory (channel 11)"},
    {"/proc/diskstats", Needs::READ_FILE, Finding::LOOK, "write gear of an eMMC (channel 27)"},
    {"/sys/class/block", Needs::READ_FOLDER, Finding::LOOK, "life of the storage (channel 26)"},
    {"/sys/devices/platform", Needs::READ_FOLDER, Finding::LOOK,
     "life of the storage (channel 26)"},
    {"/storage/log", Needs::READ_FOLDER, Finding::LOOK, "the log commands"},
    {"/storage/user_dir", Needs::WRITE_FOLDER, Finding::OK, "screenshots"},
    {"/media/usb0", Needs::WRITE_FOLDER, Finding::OK, "screenshots on a memory stick"},
    {"/etc/iot_cfg/vncConfig.ini", Needs::WRITE_FILE, Finding::LOOK,
     "password of the remote view (channel 19), unless directory 1 has the file"},
    {"/tmp", Needs::WRITE_FOLDER, Finding::WRONG, "lock files"},
    {"/tmp/olma_app_conf.lck", Needs::SCRATCH_FILE, Finding::OK, "lock of the settings"},
    {"/tmp/ping.lock", Needs::SCRATCH_FILE, Finding::OK, "lock of the ping"},
    {"/tmp/dns_access_lock.lck", Needs::SCRATCH_FILE, Finding::OK, "lock of /etc/resolv.conf"},
    {"/tmp/ping.sh", Needs::SCRATCH_FILE, Finding::OK, "the ping's script"},
    {"/tmp/dmesg.log", Needs::SCRATCH_FILE, Finding::OK, "the kernel log"},
};

}  // namespace

void CheckPaths(Findings& findings) {
    findings.Group("Files and folders");
    for (const PathNeeds& needs : PATHS)
        findings.Run(needs.path, [&] { return CheckPath(needs); });
}
