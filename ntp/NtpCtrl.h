// Time synchronisation: its settings, the thread that runs it periodically, and one run on demand.
#ifndef HXD_NTPCTRL_H
#define HXD_NTPCTRL_H

#include "common/File.h"
#include "common/Maybe.h"
#include "common/Mutex.h"
#include "driver/record/ChannelTable.h"
#include "ntp/NtpThread.h"
#include "ntp/ntpCfgParam.h"

#include <QString>
#include <QStringList>

#include <array>
#include <atomic>
#include <cstdint>
#include <thread>

// All operations may be called from any thread and throw only when memory is short. The setters
// write the settings file on a real change, and so take as long as the storage does; their results
// are 0 = accepted, RESULT_REFUSED = out of range, nothing changed.
class NtpCtrl {
public:
    // Reads the settings file and starts the control thread; std::system_error when the system
    // refuses a thread.
    NtpCtrl();
    NtpCtrl(const NtpCtrl&) = delete;
    NtpCtrl& operator=(const NtpCtrl&) = delete;
    // Stops and joins all threads within half a second, unless the control thread is setting the
    // clocks: the shell command and the platform call that do this are waited for. A name look-up
    // that is under way lives on by itself. Nobody may be inside another operation.
    ~NtpCtrl();

    // What is accepted stands in the rows of their channels.
    int enableNtp(int on);     // 0 or 1
    int setNtpMode(int mode);  // 0 = on demand, 1 = automatic
    int setNtpFreq(int hours);
    int setNtpServer(const QString& server, int slot);  // any text, also empty; slot 0 to 3
    int setNtpServers(const QStringList& servers);      // all four; another number is refused

    ntpCfgParam getParam() const;

    // Asks the servers, waits for the first answer and sets both clocks by it. 0 = done, or
    // synchronisation is switched off; RESULT_TIME_SYNC_FAILED after any failure. Takes two pings
    // of up to 3 s, the look-up of the names, and twice 2 s for silent servers, or as much again
    // for one that answers while the clock is being set; before that, what is left of these times
    // of the run before. Throws nothing.
    int execNtp();

private:
    int Change(std::int32_t ntpCfgParam::*field, Channel channel, int value);
    bool Synchronise(const QStringList& servers);
    hxd::Maybe<ReachMode> FindReachMode(const QStringList& servers) const;
    void PostRequests(const QStringList& servers, ReachMode reachMode);
    hxd::Maybe<std::int32_t> AwaitAnswer();

    void Run();
    void SynchroniseIfDue();
    void SynchroniseUntilDone();
    bool Pause() const;

    mutable hxd::Mutex m_lock;  // never held while a worker's lock is taken
    ntpCfgParam m_settings HXD_GUARDED_BY(m_lock);
    std::atomic<bool> m_bRunning;
    std::array<NtpThread, NTP_SERVER_COUNT> m_workers;  // worker i serves slot i
    std::thread m_thread;
    HXDCTRL::File m_stopEvent;  // eventfd that ends a pause
    // Of the control thread: the settings it saw last, and when it started or last ended a
    // synchronisation of its own; those on demand do not move the period.
    ntpCfgParam m_previous;
    long long m_llStartMs = 0;  // of the platform's tick
};

#endif
