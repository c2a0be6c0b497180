#include "hxdpanel/console/Vocabulary.h"

#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/HardwareCommands.h"
#include "hxdpanel/report/ChannelChoice.h"
#include "hxdpanel/report/CommandHints.h"
#include "hxdpanel/report/CommandReference.h"

namespace vocabulary {

namespace {

const std::vector<ConsoleCommand>& ConsoleCommands() {
    static const std::vector<ConsoleCommand> commands = {
        {Verb::CHANNELS,
         {"channels", "[CHANNEL...]",
          "read the channels anew and show them; a channel is a number, a range like 26-28 or a "
          "name like Brightness or com1"}},
        {Verb::READ, {"read", "CHANNEL", "the same of one channel, its value alone"}},
        {Verb::WATCH,
         {"watch", "[CHANNEL...] [every S] [changes]",
          "read again and again, every second if not told, until Ctrl-C; changes shows only these"},
         Place::TERMINAL},
        {Verb::WRITE, {"write", "CHANNEL VALUE", "write a value to a channel"}},
        {Verb::SET,
         {"set", "NAME[:TYPE] VALUE", "make a variable; TYPE int, double or text forces its type"}},
        {Verb::VARS, {"vars", "", "show the variables"}},
        {Verb::PANEL, {"panel", "", "show the simulated hardware and what the driver did to it"}},
        {Verb::NTP, {"ntp", "", "show the time settings and what the clocks were set to"}},
        {Verb::HELP,
         {"help", "[COMMAND]", "this list, or more about a command or a channel's number"}},
        {Verb::RECORD,
         {"record", "FILE|off",
          "write a script of what is typed from now on, with the results as its expectations"},
         Place::PIPE},
        {Verb::PAGE, {"page", "", "show the address at which a browser shows the panel (--page)"}},
        {Verb::QUIT, {"quit", "", "leave (Ctrl-D too)"}, Place::SCRIPT},
    };
    return commands;
}

// Lines that only scripts understand.
const std::vector<ConsoleTopic>& ScriptLines() {
    static const std::vector<ConsoleTopic> lines = {
        {"expect",
         "WHAT = VALUE",
         "stop unless this holds: a channel, a variable, a status, or what the panel did",
         ConsoleTopic::SCRIPT,
         {"= may be != < <= > >=. A number may have ~ TOLERANCE; /.../ is a pattern, \"...\" a "
          "text. A number or a name is a channel's unless a variable has the name."},
         {"expect 21 = 40", "expect 10 = 0.8 ~ 0.05", "expect serial = /^HX/", "expect r = 0",
          "expect status 4", "expect panel beeped 900 Hz 50 ms", "expect panel not ran reboot"}},
        {"wait",
         "WHAT = VALUE within TIME",
         "the same, or let the panel's clock go on until it holds",
         ConsoleTopic::SCRIPT,
         {"The clock is held in scripts, so that an hour costs nothing. Units: ms, s, m, h, d."},
         {"wait 27 = 4 within 2h"}},
        {"allow",
         "unknown",
         "from here on a command that the driver does not know is no failure",
         ConsoleTopic::SCRIPT,
         {},
         {"allow unknown"}},
    };
    return lines;
}

std::string FirstWord(const std::string& line) {
    const std::string trimmed = Trimmed(line);
    return trimmed.substr(0, trimmed.find_first_of(" \t"));
}

std::vector<std::string> AllNames() {
    std::vector<std::string> names;
    for (const ConsoleCommand& command : ConsoleCommands())
        names.emplace_back(command.topic.name);
    for (const HardwareCommands::Row& row : HardwareCommands::Table())
        names.emplace_back(row.name);
    for (const CommandInfo& command : CommandReference())
        names.push_back(command.name + std::string("("));
    return names;
}

std::string NoMeaning(const std::string& line) {
    if (line.find('(') != std::string::npos)
        return "A parenthesis is missing or comes too early; the driver does nothing for such a "
               "command: " +
               Visible(line);
    const std::string word = FirstWord(line);
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

}  // namespace

const ConsoleCommand* FindConsoleCommand(const std::string& name) {
    for (const ConsoleCommand& command : ConsoleCommands()) {
        if (name == command.topic.name)
            return &command;
    }
    return nullptr;
}

std::vector<ConsoleTopic> Topics() {
    std::vector<ConsoleTopic> topics;
    for (const ConsoleCommand& command : ConsoleCommands())
        topics.push_back(command.topic);
    for (const HardwareCommands::Row& row : HardwareCommands::Table())
        topics.push_back({row.name, row.arguments, row.summary, ConsoleTopic::HARDWARE, row.notes,
                          row.examples});
    topics.insert(topics.end(), ScriptLines().begin(), ScriptLines().end());
    return topics;
}

Place PlaceOf(const std::string& line) {
    const ConsoleCommand* const command = FindConsoleCommand(FirstWord(line));
    return command != nullptr ? command->place : Place::PAGE;
}

bool Understands(const std::string& line, std::string& error) {
    CommandText parsed;
    const std::string trimmed = Trimmed(line);
    if (trimmed.empty() || trimmed[0] == '#' || FindConsoleCommand(FirstWord(trimmed)) != nullptr ||
        HardwareCommands::Find(FirstWord(trimmed)) != nullptr || ParseCommandText(trimmed, parsed))
        return true;
    error = NoMeaning(trimmed);
    return false;
}

std::vector<std::string> Completions(const std::string& line,
                                     const std::vector<std::string>& variables) {
    const std::size_t separator = line.find_last_of(" \t(,");
    if (separator == std::string::npos)
        return Beginning(line, AllNames());
    const std::string first = FirstWord(line);
    if (HardwareCommands::Find(first) != nullptr)
        return HardwareCommands::Candidates(line);
    const bool isSecond = Trimmed(line.substr(0, separator)) == first;
    const bool isHelp = first == "help";
    std::vector<std::string> candidates;
    const auto add = [&](const std::vector<std::string>& more) {
        candidates.insert(candidates.end(), more.begin(), more.end());
    };
    if (isHelp) {
        add(AllNames());
        for (const ConsoleTopic& topic : ScriptLines())
            candidates.emplace_back(topic.name);
    }
    if (first == "channels" || first == "watch" ||
        (isSecond && (isHelp || first == "read" || first == "write")))
        add(ChannelWords());
    else if (!isHelp)
        add(variables);
    return Beginning(line.substr(separator + 1), candidates);
}

}  // namespace vocabulary
