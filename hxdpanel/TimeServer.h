// A small time server beside the simulated panel, to try time synchronisation with.
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

    // Null, with a reason, when the port cannot be had. Also has the reach check's ping succeed:
    // nothing beyond the sandbox can be pinged.
    static std::unique_ptr<TimeServer> Start(std::string& error);

    TimeServer(const TimeServer&) = delete;
    TimeServer& operator=(const TimeServer&) = delete;
    ~TimeServer();

private:
    TimeServer(int socket, int stopEvent);
    void Run();

    HXDCTRL::File m_socket;
    HXDCTRL::File m_stopEvent;  // eventfd
    std::thread m_thread;
};

#endif
