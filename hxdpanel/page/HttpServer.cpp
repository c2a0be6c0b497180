#include "hxdpanel/page/HttpServer.h"

#include <microhttpd.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace page {

namespace {

constexpr std::size_t STREAM_BLOCK = 16 * 1024;

// Sent with every answer: the page loads nothing from elsewhere and runs no script that stands in
// a text, and no other page shows it in a frame.
const struct {
    const char* name;
    const char* value;
} FIELDS_OF_ALL[] = {
    {"Content-Security-Policy",
     "default-src 'self'; img-src 'self' data: blob:; base-uri 'none'; form-action 'none'; "
     "frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
};

// What is known of a request between the calls of the library.
struct Arriving {
    std::string body;
};

struct StreamState {
    std::unique_ptr<Stream> stream;
    std::string rest;  // read and not sent
};

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return std::tolower(character); });
    return text;
}

MHD_Result Collect(std::map<std::string, std::string>& values, MHD_ValueKind kind, const char* name,
                   const char* value) {
    const std::string key = kind == MHD_HEADER_KIND ? LowerCase(name) : name;
    // Of a header that comes twice neither counts: they might be meant for two readers.
    if (!values.emplace(key, value != nullptr ? value : "").second && kind == MHD_HEADER_KIND)
        values[key] += ", repeated";
    return MHD_YES;
}

MHD_Result Collector(void* values, MHD_ValueKind kind, const char* name, const char* value) {
    try {
        return Collect(*static_cast<std::map<std::string, std::string>*>(values), kind, name,
                       value);
    } catch (...) {
        return MHD_NO;
    }
}

std::string LocalAddress(MHD_Connection* connection) {
    const MHD_ConnectionInfo* const info =
        ::MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    std::array<char, INET_ADDRSTRLEN> text = {};
    if (info == nullptr ||
        ::getsockname(info->connect_fd, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
        ::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size()) == nullptr)
        return "";
    return text.data();
}

Request Describe(MHD_Connection* connection, const char* url, const char* method) {
    Request request;
    request.method = std::strcmp(method, "HEAD") == 0 ? "GET" : method;
    request.path = url;
    ::MHD_get_connection_values(connection, MHD_HEADER_KIND, Collector, &request.headers);
    ::MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, Collector, &request.arguments);
    ::MHD_get_connection_values(connection, MHD_COOKIE_KIND, Collector, &request.cookies);
    request.localAddress = LocalAddress(connection);
    return request;
}

ssize_t ReadStream(void* state, std::uint64_t, char* buffer, std::size_t size) {
    StreamState& self = *static_cast<StreamState*>(state);
    try {
        while (self.rest.empty()) {
            if (!self.stream->Read(self.rest))
                return MHD_CONTENT_READER_END_OF_STREAM;
        }
        const std::size_t length = self.rest.copy(buffer, size);
        self.rest.erase(0, length);
        return static_cast<ssize_t>(length);
    } catch (...) {
        return MHD_CONTENT_READER_END_WITH_ERROR;
    }
}

void FreeStream(void* state) {
    delete static_cast<StreamState*>(state);
}

MHD_Response* MakeResponse(MHD_Connection* connection, Response& response) {
    if (response.stream == nullptr)
        return ::MHD_create_response_from_buffer(response.body.size(), &response.body[0],
                                                 MHD_RESPMEM_MUST_COPY);
    ::MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT,
                                HttpServer::STREAM_IDLE_SECONDS);
    auto state = std::make_unique<StreamState>();
    state->stream = std::move(response.stream);
    MHD_Response* const made = ::MHD_create_response_from_callback(
        MHD_SIZE_UNKNOWN, STREAM_BLOCK, ReadStream, state.get(), FreeStream);
    if (made != nullptr)
        static_cast<void>(state.release());
    return made;
}

MHD_Result Send(MHD_Connection* connection, Response response) {
    MHD_Response* const made = MakeResponse(connection, response);
    if (made == nullptr)
        return MHD_NO;
    for (const auto& field : FIELDS_OF_ALL)
        ::MHD_add_response_header(made, field.name, field.value);
    if (!response.type.empty())
        ::MHD_add_response_header(made, "Content-Type", response.type.c_str());
    for (const auto& field : response.fields)
        ::MHD_add_response_header(made, field.first.c_str(), field.second.c_str());
    const MHD_Result queued =
        ::MHD_queue_response(connection, static_cast<unsigned>(response.status), made);
    ::MHD_destroy_response(made);
    return queued;
}

bool AnnouncesTooMuch(MHD_Connection* connection) {
    const char* const length =
        ::MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "Content-Length");
    return length != nullptr && std::strtoull(length, nullptr, 10) > HttpServer::MAX_BODY;
}

// The library calls this when the headers are there, for each piece of the body, and at its end.
MHD_Result Answer(const HttpServer& server, MHD_Connection* connection, const char* url,
                  const char* method, const char* piece, std::size_t* size, void** kept) {
    if (*kept == nullptr) {
        *kept = new Arriving;
        if (!AnnouncesTooMuch(connection))
            return MHD_YES;
        Request request = Describe(connection, url, method);
        request.bodyTooLarge = true;
        return Send(connection, server.Handle()(request));
    }
    Arriving& arriving = *static_cast<Arriving*>(*kept);
    if (*size > 0) {
        if (arriving.body.size() + *size > HttpServer::MAX_BODY)
            return MHD_NO;  // it did not say so before: the connection ends
        arriving.body.append(piece, *size);
        *size = 0;
        return MHD_YES;
    }
    Request request = Describe(connection, url, method);
    request.body.swap(arriving.body);
    return Send(connection, server.Handle()(request));
}

MHD_Result OnRequest(void* server, MHD_Connection* connection, const char* url, const char* method,
                     const char*, const char* piece, std::size_t* size, void** kept) {
    try {
        return Answer(*static_cast<HttpServer*>(server), connection, url, method, piece, size,
                      kept);
    } catch (...) {
        return MHD_NO;
    }
}

void OnEnd(void*, MHD_Connection*, void** kept, MHD_RequestTerminationCode) {
    delete static_cast<Arriving*>(*kept);
    *kept = nullptr;
}

}  // namespace

std::string Request::Header(const std::string& name) const {
    const auto found = headers.find(name);
    return found != headers.end() ? found->second : "";
}

std::unique_ptr<HttpServer> HttpServer::Start(int socket, Handler handler) {
    std::unique_ptr<HttpServer> server(new HttpServer(std::move(handler)));
    server->m_pDaemon = ::MHD_start_daemon(
        MHD_USE_AUTO_INTERNAL_THREAD | MHD_USE_THREAD_PER_CONNECTION | MHD_USE_ITC, 0, nullptr,
        nullptr, OnRequest, server.get(), MHD_OPTION_LISTEN_SOCKET, socket,
        MHD_OPTION_NOTIFY_COMPLETED, OnEnd, nullptr, MHD_OPTION_CONNECTION_LIMIT, MAX_CONNECTIONS,
        MHD_OPTION_CONNECTION_TIMEOUT, IDLE_SECONDS, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        MAX_HEADERS, MHD_OPTION_END);
    if (server->m_pDaemon == nullptr)
        return nullptr;
    return server;
}

HttpServer::~HttpServer() {
    if (m_pDaemon != nullptr)
        ::MHD_stop_daemon(m_pDaemon);
}

const char* HttpMeaning(int status) {
    const char* const meaning = ::MHD_get_reason_phrase_for(static_cast<unsigned>(status));
    return meaning != nullptr ? meaning : "";
}

}  // namespace page
