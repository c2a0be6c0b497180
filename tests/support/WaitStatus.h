// The end of a child process.
#ifndef HXD_TESTS_WAITSTATUS_H
#define HXD_TESTS_WAITSTATUS_H

#include "common/Retry.h"

#include <sys/wait.h>

// Waits for the child and returns its status; -1 when there is no such child. The end of a child
// may interrupt the wait for it: Qt 4 handles SIGCHLD once it has run a process.
inline int WaitStatus(pid_t child) {
    int status = -1;
    return hxd::RetryInterrupted([&] { return ::waitpid(child, &status, 0); }) == child ? status
                                                                                        : -1;
}

#endif
