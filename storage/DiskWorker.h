// What the storage managers have in common: the worker thread, the handshake with the collection,
// the gear and the first hour. They differ in how they measure.
#ifndef HXD_DISKWORKER_H
#define HXD_DISKWORKER_H

#include "common/Maybe.h"
#include "storage/DiskInterface.h"

#include <atomic>
#include <thread>

// In the first hour after init() every refresh request is answered with a gear for all that was
// written since init(), against one hour's allowance. Later both values change once an hour, and
// requests are answered as done without a measurement. An answer belongs to a pass of the worker
// that began after the request.
//
// The derived class's destructor must call StopWorker(): the worker uses its functions.
class DiskWorker : public DiskInterface {
public:
    DiskWorker(const DiskWorker&) = delete;
    DiskWorker& operator=(const DiskWorker&) = delete;
    ~DiskWorker() override = default;

    bool init() final;
    int getDiskLifeTime() final { return m_nLifePercent; }
    int getDiskIO() final { return m_nGear; }
    void refresh() final;
    bool refreshRes() final { return m_nAnswered == m_nRequested; }

protected:
    DiskWorker() = default;

    void StopWorker();

    // How a storage is measured. On the caller's thread before the worker starts, on the worker's
    // afterwards, never on both.
    virtual hxd::Maybe<long long> FindStorage() = 0;  // its hourly allowance; none: not there
    virtual long long ReadWear() = 0;                 // sectors written or blocks erased so far
    virtual int ReadLifePercent(long long wear) = 0;

private:
    void Run();
    void Pass(long long startTick, unsigned request);
    void RefreshGear(long long wear);

    // Of the thread that measures; see above.
    long long m_llLastLifeRefresh = 0;  // ms of the host's tick
    long long m_llBaseline = 0;         // wear at the start of the gear's interval
    long long m_llHourlyAllowance = 0;

    std::atomic<int> m_nLifePercent{0};
    std::atomic<int> m_nGear{1};
    // Requests are numbered: two flags could report an old measurement as the answer to a request
    // that arrives during it. The first number stands for init(), which measures by itself.
    std::atomic<unsigned> m_nRequested{1};
    std::atomic<unsigned> m_nAnswered{0};
    unsigned m_nMeasured = 1;  // the newest that was measured for; the worker's
    std::atomic<bool> m_bRunning{true};
    std::thread m_thread;  // owned; joined by StopWorker()
};

#endif
