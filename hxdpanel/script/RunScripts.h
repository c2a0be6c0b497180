// The script files of a run.
#ifndef HXDPANEL_RUNSCRIPTS_H
#define HXDPANEL_RUNSCRIPTS_H

#include "hxdpanel/script/Script.h"

#include <cstdio>
#include <string>
#include <vector>

struct ScriptFile {
    std::string name;  // as the user gave it
    std::string path;  // "-": standard input
};

// Returns an ExitCode. echo: show each line and what it prints. junit: null, or where a report for
// a build server goes.
int RunScripts(Session& session, const std::vector<ScriptFile>& files, const ScriptOptions& options,
               ScriptReport::Form form, bool echo, std::FILE* results, std::FILE* junit);

#endif
