// What the sessions of one run have in common: console and page act on one panel, in turns.
#ifndef HXDPANEL_SHAREDRUN_H
#define HXDPANEL_SHAREDRUN_H

#include "common/Mutex.h"
#include "hxdpanel/panel/SavedFiles.h"

#include <string>
#include <vector>

// Hears what the sessions do, on their threads and in their turns.
class RunWatcher {
public:
    virtual ~RunWatcher() = default;
    // by: the session's name; line: as typed; meaning: of the status, or what has changed.
    virtual void Acted(const std::string& by, const std::string& line, int status,
                       const std::string& meaning) = 0;
    // why: what has switched the panel off and on, "reboot" when it was the driver.
    virtual void Restarted(const std::string& why) = 0;
};

struct SharedRun {
    hxd::Mutex turn;  // held by the session that acts or reads
    RunWatcher* watcher HXD_GUARDED_BY(turn) = nullptr;
    std::string pageAddress HXD_GUARDED_BY(turn);  // empty: there is no page
    // A reboot of the driver's restarts the panel instead of ending the program.
    bool restartsAfterReboot HXD_GUARDED_BY(turn) = false;
    unsigned long long collections HXD_GUARDED_BY(turn) = 0;
    std::string lastSync HXD_GUARDED_BY(turn);  // answer of the last ExecNTP
    SavedFiles savedFiles HXD_GUARDED_BY(turn);
    std::vector<std::string> saved HXD_GUARDED_BY(turn);  // paths of all files saved in this run
};

#endif
