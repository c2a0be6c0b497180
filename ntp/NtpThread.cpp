#include "ntp/NtpThread.h"

#include "common/Poll.h"
#include "common/QtText.h"
#include "network/NerworkCheck.h"
#include "ntp/NameLookup.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netdb.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdio>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int ATTEMPTS = 2;
constexpr int ASKED_AT_MOST = 2;  // when the clock is set meanwhile
constexpr std::chrono::milliseconds ANSWER_TIMEOUT(2000);
constexpr std::chrono::seconds CLOCK_STEP(1);

// The numbers belong to the texts, which people look for in logs; they are no lines of this file.
constexpr const char* MESSAGE = "[%s:%d]%s\n\n";

void ReportAttempt(int line, const char* text, const std::string& server) {
    std::printf("[%s:%d]%s:%s\n\n", "tryToSend", line, text, server.c_str());
}

// Characters of its own: threads that share them would free them under Qt's counter alone, which
// neither our locks nor the thread checker know of.
QString Unshared(const QString& text) {
    return QString(text.constData(), text.size());
}

bool MayBeAsked(const QString& server, std::int32_t reachMode) {
    if (server.isEmpty())
        return false;
    switch (reachMode) {
        case REACH_LITERALS:
            return NerworkCheck::isIp(server);
        case REACH_NAMES:
            return !NerworkCheck::isIp(server);
        default:
            return reachMode == REACH_BOTH;
    }
}

timeval Now() {
    timeval now = {};
    ::gettimeofday(&now, nullptr);
    return now;
}

// Of the system clock from the one that nobody sets; it changes when the system clock is set.
std::chrono::microseconds ClockDistance(const timeval& system, Clock::time_point steady) {
    return std::chrono::seconds(system.tv_sec) + std::chrono::microseconds(system.tv_usec) -
           std::chrono::duration_cast<std::chrono::microseconds>(steady.time_since_epoch());
}

bool SendRequest(int socket, sockaddr_in address) {
    address.sin_port = htons(sntp::PORT);
    const sntp::Packet request = sntp::MakeRequest(Now());
    return ::sendto(socket, request.data(), request.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                    reinterpret_cast<const sockaddr*>(&address), sizeof address) >= 0;
}

// True when the request has left for one address at least.
bool SendRequests(int socket, const std::vector<sockaddr_in>& addresses,
                  const std::string& server) {
    bool sent = false;
    const sockaddr_in* last = nullptr;
    for (const sockaddr_in& address : addresses) {
        // The list holds an address once for every socket type; the server is asked once.
        if (last == nullptr || address.sin_addr.s_addr != last->sin_addr.s_addr)
            sent = SendRequest(socket, address) || sent;
        last = &address;
    }
    if (!sent)
        ReportAttempt(187, "发送请求数据包到服务器失败...", server);
    return sent;
}

bool ReceiveAnswer(int socket, sntp::Packet& answer) {
    answer = {};
    // What made the socket readable may be gone: a datagram with a wrong checksum, for example.
    if (::recv(socket, answer.data(), answer.size(), MSG_DONTWAIT) >= 1)
        return true;
    std::printf(MESSAGE, "getServerTime", 305, "读取返回数据失败");
    std::printf(MESSAGE, "sendPacketToServer", 246, "获取服务器数据失败 !");
    return false;
}

}  // namespace

NtpThread::~NtpThread() {
    notifyStop();
    if (m_thread.joinable())
        m_thread.join();
}

void NtpThread::Start() {
    const hxd::MutexLock locker(m_lock);
    if (m_thread.joinable() || m_bStopped)
        return;
    HXDCTRL::File wakeUp(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!wakeUp.IsOpen()) {
        std::printf("open event fd failed!%s\n", ::strerror(errno));
        return;
    }
    m_pWakeUp = std::make_unique<HXDCTRL::File>(wakeUp.Descriptor());
    wakeUp.Release();
    m_bRunning = true;
    try {
        m_thread = std::thread(&NtpThread::Run, this);
    } catch (...) {
        m_bRunning = false;  // neither threads nor memory
    }
}

// No time-out: older C++ libraries wait by the system clock, which is set here.
void NtpThread::Post(const QString& server, std::int32_t reachMode) {
    hxd::MutexLock locker(m_lock);
    while (m_eState == STATE_PENDING && m_bRunning)
        locker.Wait(m_requestDone);
    if (!m_bRunning)
        return;
    m_strServer = Unshared(server);
    m_nReachMode = reachMode;
    m_eState = STATE_PENDING;
    m_requestPosted.notify_one();
}

NtpThread::Outcome NtpThread::Look(std::int32_t& seconds) {
    const hxd::MutexLock locker(m_lock);
    if (m_bRunning && m_eState == STATE_PENDING)
        return Outcome::WORKING;
    if (!m_bRunning || !m_bSuccess)
        return Outcome::FAILED;
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - m_arrival);
    seconds = static_cast<std::int32_t>(m_nSeconds + age.count());
    return Outcome::ANSWERED;
}

void NtpThread::notifyStop() {
    const hxd::MutexLock locker(m_lock);
    m_bRunning = false;
    m_bStopped = true;
    m_eState = STATE_DONE;
    if (m_pWakeUp != nullptr)
        ::eventfd_write(m_pWakeUp->Descriptor(), 1);
    m_requestPosted.notify_all();
    m_requestDone.notify_all();
}

void NtpThread::Run() {
    while (AwaitRequest()) {
        bool success = false;
        Answer answer = {};
        try {
            success = Serve(answer);
        } catch (...) {
            // Out of memory: a failed request like any other.
        }
        Finish(success, answer);
    }
    m_requestDone.notify_all();
}

bool NtpThread::AwaitRequest() {
    hxd::MutexLock locker(m_lock);
    while (m_eState != STATE_PENDING && m_bRunning)
        locker.Wait(m_requestPosted);
    return m_bRunning;
}

bool NtpThread::Serve(Answer& answer) {
    QString server;
    std::int32_t reachMode = -1;
    {
        const hxd::MutexLock locker(m_lock);
        server = Unshared(m_strServer);
        reachMode = m_nReachMode;
    }
    return MayBeAsked(server, reachMode) && sendPacketToServer(server, answer);
}

void NtpThread::Finish(bool success, const Answer& answer) {
    const hxd::MutexLock locker(m_lock);
    m_eState = STATE_DONE;
    m_bSuccess = success;
    if (success) {
        m_nSeconds = answer.time.seconds;
        m_nMicroseconds = answer.time.microseconds;
        m_arrival = answer.arrival;
    }
    m_requestDone.notify_all();
}

// An answer is good only by the clock by which it was asked for. Another synchronisation may set
// that clock in between, and the result would be wrong by half the step. Each turn has a socket of
// its own, which receives no answer to the turn before.
bool NtpThread::sendPacketToServer(const QString& server, Answer& answer) {
    for (int turn = 0; turn < ASKED_AT_MOST; ++turn) {
        const HXDCTRL::File socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        sntp::Packet packet;
        if (!socket.IsOpen() || !tryToSend(socket.Descriptor(), server) ||
            !ReceiveAnswer(socket.Descriptor(), packet))
            return false;
        const timeval system = Now();
        answer.arrival = Clock::now();
        answer.time = sntp::CorrectTime(packet, system);
        const auto step = ClockDistance(system, answer.arrival) - m_distanceAtRequest;
        if (step < CLOCK_STEP && step > -CLOCK_STEP)
            return true;
    }
    return false;
}

// Leaves the clocks' distance at the first request in m_distanceAtRequest. Here the name becomes
// bytes, for the look-up and for the lines printed.
bool NtpThread::tryToSend(int socket, const QString& server) {
    const std::string name = hxd::ToHostBytes(server).constData();
    bool clockNoted = false;
    for (int attempt = 0; attempt < ATTEMPTS && m_bRunning; ++attempt) {
        std::vector<sockaddr_in> addresses;
        if (!LookUp(name, addresses))
            continue;
        // Of the first: the second wait may end with the answer to it.
        if (!clockNoted)
            m_distanceAtRequest = ClockDistance(Now(), Clock::now());
        clockNoted = true;
        if (!SendRequests(socket, addresses, name))
            continue;
        if (!m_bRunning)
            return false;
        if (AwaitReadable(socket, name))
            return true;
    }
    return false;
}

bool NtpThread::LookUp(const std::string& server, std::vector<sockaddr_in>& addresses) const {
    const int error = LookUpName(server, m_pWakeUp->Descriptor(), addresses);
    if (!addresses.empty() || error == LOOK_UP_STOPPED)
        return !addresses.empty();
    std::fprintf(stderr, "server:%s,getaddrinfo error: %s\n", server.c_str(),
                 ::gai_strerror(error));
    return false;
}

// poll() takes every descriptor, also one that does not fit a select() set; the texts tell of
// select() all the same, for those who know them.
bool NtpThread::AwaitReadable(int socket, const std::string& server) const {
    pollfd watched[] = {{socket, POLLIN, 0}, {m_pWakeUp->Descriptor(), POLLIN, 0}};
    const int ready = hxd::PollUntil(watched, Clock::now() + ANSWER_TIMEOUT);
    if (ready < 0 || (watched[0].revents & POLLNVAL) != 0)
        ReportAttempt(208, "select函数出错，被迫终止 !", server);
    else if (ready == 0)
        ReportAttempt(214, "等待服务器响应超时，终止 !", server);
    else if (watched[0].revents == 0)
        ReportAttempt(220, "FD_ISSET failed !", server);
    else
        return true;
    return false;
}
