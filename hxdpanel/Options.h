// The command line.
#ifndef HXDPANEL_OPTIONS_H
#define HXDPANEL_OPTIONS_H

#include "hxdpanel/host/HostValue.h"

#include <string>
#include <vector>

enum ExitCode : int {
    EXIT_DONE = 0,
    EXIT_STATUS = 1,  // the driver reported a status other than 0
    EXIT_USAGE =
        2,  // the command line or a console line means nothing, or the results have no place
    EXIT_NO_DRIVER = 3,  // the driver cannot be loaded or initialised
    EXIT_NO_PANEL = 4,   // the panel's description or files cannot be used
};

struct Options {
    enum Mode { CONSOLE, CHANNELS, EXEC, WRITE, WATCH, PANEL, NTP, HELP };

    Mode mode = CONSOLE;
    std::string panel;  // folder; empty: the default panel
    std::string root;   // folder; empty: the default one, or fresh files
    bool fresh = false;
    std::string driver;
    int channels = 32;
    std::vector<unsigned char> blob;
    int logLevel = 0;
    bool lockPlugin = true;
    bool timeServer = false;

    bool json = false;
    std::vector<Definition> variables;
    std::vector<std::string> commands;
    int number = 0;
    std::string value;
    double interval = 1.0;  // seconds
    int count = 0;          // 0: until interrupted
    std::string csv;        // "-": standard output
    std::string helpTopic;

    // What the instance outside the sandbox tells the one inside, which sees other folders.
    struct Inside {
        bool launched = false;
        int csvDescriptor = -1;
        int stopDescriptor = -1;  // becomes readable when this program is to end
        std::string driver;
        std::string historyFolder;
        std::string filesOutside;  // where the panel's files lie on the machine
    } inside;
};

// False when there is nothing to do but to leave with exitCode (help shown, or wrong usage).
bool ParseOptions(int argc, const char* const* argv, Options& options, int& exitCode);

#endif
