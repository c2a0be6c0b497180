#include "network/NerworkCheck.h"

#include "common/FileLock.h"
#include "common/PublicFolder.h"
#include "common/QtProcess.h"
#include "common/QtText.h"
#include "network/ResolverText.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#include <QByteArray>
#include <QStringList>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace HXDCTRL {
const char* const dnsFileLockPath = "/tmp/dns_access_lock.lck";
const char* const dnsFilePath = "/etc/resolv.conf";
const char* const dnsFilePathTmp = "/etc/resolv.conf.tmp";
}  // namespace HXDCTRL

namespace {

constexpr int RESOLVER_ATTEMPTS = 4;
constexpr useconds_t RESOLVER_PAUSE_US = 100000;
constexpr int PING_TIMEOUT_MS = 3000;
constexpr int PING_SLICE_MS = 100;  // between two looks whether it is still wanted
constexpr int KILL_TIMEOUT_MS = 1000;

const char* const PING_SCRIPT_PATH = "/tmp/ping.sh";
const char* const PING_SCRIPT =
    "#!/bin/sh \n"
    "ping -c 1 -W 2 %1 > /dev/null 2>&1 \n"
    "if [ $? -eq 0 ];then \n"
    "exit 0 \n"
    "else \n"
    "exit 1 \n"
    "fi \n";

// A process group of its own, so that the ping goes with its shell.
class Shell : public QProcess {
public:
    // Where memory ran out before anything was started, the base class would wait for half a
    // minute.
    ~Shell() override {
        if (state() == Starting && hxd::ProcessId(*this) == 0)
            setProcessState(NotRunning);
    }
    // Leaves nothing behind: a QProcess that is destroyed while it runs says so on standard error.
    void KillAndWait() {
        const qint64 group = hxd::ProcessId(*this);
        if (group <= 1)
            return;
        if (::kill(static_cast<pid_t>(-group), SIGKILL) != 0)
            kill();  // it has not come so far as to be a group
        waitForFinished(KILL_TIMEOUT_MS);
    }

protected:
    void setupChildProcess() override { ::setpgid(0, 0); }
};

// A new file each time: what somebody else has put there is neither followed nor written nor run.
bool WriteScript(const QByteArray& text) {
    HXDCTRL::File script;
    return hxd::MakeAnew(PING_SCRIPT_PATH, 0700, script) &&
           script.Write(std::string(text.constData(), static_cast<std::size_t>(text.size())));
}

// False, after the time-out or when it is no longer wanted, leaves it running.
bool AwaitEnd(Shell& shell, const std::atomic<bool>& running) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(PING_TIMEOUT_MS);
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0 || !running)
            return false;
        if (shell.waitForFinished(std::min(static_cast<int>(left), PING_SLICE_MS)))
            return true;
        if (shell.state() == QProcess::NotRunning)
            return false;  // it could not be started
    }
}

bool RunScript(const std::atomic<bool>& running) {
    Shell shell;
    shell.start(QLatin1String("sh"), QStringList() << QLatin1String(PING_SCRIPT_PATH));
    if (!AwaitEnd(shell, running)) {
        shell.KillAndWait();
        return false;
    }
    return shell.exitStatus() == QProcess::NormalExit && shell.exitCode() == 0;
}

bool Ping(const QString& address, const std::atomic<bool>& running) {
    HXDCTRL::FileLock lock;
    if (!lock.open(NerworkCheck::pingLckPath))
        return false;
    const HXDCTRL::FileLocker locker(lock, running);
    return locker.IsHeld() &&
           WriteScript(QString(QLatin1String(PING_SCRIPT)).arg(address).toUtf8()) &&
           RunScript(running);
}

void RepairResolverFile() {
    if (HXDCTRL::File::is_file_exist(HXDCTRL::dnsFilePath) ||
        !HXDCTRL::File::is_file_exist(HXDCTRL::dnsFilePathTmp))
        return;
    std::rename(HXDCTRL::dnsFilePathTmp, HXDCTRL::dnsFilePath);
    ::sync();
}

// A malformed file may be one that is being written by somebody who does not know of the lock, so
// it gets more than one chance.
std::vector<std::string> ReadNameServers(const std::atomic<bool>& running) {
    std::vector<std::string> servers;
    for (int attempt = 0; attempt < RESOLVER_ATTEMPTS && running; ++attempt) {
        HXDCTRL::File file;
        if (!file.open(HXDCTRL::dnsFilePath, O_RDONLY | O_NONBLOCK) ||
            ParseNameServers(file.readAll(), servers))
            break;
        ::usleep(RESOLVER_PAUSE_US);
    }
    return servers;
}

// The lock is released before the ping's is taken.
bool FirstNameServer(std::string& address, const std::atomic<bool>& running) {
    HXDCTRL::FileLock lock;
    if (!lock.open(HXDCTRL::dnsFileLockPath))
        return false;
    const HXDCTRL::FileLocker locker(lock, running);
    if (!locker.IsHeld())
        return false;
    RepairResolverFile();
    const std::vector<std::string> servers = ReadNameServers(running);
    if (servers.empty())
        return false;
    address = servers.front();
    return true;
}

}  // namespace

namespace NerworkCheck {

const char* const testPingIpAddr = "223.5.5.5";
const char* const pingLckPath = "/tmp/ping.lock";

bool isIp(const QString& text) {
    const QByteArray bytes = hxd::ToHostBytes(text);
    return IsDottedAddress(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

bool pingNetWork(bool literal) {
    static const std::atomic<bool> always{true};
    return pingNetWork(literal, always);
}

bool pingNetWork(bool literal, const std::atomic<bool>& running) {
    std::string address = testPingIpAddr;
    if (!literal && !FirstNameServer(address, running))
        return false;
    return Ping(QString(QLatin1String(address.c_str())), running);
}

}  // namespace NerworkCheck
