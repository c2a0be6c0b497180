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

#include <algorithm>

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

int ExitFor(int status) {
    return status == HOST_OK ? EXIT_DONE : EXIT_STATUS;
}

int Complain(const std::string& message) {
    std::fprintf(
        stderr, "%s\n",
        terminal::Styled(stderr, terminal::BAD, terminal::Wrapped(stderr, message, 2)).c_str());
    return EXIT_USAGE;
}

std::vector<std::string> AllWords(std::string rest) {
    std::vector<std::string> words;
    while (!rest.empty())
        words.push_back(TakeWord(rest));
    return words;
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
    std::string text;
    if (channels.empty() || channels.size() == CHANNEL_COUNT)
        return text;
    for (const int number : channels)
        text += (text.empty() ? "concerns " : ", ") + std::to_string(number) + " " +
                FindChannel(number)->name;
    return text + "\n";
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
                 HardwareMemory& memory, HardwareCommands& hardware, const IVNCLock* plugin,
                 const PanelFiles& files)
    : m_database(database),
      m_device(device),
      m_output(output),
      m_memory(memory),
      m_hardware(hardware),
      m_out(output.Results()),
      m_plugin(plugin),
      m_files(files) {}

const std::vector<Session::ConsoleCommand>& Session::ConsoleCommands() {
    static const std::vector<ConsoleCommand> commands = {
        {{"channels", "[CHANNEL...]",
          "read the channels anew and show them; a channel is a number, a range like 26-28 or a "
          "name like Brightness or com1"},
         &Session::RunChannels},
        {{"read", "CHANNEL", "the same of one channel, its value alone"}, &Session::RunRead},
        {{"watch", "[CHANNEL...] [every S] [changes]",
          "read again and again, every second if not told, until Ctrl-C; changes shows only these"},
         &Session::RunWatch},
        {{"write", "CHANNEL VALUE", "write a value to a channel"}, &Session::RunWrite},
        {{"set", "NAME[:TYPE] VALUE", "make a variable; TYPE int, double or text forces its type"},
         &Session::RunSet},
        {{"vars", "", "show the variables"}, &Session::RunVars},
        {{"panel", "", "show the simulated hardware and what the driver did to it"},
         &Session::RunPanel},
        {{"ntp", "", "show the time settings and what the clocks were set to"}, &Session::RunNtp},
        {{"help", "[COMMAND]", "this list, or more about a command or a channel's number"},
         &Session::RunHelp},
        {{"record", "FILE|off",
          "write a script of what is typed from now on, with the results as its expectations"},
         &Session::RunRecord},
        {{"quit", "", "leave (Ctrl-D too)"}, &Session::RunQuit},
    };
    return commands;
}

void Session::UseJson(JsonLayout layout) {
    m_json = true;
    m_layout = layout;
}

int Session::PrintHelp(std::FILE* out, const std::string& topic, const JsonLayout* json) {
    std::vector<ConsoleTopic> topics;
    topics.reserve(ConsoleCommands().size());
    for (const ConsoleCommand& command : ConsoleCommands())
        topics.push_back(command.topic);
    for (const HardwareCommands::Row& row : HardwareCommands::Table())
        topics.push_back({row.name, row.arguments, row.summary});
    return ::PrintHelp(out, topic, topics, json);
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
    for (const HardwareCommands::Row& row : HardwareCommands::Table())
        names.emplace_back(row.name);
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
    if (trimmed.empty() || trimmed[0] == '#' ||
        FindConsoleCommand(Split(trimmed).first) != nullptr ||
        HardwareCommands::Find(Split(trimmed).first) != nullptr ||
        ParseCommandText(trimmed, parsed))
        return true;
    error = NoMeaning(trimmed);
    return false;
}

int Session::Run(const std::string& line) {
    std::string error;
    if (!Understands(line, error))
        return Complain(error);
    m_result = LineResult();
    const std::string first = Split(line).first;
    if (first.empty() || first[0] == '#')
        return EXIT_DONE;
    const bool wasOn = m_recorder.IsOn();
    const int exitCode = RunMeaningful(line);
    if (wasOn && (exitCode != EXIT_USAGE || !m_result.isKnown) && first != "record")
        m_recorder.Add(line, m_result, m_database);
    return exitCode;
}

int Session::RunMeaningful(const std::string& line) {
    const Words words = Split(line);
    if (HardwareCommands::Find(words.first) != nullptr)
        return RunHardware(line);
    const ConsoleCommand* const command = FindConsoleCommand(words.first);
    if (command == nullptr)
        return RunDriverCommand(Trimmed(line));
    if (*command->topic.arguments == '\0' && !words.rest.empty())
        return Complain("usage: " + words.first + ", without " + Quoted(words.rest));
    return (this->*command->run)(words.rest);
}

int Session::RunHardware(const std::string& line) {
    m_memory.Save();
    const HardwareResult result = m_hardware.Run(line);
    m_memory.Save();
    if (!result.ok)
        return Complain(result.message);
    Collect();
    if (m_json)
        PrintJson(m_out, m_layout, "hardware",
                  {{"message", result.message}, {"channels", result.channels}});
    else
        std::fprintf(m_out, "%s\n%s", Visible(result.message).c_str(),
                     ConcernText(result.channels).c_str());
    std::fflush(m_out);
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
    for (const std::string& file : m_savedFiles.TakeChanges())
        outcome.files.push_back((m_files.isPrivate ? m_files.outside : "") + file);
    outcome.filesVanish = m_files.isPrivate && m_files.outside.empty();
    if (info != nullptr && info->row.command == COMMAND_EXEC_NTP)
        m_strLastSync = SyncText(m_database, trace);
    if (info != nullptr && info->savesFile && outcome.files.empty())
        outcome.notes.push_back("no file was saved; see help " + std::string(info->name));
    for (const std::string& hint : CommandHints(parsed, info, outcome.status, m_database, trace))
        outcome.notes.push_back(hint);
    const int exitCode = Report(outcome);
    m_result.isKnown = IsKnown(parsed.name, info);
    if (m_bScript && m_hardware.TakeReboot())
        return RunHardware("restart");
    return m_result.isKnown ? exitCode : EXIT_USAGE;
}

int Session::Report(const Outcome& outcome) {
    if (m_json)
        PrintJson(m_out, m_layout, outcome.Kind(), OutcomeJson(m_database, outcome));
    else
        PrintOutcome(m_out, m_database, outcome);
    m_result.hasStatus = true;
    m_result.status = outcome.status;
    m_result.statusText = StatusText(outcome.status, outcome.meaning);
    m_result.variables = outcome.variables;
    if (outcome.channel != 0)
        m_result.channels = {outcome.channel};
    return ExitFor(outcome.status);
}

void Session::BeScript(bool echo) {
    m_bScript = true;
    m_hardware.HoldReboots();
    static std::FILE* const nowhere = std::fopen("/dev/null", "w");
    if (!echo && nowhere != nullptr)
        m_out = nowhere;
}

int Session::Collect() {
    const MutedDriver muted(m_output);
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
    if (m_json)
        PrintJson(m_out, m_layout, "channels",
                  {{"status", JsonStatus(status, StatusMeaning(status))},
                   {"channels", ChannelsJson(shown)}});
    else
        PrintChannelTable(m_out, shown);
    std::fflush(m_out);
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
    if (m_json)
        PrintJson(m_out, m_layout, "read",
                  {{"status", JsonStatus(status, StatusMeaning(status))},
                   {"channel", ChannelJson(shown)}});
    else
        std::fprintf(m_out, "%s\n",
                     (value.type == DATATYPE_TEXT ? Visible(value.text) : shown.Value()).c_str());
    std::fflush(m_out);
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
    outcome.meaning =
        CommandStatusMeaning(FindCommand(CommandOf(COMMAND_OLMA_WRITE).name), outcome.status);
    if (outcome.status == -RESULT_MALFORMED || outcome.status == -RESULT_REFUSED ||
        outcome.status == -RESULT_BAD_ARGUMENTS)
        outcome.notes.push_back(AcceptedText(row));
    if (value.type == DATATYPE_TEXT && text.find(')') != std::string::npos)
        outcome.notes.emplace_back(
            "a channel's text ends at its first \")\": the driver takes no more of it");
    HostValue whole;
    if (row.input == ChannelRow::WHOLE_NUMBER && !ConvertValue(text, DATATYPE_INTEGER, whole))
        outcome.notes.push_back("the driver reads " + Quoted(text) + " as 0: write a whole number");
    return Report(outcome);
}

int Session::WatchChannels(WatchOptions options, const std::vector<std::string>& channels,
                           std::FILE* csv) {
    std::string error;
    if (!ChooseChannels(channels, HighestChannel(m_database), options.channels, error))
        return Complain(error);
    if (csv != nullptr)
        options.form = WatchOptions::CSV;
    else if (m_json)
        options.form = WatchOptions::JSON;
    return ExitFor(
        Watch(csv != nullptr ? csv : m_out, m_database, options, [this] { return Refresh(); }));
}

int Session::ShowPanel() {
    m_output.Settle();
    const PanelSource source = {m_plugin, m_files.outside, m_memory.Differences()};
    if (m_json)
        PrintJson(m_out, m_layout, "panel", PanelJson(source));
    else
        PrintPanel(m_out, source);
    std::fflush(m_out);
    return EXIT_DONE;
}

int Session::ShowTime() {
    Refresh();
    m_output.Settle();
    if (m_json)
        PrintJson(m_out, m_layout, "ntp", TimeJson(m_database, m_strLastSync));
    else
        PrintTime(m_out, m_database, m_strLastSync);
    std::fflush(m_out);
    return EXIT_DONE;
}

int Session::RunNtp(const std::string&) {
    return ShowTime();
}

int Session::RunChannels(const std::string& rest) {
    return ShowChannels(AllWords(rest));
}

int Session::RunRead(const std::string& rest) {
    const std::vector<std::string> words = AllWords(rest);
    return words.size() == 1 ? Read(words[0])
                             : Complain("usage: read CHANNEL, for example read 21");
}

// "changes" and "every S" may stand anywhere among the channels.
int Session::RunWatch(const std::string& rest) {
    WatchOptions options;
    std::vector<std::string> channels;
    const std::vector<std::string> words = AllWords(rest);
    for (std::size_t i = 0; i < words.size(); ++i) {
        HostValue seconds;
        if (words[i] == "changes") {
            options.changes = true;
        } else if (words[i] != "every") {
            channels.push_back(words[i]);
        } else if (i + 1 < words.size() && ConvertValue(words[++i], DATATYPE_DOUBLE, seconds) &&
                   seconds.number >= 0.01 && seconds.number <= 86400.0) {
            options.interval = seconds.number;
        } else {
            return Complain("usage: watch [CHANNEL...] [every SECONDS], from 0.01 to 86400");
        }
    }
    return WatchChannels(options, channels, nullptr);
}

int Session::RunWrite(const std::string& rest) {
    std::string text = rest;
    const std::string channel = TakeWord(text);
    if (channel.empty() || text.empty())
        return Complain(
            "usage: write CHANNEL VALUE, for example write 21 40; \"\" is the empty text");
    Unquote(text);
    return Write(channel, text);
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
    if (m_json)
        PrintJson(m_out, m_layout, "vars",
                  {{"variables", {JsonVariable(definition.name, definition.value)}}});
    else
        std::fprintf(m_out, "%s = %s (%s)\n", Visible(definition.name).c_str(),
                     ValueText(definition.value).c_str(), TypeName(definition.value.type));
    return EXIT_DONE;
}

int Session::RunVars(const std::string&) {
    const std::map<std::string, HostValue> variables = m_database.Variables();
    Json list = Json::array();
    for (const auto& variable : variables)
        list.push_back(JsonVariable(variable.first, variable.second));
    if (m_json) {
        PrintJson(m_out, m_layout, "vars", {{"variables", list}});
        return EXIT_DONE;
    }
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
    return PrintHelp(m_out, rest, AsJson());
}

int Session::RunRecord(const std::string& rest) {
    std::string error;
    bool done = true;
    const std::string stopped = m_recorder.Stop(done);
    if (!done)
        return Complain("not all of " + Quoted(stopped) + " could be written");
    if (!stopped.empty())
        std::fprintf(m_out, "recorded %s\n", Visible(stopped).c_str());
    if (rest == "off")
        return stopped.empty() ? Complain("nothing is being recorded") : EXIT_DONE;
    if (rest.empty())
        return Complain("usage: record FILE, or record off");
    if (!m_recorder.Start(m_files.userFolder, rest, error))
        return Complain(error);
    std::fprintf(m_out, "recording %s until record off\n", Visible(rest).c_str());
    return EXIT_DONE;
}

int Session::RunQuit(const std::string&) {
    m_bEnded = true;
    return EXIT_DONE;
}

std::vector<std::string> Session::Completions(const std::string& line) const {
    const std::size_t separator = line.find_last_of(" \t(,");
    const std::string word = line.substr(separator == std::string::npos ? 0 : separator + 1);
    const std::string first = Split(line).first;
    std::vector<std::string> candidates;
    if (separator == std::string::npos || first == "help")
        candidates = AllNames();
    if (HardwareCommands::Find(first) != nullptr && separator != std::string::npos)
        return HardwareCommands::Candidates(line);
    const bool isSecond = Split(line.substr(0, separator)).rest.empty();
    if (separator != std::string::npos &&
        (first == "channels" || first == "watch" ||
         (isSecond && (first == "read" || first == "write" || first == "help")))) {
        const std::vector<std::string> channels = ChannelWords();
        candidates.insert(candidates.end(), channels.begin(), channels.end());
    } else if (separator != std::string::npos && first != "help") {
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
