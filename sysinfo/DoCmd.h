// Shell commands.
#ifndef HXD_DOCMD_H
#define HXD_DOCMD_H

#include <string>

// Both run a command with the shell, wait for it as long as it takes, and return false only when it
// cannot be started (one line on standard error). The command's exit status is not looked at. The
// command text must not contain anything from outside the driver.
class DoCmd {
public:
    // output: what the command wrote to its standard output; untouched on false.
    static bool doCmdSync(const std::string& cmd, std::string& output);
    static bool doCmdOnly(const std::string& cmd);
};

#endif
