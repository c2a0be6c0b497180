// HTTP as a test needs it: requests byte for byte, answers taken apart, streams read on.
#ifndef HTTPCLIENT_H
#define HTTPCLIENT_H

#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace http {

// An open connection to 127.0.0.1, or to another address (in host byte order).
class Connection {
public:
    explicit Connection(int port, int receiveBuffer = 0, in_addr_t host = INADDR_LOOPBACK)
        : m_socket(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(host);
        if (receiveBuffer > 0)
            ::setsockopt(m_socket, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        m_open = ::connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~Connection() { ::close(m_socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool IsOpen() const { return m_open; }
    void Send(const std::string& text) {
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t length =
                ::send(m_socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (length <= 0)
                return;  // the other end has heard enough
            sent += static_cast<std::size_t>(length);
        }
    }
    // Appends what comes; false at the end, or when nothing comes in time.
    bool Receive(std::string& text, int milliseconds = 10000) {
        pollfd event = {m_socket, POLLIN, 0};
        char buffer[16384];
        if (::poll(&event, 1, milliseconds) <= 0)
            return false;
        const ssize_t length = ::recv(m_socket, buffer, sizeof buffer, 0);
        if (length > 0)
            text.append(buffer, static_cast<std::size_t>(length));
        return length > 0;
    }

private:
    int m_socket;
    bool m_open = false;
};

struct Answer {
    int status = 0;  // 0: the connection ended without one
    std::string head;
    std::string body;

    bool Says(const std::string& field) const { return head.find(field) != std::string::npos; }
    nlohmann::json Json() const { return nlohmann::json::parse(body, nullptr, false); }
};

inline Answer Exchange(int port, const std::string& request) {
    Connection connection(port);
    connection.Send(request);
    std::string text;
    while (connection.Receive(text)) {
    }
    Answer answer;
    const std::size_t end = text.find("\r\n\r\n");
    if (text.compare(0, 9, "HTTP/1.1 ") != 0 || end == std::string::npos)
        return answer;
    answer.status = std::atoi(text.c_str() + 9);
    answer.head = text.substr(0, end + 2);
    answer.body = text.substr(end + 4);
    return answer;
}

// fields: more lines of the head, each with its end.
inline std::string Text(const std::string& method, const std::string& path,
                        const std::string& body = "", const std::string& fields = "") {
    const std::string content =
        method == "GET"
            ? ""
            : "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
                  "\r\n";
    const std::string host = fields.find("Host:") == std::string::npos ? "Host: localhost\r\n" : "";
    return method + " " + path + " HTTP/1.1\r\n" + host + "Connection: close\r\n" + content +
           fields + "\r\n" + body;
}

// Server-sent events, one after the other.
class EventReader {
public:
    explicit EventReader(int port, const std::string& fields = "", int receiveBuffer = 0)
        : m_connection(port, receiveBuffer) {
        m_connection.Send(Text("GET", "/api/events", "", fields));
    }

    struct Event {
        std::string id;
        std::string name;  // "" when none has come in time
        nlohmann::json data;
    };
    Event Next() {
        for (;;) {
            const std::size_t name = m_text.find("event: ");
            const std::size_t end = m_text.find("\n\n", name);
            if (name != std::string::npos && end != std::string::npos)
                return Take(name, end);
            if (!Fill())
                return {};
        }
    }
    // The next one of this name that the condition holds for.
    template <class CONDITION>
    Event Await(const std::string& name, CONDITION holds) {
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (std::chrono::steady_clock::now() < until) {
            Event event = Next();
            if (event.name.empty() || (event.name == name && holds(event.data)))
                return event;
        }
        return {};
    }
    Event Await(const std::string& name) {
        return Await(name, [](const nlohmann::json&) { return true; });
    }

private:
    // The body without the lines that tell the lengths of its chunks.
    bool Fill() {
        if (!m_connection.Receive(m_raw))
            return false;
        if (!m_inBody) {
            const std::size_t end = m_raw.find("\r\n\r\n");
            if (end == std::string::npos)
                return true;
            m_raw.erase(0, end + 4);
            m_inBody = true;
        }
        for (;;) {
            const std::size_t line = m_raw.find("\r\n");
            if (line == std::string::npos)
                return true;
            const std::size_t length = std::strtoul(m_raw.c_str(), nullptr, 16);
            if (m_raw.size() < line + 2 + length + 2)
                return true;
            m_text += m_raw.substr(line + 2, length);
            m_raw.erase(0, line + 2 + length + 2);
        }
    }
    Event Take(std::size_t name, std::size_t end) {
        Event event;
        const std::size_t id = m_text.rfind("id: ", name);
        const std::size_t data = m_text.find("\ndata: ", name);
        if (id != std::string::npos)
            event.id = m_text.substr(id + 4, m_text.find('\n', id) - id - 4);
        event.name = m_text.substr(name + 7, data - name - 7);
        event.data = nlohmann::json::parse(m_text.substr(data + 7, end - data - 7), nullptr, false);
        m_text.erase(0, end + 2);
        return event;
    }

    Connection m_connection;
    bool m_inBody = false;
    std::string m_raw;
    std::string m_text;
};

}  // namespace http

#endif
