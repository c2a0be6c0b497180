#include "hxdpanel/page/Gate.h"

#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/Json.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace page {

namespace {

// However much of it is right, it takes as long.
bool EqualSecrets(const std::string& left, const std::string& right) {
    unsigned difference = left.size() != right.size() ? 1 : 0;
    for (std::size_t i = 0; i < left.size() && i < right.size(); ++i)
        difference |= static_cast<unsigned>(left[i] ^ right[i]);
    return difference == 0;
}

bool IsOfInterface(const Request& request) {
    return request.path.compare(0, 4, "/api") == 0 || request.path == "/metrics";
}

std::string WithoutPort(const std::string& host) {
    const std::size_t colon = host.find(':');
    const bool hasPort = colon != std::string::npos &&
                         host.find_first_not_of("0123456789", colon + 1) == std::string::npos;
    return hasPort ? host.substr(0, colon) : host;
}

}  // namespace

Gate::Gate(const std::string& machine, const std::string& token, int port)
    : m_strMachine(machine),
      m_strToken(token),
      m_strCookie("hxdpanel-" + std::to_string(port)),
      m_since(std::chrono::steady_clock::now()) {}

// A site whose name its owner lets lead here, to this address, is asked for by that name. The port
// may be another one: that of a tunnel.
bool Gate::NamesUs(const Request& request) const {
    const std::string host = WithoutPort(request.Header("host"));
    return host == "localhost" || host == "127.0.0.1" ||
           (!host.empty() && (host == request.localAddress || EqualNames(host, m_strMachine)));
}

bool Gate::HasToken(const Request& request) const {
    if (m_strToken.empty() || EqualSecrets(request.Header("authorization"), "Bearer " + m_strToken))
        return true;
    const auto cookie = request.cookies.find(m_strCookie);
    return cookie != request.cookies.end() && EqualSecrets(cookie->second, m_strToken);
}

// Programs send no origin; browsers send one with everything that changes something.
bool Gate::IsSameOrigin(const Request& request) const {
    const std::string origin = request.Header("origin");
    const std::string site = request.Header("sec-fetch-site");
    return (origin.empty() || origin == "http://" + request.Header("host")) &&
           (site.empty() || site == "same-origin" || site == "none");
}

bool Gate::IsInTime() {
    const hxd::MutexLock lock(m_lock);
    const auto now = std::chrono::steady_clock::now();
    const double passed = std::chrono::duration<double>(now - m_since).count();
    m_dLeft = std::min(+REQUESTS_AT_ONCE, m_dLeft + passed * REQUESTS_A_SECOND);
    m_since = now;
    if (m_dLeft < 1.0)
        return false;
    m_dLeft -= 1.0;
    return true;
}

bool Gate::Admits(const Request& request, Response& refusal) {
    if (!NamesUs(request))
        refusal = ErrorResponse(421, "the Host header names another server than this one");
    else if (!HasToken(request))
        refusal = ErrorResponse(
            401, "this needs the token: Authorization: Bearer TOKEN, or open the printed address");
    else if (IsOfInterface(request) && !IsInTime())
        refusal = ErrorResponse(429, "too many requests; wait a second");
    else if (request.bodyTooLarge)
        refusal = ErrorResponse(
            413, "the body is larger than " + std::to_string(HttpServer::MAX_BODY) + " bytes");
    else if (IsOfInterface(request) && !IsSameOrigin(request))
        refusal = ErrorResponse(403, "another site may not ask for this");
    else
        return true;
    return false;
}

bool Gate::TakesToken(const Request& request, Response& response) const {
    const auto token = request.arguments.find("token");
    if (m_strToken.empty() || request.path != "/" || token == request.arguments.end() ||
        !NamesUs(request) || !EqualSecrets(token->second, m_strToken))
        return false;
    response = {303, "", ""};
    response.fields = {
        {"Location", "/"},
        {"Set-Cookie", m_strCookie + "=" + m_strToken + "; Path=/; HttpOnly; SameSite=Strict"}};
    return true;
}

std::string NewToken() {
    std::array<unsigned char, 16> bytes = {};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        return "";
    std::string token;
    for (const unsigned char byte : bytes) {
        std::array<char, 3> digits = {};
        std::snprintf(digits.data(), digits.size(), "%02x", byte);
        token += digits.data();
    }
    return token;
}

Response ErrorResponse(int status, const std::string& message) {
    const Json object = JsonObject(
        "error", {{"status", JsonStatus(status, HttpMeaning(status))}, {"message", message}});
    Response response{status, "application/json", JsonLine(object) + "\n"};
    if (status == 401)
        response.fields.emplace_back("WWW-Authenticate", "Bearer");
    if (status == 429)
        response.fields.emplace_back("Retry-After", "1");
    return response;
}

}  // namespace page
