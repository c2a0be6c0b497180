// Background worker that switches the addressing mode of a network interface.
#ifndef HXD_NETWORKTASK_H
#define HXD_NETWORKTASK_H

#include "common/Mutex.h"

#include <QSemaphore>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <thread>

// The worker thread alone talks to the platform; callers post one request at a time and wait for
// its result. The device context owns the task; the destructor stops and joins the thread, waiting
// for a request that the platform is working on.
class NetworkTask {
public:
    enum State : std::int32_t {
        STATE_NEVER_USED = 0,
        STATE_EXECUTING = 1,  // a request is posted or being executed
        STATE_IDLE = 2,
    };

    enum Outcome { REQUEST_DONE, REQUEST_BUSY, REQUEST_NOT_RUNNING };

    NetworkTask() = default;  // not started
    NetworkTask(const NetworkTask&) = delete;
    NetworkTask& operator=(const NetworkTask&) = delete;
    // Waits also for a caller that is still inside Execute(); no new one may come meanwhile.
    ~NetworkTask();

    // Starts the thread unless it has been started already. std::system_error when the system
    // refuses a thread; the task then stays not started.
    void start();

    // Any thread. After Execute() has returned, the task may still be executing for a moment.
    State GetState() const { return m_eState; }

    // Puts the interface (0 to count - 1) into the mode (0 or 1) and waits until that is done, as
    // long as it takes. result: 0 = done, or the mode was set already; RESULT_NO_INTERFACE = the
    // interface cannot be read; otherwise what the platform answered. With another outcome than
    // REQUEST_DONE nothing was done: another request is executing, or the thread is not running.
    Outcome Execute(int index, int mode, int& result);

private:
    struct Request {
        std::int32_t index;
        std::int32_t mode;
    };

    void Run();
    void Serve();
    bool AwaitRequest(Request& request);
    void Reply(std::int32_t result);

    hxd::Mutex m_lock;
    std::condition_variable m_changed;  // a request, the end, or an answered caller has left
    std::thread m_thread;               // of whoever starts and destroys the task
    QSemaphore m_reply{0};              // released once per request
    bool m_bRunning HXD_GUARDED_BY(m_lock) = false;
    std::atomic<State> m_eState{STATE_NEVER_USED};  // goes to idle without the lock
    Request m_request HXD_GUARDED_BY(m_lock) = {};
    // The semaphore orders the accesses; atomic for race checkers, which do not know Qt's
    // semaphore.
    std::atomic<std::int32_t> m_nResult{0};
    bool m_bAwaited HXD_GUARDED_BY(m_lock) = false;  // a caller is inside Execute()
};

#endif
