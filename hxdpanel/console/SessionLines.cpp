// What a line means: the console's own commands, the hardware's, and the driver's.
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Session.h"
#include "hxdpanel/panel/HardwareCommands.h"
#include "hxdpanel/report/ChannelChoice.h"
#include "hxdpanel/report/CommandHints.h"
#include "hxdpanel/report/CommandReference.h"

#include <algorithm>

namespace {

const char* const OPEN_QUOTE = "the quote is not closed at the end of the line";

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

std::vector<std::string> AllWords(std::string rest) {
    std::vector<std::string> words;
    while (!rest.empty())
        words.push_back(TakeWord(rest));
    return words;
}

}  // namespace

const std::vector<Session::ConsoleCommand>& Session::ConsoleCommands() {
    static const std::vector<ConsoleCommand> commands = {
        {{"channels", "[CHANNEL...]",
          "read the channels anew and show them; a channel is a number, a range like 26-28 or a "
          "name like Brightness or com1"},
         &Session::RunChannels},
        {{"read", "CHANNEL", "the same of one channel, its value alone"}, &Session::RunRead},
        {{"watch", "[CHANNEL...] [every S] [changes]",
          "read again and again, every second if not told, until Ctrl-C; changes shows only these"},
         &Session::RunWatch,
         Place::TERMINAL},
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
         &Session::RunRecord,
         Place::PIPE},
        {{"page", "", "show the address at which a browser shows the panel (--page)"},
         &Session::RunPage},
        {{"quit", "", "leave (Ctrl-D too)"}, &Session::RunQuit, Place::SCRIPT},
    };
    return commands;
}

int Session::PrintHelp(std::FILE* out, const std::string& topic, const JsonLayout* json) {
    std::vector<ConsoleTopic> topics;
    for (const ConsoleCommand& command : ConsoleCommands())
        topics.push_back(command.topic);
    for (const HardwareCommands::Row& row : HardwareCommands::Table())
        topics.push_back({row.name, row.arguments, row.summary, ConsoleTopic::HARDWARE, row.notes,
                          row.examples});
    topics.insert(topics.end(), ScriptLines().begin(), ScriptLines().end());
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
    if (line.find('(') != std::string::npos)
        return "A parenthesis is missing or comes too early; the driver does nothing for such a "
               "command: " +
               Visible(line);
    const std::string word = Split(line).first;
    for (const ConsoleTopic& topic : ScriptLines()) {
        if (word == topic.name)
            return std::string(topic.name).append(" stands in scripts only; see help ") +
                   topic.name;
    }
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

Session::Place Session::PlaceOf(const std::string& line) {
    const ConsoleCommand* const command = FindConsoleCommand(Split(line).first);
    return command != nullptr ? command->place : Place::PAGE;
}

int Session::Run(const std::string& line) {
    if (PlaceOf(line) == Place::TERMINAL) {
        m_result = LineResult();
        return RunWatch(Split(line).rest);
    }
    const Turn turn(*this);
    return RunInTurn(line);
}

int Session::RunInTurn(const std::string& line) {
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
        return RunHardware(Trimmed(line), words.first);
    const ConsoleCommand* const command = FindConsoleCommand(words.first);
    if (command == nullptr)
        return RunDriverCommand(Trimmed(line));
    if (*command->topic.arguments == '\0' && !words.rest.empty())
        return Complain("usage: " + words.first + ", without " + Quoted(words.rest));
    return (this->*command->run)(words.rest);
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
    if (HasOpenQuote(text))
        return Complain(OPEN_QUOTE);
    Unquote(text);
    return Write(channel, text);
}

// "set NAME VALUE" and "set NAME=VALUE"; quotes around a value make it a text.
int Session::RunSet(const std::string& rest) {
    const std::size_t end = std::min(rest.find_first_of(" \t="), rest.size());
    std::string name = rest.substr(0, end);
    std::string text = Trimmed(rest.substr(std::min(end + 1, rest.size())));
    if (HasOpenQuote(text))
        return Complain(OPEN_QUOTE);
    const bool quoted = Unquote(text);
    if (quoted && name.find(':') == std::string::npos)
        name += ":text";
    Definition definition;
    std::string error;
    if (name.empty())
        return Complain("usage: set NAME[:TYPE] VALUE, for example set result 0");
    if (!ParseDefinition(name, text, definition, error))
        return Complain(error);
    return SetVariable(definition);
}

int Session::RunNtp(const std::string&) {
    return ShowTime();
}

int Session::RunPanel(const std::string&) {
    return ShowPanel();
}

int Session::RunHelp(const std::string& rest) {
    return PrintHelp(m_pOut, rest, AsJson());
}

int Session::RunRecord(const std::string& rest) {
    std::string name = rest;
    std::string error;
    bool done = true;
    if (rest.empty())
        return Complain("usage: record FILE, or record off");
    if (HasOpenQuote(name))
        return Complain(OPEN_QUOTE);
    Unquote(name);
    const std::string stopped = m_recorder.Stop(done);
    if (!done)
        return Complain("not all of " + Quoted(stopped) + " could be written");
    if (!stopped.empty())
        std::fprintf(m_pOut, "recorded %s\n", Visible(stopped).c_str());
    if (rest == "off")
        return stopped.empty() ? Complain("nothing is being recorded") : EXIT_DONE;
    if (!m_recorder.Start(m_files.userFolder, name, error))
        return Complain(error);
    std::fprintf(m_pOut, "recording %s until record off\n", Visible(name).c_str());
    return EXIT_DONE;
}

// The socket is opened outside the sandbox, so it is there from the start or not at all.
int Session::RunPage(const std::string&) {
    if (m_shared.pageAddress.empty())
        return Complain("there is no page: start hxdpanel with --page to have one");
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "page", {{"address", m_shared.pageAddress}});
    else
        std::fprintf(m_pOut, "%s\n", m_shared.pageAddress.c_str());
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
    for (const ConsoleTopic& topic : ScriptLines()) {
        if (first == "help" && separator != std::string::npos)
            candidates.emplace_back(topic.name);
    }
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
    return Beginning(word, candidates);
}
