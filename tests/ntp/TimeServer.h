// A time server on the panel's loopback network that answers as a test wants it to.
#ifndef HXD_TESTS_TIMESERVER_H
#define HXD_TESTS_TIMESERVER_H

#include "common/File.h"
#include "ntp/SntpPacket.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <thread>

class TimeServer {
public:
    // The datagram to send back; silent when null.
    using Answer = std::function<std::string(const sntp::Packet& request, int requestNumber)>;

    TimeServer(const char* address, Answer answer, std::uint16_t port = sntp::PORT)
        : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)), m_answer(std::move(answer)) {
        sockaddr_in own = {};
        own.sin_family = AF_INET;
        own.sin_port = htons(port);
        own.sin_addr.s_addr = ::inet_addr(address);
        EXPECT_EQ(::bind(m_socket.Descriptor(), reinterpret_cast<sockaddr*>(&own), sizeof own), 0);
        m_thread = std::thread(&TimeServer::Run, this);
    }
    ~TimeServer() {
        m_bRunning = false;
        m_thread.join();
    }

    int Requests() const { return m_nRequests; }

    // A correct server whose clock shows the time in seconds since 1970, modulo 2^32.
    static Answer Showing(long long seconds) {
        return [=](const sntp::Packet& request, int) {
            sntp::Packet answer{};
            const auto transmit = sntp::ReadTimestamp(request, sntp::TRANSMIT_OFFSET);
            const sntp::Timestamp time = {
                static_cast<std::uint32_t>(seconds + sntp::SECONDS_1900_TO_1970), 0x40000000};
            sntp::WriteTimestamp(answer, sntp::ORIGINATE_OFFSET, transmit);
            sntp::WriteTimestamp(answer, sntp::RECEIVE_OFFSET, time);
            sntp::WriteTimestamp(answer, sntp::TRANSMIT_OFFSET, time);
            return std::string(answer.begin(), answer.end());
        };
    }

private:
    void Run() {
        while (m_bRunning) {
            pollfd watched = {m_socket.Descriptor(), POLLIN, 0};
            if (::poll(&watched, 1, 20) <= 0)
                continue;
            sntp::Packet request{};
            sockaddr_in from = {};
            socklen_t length = sizeof from;
            ::recvfrom(m_socket.Descriptor(), request.data(), request.size(), 0,
                       reinterpret_cast<sockaddr*>(&from), &length);
            const int number = ++m_nRequests;
            if (m_answer == nullptr)
                continue;
            const std::string answer = m_answer(request, number);
            ::sendto(m_socket.Descriptor(), answer.data(), answer.size(), 0,
                     reinterpret_cast<sockaddr*>(&from), length);
        }
    }

    HXDCTRL::File m_socket;
    Answer m_answer;
    std::atomic<bool> m_bRunning{true};
    std::atomic<int> m_nRequests{0};
    std::thread m_thread;
};

#endif
