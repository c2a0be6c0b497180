// HTTP on a socket that somebody else has opened: takes requests apart, bounds what one may cost,
// sends answers and streams. What they mean is the handler's business.
#ifndef HXDPANEL_HTTPSERVER_H
#define HXDPANEL_HTTPSERVER_H

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct MHD_Daemon;

namespace page {

using Fields = std::vector<std::pair<std::string, std::string>>;

struct Request {
    std::string method;  // "HEAD" comes as "GET"
    std::string path;    // without escapes
    std::map<std::string, std::string> arguments;
    std::map<std::string, std::string> headers;  // names in lower case
    std::map<std::string, std::string> cookies;
    std::string body;
    bool bodyTooLarge = false;  // and dropped
    std::string localAddress;   // at which it has arrived, without the port

    std::string Header(const std::string& name) const;  // "" when there is none
};

// An answer that goes on. Its object lives as long as the connection.
class Stream {
public:
    virtual ~Stream() = default;
    // Waits for more; false at the end.
    virtual bool Read(std::string& more) = 0;
};

struct Response {
    int status = 200;
    std::string type;
    std::string body;
    Fields fields = {};
    std::unique_ptr<Stream> stream = nullptr;  // instead of the body
};

class HttpServer {
public:
    static constexpr std::size_t MAX_BODY = 64 * 1024;
    static constexpr std::size_t MAX_HEADERS = 32 * 1024;
    static constexpr unsigned MAX_CONNECTIONS = 64;
    static constexpr unsigned IDLE_SECONDS = 30;          // then a connection is closed
    static constexpr unsigned STREAM_IDLE_SECONDS = 120;  // ... of a stream that nobody reads

    // Runs on a thread of each connection, so it may wait.
    using Handler = std::function<Response(const Request&)>;

    // Takes the listening socket. Null when the library refuses.
    static std::unique_ptr<HttpServer> Start(int socket, Handler handler);
    // Waits for the requests that are under way; streams must have been ended.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    const Handler& Handle() const { return m_handler; }

private:
    explicit HttpServer(Handler handler) : m_handler(std::move(handler)) {}

    Handler m_handler;
    MHD_Daemon* m_pDaemon = nullptr;
};

// What a status of HTTP says: "Not Found".
const char* HttpMeaning(int status);

}  // namespace page

#endif
