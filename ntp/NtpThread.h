// One SNTP worker: a thread that asks one time server at a time.
#ifndef HXD_NTPTHREAD_H
#define HXD_NTPTHREAD_H

#include "common/File.h"
#include "common/Mutex.h"
#include "ntp/SntpPacket.h"

#include <netinet/in.h>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// Which kinds of server can be reached at all.
enum ReachMode : std::int32_t {
    REACH_LITERALS = 0,  // only servers given as IPv4 addresses
    REACH_NAMES = 1,     // only servers given as host names
    REACH_BOTH = 2,
};

// The controller posts requests and looks at their outcome; the thread serves them and sets no
// clock. May be used by several threads. The destructor stops and joins the thread, at once.
class NtpThread {
public:
    NtpThread() = default;
    NtpThread(const NtpThread&) = delete;
    NtpThread& operator=(const NtpThread&) = delete;
    ~NtpThread();

    // Starts the thread unless it has been started or stopped. When the system lacks descriptors
    // (one line on standard output) or threads, the worker stays unstarted and the next call tries
    // again.
    void Start();

    // Hands a request to the thread, after the one it is still working on. Without a running
    // thread, and after notifyStop(), nothing is posted.
    void Post(const QString& server, std::int32_t reachMode);

    enum class Outcome { WORKING, FAILED, ANSWERED };
    // Of the last request; a worker without a running thread or without a request has failed.
    // seconds: what the clock should show now, since 1970, however old the answer is and however
    // often the clock was set since; with ANSWERED only.
    Outcome Look(std::int32_t& seconds);

    // Ends the thread, what it waits for, and the wait of a Post(), without waiting for it to end.
    void notifyStop();

    // Part of serving a request. Sends it to every address of the server and waits up to 2 s for
    // the socket to become readable; twice at most. False after a failure, with a line on standard
    // output or standard error, and after notifyStop().
    bool tryToSend(int socket, const QString& server);

private:
    enum State : std::int32_t { STATE_IDLE = 0, STATE_PENDING = 1, STATE_DONE = 2 };
    struct Answer {
        sntp::CorrectedTime time;
        std::chrono::steady_clock::time_point arrival;
    };

    void Run();
    bool AwaitRequest();
    bool Serve(Answer& answer);
    bool sendPacketToServer(const QString& server, Answer& answer);
    bool LookUp(const std::string& server, std::vector<sockaddr_in>& addresses) const;
    bool AwaitReadable(int socket, const std::string& server) const;
    void Finish(bool success, const Answer& answer);

    hxd::Mutex m_lock;
    std::condition_variable m_requestPosted;
    std::condition_variable m_requestDone;
    QString m_strServer HXD_GUARDED_BY(m_lock);  // shares its characters with no other text
    std::int32_t m_nReachMode HXD_GUARDED_BY(m_lock) = -1;
    State m_eState HXD_GUARDED_BY(m_lock) = STATE_IDLE;
    std::atomic<bool> m_bRunning{false};             // written under the lock, and read without it
    bool m_bStopped HXD_GUARDED_BY(m_lock) = false;  // for good
    bool m_bSuccess HXD_GUARDED_BY(m_lock) = false;
    std::int32_t m_nSeconds HXD_GUARDED_BY(m_lock) = 0;
    std::int32_t m_nMicroseconds HXD_GUARDED_BY(m_lock) = 0;
    std::chrono::steady_clock::time_point m_arrival HXD_GUARDED_BY(m_lock);
    std::thread m_thread;  // made under the lock; the destructor joins it without
    // eventfd. Made under the lock before the thread starts, which reads it without the lock.
    std::unique_ptr<HXDCTRL::File> m_pWakeUp;
    // Of the worker's thread alone: how far the system clock was ahead of the steady one when the
    // request was sent.
    std::chrono::microseconds m_distanceAtRequest{0};
};

#endif
