// Sets the simulated hardware up as the options say.
#ifndef HXDPANEL_SIMULATEDPANEL_H
#define HXDPANEL_SIMULATEDPANEL_H

#include <string>

struct Options;

struct PanelFiles {
    std::string outside;    // where they lie on the machine; empty: they are gone after this run
    std::string memory;     // the file that keeps the hardware's settings
    bool isPrivate = true;  // false in guarded mode: absolute paths are the machine's own
};

// False, after a message, when the panel's description or files cannot be used.
bool SetUpPanel(const Options& options, PanelFiles& files);

#endif
