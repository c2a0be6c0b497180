// What a browser or a script asks the panel's page for, from the request taken apart to its answer;
// HTTP itself is its library's business.
#include "SimPanel.h"
#include "fuzz/Fuzz.h"
#include "fuzz/FuzzPanel.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/page/EventHub.h"
#include "hxdpanel/page/Gate.h"
#include "hxdpanel/page/Interface.h"
#include "hxdpanel/page/Readings.h"
#include "hxdpanel/page/Witness.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <sstream>
#include <utility>

namespace {

constexpr int MOST_REQUESTS = 4;  // of one input; the gate lets that many pass at once
const std::string TOKEN = "0123456789abcdef";

// The page's parts but for its server; who listens is told by its own thread.
struct FuzzPage {
    FuzzPage() {
        session.BeNamed("page");
        session.UseJson(JsonLayout::LINE);
    }

    FuzzPanel& panel = FuzzPanel::Instance();
    SharedRun shared;
    Session session{panel.Parts(shared)};
    page::EventHub hub;
    page::Witness witness{hub, shared, panel.output, [] {}};
    page::Readings readings{session, hub, witness};
};

// "NAME<between>VALUE".
std::pair<std::string, std::string> Pair(const std::string& text, const char* between) {
    const std::size_t end = std::min(text.find(between), text.size());
    const std::size_t value = std::min(end + std::strlen(between), text.size());
    return {text.substr(0, end), text.substr(value)};
}

void TakePairs(const std::string& text, char separator, std::map<std::string, std::string>& pairs) {
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        pairs.insert(Pair(Trimmed(part), "="));
}

// As it is sent, but for the version and the escapes of the address: "PUT /api/channels/21?a=b",
// header lines, a blank line, the body. The usual headers need not be given.
page::Request ParseRequest(const std::string& text) {
    page::Request request;
    request.localAddress = "192.168.1.5";
    request.headers = {{"host", "localhost"}, {"content-type", "application/json"}};
    std::istringstream stream(text);
    std::string line;
    std::getline(stream, line);
    const auto first = Pair(line, " ");
    const auto address = Pair(first.second, "?");
    request.method = first.first.c_str();  // without zeros, as the server has them
    request.path = address.first.c_str();
    TakePairs(address.second, '&', request.arguments);
    while (std::getline(stream, line) && !line.empty()) {
        const auto header = Pair(line, ": ");
        request.headers[header.first] = header.second.c_str();
        if (header.first == "cookie")
            TakePairs(header.second, ';', request.cookies);
        request.bodyTooLarge |= header.first == "content-length";
    }
    request.body.assign(std::istreambuf_iterator<char>(stream), {});
    return request;
}

// Whatever is asked for, the answer is one that docs/api.md names, and what says that it is JSON
// is.
void Check(page::Response& response) {
    const int known[] = {200, 303, 400, 401, 403, 404, 405, 413, 415, 421, 429, 503};
    FUZZ_EXPECT(std::count(std::begin(known), std::end(known), response.status) == 1);
    FUZZ_EXPECT(response.type != "application/json" || Json::accept(response.body));
    for (const auto& field : response.fields)
        FUZZ_EXPECT((field.first + field.second).find_first_of("\r\n") == std::string::npos);
    std::string events;
    if (response.stream != nullptr)
        FUZZ_EXPECT(response.stream->Read(events) && events.compare(0, 7, "event: ") == 0);
}

bool HasToken(const page::Request& request) {
    const auto holds = [](const std::pair<std::string, std::string>& named) {
        return named.second.find(TOKEN) != std::string::npos;
    };
    return std::any_of(request.headers.begin(), request.headers.end(), holds) ||
           std::any_of(request.cookies.begin(), request.cookies.end(), holds) ||
           std::any_of(request.arguments.begin(), request.arguments.end(), holds);
}

}  // namespace

void fuzz::Requests(Input& input) {
    static FuzzPage& made = *new FuzzPage;
    const bool isOpen = input.ConsumeIntegral<std::uint8_t>() % 4 == 1;
    page::Gate gate("panel", isOpen ? TOKEN : "", 80);
    page::Interface interface(made.session, made.panel.database, made.shared, made.hub,
                              made.witness, made.readings, gate, HXD_PANEL_SOURCES "/page/web",
                              HXD_PANEL_SOURCES "/../docs");
    for (int step = 0; step < MOST_REQUESTS && input.remaining_bytes() > 0; ++step) {
        const page::Request request = ParseRequest(input.ConsumeRandomLengthString());
        page::Response response = interface.Answer(request);
        Check(response);
        FUZZ_EXPECT(!isOpen || response.status >= 400 || HasToken(request));
    }
    sim::SimPanel::Instance().Reset();
}
