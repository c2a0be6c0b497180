#include "ntp/NtpThread.h"

#include "common/QtText.h"
#include "network/NerworkCheck.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int ATTEMPTS = 2;
constexpr std::chrono::milliseconds ANSWER_TIMEOUT(2000);
constexpr std::chrono::milliseconds STOP_CHECK_INTERVAL(50);

// The numbers belong to the texts, which people look for in logs; they are no lines of this file.
constexpr const char* MESSAGE = "[%s:%d]%s\n\n";

void ReportAttempt(int line, const char* text, const QByteArray& server) {
    std::printf("[%s:%d]%s:%s\n\n", "tryToSend", line, text, server.constData());
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

sockaddr_in TimePortOf(const addrinfo& found) {
    sockaddr_in address = {};
    ::memcpy(&address, found.ai_addr, std::min<std::size_t>(found.ai_addrlen, sizeof address));
    address.sin_port = htons(sntp::PORT);
    return address;
}

bool SendRequest(int socket, const sockaddr_in& address) {
    const sntp::Packet request = sntp::MakeRequest(Now());
    return ::sendto(socket, request.data(), request.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                    reinterpret_cast<const sockaddr*>(&address), sizeof address) >= 0;
}

// True when the request has left for one address at least.
bool SendRequests(int socket, const QByteArray& server) {
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    addrinfo* found = nullptr;
    const int error = ::getaddrinfo(server.constData(), nullptr, &hints, &found);
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> addresses(error == 0 ? found : nullptr,
                                                                   [](addrinfo* list) {
                                                                       if (list != nullptr)
                                                                           ::freeaddrinfo(list);
                                                                   });
    if (addresses == nullptr) {
        std::fprintf(stderr, "server:%s,getaddrinfo error: %s\n", server.constData(),
                     ::gai_strerror(error));
        return false;
    }
    bool sent = false;
    in_addr_t last = INADDR_ANY;
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        const sockaddr_in address = TimePortOf(*entry);
        // The list holds an address once for every socket type; the server is asked once.
        if (entry == found || address.sin_addr.s_addr != last)
            sent = SendRequest(socket, address) || sent;
        last = address.sin_addr.s_addr;
    }
    if (!sent)
        ReportAttempt(187, "发送请求数据包到服务器失败...", server);
    return sent;
}

// As poll(), but a signal does not end the wait.
template <std::size_t COUNT>
int PollUntil(pollfd (&watched)[COUNT], Clock::time_point deadline) {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const int ready =
            ::poll(watched, COUNT, static_cast<int>(std::max<decltype(left)>(left, 0)));
        if (ready >= 0 || errno != EINTR)
            return ready;
    }
}

bool getServerTime(int socket, sntp::CorrectedTime& time) {
    sntp::Packet answer{};
    // What made the socket readable may be gone: a datagram with a wrong checksum, for example.
    if (::recv(socket, answer.data(), answer.size(), MSG_DONTWAIT) < 1) {
        std::printf(MESSAGE, "getServerTime", 305, "读取返回数据失败");
        return false;
    }
    time = sntp::CorrectTime(answer, Now());
    return true;
}

}  // namespace

NtpThread::~NtpThread() {
    notifyStop();
    if (m_thread.joinable())
        m_thread.join();
}

void NtpThread::Start() {
    const std::lock_guard<std::mutex> locker(m_lock);
    if (m_thread.joinable())
        return;
    HXDCTRL::File wakeUp(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!wakeUp.IsOpen()) {
        std::printf("open event fd failed!%s\n", ::strerror(errno));
        return;
    }
    m_pWakeUp = std::make_unique<HXDCTRL::File>(wakeUp.Descriptor());
    wakeUp.Release();
    m_bRunning = true;
    m_eState = STATE_IDLE;
    try {
        m_thread = std::thread(&NtpThread::Run, this);
    } catch (...) {
        m_bRunning = false;  // neither threads nor memory
    }
}

void NtpThread::Post(const QString& server, std::int32_t reachMode,
                     const std::atomic<bool>& running) {
    std::unique_lock<std::mutex> locker(m_lock);
    while (m_bRunning && running && m_eState == STATE_PENDING)
        m_requestDone.wait_for(locker, STOP_CHECK_INTERVAL);
    if (!m_bRunning || !running)
        return;
    const QByteArray name = hxd::ToHostBytes(server);
    m_strServer.assign(name.constData(), static_cast<std::size_t>(name.size()));
    m_nReachMode = reachMode;
    m_eState = STATE_PENDING;
    m_requestPosted.notify_one();
}

NtpThread::Outcome NtpThread::Look(std::int32_t& seconds) {
    const std::lock_guard<std::mutex> locker(m_lock);
    if (m_bRunning && m_eState == STATE_PENDING)
        return Outcome::WORKING;
    if (!m_bRunning || !m_bSuccess)
        return Outcome::FAILED;
    seconds = m_nSeconds;
    return Outcome::ANSWERED;
}

void NtpThread::notifyStop() {
    const std::lock_guard<std::mutex> locker(m_lock);
    m_bRunning = false;
    m_eState = STATE_DONE;
    if (m_pWakeUp != nullptr)
        ::eventfd_write(m_pWakeUp->Descriptor(), 1);
    m_requestPosted.notify_all();
}

void NtpThread::Run() {
    while (AwaitRequest()) {
        bool success = false;
        sntp::CorrectedTime time = {};
        try {
            success = Serve(time);
        } catch (...) {
            // Out of memory: a failed request like any other.
        }
        Finish(success, time);
    }
    m_requestDone.notify_all();
}

bool NtpThread::AwaitRequest() {
    std::unique_lock<std::mutex> locker(m_lock);
    m_requestPosted.wait(locker, [this] { return m_eState == STATE_PENDING || !m_bRunning; });
    return m_bRunning;
}

bool NtpThread::Serve(sntp::CorrectedTime& time) {
    QString server;
    std::int32_t reachMode = -1;
    {
        const std::lock_guard<std::mutex> locker(m_lock);
        server = hxd::FromHost(m_strServer.data(), static_cast<int>(m_strServer.size()));
        reachMode = m_nReachMode;
    }
    return MayBeAsked(server, reachMode) && sendPacketToServer(server, time);
}

void NtpThread::Finish(bool success, const sntp::CorrectedTime& time) {
    const std::lock_guard<std::mutex> locker(m_lock);
    m_eState = STATE_DONE;
    m_bSuccess = success;
    if (success) {
        m_nSeconds = time.seconds;
        m_nMicroseconds = time.microseconds;
    }
    m_requestDone.notify_all();
}

bool NtpThread::sendPacketToServer(const QString& server, sntp::CorrectedTime& time) {
    const HXDCTRL::File socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket.IsOpen() || !tryToSend(socket.Descriptor(), server))
        return false;
    if (getServerTime(socket.Descriptor(), time))
        return true;
    std::printf(MESSAGE, "sendPacketToServer", 246, "获取服务器数据失败 !");
    return false;
}

bool NtpThread::tryToSend(int socket, const QString& server) {
    const QByteArray name = hxd::ToHostBytes(server);
    for (int attempt = 0; attempt < ATTEMPTS && m_bRunning; ++attempt) {
        if (!SendRequests(socket, name))
            continue;
        if (!m_bRunning)
            return false;
        if (AwaitReadable(socket, name))
            return true;
    }
    return false;
}

// poll() takes every descriptor, also one that does not fit a select() set; the texts tell of
// select() all the same, for those who know them.
bool NtpThread::AwaitReadable(int socket, const QByteArray& server) const {
    pollfd watched[] = {{socket, POLLIN, 0}, {m_pWakeUp->Descriptor(), POLLIN, 0}};
    const int ready = PollUntil(watched, Clock::now() + ANSWER_TIMEOUT);
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
