// Files and folders that the driver reaches on a panel: there, readable, writable, with room left.
#ifndef HXDCHECK_PATHS_H
#define HXDCHECK_PATHS_H

#include "hxdcheck/report/Finding.h"

#include <string>

struct PathNeeds {
    enum Kind { READ_FILE, WRITE_FILE, READ_FOLDER, WRITE_FOLDER, SCRATCH_FILE };

    std::string path;
    Kind kind;
    Finding::Status ifMissing;  // OK: it is made when it is needed, and its folder is looked at
    const char* usedFor;
};

Finding CheckPath(const PathNeeds& needs);

#endif
