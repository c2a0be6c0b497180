// What every command of the driver takes and answers: the console's help and completion, and the
// hints it gives when a command was probably meant differently.
#ifndef HXDPANEL_COMMANDREFERENCE_H
#define HXDPANEL_COMMANDREFERENCE_H

#include "driver/record/CommandTable.h"

#include <string>
#include <vector>

struct DescribedArgument : CommandArgument {
    DescribedArgument(const CommandArgument& argument, const std::string& itsMeaning)
        : CommandArgument(argument), meaning(itsMeaning) {}
    std::string meaning;
};

struct CommandStatus {
    int status;
    std::string meaning;
};

// A row of the driver's table of commands, described.
struct CommandInfo {
    const CommandRow& row;
    const char* name;  // the row's
    const char* summary;
    std::vector<DescribedArgument> arguments;
    std::vector<CommandStatus> statuses;  // the driver's own for it, 0 first
    std::vector<const char*> example;     // lines that work in the console
    std::vector<const char*> notes;
    bool savesFile;  // leaves a file, and no status tells whether
};

// All commands of the table, in its order.
const std::vector<CommandInfo>& CommandReference();

// By name, without regard to case; null for a name that the driver does not know.
const CommandInfo* FindCommand(const std::string& name);

// "GetMacInfo(index,name,mac)"; what may be left out in brackets.
std::string CommandSignature(const CommandInfo& command);
// What the status of this command means.
std::string CommandStatusMeaning(const CommandInfo* command, int status);
const char* KindName(CommandArgument::Kind kind);

#endif
