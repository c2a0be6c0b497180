#include "hxdpanel/console/Help.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/host/HostValue.h"
#include "hxdpanel/report/ChannelReport.h"
#include "hxdpanel/report/CommandReference.h"

namespace {

void PrintRow(std::FILE* out, const std::string& left, const std::string& right) {
    std::fprintf(out, "  %s  %s\n", PadRight(left, 36).c_str(), right.c_str());
}

std::string Usage(const ConsoleTopic& command) {
    return std::string(command.name) + (*command.arguments != '\0' ? " " : "") + command.arguments;
}

void PrintList(std::FILE* out, const std::vector<ConsoleTopic>& console) {
    std::fputs("The console:\n", out);
    for (const ConsoleTopic& command : console)
        PrintRow(out, Usage(command), command.summary);
    std::fputs("\nCommands of the driver, typed as they stand (help NAME tells more):\n", out);
    for (const CommandInfo& command : CommandReference())
        PrintRow(out, CommandSignature(command), command.summary);
    std::fputs(
        "\nArguments are names of variables made with set; a name that no variable has is taken\n"
        "as it stands, as a number or a text. Results need a variable that can hold them.\n",
        out);
}

void PrintConsoleCommand(std::FILE* out, const ConsoleTopic& command) {
    std::fprintf(out, "%s\n  %s\n", Usage(command).c_str(), command.summary);
}

void PrintDriverCommand(std::FILE* out, const CommandInfo& command) {
    std::fprintf(out, "%s\n  %s\n", CommandSignature(command).c_str(), command.summary);
    if (!command.arguments.empty())
        std::fputs("\nArguments\n", out);
    for (const DescribedArgument& argument : command.arguments) {
        const std::string direction = argument.direction == CommandArgument::OUT ? "out" : "in";
        std::fprintf(out, "  %s%s%s%s\n", PadRight(argument.name, 14).c_str(),
                     PadRight(direction, 5).c_str(), PadRight(KindName(argument.kind), 8).c_str(),
                     argument.meaning);
    }
    std::fputs("\nStatus\n  0   done\n", out);
    for (const CommandStatus& code : command.codes)
        std::fprintf(out, "  %-3d %s\n", code.status, code.meaning);
    std::fputs("\nExample\n", out);
    for (const char* line : command.example)
        std::fprintf(out, "  %s\n", line);
    if (command.row.IsOfRegistry())
        std::fputs("\nThe driver knows this name in exactly this spelling only.\n", out);
    for (const char* note : command.notes)
        std::fprintf(out, "%s%s\n", note == command.notes.front() ? "\n" : "", note);
}

void PrintChannel(std::FILE* out, const ChannelRow& row) {
    std::fprintf(out, "channel %d  %s\n  %s%s%s, host's channel index %d\n  %s\n", row.number,
                 row.name, row.kind == ChannelRow::TEXT ? "text" : "number",
                 *row.unit != '\0' ? ", " : "", row.unit, row.number - 1,
                 AcceptedText(row).c_str());
}

int PrintUnknown(const std::string& topic, const std::vector<ConsoleTopic>& console) {
    std::vector<std::string> names;
    names.reserve(console.size() + CommandReference().size());
    for (const ConsoleTopic& command : console)
        names.emplace_back(command.name);
    for (const CommandInfo& command : CommandReference())
        names.emplace_back(command.name);
    const std::string closest = Closest(topic, names);
    std::fprintf(stderr, "There is no command or channel %s%s. Type help for the list.\n",
                 Quoted(topic).c_str(),
                 closest.empty() ? "" : ("; did you mean " + closest + "?").c_str());
    return EXIT_USAGE;
}

}  // namespace

int PrintHelp(std::FILE* out, const std::string& topic, const std::vector<ConsoleTopic>& console) {
    const std::string name = Trimmed(topic.substr(0, topic.find('(')));
    HostValue number;
    if (name.empty()) {
        PrintList(out, console);
        return EXIT_DONE;
    }
    for (const ConsoleTopic& command : console) {
        if (EqualNames(name, command.name)) {
            PrintConsoleCommand(out, command);
            return EXIT_DONE;
        }
    }
    if (const CommandInfo* const command = FindCommand(name)) {
        PrintDriverCommand(out, *command);
        return EXIT_DONE;
    }
    if (ConvertValue(name, DATATYPE_INTEGER, number) && FindChannel(number.integer) != nullptr) {
        PrintChannel(out, *FindChannel(number.integer));
        return EXIT_DONE;
    }
    return PrintUnknown(name, console);
}
