// A small time server in the panel's network, to try time synchronisation with.
#ifndef HXDPANEL_TIMESERVER_H
#define HXDPANEL_TIMESERVER_H

#include "common/File.h"

#include <memory>
#include <string>
#include <thread>

// Answers SNTP requests with this machine's time, on a thread of its own that the destructor stops
// and joins. Sandbox only.
class TimeServer {
public:
    static const char* const ADDRESS;  // where it listens, UDP port 123

    // Null, with a reason, when it cannot be had.
    static std::unique_ptr<TimeServer> Start(std::string& error);

    TimeServer(const TimeServer&) = delete;
    TimeServer& operator=(const TimeServer&) = delete;
    ~TimeServer();

private:
    TimeServer();
    bool Listen();
    void Run();
    void AnswerOne();

    HXDCTRL::File m_socket;
    HXDCTRL::File m_stopEvent;  // eventfd
    std::thread m_thread;       // not joinable when the start has failed
};

#endif
