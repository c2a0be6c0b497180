#include "hxdpanel/console/Session.h"

#include "SimPanel.h"
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/HardwareMemory.h"
#include "hxdpanel/report/ChannelReport.h"
#include "hxdpanel/report/CommandHints.h"
#include "hxdpanel/report/CommandReference.h"
#include "hxdpanel/report/PanelReport.h"
#include "hxdpanel/report/TimeReport.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace {

// The first word and what follows it.
struct Words {
    std::string first;
    std::string rest;
};

Words Split(const std::string& text) {
    const std::string trimmed = Trimmed(text);
    const std::size_t end = std::min(trimmed.find_first_of(" \t"), trimmed.size());
    return {trimmed.substr(0, end), Trimmed(trimmed.substr(end))};
}

// "0 (done)"; the host interface's own codes in hexadecimal, as they are documented.
std::string StatusText(int status, const char* meaning) {
    std::array<char, 16> number = {};
    const bool isFlag = status < -0x40000000;
    std::snprintf(number.data(), number.size(), isFlag ? "0x%X" : "%d",
                  static_cast<unsigned>(status));
    return std::string(number.data()) + " (" + meaning + ")";
}

// Takes the quotes around a text away; false when there are none.
bool Unquote(std::string& text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"')
        return false;
    text = text.substr(1, text.size() - 2);
    return true;
}

int ExitFor(int status) {
    return status == HOST_OK ? EXIT_DONE : EXIT_STATUS;
}

int Complain(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    return EXIT_USAGE;
}

void Note(const std::string& text) {
    std::fprintf(stderr, "note: %s\n", text.c_str());
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

// What an ExecNTP has left in its result variable.
std::string SyncText(const HostDatabase& database, const HostDatabase::Trace& trace) {
    HostValue result;
    if (trace.written.empty() || !database.FindVariable(trace.written.front(), result))
        return "done, without a result variable that tells how";
    return "result " + ValueText(result) +
           (result.integer == 0 ? " (done, or switched off)" : " (failed)");
}

}  // namespace

Session::Session(HostDatabase& database, Device& device, DriverOutput& output,
                 HardwareMemory& memory, const IVNCLock* plugin, const PanelFiles& files)
    : m_database(database),
      m_device(device),
      m_output(output),
      m_memory(memory),
      m_out(output.Results()),
      m_plugin(plugin),
      m_files(files) {}

const std::vector<Session::ConsoleCommand>& Session::ConsoleCommands() {
    static const std::vector<ConsoleCommand> commands = {
        {{"channels", "", "read the channels anew and show them"}, &Session::RunChannels},
        {{"watch", "[SECONDS]", "do so again and again, until Ctrl-C"}, &Session::RunWatch},
        {{"write", "N VALUE", "write a value to channel N"}, &Session::RunWrite},
        {{"set", "NAME[:TYPE] VALUE", "make a variable; TYPE int, double or text forces its type"},
         &Session::RunSet},
        {{"vars", "", "show the variables"}, &Session::RunVars},
        {{"panel", "", "show the simulated hardware and what the driver did to it"},
         &Session::RunPanel},
        {{"ntp", "", "show the time settings and what the clocks were set to"}, &Session::RunNtp},
        {{"help", "[COMMAND]", "this list, or more about a command or a channel's number"},
         &Session::RunHelp},
        {{"quit", "", "leave (Ctrl-D too)"}, &Session::RunQuit},
    };
    return commands;
}

int Session::PrintHelp(std::FILE* out, const std::string& topic) {
    std::vector<ConsoleTopic> topics;
    topics.reserve(ConsoleCommands().size());
    for (const ConsoleCommand& command : ConsoleCommands())
        topics.push_back(command.topic);
    return ::PrintHelp(out, topic, topics);
}

const Session::ConsoleCommand* Session::FindConsoleCommand(const std::string& name) {
    for (const ConsoleCommand& command : ConsoleCommands()) {
        if (name == command.topic.name)
            return &command;
    }
    return nullptr;
}

std::vector<std::string> Session::AllNames() {
    std::vector<std::string> names;
    for (const ConsoleCommand& command : ConsoleCommands())
        names.emplace_back(command.topic.name);
    for (const CommandInfo& command : CommandReference())
        names.push_back(command.name + std::string("("));
    return names;
}

std::string Session::NoMeaning(const std::string& line) {
    CommandText parsed;
    if (line.find('(') != std::string::npos)
        return "A parenthesis is missing or comes too early; the driver does nothing for such a "
               "command: " +
               Visible(line);
    const std::string word = Split(line).first;
    const CommandInfo* const command = FindCommand(word);
    if (command != nullptr)
        return "A command of the driver needs parentheses: " + CommandSignature(*command);
    const std::string closest = Closest(word, AllNames());
    return Quoted(word) + " is no command" +
           (closest.empty() ? ". Type help for the list."
                            : "; did you mean " + closest + (closest.back() == '(' ? ")?" : "?"));
}

bool Session::Understands(const std::string& line, std::string& error) {
    CommandText parsed;
    const std::string trimmed = Trimmed(line);
    if (trimmed.empty() || FindConsoleCommand(Split(trimmed).first) != nullptr ||
        ParseCommandText(trimmed, parsed))
        return true;
    error = NoMeaning(trimmed);
    return false;
}

int Session::Run(const std::string& line) {
    std::string error;
    if (!Understands(line, error))
        return Complain(error);
    const Words words = Split(line);
    if (words.first.empty())
        return EXIT_DONE;
    const ConsoleCommand* const command = FindConsoleCommand(words.first);
    return command != nullptr ? (this->*command->run)(words.rest) : RunDriverCommand(Trimmed(line));
}

int Session::RunDriverCommand(const std::string& text) {
    CommandText parsed;
    ParseCommandText(text, parsed);
    const CommandInfo* const info = FindCommand(Trimmed(parsed.name));
    m_database.TakeTrace();
    const int status = m_device.Command(text);
    m_memory.Save();
    m_output.Settle();
    const HostDatabase::Trace trace = m_database.TakeTrace();
    std::fprintf(m_out, "%s: status %s\n", Visible(text).c_str(),
                 StatusText(status, CommandStatusMeaning(info, status)).c_str());
    for (const std::string& name : trace.written)
        PrintVariable(name);
    if (info != nullptr && info->row.command == COMMAND_EXEC_NTP)
        m_strLastSync = SyncText(m_database, trace);
    const bool saved = ReportFiles();
    std::fflush(m_out);
    if (info != nullptr && info->savesFile && !saved)
        Note("no file was saved; see help " + std::string(info->name));
    for (const std::string& hint : CommandHints(parsed, info, status, m_database, trace))
        Note(hint);
    return ExitFor(status);
}

// One line for programs; people see the lines of a longer text as such.
void Session::PrintVariable(const std::string& name) {
    HostValue value;
    m_database.FindVariable(name, value);
    const bool isLong = value.type == DATATYPE_TEXT && value.text.find('\n') != std::string::npos;
    if (!isLong || ::isatty(::fileno(m_out)) == 0) {
        std::fprintf(m_out, "%s = %s\n", Visible(name).c_str(), ValueText(value).c_str());
        return;
    }
    std::fprintf(m_out, "%s =\n", Visible(name).c_str());
    std::istringstream lines(value.text);
    for (std::string line; std::getline(lines, line);)
        std::fprintf(m_out, "  %s\n", Visible(line).c_str());
}

bool Session::ReportFiles() {
    const std::vector<std::string> files = m_savedFiles.TakeChanges();
    const bool isGone = m_files.isPrivate && m_files.outside.empty();
    const std::string folder = m_files.isPrivate ? m_files.outside : "";
    for (const std::string& file : files)
        std::fprintf(m_out, "saved %s%s\n", Visible(folder + file).c_str(),
                     isGone ? " (gone when this run ends; --root DIR keeps it)" : "");
    return !files.empty();
}

int Session::Collect() {
    const MutedDriver muted(m_output);
    const int status = m_device.Collect();
    sim::SimPanel::instance().change(
        [&](sim::PanelState& state) { state.screenRows = ScreenRows(m_database); });
    return status;
}

// The driver delivers what it has read before until it is told to read again.
int Session::Refresh() {
    m_device.Command("REFLESH()");
    return Collect();
}

int Session::ShowChannels() {
    const int status = Refresh();
    PrintChannelTable(m_out, m_database);
    std::fflush(m_out);
    return ExitFor(status);
}

int Session::ShowChannelsJson() {
    const int status = Collect();
    PrintChannelsJson(m_out, m_database);
    std::fflush(m_out);
    return ExitFor(status);
}

int Session::Write(int number, const std::string& text) {
    const ChannelRow* const row = FindChannel(number);
    if (row == nullptr)
        return Complain("There is no channel " + std::to_string(number) + ": 1 to " +
                        std::to_string(CHANNEL_COUNT));
    HostValue value;
    if (!ChannelValue(*row, text, value))
        return Complain("Channel " + std::to_string(number) + " takes a number, not " +
                        Quoted(text));
    const int status = m_device.Write(number, value);
    m_memory.Save();
    Collect();
    const CommandInfo* const command = FindCommand(CommandOf(COMMAND_OLMA_WRITE).name);
    std::fprintf(m_out, "status %s\n%s\n",
                 StatusText(status, CommandStatusMeaning(command, status)).c_str(),
                 ChannelText(m_database, number).c_str());
    std::fflush(m_out);
    if (status == -RESULT_MALFORMED || status == -RESULT_REFUSED || status == -RESULT_BAD_ARGUMENTS)
        Note(AcceptedText(*row));
    if (value.type == DATATYPE_TEXT && text.find(')') != std::string::npos)
        Note("a channel's text ends at its first \")\": the driver takes no more of it");
    HostValue whole;
    if (row->input == ChannelRow::WHOLE_NUMBER && !ConvertValue(text, DATATYPE_INTEGER, whole))
        Note("the driver reads " + Quoted(text) + " as 0: write a whole number");
    return ExitFor(status);
}

int Session::WatchChannels(double interval, int count, std::FILE* csv) {
    WatchOptions options;
    options.interval = interval;
    options.count = count;
    options.csv = csv != nullptr;
    return ExitFor(
        Watch(csv != nullptr ? csv : m_out, m_database, options, [this] { return Refresh(); }));
}

int Session::ShowPanel() {
    m_output.Settle();
    PrintPanel(m_out, m_plugin, m_files.outside);
    std::fflush(m_out);
    return EXIT_DONE;
}

int Session::ShowTime() {
    Refresh();
    m_output.Settle();
    PrintTime(m_out, m_database, m_strLastSync);
    std::fflush(m_out);
    return EXIT_DONE;
}

int Session::RunNtp(const std::string&) {
    return ShowTime();
}

int Session::RunChannels(const std::string& rest) {
    return rest.empty() ? ShowChannels() : Complain("usage: channels");
}

int Session::RunWatch(const std::string& rest) {
    HostValue seconds = HostValue::Double(1.0);
    const bool valid = rest.empty() || ConvertValue(rest, DATATYPE_DOUBLE, seconds);
    if (!valid || seconds.number < 0.01 || seconds.number > 86400.0)
        return Complain("usage: watch [SECONDS], from 0.01 to 86400");
    return WatchChannels(seconds.number, 0, nullptr);
}

int Session::RunWrite(const std::string& rest) {
    Words words = Split(rest);
    HostValue number;
    if (words.first.empty() || !ConvertValue(words.first, DATATYPE_INTEGER, number))
        return Complain(
            "usage: write N VALUE, with the number of a channel, for example write 21 40");
    Unquote(words.rest);  // "" is the way to write an empty text
    return Write(number.integer, words.rest);
}

// "set NAME VALUE" and "set NAME=VALUE"; quotes around a value make it a text.
int Session::RunSet(const std::string& rest) {
    const std::size_t end = std::min(rest.find_first_of(" \t="), rest.size());
    std::string name = rest.substr(0, end);
    std::string text = Trimmed(rest.substr(std::min(end + 1, rest.size())));
    const bool quoted = Unquote(text);
    if (quoted && name.find(':') == std::string::npos)
        name += ":text";
    Definition definition;
    std::string error;
    if (name.empty())
        return Complain("usage: set NAME[:TYPE] VALUE, for example set result 0");
    if (!ParseDefinition(name, text, definition, error))
        return Complain(error);
    m_database.SetVariable(definition.name, definition.value);
    std::fprintf(m_out, "%s = %s (%s)\n", Visible(definition.name).c_str(),
                 ValueText(definition.value).c_str(), TypeName(definition.value.type));
    return EXIT_DONE;
}

int Session::RunVars(const std::string&) {
    const std::map<std::string, HostValue> variables = m_database.Variables();
    if (variables.empty())
        std::fputs("no variables yet; make one with set NAME VALUE\n", m_out);
    for (const auto& variable : variables)
        std::fprintf(m_out, "%s = %s (%s)\n", Visible(variable.first).c_str(),
                     ValueText(variable.second).c_str(), TypeName(variable.second.type));
    return EXIT_DONE;
}

int Session::RunPanel(const std::string&) {
    return ShowPanel();
}

int Session::RunHelp(const std::string& rest) {
    return PrintHelp(m_out, rest);
}

int Session::RunQuit(const std::string&) {
    m_bEnded = true;
    return EXIT_DONE;
}

std::vector<std::string> Session::Completions(const std::string& line) const {
    const std::size_t separator = line.find_last_of(" \t(,");
    const std::string word = line.substr(separator == std::string::npos ? 0 : separator + 1);
    const bool afterHelp = Split(line).first == "help";
    std::vector<std::string> candidates;
    if (separator == std::string::npos || afterHelp) {
        candidates = AllNames();
    } else {
        for (const auto& variable : m_database.Variables())
            candidates.push_back(variable.first);
    }
    std::vector<std::string> matching;
    for (const std::string& candidate : candidates) {
        if (EqualNames(candidate.substr(0, word.size()), word))
            matching.push_back(candidate);
    }
    return matching;
}
