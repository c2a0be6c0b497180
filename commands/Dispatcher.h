// The dispatcher of IO-control commands.
#ifndef HXD_DISPATCHER_H
#define HXD_DISPATCHER_H

#include "common/Maybe.h"
#include "driver/record/OlmaData.h"

namespace olma_device {

// Runs "NAME(ARGUMENTS)" and puts its status into values[0]: 0.0 for success, otherwise a positive
// error number. Names are compared without regard to case and surrounding white space; names that
// are not its own go to the registry of system-information operations with the whole text.
// Without both parentheses nothing runs, and the status is 0.0. Both arrays come back with 33
// elements; an empty value array is left alone. Always 0. Commands of all devices of the process
// take turns, long ones included; one that a parameter callback sends runs at once.
int SvrDevIOCtrl(OLMA_DATA& data, CString& cmd, CArray<double, double>& values,
                 CStringArray& strings);

// The parts of a command text.
struct CommandParts {
    CString name;  // trimmed and in upper case
    CString args;  // up to the first ")" of the whole text; empty when that precedes the "("
};
// None when a parenthesis is missing.
hxd::Maybe<CommandParts> SplitCommand(const CString& cmd);

}  // namespace olma_device

#endif
