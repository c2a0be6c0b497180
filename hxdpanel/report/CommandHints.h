// What a user should know about a driver command that the status does not tell: the driver answers
// 0 to names it does not know, takes unknown variables as they stand and drops results without a
// place for them.
#ifndef HXDPANEL_COMMANDHINTS_H
#define HXDPANEL_COMMANDHINTS_H

#include "hxdpanel/host/HostDatabase.h"

#include <string>
#include <vector>

struct CommandInfo;

// NAME(ARGUMENTS) as the driver takes it apart.
struct CommandText {
    std::string name;                    // blanks around it included
    std::vector<std::string> arguments;  // none of a name that the driver does not know
};
// False when a parenthesis is missing, or the closing one comes first. The driver does nothing
// then; it answers 0 to the former and to the latter mostly 5.
bool ParseCommandText(const std::string& text, CommandText& parsed);

// info: null for a name that the driver does not know. trace: of the command.
std::vector<std::string> CommandHints(const CommandText& command, const CommandInfo* info,
                                      int status, const HostDatabase& database,
                                      const HostDatabase::Trace& trace);

#endif
