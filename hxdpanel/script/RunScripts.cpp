#include "hxdpanel/script/RunScripts.h"

#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Session.h"
#include "hxdpanel/script/Echo.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

int RunScripts(Session& session, const std::vector<ScriptFile>& files, const ScriptOptions& options,
               ScriptReport::Form form, bool echo, std::FILE* results, std::FILE* junit) {
    ScriptReport report(results, form);
    Echo shown(results, form == ScriptReport::TAP ? "# " : "");
    const bool isShown = echo && shown.Stream() != nullptr;
    Script script(session, options, report, isShown ? &shown : nullptr);
    session.BeScript(isShown ? shown.Stream() : nullptr);
    {
        const Session::Turn turn(session);
        session.Collect();  // as a host does before its scripts run
    }
    report.Begin();
    bool going = true;
    bool readable = true;
    for (const ScriptFile& file : files) {
        std::ifstream opened;
        if (file.path != "-") {
            opened.open(file.path);
            readable = opened.good();
        }
        if (!readable) {
            std::fprintf(stderr, "hxdpanel: cannot read %s: %s\n", Visible(file.name).c_str(),
                         std::strerror(errno));
            break;
        }
        going = script.Run(file.name, file.path == "-" ? std::cin : opened);
        if (session.Ended() || (!going && !options.keepGoing))
            break;
    }
    report.End();
    if (junit != nullptr)
        report.PrintJunit(junit);
    if (!readable)
        return EXIT_USAGE;
    return report.HasFailures() ? EXIT_STATUS : EXIT_DONE;
}
