#include "hxdpanel/page/Interface.h"

#include "HxdVersion.h"
#include "SimPanel.h"
#include "gui/PanelScreen.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Vocabulary.h"
#include "hxdpanel/page/Files.h"
#include "hxdpanel/page/Metrics.h"
#include "hxdpanel/page/Results.h"
#include "hxdpanel/report/ChannelChoice.h"
#include "hxdpanel/report/ChannelReport.h"
#include "hxdpanel/report/HardwareReport.h"

#include <algorithm>
#include <sstream>

namespace page {

namespace {

std::string Argument(const Request& request, const std::string& name) {
    const auto found = request.arguments.find(name);
    return found != request.arguments.end() ? found->second : "";
}

bool IsOneLine(const std::string& line) {
    return std::none_of(line.begin(), line.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ' && character != '\t';
    });
}

// A number or a text, as it is typed; false for anything else.
bool ValueAsTyped(const Json& body, std::string& text) {
    const auto value = body.find("value");
    if (value == body.end() || !(value->is_number() || value->is_string()))
        return false;
    text = value->is_string() ? value->get<std::string>() : JsonLine(*value);
    return true;
}

bool HasText(const Json& body, const char* name) {
    return body.contains(name) && body[name].is_string();
}

// name: the part in braces.
bool Matches(const std::string& pattern, const std::string& path, std::string& name) {
    const std::size_t brace = pattern.find('{');
    if (brace == std::string::npos)
        return path == pattern;
    name = path.size() > brace ? path.substr(brace) : "";
    return !name.empty() && path.compare(0, brace, pattern, 0, brace) == 0;
}

// A misspelt parameter would be answered as if it were not there.
bool TakesArguments(const Request& request, const char* parameter, Response& refusal) {
    for (const auto& argument : request.arguments) {
        if (parameter != nullptr && argument.first == parameter)
            continue;
        refusal =
            ErrorResponse(400, "there is no parameter " + Visible(argument.first) +
                                   (parameter != nullptr ? std::string(" here, only ") + parameter
                                                         : " here, and no other"));
        return false;
    }
    return true;
}

// What changes something comes with an object. Its type is what a form of another site cannot send.
bool TakesBody(const Request& request, Json& body, Response& refusal) {
    if (request.method == "GET")
        return true;
    const std::string type = request.Header("content-type");
    body = Json::parse(request.body, nullptr, false);
    if (type != "application/json" && type.compare(0, 17, "application/json;") != 0)
        refusal = ErrorResponse(415, "the Content-Type must be application/json");
    else if (!body.is_object())
        refusal = ErrorResponse(400, "the body is no JSON object");
    else
        return true;
    return false;
}

}  // namespace

const std::vector<Interface::Route>& Interface::Routes() {
    static const std::vector<Route> routes = {
        {"GET", "/api", &Interface::Index},
        {"GET", "/api/channels", &Interface::Channels, "channels"},
        {"GET", "/api/channels/{channel}", &Interface::ReadChannel},
        {"PUT", "/api/channels/{channel}", &Interface::WriteChannel},
        {"POST", "/api/run", &Interface::RunLine},
        {"GET", "/api/variables", &Interface::Variables},
        {"PUT", "/api/variables/{name}", &Interface::SetVariable},
        {"GET", "/api/help", &Interface::Help},
        {"GET", "/api/complete", &Interface::Complete, "line"},
        {"GET", "/api/panel", &Interface::Panel},
        {"GET", "/api/faults", &Interface::Faults},
        {"GET", "/api/time", &Interface::Time},
        {"GET", "/api/screen.png", &Interface::Screen, "n"},
        {"GET", "/api/captures", &Interface::Captures},
        {"GET", "/api/captures/{name}", &Interface::Capture},
        {"GET", "/api/events", &Interface::Events},
        {"GET", "/api/openapi.json", &Interface::Description},
        {"GET", "/api/json-schema.json", &Interface::Objects},
        {"GET", "/metrics", &Interface::Metrics},
        {"GET", "/", &Interface::FirstFile, "token"},
        {"GET", "/page/{file}", &Interface::File},
        {"GET", "/vendor/{file}", &Interface::Library},
    };
    return routes;
}

Interface::Interface(Session& session, HostDatabase& database, SharedRun& shared, EventHub& hub,
                     Witness& witness, Readings& readings, Gate& gate, const std::string& folder,
                     const std::string& documents)
    : m_session(session),
      m_database(database),
      m_shared(shared),
      m_hub(hub),
      m_witness(witness),
      m_readings(readings),
      m_gate(gate),
      m_strFolder(folder),
      m_strDocuments(documents) {}

Response Interface::Answer(const Request& request) {
    Response response;
    if (m_gate.TakesToken(request, response) || !m_gate.Admits(request, response))
        return response;
    try {
        return Dispatch(request);
    } catch (const std::exception& error) {
        return ErrorResponse(500, error.what());
    }
}

Response Interface::Dispatch(const Request& request) {
    Call call = {request, "", Json()};
    std::string allowed;
    for (const Route& route : Routes()) {
        if (!Matches(route.path, request.path, call.name))
            continue;
        if (request.method == route.method) {
            Response refusal;
            if (!TakesArguments(request, route.parameter, refusal) ||
                !TakesBody(request, call.body, refusal))
                return refusal;
            return (this->*route.answer)(call);
        }
        allowed += (allowed.empty() ? "" : ", ") + std::string(route.method);
    }
    if (allowed.empty())
        return ErrorResponse(404, "there is nothing at " + Visible(request.path));
    Response response = ErrorResponse(405, "this takes " + allowed);
    response.fields.emplace_back("Allow", allowed);
    return response;
}

Response Interface::Index(const Call&) {
    Json routes = Json::array();
    for (const Route& route : Routes()) {
        if (std::string(route.path).compare(0, 4, "/api") == 0 ||
            std::string(route.path) == "/metrics")
            routes.push_back({{"method", route.method}, {"path", route.path}});
    }
    return JsonResponse("index", {{"routes", routes}});
}

bool Interface::KnowsChannel(const std::string& word, Response& error) const {
    int number = 0;
    std::string reason;
    if (ChooseChannel(word, HighestChannel(m_database), number, reason))
        return true;
    error = ErrorResponse(404, reason);
    return false;
}

Response Interface::Channels(const Call& call) {
    const Session::Turn turn(m_session);
    const MutedLog muted(m_witness);
    Results results(m_session, m_witness);
    m_session.ShowChannels(SplitAt(',', Argument(call.request, "channels")));
    return results.Answer();
}

Response Interface::ReadChannel(const Call& call) {
    Response error;
    if (!KnowsChannel(call.name, error))
        return error;
    const Session::Turn turn(m_session);
    const MutedLog muted(m_witness);
    Results results(m_session, m_witness);
    m_session.Read(call.name);
    return results.Answer();
}

Response Interface::WriteChannel(const Call& call) {
    Response error;
    std::string text;
    if (!KnowsChannel(call.name, error))
        return error;
    if (!ValueAsTyped(call.body, text))
        return ErrorResponse(400, "the body needs a value, a number or a text");
    const Session::Turn turn(m_session);
    Results results(m_session, m_witness);
    m_session.Write(call.name, text);
    return results.Answer();
}

Response Interface::RunLine(const Call& call) {
    if (!HasText(call.body, "line"))
        return ErrorResponse(400, "the body needs a line, a text");
    const std::string line = call.body["line"];
    if (!IsOneLine(line))
        return ErrorResponse(400, "the line has control characters");
    if (vocabulary::PlaceOf(line) > vocabulary::Place::PAGE)
        return ErrorResponse(400, "this is for the console only");
    const Session::Turn turn(m_session);
    Results results(m_session, m_witness);
    m_session.RunInTurn(line);
    return results.AnswerToLine(line);
}

Response Interface::AnswerTo(const char* line) {
    const Session::Turn turn(m_session);
    Results results(m_session, m_witness);
    m_session.RunInTurn(line);
    return results.Answer();
}

Response Interface::Variables(const Call&) {
    return AnswerTo("vars");
}

Response Interface::SetVariable(const Call& call) {
    std::string text;
    if (!ValueAsTyped(call.body, text))
        return ErrorResponse(400, "the body needs a value, a number or a text");
    const bool isText = call.body["value"].is_string();
    const std::string type = HasText(call.body, "type") ? call.body["type"].get<std::string>()
                             : isText                   ? "text"
                                                        : "";
    Definition definition;
    std::string error;
    if (!ParseDefinition(call.name + (type.empty() ? "" : ":" + type), text, definition, error))
        return ErrorResponse(400, error);
    const Session::Turn turn(m_session);
    Results results(m_session, m_witness);
    m_session.SetVariable(definition);
    return results.Answer();
}

Response Interface::Help(const Call&) {
    return AnswerTo("help");
}

Response Interface::Complete(const Call& call) {
    return JsonResponse("completions",
                        {{"candidates", m_session.Completions(Argument(call.request, "line"))}});
}

Response Interface::Panel(const Call&) {
    const Session::Turn turn(m_session);
    Results results(m_session, m_witness);
    m_session.ShowPanel();
    return results.Answer();
}

Response Interface::Faults(const Call&) {
    const auto failures = sim::SimPanel::Instance().State().failures;
    Json functions = Json::array();
    sim::Failure works;
    works.fails = false;
    for (const std::string& function : sim::FailableFunctions()) {
        const auto found = failures.find(function);
        functions.push_back(FailureJson(function, found != failures.end() ? found->second : works));
    }
    return JsonResponse("faults", {{"functions", functions}});
}

Response Interface::Time(const Call&) {
    const Session::Turn turn(m_session);
    const MutedLog muted(m_witness);
    Results results(m_session, m_witness);
    m_session.ShowTime();
    return results.Answer();
}

Response Interface::Screen(const Call&) {
    return {200, "image/png", sim::PanelScreenPng()};
}

Response Interface::Captures(const Call&) {
    const hxd::MutexLock turn(m_shared.turn);
    return JsonResponse("captures", {{"captures", PictureNames(m_shared.saved)}});
}

Response Interface::Capture(const Call& call) {
    const hxd::MutexLock turn(m_shared.turn);
    return Picture(m_shared.saved, call.name);
}

Response Interface::Events(const Call& call) {
    const Json hello = {{"version", HXD_VERSION_TEXT},
                        {"restarts", m_witness.Restarts()},
                        {"serialNumber", sim::SimPanel::Instance().State().serialNumber}};
    Response response{200, "text/event-stream", ""};
    response.stream =
        m_hub.Listen(call.request.Header("last-event-id"), EventHub::Event("hello", hello));
    if (response.stream == nullptr)
        return ErrorResponse(503, "too many listen to the events already");
    m_readings.Wake();
    return response;
}

Response Interface::Metrics(const Call& call) {
    const bool open =
        call.request.Header("accept").find("application/openmetrics-text") != std::string::npos;
    Counts counts;
    counts.serialNumber = sim::SimPanel::Instance().State().serialNumber;
    counts.restarts = m_witness.Restarts();
    {
        const Session::Turn turn(m_session);
        const MutedLog muted(m_witness);
        counts.status = m_session.Refresh();
    }
    {
        const hxd::MutexLock turn(m_shared.turn);
        counts.collections = m_shared.collections;
    }
    return {200, MetricsType(open), MetricsText(m_database, counts, open)};
}

Response Interface::Description(const Call&) {
    return PageFile(m_strDocuments, "openapi.json");
}

Response Interface::Objects(const Call&) {
    return PageFile(m_strDocuments, "json-schema.json");
}

Response Interface::FirstFile(const Call&) {
    return PageFile(m_strFolder, "index.html");
}

Response Interface::File(const Call& call) {
    return PageFile(m_strFolder, call.name);
}

Response Interface::Library(const Call& call) {
    return LibraryFile(call.name);
}

}  // namespace page
