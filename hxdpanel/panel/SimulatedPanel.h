// Sets the simulated hardware up as the command line says.
#ifndef HXDPANEL_SIMULATEDPANEL_H
#define HXDPANEL_SIMULATEDPANEL_H

#include <string>
#include <vector>

namespace sandbox {
struct Setup;
}

struct PanelFiles {
    std::vector<std::string> panels;  // folders of the description; later ones count first
    std::string outside;      // where they lie on the machine; empty: they are gone after this run
    std::string memory;       // the file that keeps the hardware's settings
    int userFolder = -1;      // descriptor of the folder that the user is in; -1: not reachable
    std::string guardedRoot;  // in guarded mode: below it lie the settings, and all other paths are
                              // the machine's own

    bool IsPrivate() const { return guardedRoot.empty(); }
};

// False, after a message, when the panel's description or files cannot be used.
// logLevel: the driver's log lines up to it are shown.
bool SetUpPanel(const sandbox::Setup& setup, int logLevel, PanelFiles& files);
// In guarded mode: throws the settings away, and nothing that is the machine's own. False when that
// fails.
bool ResetSettings(const PanelFiles& files);
// Reads the panel's description over the present state of the hardware; false with the reason.
bool LoadDescription(const PanelFiles& files, std::string& error);

#endif
