// Reading lines: with editing, history and completion on a terminal, plainly from a pipe.
#ifndef HXDPANEL_CONSOLE_H
#define HXDPANEL_CONSOLE_H

#include <string>

class DriverOutput;
class Session;

// Until quit or the end of the input. historyFolder: empty to keep no history. Returns an ExitCode;
// on a terminal it is 0 whatever the commands said.
int RunConsole(Session& session, DriverOutput& output, const std::string& historyFolder);

#endif
