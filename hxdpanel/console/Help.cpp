#include "hxdpanel/console/Help.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Vocabulary.h"
#include "hxdpanel/host/HostValue.h"
#include "hxdpanel/report/ChannelChoice.h"
#include "hxdpanel/report/ChannelReport.h"
#include "hxdpanel/report/CommandReference.h"

#include <unistd.h>

namespace {

constexpr std::size_t SIGNATURE_WIDTH = 36;

const struct {
    ConsoleTopic::Section section;
    const char* name;
    const char* title;
} SECTIONS[] = {
    {ConsoleTopic::CONSOLE, "console", "The console:"},
    {ConsoleTopic::HARDWARE, "hardware", "The simulated hardware:"},
    {ConsoleTopic::SCRIPT, "script", "Only in scripts (hxdpanel script FILE):"},
};

void PrintWrapped(std::FILE* out, const std::string& text, std::size_t indent = 0) {
    std::fprintf(out, "%s\n", terminal::Wrapped(out, text, indent).c_str());
}

void PrintTitle(std::FILE* out, const std::string& title) {
    const std::string wrapped = terminal::Wrapped(out, title, 2);
    std::fprintf(out, "%s\n", terminal::Styled(out, terminal::TITLE, wrapped).c_str());
}

// Side by side, or one below the other where the window is too narrow.
void PrintRow(std::FILE* out, const std::string& left, const std::string& right,
              std::size_t width = SIGNATURE_WIDTH) {
    const auto columns = static_cast<std::size_t>(terminal::SizeOf(out).columns);
    if (width + 4 <= columns / 2 || width < SIGNATURE_WIDTH || ::isatty(::fileno(out)) == 0) {
        PrintWrapped(out, "  " + PadRight(left, width) + "  " + right, width + 4);
        return;
    }
    PrintWrapped(out, "  " + left, 6);
    PrintWrapped(out, "      " + right, 6);
}

std::string Usage(const ConsoleTopic& command) {
    return std::string(command.name) + (*command.arguments != '\0' ? " " : "") + command.arguments;
}

void PrintList(std::FILE* out, const std::vector<ConsoleTopic>& console) {
    for (const auto& section : SECTIONS) {
        PrintTitle(out, section.title);
        for (const ConsoleTopic& command : console) {
            if (command.section == section.section)
                PrintRow(out, Usage(command), command.summary);
        }
        std::fputs("\n", out);
    }
    PrintTitle(out, "Commands of the driver, typed as they stand (help NAME tells more):");
    for (const CommandInfo& command : CommandReference())
        PrintRow(out, CommandSignature(command), command.summary);
    std::fputs("\n", out);
    PrintWrapped(out,
                 "Arguments are names of variables made with set; a name that no variable has is "
                 "taken as it stands, as a number or a text. Results need a variable that can hold "
                 "them.");
}

void PrintExamples(std::FILE* out, const std::vector<const char*>& lines) {
    if (!lines.empty())
        std::fputs("\nExample\n", out);
    for (const char* line : lines)
        PrintWrapped(out, std::string("  ") + line, 4);
}

void PrintNotes(std::FILE* out, const std::vector<const char*>& notes) {
    for (const char* note : notes)
        PrintWrapped(out, std::string(note == notes.front() ? "\n" : "") + note);
}

void PrintConsoleCommand(std::FILE* out, const ConsoleTopic& command) {
    PrintTitle(out, Usage(command));
    PrintWrapped(out, std::string("  ") + command.summary, 2);
    if (command.section == ConsoleTopic::SCRIPT)
        PrintWrapped(out, "  only in scripts: hxdpanel script FILE", 2);
    PrintExamples(out, command.examples);
    PrintNotes(out, command.notes);
}

void PrintDriverCommand(std::FILE* out, const CommandInfo& command) {
    PrintTitle(out, CommandSignature(command));
    PrintWrapped(out, std::string("  ") + command.summary, 2);
    if (!command.arguments.empty())
        std::fputs("\nArguments\n", out);
    for (const DescribedArgument& argument : command.arguments) {
        const std::string direction = argument.direction == CommandArgument::OUT ? "out" : "in";
        PrintRow(out,
                 PadRight(argument.name, 14) + PadRight(direction, 5) + KindName(argument.kind),
                 argument.meaning, 25);
    }
    std::fputs("\nStatus\n", out);
    for (const CommandStatus& known : command.statuses)
        PrintRow(out, std::to_string(known.status), known.meaning, 2);
    PrintExamples(out, command.example);
    if (command.row.IsOfRegistry())
        PrintWrapped(out, "\nThe driver knows this name in exactly this spelling only.");
    PrintNotes(out, command.notes);
}

std::vector<ChannelRow::Sentinel> Sentinels(const ChannelRow& row) {
    std::vector<ChannelRow::Sentinel> sentinels;
    for (const ChannelRow::Sentinel& sentinel : row.sentinels) {
        if (sentinel.meaning != nullptr)
            sentinels.push_back(sentinel);
    }
    return sentinels;
}

void PrintChannel(std::FILE* out, const ChannelRow& row) {
    PrintTitle(out, "channel " + std::to_string(row.number) + "  " + row.name);
    PrintWrapped(out,
                 std::string("  ") + (row.kind == ChannelRow::TEXT ? "text" : "number") +
                     (*row.unit != '\0' ? ", " : "") + row.unit + ", host's channel index " +
                     std::to_string(row.number - 1),
                 2);
    PrintWrapped(out, "  " + AcceptedText(row), 2);
    for (const ChannelRow::Sentinel& sentinel : Sentinels(row))
        PrintWrapped(out,
                     "  " +
                         (sentinel.text != nullptr ? sentinel.text : NumberText(sentinel.number)) +
                         " means: " + sentinel.meaning,
                     2);
}

Json CommandJson(const CommandInfo& command) {
    Json arguments = Json::array();
    for (const DescribedArgument& argument : command.arguments)
        arguments.push_back(
            {{"name", argument.name},
             {"direction", argument.direction == CommandArgument::OUT ? "out" : "in"},
             {"type", KindName(argument.kind)},
             {"optional", argument.optional},
             {"meaning", argument.meaning}});
    Json statuses = Json::array();
    for (const CommandStatus& known : command.statuses)
        statuses.push_back(JsonStatus(known.status, known.meaning));
    return {{"name", command.name},       {"usage", CommandSignature(command)},
            {"summary", command.summary}, {"exactSpelling", command.row.IsOfRegistry()},
            {"arguments", arguments},     {"statuses", statuses},
            {"example", command.example}, {"notes", command.notes}};
}

// What a write takes, for programs; null where it cannot be written.
Json FormJson(const ChannelRow& row) {
    switch (row.input) {
        case ChannelRow::CUT_NUMBER:
            return "number";
        case ChannelRow::WHOLE_NUMBER:
            return "whole number";
        case ChannelRow::ADDRESS:
            return "address";
        case ChannelRow::NETMASK:
            return "netmask";
        case ChannelRow::ANY_TEXT:
            return "text";
        case ChannelRow::NOTHING:
            break;
    }
    return nullptr;
}

Json RowJson(const ChannelRow& row) {
    Json sentinels = Json::array();
    for (const ChannelRow::Sentinel& sentinel : Sentinels(row))
        sentinels.push_back(
            {{"value", sentinel.text != nullptr ? Json(sentinel.text)
                                                : JsonValue(HostValue::Double(sentinel.number))},
             {"meaning", sentinel.meaning}});
    const bool hasRange = row.IsWritable() && row.input != ChannelRow::ANY_TEXT;
    return {{"number", row.number},
            {"name", row.name},
            {"unit", row.unit},
            {"type", row.kind == ChannelRow::TEXT ? "text" : "number"},
            {"writable", row.IsWritable()},
            {"accepts", AcceptedText(row)},
            {"form", FormJson(row)},
            {"lowest", hasRange ? Json(row.minimum) : Json(nullptr)},
            {"highest", hasRange && row.HasUpperLimit() ? Json(row.maximum) : Json(nullptr)},
            {"sentinels", sentinels}};
}

// What the topic names; everything for no topic.
struct Subject {
    std::vector<ConsoleTopic> console;
    std::vector<const CommandInfo*> commands;
    std::vector<const ChannelRow*> channels;

    bool IsEmpty() const { return console.empty() && commands.empty() && channels.empty(); }
};

Subject Find(const std::string& name, const std::vector<ConsoleTopic>& console) {
    Subject subject;
    for (const ConsoleTopic& command : console) {
        if (name.empty() || EqualNames(name, command.name))
            subject.console.push_back(command);
    }
    for (const CommandInfo& command : CommandReference()) {
        if (name.empty() || EqualNames(name, command.name))
            subject.commands.push_back(&command);
    }
    int chosen = 0;
    std::string error;
    for (int number = 1; name.empty() && number <= CHANNEL_COUNT; ++number)
        subject.channels.push_back(FindChannel(number));
    const bool isOnlyChannel = subject.IsEmpty();  // else it must be the channel's very name
    if (ChooseChannel(name, CHANNEL_COUNT, chosen, error) &&
        (isOnlyChannel || EqualNames(name, FindChannel(chosen)->name)))
        subject.channels.push_back(FindChannel(chosen));
    return subject;
}

void PrintHelpJson(std::FILE* out, const Subject& subject, JsonLayout layout) {
    Json console = Json::array();
    for (const ConsoleTopic& command : subject.console)
        console.push_back({{"name", command.name},
                           {"usage", Usage(command)},
                           {"summary", command.summary},
                           {"section", SECTIONS[command.section].name},
                           {"example", command.examples},
                           {"notes", command.notes}});
    Json commands = Json::array();
    for (const CommandInfo* command : subject.commands)
        commands.push_back(CommandJson(*command));
    Json channels = Json::array();
    for (const ChannelRow* row : subject.channels)
        channels.push_back(RowJson(*row));
    PrintJson(out, layout, "help",
              {{"console", console}, {"commands", commands}, {"channels", channels}});
}

int PrintUnknown(const std::string& topic, const std::vector<ConsoleTopic>& console) {
    std::vector<std::string> names;
    names.reserve(console.size() + CommandReference().size());
    for (const ConsoleTopic& command : console)
        names.emplace_back(command.name);
    for (const CommandInfo& command : CommandReference())
        names.emplace_back(command.name);
    const std::string closest = Closest(topic, names);
    std::fprintf(stderr, "There is no command or channel %s%s; help without a word lists them\n",
                 Quoted(topic).c_str(),
                 closest.empty() ? "" : (" (did you mean " + closest + "?)").c_str());
    return EXIT_USAGE;
}

}  // namespace

int PrintHelp(std::FILE* out, const std::string& topic, const JsonLayout* json) {
    const std::vector<ConsoleTopic> console = vocabulary::Topics();
    const std::string name = Trimmed(topic.substr(0, topic.find('(')));
    const Subject subject = Find(name, console);
    if (subject.IsEmpty())
        return PrintUnknown(name, console);
    if (json != nullptr) {
        PrintHelpJson(out, subject, *json);
        return EXIT_DONE;
    }
    if (name.empty()) {
        PrintList(out, console);
        return EXIT_DONE;
    }
    for (const ConsoleTopic& command : subject.console)
        PrintConsoleCommand(out, command);
    for (const CommandInfo* command : subject.commands)
        PrintDriverCommand(out, *command);
    for (const ChannelRow* row : subject.channels) {
        if (!subject.console.empty())
            std::fputs("\n", out);
        PrintChannel(out, *row);
    }
    return EXIT_DONE;
}
