// The commands with which the driver has changed the panel's system.
#ifndef HXDPANEL_COMMANDSRUN_H
#define HXDPANEL_COMMANDSRUN_H

#include <string>
#include <vector>

// Oldest first, each with its arguments.
std::vector<std::string> CommandsRun();
void ForgetCommandsRun();

#endif
