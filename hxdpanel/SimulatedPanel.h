// Sets the simulated hardware up as the options say.
#ifndef HXDPANEL_SIMULATEDPANEL_H
#define HXDPANEL_SIMULATEDPANEL_H

#include <string>

struct Options;

// filesOutside receives where the panel's files lie on the machine; empty: they are gone after this
// run. False, after a message, when the panel's description or files cannot be used.
bool SetUpPanel(const Options& options, std::string& filesOutside);

#endif
