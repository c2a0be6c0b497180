// The words that a line may begin with: those of the console and of scripts, the hardware's and the
// driver's. What a session does for them is its own matter.
#ifndef HXDPANEL_VOCABULARY_H
#define HXDPANEL_VOCABULARY_H

#include <string>
#include <vector>

// A line that is not the driver's.
struct ConsoleTopic {
    enum Section { CONSOLE, HARDWARE, SCRIPT };

    const char* name;
    const char* arguments;
    const char* summary;
    Section section = CONSOLE;
    std::vector<const char*> notes = {};
    std::vector<const char*> examples = {};
};

namespace vocabulary {

// What a line needs at least: quit ends the lines of a script, record writes one of what comes
// after it, and only at a terminal somebody ends what has no end.
enum class Place { PAGE, SCRIPT, PIPE, TERMINAL };

enum class Verb { CHANNELS, READ, WATCH, WRITE, SET, VARS, PANEL, NTP, HELP, RECORD, PAGE, QUIT };

// A command of the console's own.
struct ConsoleCommand {
    Verb verb;
    ConsoleTopic topic;
    Place place = Place::PAGE;
};
const ConsoleCommand* FindConsoleCommand(const std::string& name);  // null if there is none

// All of them: the console's own, the hardware's, and what only scripts understand.
std::vector<ConsoleTopic> Topics();

Place PlaceOf(const std::string& line);
// False, with a message for the user, when nothing knows a meaning of the line.
bool Understands(const std::string& line, std::string& error);
// What the last, unfinished word of the line may become. variables: names of those that there are.
std::vector<std::string> Completions(const std::string& line,
                                     const std::vector<std::string>& variables);

}  // namespace vocabulary

#endif
