#include "hxdpanel/page/Page.h"

#include "hxdpanel/page/EventHub.h"
#include "hxdpanel/page/Gate.h"
#include "hxdpanel/page/HttpServer.h"
#include "hxdpanel/page/Interface.h"
#include "hxdpanel/page/Readings.h"
#include "hxdpanel/page/Witness.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <system_error>

namespace {

struct Place {
    std::string address;
    int port = 0;
};

Place PlaceOf(int socket) {
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    std::array<char, INET_ADDRSTRLEN> text = {};
    if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
        ::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size()) == nullptr)
        return {};
    return {text.data(), ntohs(address.sin_port)};
}

}  // namespace

// In the order of their making; they end in the reverse one.
struct Page::Parts {
    Parts(const SessionParts& parts, const PageSetup& setup, const std::string& token, int port)
        : session(parts),
          witness(hub, parts.shared, parts.output, [this] { Wake(); }),
          readings(session, hub, witness),
          gate(setup.isOpen ? setup.machine : "", token, port),
          interface(session, parts.database, parts.shared, hub, witness, readings, gate,
                    setup.folder, setup.documents) {
        session.BeNamed("page");
        session.UseJson(JsonLayout::LINE);
    }
    ~Parts() {
        hub.Close();
        server.reset();
    }

    Session session;
    page::EventHub hub;
    page::Witness witness;
    page::Readings readings;
    page::Gate gate;
    page::Interface interface;
    std::unique_ptr<page::HttpServer> server;

private:
    void Wake() { readings.Wake(); }
};

Page::Page(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) {}

Page::~Page() = default;

std::unique_ptr<Page> Page::Start(const SessionParts& parts, const PageSetup& setup,
                                  std::string& error) {
    const Place place = PlaceOf(setup.socket);
    const std::string token = setup.isOpen ? page::NewToken() : "";
    if (place.port == 0 || (setup.isOpen && token.empty())) {
        error = "the socket or the token cannot be had";
        return nullptr;
    }
    std::unique_ptr<Page> made;
    try {
        made.reset(new Page(std::make_unique<Parts>(parts, setup, token, place.port)));
    } catch (const std::system_error& failed) {
        error = failed.what();
        return nullptr;
    }
    page::Interface& interface = made->m_parts->interface;
    made->m_parts->server = page::HttpServer::Start(
        setup.socket,
        [&interface](const page::Request& request) { return interface.Answer(request); });
    if (made->m_parts->server == nullptr) {
        error = "the server does not start";
        return nullptr;
    }
    const bool isAnywhere = place.address == "0.0.0.0" && !setup.machine.empty();
    made->m_strAddress = "http://" + (isAnywhere ? setup.machine : place.address) + ":" +
                         std::to_string(place.port) + "/" +
                         (token.empty() ? "" : "?token=" + token);
    const hxd::MutexLock turn(parts.shared.turn);
    parts.shared.pageAddress = made->m_strAddress;
    return made;
}
