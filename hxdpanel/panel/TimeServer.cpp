#include "hxdpanel/panel/TimeServer.h"

#include "ntp/SntpPacket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

// The first byte of a message: leap indicator, version, mode.
constexpr unsigned char VERSION_MASK = 0x38;
constexpr unsigned char MODE_MASK = 0x07;
constexpr unsigned char MODE_CLIENT = 3;
constexpr unsigned char MODE_SERVER = 4;

constexpr unsigned char STRATUM_PRIMARY = 1;
constexpr unsigned char PRECISION_MICROSECOND = 0xEC;  // 2^-20 s

sntp::Timestamp Now() {
    timeval now = {};
    ::gettimeofday(&now, nullptr);
    return sntp::ToTimestamp(now);
}

bool IsRequest(const sntp::Packet& packet, ssize_t length) {
    return length == static_cast<ssize_t>(packet.size()) && (packet[0] & MODE_MASK) == MODE_CLIENT;
}

sntp::Packet AnswerTo(const sntp::Packet& request, sntp::Timestamp arrival) {
    sntp::Packet answer = {};
    answer[0] = static_cast<unsigned char>((request[0] & VERSION_MASK) | MODE_SERVER);
    answer[1] = STRATUM_PRIMARY;
    answer[2] = request[2];
    answer[3] = PRECISION_MICROSECOND;
    sntp::WriteTimestamp(answer, sntp::ORIGINATE_OFFSET,
                         sntp::ReadTimestamp(request, sntp::TRANSMIT_OFFSET));
    sntp::WriteTimestamp(answer, sntp::RECEIVE_OFFSET, arrival);
    sntp::WriteTimestamp(answer, sntp::TRANSMIT_OFFSET, Now());
    return answer;
}

}  // namespace

const char* const TimeServer::ADDRESS = "127.0.0.1";

std::unique_ptr<TimeServer> TimeServer::Start(std::string& error) {
    std::unique_ptr<TimeServer> server(new TimeServer);
    if (!server->m_stopEvent.IsOpen() || !server->Listen()) {
        error = std::strerror(errno);
        return nullptr;
    }
    try {
        server->m_thread = std::thread(&TimeServer::Run, server.get());
    } catch (const std::system_error& failure) {
        error = failure.what();
        return nullptr;
    }
    return server;
}

TimeServer::TimeServer()
    : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)),
      m_stopEvent(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

TimeServer::~TimeServer() {
    if (!m_thread.joinable())
        return;
    ::eventfd_write(m_stopEvent.Descriptor(), 1);
    m_thread.join();
}

bool TimeServer::Listen() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(sntp::PORT);
    ::inet_pton(AF_INET, ADDRESS, &address.sin_addr);
    return ::bind(m_socket.Descriptor(), reinterpret_cast<const sockaddr*>(&address),
                  sizeof address) == 0;
}

void TimeServer::Run() {
    pollfd watched[] = {{m_socket.Descriptor(), POLLIN, 0}, {m_stopEvent.Descriptor(), POLLIN, 0}};
    for (;;) {
        const int ready = ::poll(watched, 2, -1);
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready < 0 || watched[1].revents != 0)
            return;
        AnswerOne();
    }
}

// What is no request gets no answer.
void TimeServer::AnswerOne() {
    sntp::Packet request = {};
    sockaddr_in client = {};
    socklen_t clientSize = sizeof client;
    const ssize_t length =  // of the whole datagram, also of one that is too long
        ::recvfrom(m_socket.Descriptor(), request.data(), request.size(), MSG_TRUNC,
                   reinterpret_cast<sockaddr*>(&client), &clientSize);
    const sntp::Timestamp arrival = Now();
    if (!IsRequest(request, length))
        return;
    const sntp::Packet answer = AnswerTo(request, arrival);
    ::sendto(m_socket.Descriptor(), answer.data(), answer.size(), 0,
             reinterpret_cast<const sockaddr*>(&client), clientSize);
}
