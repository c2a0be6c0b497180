#include "network/NetworkTask.h"

#include "common/ResultCodes.h"
#include "olma_hal.h"

#include <QtDebug>

namespace {

constexpr unsigned MODE_BITS = 0x3;
constexpr std::uint32_t MODE1_PARAMETER = 5000;

std::uint8_t WithMode(std::uint8_t flags, std::int32_t mode) {
    return static_cast<std::uint8_t>((flags & ~MODE_BITS) |
                                     (static_cast<unsigned>(mode) & MODE_BITS));
}

std::int32_t SwitchMode(std::int32_t index, std::int32_t mode) {
    hal_network_t record = {};
    if (hal_get_network(static_cast<unsigned int>(index), &record) != 0)
        return RESULT_NO_INTERFACE;
    if ((record.flags & MODE_BITS) == static_cast<unsigned>(mode)) {
        qDebug("%s", "mode not change......");
        return RESULT_DONE;
    }
    if (mode == 1)
        record.mode1_param = MODE1_PARAMETER;
    record.flags = WithMode(record.flags, mode);
    return hal_set_ip_addr(&record);
}

}  // namespace

NetworkTask::~NetworkTask() {
    {
        const hxd::MutexLock locker(m_lock);
        m_bRunning = false;
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
    {
        hxd::MutexLock locker(m_lock);
        while (m_bAwaited)
            locker.Wait(m_changed);
    }
    try {
        qDebug("%s", "task exit.....");
    } catch (...) {
        // Out of memory: an end without its line.
    }
}

void NetworkTask::start() {
    const hxd::MutexLock locker(m_lock);
    if (m_thread.joinable())
        return;
    m_thread = std::thread(&NetworkTask::Run, this);  // waits for the lock before it looks
    m_bRunning = true;
}

NetworkTask::Outcome NetworkTask::Execute(int index, int mode, int& result) {
    {
        const hxd::MutexLock locker(m_lock);
        // Awaited, but idle: the reply is given, and the one who asked has not yet taken it.
        if (m_bAwaited || m_eState == STATE_EXECUTING)
            return REQUEST_BUSY;
        if (!m_bRunning)
            return REQUEST_NOT_RUNNING;
        m_eState = STATE_EXECUTING;
        m_request = {index, mode};
        m_bAwaited = true;
        m_changed.notify_all();
    }
    m_reply.acquire();
    result = m_nResult;

    const hxd::MutexLock locker(m_lock);
    m_bAwaited = false;
    m_changed.notify_all();  // the destructor may be waiting for it
    return REQUEST_DONE;
}

void NetworkTask::Run() {
    try {
        Serve();
    } catch (...) {
        // Out of memory while reporting, at the worst; the caller is answered below.
    }
    const hxd::MutexLock locker(m_lock);
    m_bRunning = false;
    if (m_eState == STATE_EXECUTING)
        Reply(RESULT_NO_INTERFACE);
}

void NetworkTask::Serve() {
    qDebug("%s", "task start.......");
    Request request = {};
    while (AwaitRequest(request)) {
        std::int32_t result = RESULT_NO_INTERFACE;
        try {
            result = SwitchMode(request.index, request.mode);
        } catch (...) {
            // A platform that throws has not done it.
        }
        Reply(result);
    }
}

// False when the task is to end.
bool NetworkTask::AwaitRequest(Request& request) {
    hxd::MutexLock locker(m_lock);
    while (m_eState != STATE_EXECUTING && m_bRunning)
        locker.Wait(m_changed);
    request = m_request;
    return m_bRunning;
}

// The reply is released first, then the state turns idle, without the lock: a command that follows
// at once may still find it executing and is refused, which scripts know and repeat. Only the
// thread's own end holds the lock around both.
void NetworkTask::Reply(std::int32_t result) {
    m_nResult = result;
    m_reply.release();
    m_eState = STATE_IDLE;
}
