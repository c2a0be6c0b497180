// What this program's exit code says; the operations of the console return it too.
#ifndef HXDPANEL_EXITCODE_H
#define HXDPANEL_EXITCODE_H

enum ExitCode : int {
    EXIT_DONE = 0,
    EXIT_STATUS = 1,
    EXIT_USAGE = 2,
    EXIT_NO_DRIVER = 3,
    EXIT_NO_PANEL = 4,
    EXIT_NO_SANDBOX = 125,  // the launcher's
    EXIT_REBOOTED = 129,    // the launcher's
};

// The help shows this table, docs/json.md repeats it.
struct ExitMeaning {
    ExitCode code;
    const char* meaning;
};
constexpr ExitMeaning EXIT_MEANINGS[] = {
    {EXIT_DONE, "done"},
    {EXIT_STATUS, "the driver reported a status other than 0, or a script's expectation failed"},
    {EXIT_USAGE, "wrong usage, or the results cannot be written"},
    {EXIT_NO_DRIVER, "the driver cannot be loaded or initialised"},
    {EXIT_NO_PANEL, "the panel's description or files cannot be used"},
    {EXIT_NO_SANDBOX, "the sandbox could not be set up"},
    {EXIT_REBOOTED, "the panel was rebooted"},
};

#endif
