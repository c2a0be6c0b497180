// A program that is started, waited for, and asked to end in good order when this one is.
#ifndef HXDPANEL_CHILDPROCESS_H
#define HXDPANEL_CHILDPROCESS_H

#include <string>
#include <vector>

// One at a time: the signals of this process are passed on to it.
class ChildProcess {
public:
    static constexpr int FIRST_HANDED_OVER = 100;  // descriptors for the child start here
    static constexpr int NOT_STARTED = 77;

    ChildProcess();
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The child inherits this descriptor; it becomes readable when the child is to end.
    int StopDescriptor() const { return m_nStopRead; }

    // Runs the command, a path and its arguments, and returns its exit code, 128 + N when signal N
    // has ended it. SIGTERM, SIGHUP and, without a terminal, SIGINT ask it to end and kill it when
    // it does not; on a terminal it gets Ctrl-C itself.
    int Run(const std::vector<std::string>& words);

private:
    int m_nStopRead = -1;
    int m_nStopWrite = -1;
};

#endif
