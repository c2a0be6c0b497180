#include "hxdpanel/report/Outcome.h"

#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/ChannelReport.h"

#include <unistd.h>

#include <array>
#include <sstream>

namespace {

void Note(const std::string& text) {
    const std::string wrapped = terminal::Wrapped(stderr, "note: " + text, 2);
    std::fprintf(stderr, "%s\n", terminal::Styled(stderr, terminal::SPECIAL, wrapped).c_str());
}

// One line for programs; people see the lines of a longer text as such.
void PrintVariable(std::FILE* out, const std::string& name, const HostValue& value) {
    const bool isLong = value.type == DATATYPE_TEXT && value.text.find('\n') != std::string::npos;
    if (!isLong || ::isatty(::fileno(out)) == 0) {
        std::fprintf(out, "%s = %s\n", Visible(name).c_str(), ValueText(value).c_str());
        return;
    }
    std::fprintf(out, "%s =\n", Visible(name).c_str());
    std::istringstream lines(value.text);
    for (std::string line; std::getline(lines, line);)
        std::fprintf(out, "  %s\n", Visible(line).c_str());
}

HostValue Variable(const HostDatabase& database, const std::string& name) {
    HostValue value;
    database.FindVariable(name, value);
    return value;
}

}  // namespace

std::string StatusText(int status, const std::string& meaning) {
    std::array<char, 16> number = {};
    const bool isFlag = status < -0x40000000;
    std::snprintf(number.data(), number.size(), isFlag ? "0x%X" : "%d",
                  static_cast<unsigned>(status));
    return std::string(number.data()) + " (" + meaning + ")";
}

void PrintOutcome(std::FILE* out, const HostDatabase& database, const Outcome& outcome) {
    const std::string status = StatusText(outcome.status, outcome.meaning);
    const bool isDone = outcome.status == HOST_OK;
    std::fprintf(out, "%sstatus %s\n",
                 outcome.command.empty() ? "" : (Visible(outcome.command) + ": ").c_str(),
                 terminal::Styled(out, isDone ? terminal::GOOD : terminal::BAD, status).c_str());
    if (outcome.channel != 0)
        std::fprintf(out, "%s\n", ChannelText(ShowChannel(database, outcome.channel)).c_str());
    for (const std::string& name : outcome.variables)
        PrintVariable(out, name, Variable(database, name));
    for (const std::string& file : outcome.files)
        std::fprintf(out, "saved %s%s\n", Visible(file).c_str(),
                     outcome.filesVanish ? " (gone when this run ends; --root DIR keeps it)" : "");
    std::fflush(out);
    for (const std::string& note : outcome.notes)
        Note(note);
}

Json OutcomeJson(const HostDatabase& database, const Outcome& outcome) {
    const Json status = JsonStatus(outcome.status, outcome.meaning);
    if (outcome.channel != 0)
        return {{"status", status},
                {"channel", ChannelJson(ShowChannel(database, outcome.channel))},
                {"notes", outcome.notes}};
    Json variables = Json::array();
    for (const std::string& name : outcome.variables)
        variables.push_back(JsonVariable(name, Variable(database, name)));
    return {{"command", outcome.command},
            {"status", status},
            {"variables", variables},
            {"saved", outcome.files},
            {"notes", outcome.notes}};
}
