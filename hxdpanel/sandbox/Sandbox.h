// Getting into the sandbox: the program starts itself again inside it.
#ifndef HXDPANEL_SANDBOX_H
#define HXDPANEL_SANDBOX_H

#include "hxdpanel/Options.h"

#include <string>

namespace sandbox {

bool Inside();

// Where the panel's files are kept between runs; empty: nowhere.
std::string RootFolder(const Options& options);
// Folder of the console's history; empty when there is no place for it.
std::string HistoryFolder();
// The driver that is built beside this program, unless the options name another.
std::string DriverFile(const Options& options);

// Runs this program in the sandbox and returns its exit code, or UNAVAILABLE where this machine
// does not let it.
constexpr int UNAVAILABLE = 77;
int RunInside(const Options& options, int argc, char** argv);

}  // namespace sandbox

#endif
