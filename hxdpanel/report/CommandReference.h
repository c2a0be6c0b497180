// What every command of the driver takes and answers: the console's help and completion, and the
// hints it gives when a command was probably meant differently.
#ifndef HXDPANEL_COMMANDREFERENCE_H
#define HXDPANEL_COMMANDREFERENCE_H

#include <string>
#include <vector>

struct CommandArgument {
    enum Direction { IN, OUT };
    enum Kind {
        INTEGER,  // an int variable, or a number as it stands
        NUMBER,   // an int or double variable; for IN also a number as it stands
        TEXT,     // a text variable; for IN also a text as it stands
    };

    const char* name;
    Direction direction;
    Kind kind;
    const char* meaning;
    bool optional;
};

struct CommandStatus {
    int status;
    const char* meaning;
};

struct CommandInfo {
    const char* name;
    const char* summary;
    std::vector<CommandArgument> arguments;
    std::vector<CommandStatus> codes;  // where StatusMeaning() is not precise enough; 0 is left out
    std::vector<const char*> example;  // lines that work in the console
    std::vector<const char*> notes;
    bool exactSpelling = false;  // otherwise the driver ignores case, and blanks around the name
    bool savesFile = false;      // leaves a file, and no status tells whether
};

const std::vector<CommandInfo>& CommandReference();

// By name, without regard to case; null for a name that the driver does not know.
const CommandInfo* FindCommand(const std::string& name);

// "GetMacInfo(index,name,mac)"; what may be left out in brackets.
std::string CommandSignature(const CommandInfo& command);
// What the status of this command means.
const char* CommandStatusMeaning(const CommandInfo* command, int status);
const char* KindName(CommandArgument::Kind kind);

#endif
