// The sandbox seen by the driver's process: what it may do, what only looks done, what is refused.
#include <gtest/gtest.h>

#include "TestFiles.h"
#include "WaitStatus.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/reboot.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <string>

namespace {

bool CanWrite(const std::string& path, int flags) {
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, 0644);
    if (fd < 0) {
        return false;
    }
    close(fd);
    return true;
}

TEST(Sandbox, FoldersOfAPanelCanBeWritten) {
    for (const char* folder : {"/etc", "/etc/iot_cfg", "/tmp", "/storage/log", "/storage/user_dir",
                               "/media/usb0", "/usr/olma_app/config", "/sys", "/dev"}) {
        EXPECT_TRUE(CanWrite(std::string(folder) + "/probe", O_CREAT)) << folder;
    }
}

TEST(Sandbox, TheMachineIsReadOnly) {
    EXPECT_FALSE(CanWrite("/usr/bin/probe", O_CREAT));
    EXPECT_FALSE(CanWrite(HXD_SOURCE_DIR "/probe", O_CREAT));
    EXPECT_FALSE(CanWrite("/proc/sys/vm/swappiness", 0));
    EXPECT_TRUE(CanWrite("/proc/sys/net/ipv4/icmp_echo_ignore_all", 0));  // the panel's own network

    timespec now = {};
    ASSERT_EQ(0, clock_gettime(CLOCK_REALTIME, &now));
    EXPECT_EQ(-1, clock_settime(CLOCK_REALTIME, &now));
    EXPECT_EQ(EPERM, errno);
    EXPECT_EQ(-1, mount("none", "/sys", "debugfs", 0, nullptr));
    EXPECT_EQ(EPERM, errno);
}

TEST(Sandbox, CommandsAreRecordedAndCanBeReplaced) {
    EXPECT_EQ(0, std::system("date -s '2031-05-06 07:08:09'"));
    const int hour24 = std::system("date -s '2031-05-06 24:08:09' 2>/run/refusal");
    EXPECT_EQ(1, WEXITSTATUS(hour24));
    EXPECT_EQ(0u, readFile("/run/refusal").find("date: invalid date"));
    EXPECT_EQ(0, std::system("mount -t debugfs none /sys/kernel/debug"));
    ASSERT_EQ(0, mkdir("/run/shims", 0755));
    writeFile("/run/shims/ping", "test \"$2\" = \"it's here\" && exit 3\n");
    const int status = std::system("ping -c \"it's here\" ''");
    EXPECT_EQ(3, WEXITSTATUS(status));
    EXPECT_EQ(
        "date\t-s '2031-05-06 07:08:09'\n"
        "date\t-s '2031-05-06 24:08:09' (refused)\n"
        "mount\t-t debugfs none /sys/kernel/debug\n"
        "ping\t-c 'it'\\''s here' ''\n",
        readFile("/run/panel-commands.log"));
}

// In a pid namespace of its own the call ends that namespace, as it would end the panel.
TEST(Sandbox, ARebootEndsThePanelOnly) {
    const long child = syscall(SYS_clone, SIGCHLD | CLONE_NEWUSER | CLONE_NEWPID, nullptr, nullptr,
                               nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        reboot(RB_AUTOBOOT);
        _exit(1);
    }
    const int status = WaitStatus(static_cast<pid_t>(child));
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(SIGHUP, WTERMSIG(status));
}

}  // namespace
