// Getting into the sandbox: the program starts itself again inside it.
#ifndef HXDPANEL_SANDBOX_H
#define HXDPANEL_SANDBOX_H

#include "hxdpanel/sandbox/Setup.h"

#include <string>
#include <vector>

namespace sandbox {

bool Inside();

// Where the panel's files are kept between runs; empty: nowhere.
std::string RootFolder(const Setup& setup);
// What comes with the program, by its path beside it or in the source tree. "" if missing.
std::string Companion(const std::string& name);
// The folders of the panel; the files and the description of a later one count before an earlier
// one's.
std::vector<std::string> PanelFolders(const Setup& setup);
// Where the program inside finds the setup's script of this index.
std::string ScriptInside(const Setup& setup, std::size_t index);
// Folder of the console's history; empty when there is no place for it.
std::string HistoryFolder();
// The driver that is built beside this program, unless the setup names another.
std::string DriverFile(const Setup& setup);

// Runs this program in the sandbox and returns its exit code, or UNAVAILABLE where this machine
// does not let it.
constexpr int UNAVAILABLE = 77;
int RunInside(const Setup& setup, int argc, char** argv);

}  // namespace sandbox

#endif
