// What a session does, and how it shows the results.
#include "hxdpanel/console/Session.h"

#include "SimPanel.h"
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/HardwareCommands.h"
#include "hxdpanel/panel/HardwareMemory.h"
#include "hxdpanel/report/ChannelChoice.h"
#include "hxdpanel/report/ChannelReport.h"
#include "hxdpanel/report/CommandHints.h"
#include "hxdpanel/report/CommandReference.h"
#include "hxdpanel/report/Outcome.h"
#include "hxdpanel/report/PanelReport.h"
#include "hxdpanel/report/TimeReport.h"
#include "hxdpanel/sandbox/GuardedCalls.h"

#include <memory>

namespace {

// The clock is held, so that a sleep of this thread moves it (HardwareCommands); then runs on.
class MovedClock {
public:
    MovedClock() { sim::SimPanel::Instance().HoldClock(); }
    MovedClock(const MovedClock&) = delete;
    MovedClock& operator=(const MovedClock&) = delete;
    ~MovedClock() {
        if (m_dSpeed > 0.0)
            sim::SimPanel::Instance().RunClock(m_dSpeed);
    }

private:
    double m_dSpeed = sim::SimPanel::Instance().ClockSpeed();  // 0: it was held before
};

int ExitFor(int status) {
    return status == HOST_OK ? EXIT_DONE : EXIT_STATUS;
}

// As the driver takes it: texts, and the three numbers of the time synchronisation that it parses
// out of a text, go as text; other numbers as int where they are one.
bool ChannelValue(const ChannelRow& row, const std::string& text, HostValue& value) {
    const bool isNumber =
        row.kind == ChannelRow::TEXT || (!text.empty() && GuessValue(text).type != DATATYPE_TEXT);
    if (!isNumber)
        return false;
    value = row.kind == ChannelRow::TEXT || row.input == ChannelRow::WHOLE_NUMBER
                ? HostValue::Text(text)
                : GuessValue(text);
    return true;
}

bool IsKnown(const std::string& name, const CommandInfo* info) {
    return info != nullptr && (!info->row.IsOfRegistry() || name == info->name);
}

// Which channels a change of the hardware concerns; all of them go without saying.
std::string ConcernText(const std::vector<int>& channels) {
    std::vector<std::string> names;
    names.reserve(channels.size());
    for (const int number : channels)
        names.push_back(std::to_string(number) + " " + FindChannel(number)->name);
    return names.empty() || names.size() == CHANNEL_COUNT ? "" : "concerns " + Joined(names);
}

// What an ExecNTP has left in its result variable.
std::string SyncText(const HostDatabase& database, const HostDatabase::Trace& trace) {
    HostValue result;
    if (trace.written.empty() || !database.FindVariable(trace.written.front(), result))
        return "done, without a result variable that tells how";
    return "result " + ValueText(result) +
           (result.integer == 0 ? " (done, or switched off)" : " (failed)");
}

}  // namespace

// A held clock is moved by what the driver waits for on this thread.
Session::Turn::Turn(Session& session) : m_lock(session.m_shared.turn) {
    sim::SimPanel::Instance().MoveHeldClock();
}

Session::Session(const SessionParts& parts)
    : m_database(parts.database),
      m_device(parts.device),
      m_output(parts.output),
      m_memory(parts.memory),
      m_hardware(parts.hardware),
      m_shared(parts.shared),
      m_pOut(parts.output.Results()),
      m_pPlugin(parts.plugin),
      m_files(parts.files) {}

void Session::PrintTo(std::FILE* out, std::string* complaint) {
    m_pOut = out;
    m_pComplaint = complaint;
}

int Session::Complain(const std::string& message) {
    if (m_pComplaint != nullptr) {
        *m_pComplaint = message;
        return EXIT_USAGE;
    }
    std::fprintf(
        stderr, "%s\n",
        terminal::Styled(stderr, terminal::BAD, terminal::Wrapped(stderr, message, 2)).c_str());
    return EXIT_USAGE;
}

void Session::PrintWrapped(const std::vector<std::string>& lines) const {
    for (const std::string& line : lines) {
        if (!line.empty())
            std::fprintf(m_pOut, "%s\n", terminal::Wrapped(m_pOut, line, 2).c_str());
    }
}

void Session::UseJson(JsonLayout layout) {
    m_bJson = true;
    m_eLayout = layout;
}

// why: what is told of the panel's restart, if it is one.
int Session::RunHardware(const std::string& line, const std::string& why) {
    m_memory.Save();
    const HardwareResult result = m_hardware.Run(line);
    m_memory.Save();
    if (!result.ok)
        return Complain(result.message);
    Collect();
    if (m_shared.watcher != nullptr && (line == "restart" || line == "reset"))
        m_shared.watcher->Restarted(why);
    TellActed(line, HOST_OK, result.message);
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "hardware",
                  {{"message", result.message}, {"channels", result.channels}});
    else
        PrintWrapped({Visible(result.message), ConcernText(result.channels)});
    std::fflush(m_pOut);
    return EXIT_DONE;
}

int Session::RunDriverCommand(const std::string& text) {
    CommandText parsed;
    ParseCommandText(text, parsed);
    const CommandInfo* const info = FindCommand(Trimmed(parsed.name));
    m_database.TakeTrace();
    Outcome outcome;
    outcome.command = text;
    {
        const WorkingDriver working(m_output, Visible(parsed.name));
        outcome.status = m_device.Command(text);
    }
    outcome.meaning = CommandStatusMeaning(info, outcome.status);
    m_memory.Save();
    m_output.Settle();
    const HostDatabase::Trace trace = m_database.TakeTrace();
    outcome.variables = trace.written;
    NoteSaved(outcome);
    if (info != nullptr && info->row.command == COMMAND_EXEC_NTP)
        m_shared.lastSync = SyncText(m_database, trace);
    if (info != nullptr && info->savesFile && outcome.files.empty())
        outcome.notes.push_back("no file was saved; see help " + std::string(info->name));
    for (const std::string& hint : CommandHints(parsed, info, outcome.status, m_database, trace))
        outcome.notes.push_back(hint);
    const int exitCode = Report(outcome);
    TellActed(text, outcome.status, outcome.meaning);
    m_result.isKnown = IsKnown(parsed.name, info);
    if (m_shared.restartsAfterReboot && guard::TakeReboot())
        return RunHardware("restart", "reboot");
    return m_result.isKnown ? exitCode : EXIT_USAGE;
}

int Session::Report(const Outcome& outcome) {
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, outcome.Kind(), OutcomeJson(m_database, outcome));
    else
        PrintOutcome(m_pOut, m_database, outcome);
    m_result.hasStatus = true;
    m_result.status = outcome.status;
    m_result.statusText = StatusText(outcome.status, outcome.meaning);
    m_result.variables = outcome.variables;
    if (outcome.channel != 0)
        m_result.channels = {outcome.channel};
    return ExitFor(outcome.status);
}

void Session::NoteSaved(Outcome& outcome) {
    for (const std::string& file : m_shared.savedFiles.TakeChanges()) {
        m_shared.saved.push_back(file);
        outcome.files.push_back((m_files.IsPrivate() ? m_files.outside : "") + file);
    }
    outcome.filesVanish = m_files.IsPrivate() && m_files.outside.empty();
}

void Session::TellActed(const std::string& line, int status, const std::string& meaning) {
    if (m_shared.watcher != nullptr)
        m_shared.watcher->Acted(m_strName, line, status, meaning);
}

void Session::RestartAfterReboots() {
    const Turn turn(*this);
    m_shared.restartsAfterReboot = true;
    guard::HoldReboots();
}

void Session::BeScript(std::FILE* out) {
    RestartAfterReboots();
    static std::FILE* const nowhere = std::fopen("/dev/null", "w");
    if (out != nullptr || nowhere != nullptr)
        m_pOut = out != nullptr ? out : nowhere;
}

int Session::Collect() {
    const MutedDriver muted(m_output, DriverOutput::COLLECTION);
    ++m_shared.collections;
    const std::unique_ptr<MovedClock> moved(m_bBrief ? new MovedClock : nullptr);
    const int status = m_device.Collect();
    sim::SimPanel::Instance().Change(
        [&](sim::PanelState& state) { state.screenRows = ScreenRows(m_database); });
    return status;
}

// The driver delivers what it has read before until it is told to read again.
int Session::Refresh() {
    m_device.Command("REFLESH()");
    return Collect();
}

int Session::ShowChannels(const std::vector<std::string>& channels) {
    std::vector<int> numbers;
    std::string error;
    const int status = Refresh();
    if (!ChooseChannels(channels, HighestChannel(m_database), numbers, error))
        return Complain(error);
    const ShownChannels shown = ::ShowChannels(m_database, numbers);
    m_result.channels = numbers;
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "channels",
                  {{"status", JsonStatus(status, StatusMeaning(status))},
                   {"channels", ChannelsJson(shown)}});
    else
        PrintChannelTable(m_pOut, shown);
    std::fflush(m_pOut);
    return ExitFor(status);
}

int Session::Read(const std::string& channel) {
    int number = 0;
    std::string error;
    const int status = Refresh();
    if (!ChooseChannel(channel, HighestChannel(m_database), number, error))
        return Complain(error);
    const ShownChannel shown = ShowChannel(m_database, number);
    const HostValue& value = shown.received.value;
    m_result.channels = {number};
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "read",
                  {{"status", JsonStatus(status, StatusMeaning(status))},
                   {"channel", ChannelJson(shown)}});
    else
        std::fprintf(m_pOut, "%s\n",
                     (value.type == DATATYPE_TEXT ? Visible(value.text) : shown.Value()).c_str());
    std::fflush(m_pOut);
    return ExitFor(status);
}

int Session::Write(const std::string& channel, const std::string& text) {
    int number = 0;
    std::string error;
    if (!ChooseChannel(channel, CHANNEL_COUNT, number, error))
        return Complain(error);
    const ChannelRow& row = *FindChannel(number);
    HostValue value;
    if (!ChannelValue(row, text, value))
        return Complain("Channel " + std::to_string(number) + " takes a number, not " +
                        Quoted(text));
    Outcome outcome;
    outcome.channel = number;
    {
        const WorkingDriver working(m_output, "write " + std::to_string(number));
        outcome.status = m_device.Write(number, value);
    }
    m_memory.Save();
    Collect();
    const bool isReadOnly = outcome.status == -RESULT_MALFORMED && !row.IsWritable();
    outcome.meaning =
        isReadOnly
            ? "the channel cannot be written"
            : CommandStatusMeaning(FindCommand(CommandOf(COMMAND_OLMA_WRITE).name), outcome.status);
    if (!isReadOnly && (outcome.status == -RESULT_MALFORMED || outcome.status == -RESULT_REFUSED ||
                        outcome.status == -RESULT_BAD_ARGUMENTS))
        outcome.notes.push_back(AcceptedText(row));
    if (value.type == DATATYPE_TEXT && text.find(')') != std::string::npos)
        outcome.notes.emplace_back(
            "a channel's text ends at its first \")\": the driver takes no more of it");
    HostValue whole;
    if (row.input == ChannelRow::WHOLE_NUMBER && !ConvertValue(text, DATATYPE_INTEGER, whole))
        outcome.notes.push_back("the driver reads " + Quoted(text) + " as 0: write a whole number");
    TellActed("write " + std::to_string(number) + " " + Visible(text), outcome.status,
              outcome.meaning);
    return Report(outcome);
}

int Session::WatchChannels(WatchOptions options, const std::vector<std::string>& channels,
                           std::FILE* csv) {
    std::string error;
    if (!ChooseChannels(channels, HighestChannel(m_database), options.channels, error))
        return Complain(error);
    if (csv != nullptr)
        options.form = WatchOptions::CSV;
    else if (m_bJson)
        options.form = WatchOptions::JSON;
    return ExitFor(Watch(csv != nullptr ? csv : m_pOut, m_database, options, [this] {
        const Turn turn(*this);
        return Refresh();
    }));
}

Json Session::Channels() const {
    std::vector<int> numbers;
    std::string error;
    ChooseChannels({}, HighestChannel(m_database), numbers, error);
    return ChannelsJson(::ShowChannels(m_database, numbers));
}

PanelSource Session::Source() const {
    return {m_pPlugin, m_files.outside, m_memory.Differences(), m_hardware.Load()};
}

Json Session::Panel() const {
    return PanelJson(Source());
}

int Session::ShowPanel() {
    m_output.Settle();
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "panel", Panel());
    else
        PrintPanel(m_pOut, Source());
    std::fflush(m_pOut);
    return EXIT_DONE;
}

int Session::SetVariable(const Definition& definition) {
    m_database.SetVariable(definition.name, definition.value);
    TellActed("set " + definition.name, HOST_OK, ValueText(definition.value));
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "vars",
                  {{"variables", {JsonVariable(definition.name, definition.value)}}});
    else
        std::fprintf(m_pOut, "%s = %s (%s)\n", Visible(definition.name).c_str(),
                     ValueText(definition.value).c_str(), TypeName(definition.value.type));
    return EXIT_DONE;
}

int Session::ShowTime() {
    Refresh();
    m_output.Settle();
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "ntp", TimeJson(m_database, m_shared.lastSync));
    else
        PrintTime(m_pOut, m_database, m_shared.lastSync);
    std::fflush(m_pOut);
    return EXIT_DONE;
}

int Session::ShowVariables() {
    const std::map<std::string, HostValue> variables = m_database.Variables();
    Json list = Json::array();
    for (const auto& variable : variables)
        list.push_back(JsonVariable(variable.first, variable.second));
    if (m_bJson) {
        PrintJson(m_pOut, m_eLayout, "vars", {{"variables", list}});
        return EXIT_DONE;
    }
    if (variables.empty())
        std::fputs("no variables yet; make one with set NAME VALUE\n", m_pOut);
    for (const auto& variable : variables)
        std::fprintf(m_pOut, "%s = %s (%s)\n", Visible(variable.first).c_str(),
                     ValueText(variable.second).c_str(), TypeName(variable.second.type));
    return EXIT_DONE;
}

std::vector<std::string> Session::Completions(const std::string& line) const {
    std::vector<std::string> variables;
    for (const auto& variable : m_database.Variables())
        variables.push_back(variable.first);
    return vocabulary::Completions(line, variables);
}
