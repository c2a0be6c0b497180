#include "ntp/NtpCtrl.h"

#include "common/Poll.h"
#include "common/ResultCodes.h"
#include "network/NerworkCheck.h"
#include "ntp/NtpTriggers.h"
#include "ntp/PanelClock.h"
#include "olma_host.h"

#include <sys/eventfd.h>
#include <QtDebug>

namespace {

constexpr std::chrono::milliseconds TICK(200);
constexpr int TICKS_BETWEEN_ATTEMPTS = 5;

bool AllEmpty(const QStringList& servers) {
    for (int i = 0; i < servers.size(); ++i) {
        if (!servers.at(i).isEmpty())
            return false;
    }
    return true;
}

}  // namespace

NtpCtrl::NtpCtrl() : m_bRunning(true), m_stopEvent(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    m_settings.ReadCfg();
    m_thread = std::thread(&NtpCtrl::Run, this);
}

NtpCtrl::~NtpCtrl() {
    m_bRunning = false;
    if (m_stopEvent.IsOpen())
        ::eventfd_write(m_stopEvent.Descriptor(), 1);
    // Before the control thread is joined: it may be waiting for one of them.
    for (NtpThread& worker : m_workers)
        worker.notifyStop();
    m_thread.join();
}

int NtpCtrl::enableNtp(int on) {
    return Change(&ntpCfgParam::ntpSwitch, CHANNEL_NTP_SWITCH, on);
}

int NtpCtrl::setNtpMode(int mode) {
    return Change(&ntpCfgParam::mode, CHANNEL_NTP_MODE, mode);
}

int NtpCtrl::setNtpFreq(int hours) {
    return Change(&ntpCfgParam::freq, CHANNEL_NTP_PERIOD, hours);
}

int NtpCtrl::Change(std::int32_t ntpCfgParam::*field, Channel channel, int value) {
    if (!FindChannel(channel)->InRange(value))
        return RESULT_REFUSED;
    const hxd::MutexLock locker(m_lock);
    if (m_settings.*field != value) {
        m_settings.*field = value;
        m_settings.writeCfg();
    }
    return RESULT_DONE;
}

int NtpCtrl::setNtpServer(const QString& server, int slot) {
    const hxd::MutexLock locker(m_lock);
    if (slot < 0 || slot >= m_settings.servers.size())
        return RESULT_REFUSED;
    if (m_settings.servers.at(slot) != server) {
        QString text = server;
        m_settings.servers[slot].swap(text);
        m_settings.writeCfg();
    }
    return RESULT_DONE;
}

int NtpCtrl::setNtpServers(const QStringList& servers) {
    if (servers.size() != NTP_SERVER_COUNT)
        return RESULT_REFUSED;
    const hxd::MutexLock locker(m_lock);
    if (m_settings.servers != servers) {
        m_settings.servers = servers;
        m_settings.writeCfg();
    }
    return RESULT_DONE;
}

ntpCfgParam NtpCtrl::getParam() const {
    const hxd::MutexLock locker(m_lock);
    return m_settings;
}

int NtpCtrl::execNtp() {
    try {
        qDebug("%s", "execNtp-----------");
        const ntpCfgParam settings = getParam();
        if (settings.ntpSwitch != 1)
            return RESULT_DONE;
        return Synchronise(settings.servers) ? RESULT_DONE : RESULT_TIME_SYNC_FAILED;
    } catch (...) {
        return RESULT_TIME_SYNC_FAILED;
    }
}

bool NtpCtrl::Synchronise(const QStringList& servers) {
    if (AllEmpty(servers))
        return false;
    const hxd::Maybe<ReachMode> reachMode = FindReachMode(servers);
    if (!reachMode)
        return false;
    PostRequests(servers, *reachMode);
    const hxd::Maybe<std::int32_t> seconds = AwaitAnswer();
    return seconds && SetPanelClock(*seconds);
}

// Pings for the kinds of server that are in the list; an empty entry counts as a host name. None
// when no kind can be reached.
hxd::Maybe<ReachMode> NtpCtrl::FindReachMode(const QStringList& servers) const {
    int literals = 0;
    for (int i = 0; i < servers.size(); ++i)
        literals += NerworkCheck::isIp(servers.at(i)) ? 1 : 0;
    const bool reachesLiterals = literals > 0 && NerworkCheck::pingNetWork(true, m_bRunning);
    const bool reachesNames =
        literals < servers.size() && NerworkCheck::pingNetWork(false, m_bRunning);
    if (reachesLiterals && reachesNames)
        return REACH_BOTH;
    if (reachesLiterals)
        return REACH_LITERALS;
    return reachesNames ? REACH_NAMES : hxd::Maybe<ReachMode>();
}

void NtpCtrl::PostRequests(const QStringList& servers, ReachMode reachMode) {
    for (int i = 0; i < NTP_SERVER_COUNT && i < servers.size() && m_bRunning; ++i) {
        NtpThread& worker = m_workers[static_cast<std::size_t>(i)];
        worker.Start();
        worker.Post(servers.at(i), reachMode);
    }
}

// Without a time-out of its own: each worker bounds its request, and one that could not be started
// counts as failed.
hxd::Maybe<std::int32_t> NtpCtrl::AwaitAnswer() {
    std::int32_t seconds = 0;
    bool working = true;
    while (m_bRunning && working) {
        working = false;
        for (NtpThread& worker : m_workers) {
            const NtpThread::Outcome outcome = worker.Look(seconds);
            if (outcome == NtpThread::Outcome::ANSWERED)
                return seconds;
            working = working || outcome == NtpThread::Outcome::WORKING;
        }
        if (working)
            Pause();
    }
    return {};
}

void NtpCtrl::Run() {
    m_llStartMs = Olma_GetTickCount();
    do {
        try {
            SynchroniseIfDue();
        } catch (...) {
            // Out of memory; the next tick tries again.
        }
    } while (Pause());
}

// The previous settings start at zero, so a controller that is switched on and automatic when it is
// made synchronises at once.
void NtpCtrl::SynchroniseIfDue() {
    const ntpCfgParam current = getParam();
    const NtpTriggers triggers = CompareSettings(m_previous, current);
    m_previous = current;
    if (!SynchronisationDue(current, triggers, Olma_GetTickCount() - m_llStartMs))
        return;
    SynchroniseUntilDone();  // what is changed meanwhile is seen by the next tick, and may ask
                             // again
    m_llStartMs = Olma_GetTickCount();
}

// Until it has succeeded, or has been switched off, which counts as success.
void NtpCtrl::SynchroniseUntilDone() {
    while (execNtp() != RESULT_DONE) {
        for (int i = 0; i < TICKS_BETWEEN_ATTEMPTS; ++i) {
            if (!Pause())
                return;
        }
    }
}

// One tick of real time, not the platform's: stopping must not depend on that clock, nor may the
// system clock, which is set here. A condition variable of an older C++ library would wait by it.
// Without the event the tick is a plain sleep. False when the controller is to stop.
bool NtpCtrl::Pause() const {
    pollfd stop[] = {{m_stopEvent.Descriptor(), POLLIN, 0}};
    if (m_bRunning)
        hxd::PollUntil(stop, std::chrono::steady_clock::now() + TICK);
    return m_bRunning;
}
