// What this program's exit code says; the operations of the console return it too.
#ifndef HXDPANEL_EXITCODE_H
#define HXDPANEL_EXITCODE_H

enum ExitCode : int {
    EXIT_DONE = 0,
    EXIT_STATUS = 1,     // the driver reported a status other than 0
    EXIT_USAGE = 2,      // the command line or a line means nothing, or the results have no place
    EXIT_NO_DRIVER = 3,  // the driver cannot be loaded or initialised
    EXIT_NO_PANEL = 4,   // the panel's description or files cannot be used
};

#endif
