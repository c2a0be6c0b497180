// Keeps what the driver prints apart from the results of this program. The driver writes to
// standard output and to Qt's debug output on its own account, from its threads too; while this
// object lives these lines go to standard error, marked as the driver's, and the results go where
// standard output was.
#ifndef HXDPANEL_DRIVEROUTPUT_H
#define HXDPANEL_DRIVEROUTPUT_H

#include "common/Mutex.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

class DriverOutput {
public:
    DriverOutput();
    ~DriverOutput();  // everything printed so far has been shown
    DriverOutput(const DriverOutput&) = delete;
    DriverOutput& operator=(const DriverOutput&) = delete;

    std::FILE* Results() const { return m_pResults; }

    // Returns when all lines that the driver has printed so far have been shown, so that they stand
    // above the result they belong to.
    void Settle();

    // Lines printed between Mute() and Unmute() are dropped, unless the user wants to see all:
    // everything, or what a collection says and not what the clock's thread says meanwhile.
    enum Muted { EVERYTHING, COLLECTION };
    void Mute(Muted what = EVERYTHING);
    void Unmute(Muted what = EVERYTHING);
    void ShowAll() { m_bShowAll = true; }

    // Lines, those for standard error too, are kept back between Hold() and Release(), while the
    // user is typing. A line that is kept back makes Descriptor() readable; one that repeats the
    // line before is dropped.
    void Hold();
    void Release();
    int Descriptor() const { return m_nHeldEvent; }

    // Gets each line of the driver that is not muted, under this object's lock: what it does must
    // be short and must not call the object. The one before gets nothing more when this returns.
    void SetTap(std::function<void(const std::string& line)> tap);

    // In between a terminal shows that this is at work, and for how long.
    void BeginWork(const std::string& what);
    void EndWork();

private:
    struct Source {
        int pipe = -1;         // what was printed, to be read
        std::string partLine;  // only the reader's
    };
    void Run();
    bool ReadSome(Source& source);
    void Show(const Source& source, const std::string& line);
    bool IsMuted(const std::string& line) const HXD_REQUIRES(m_lock);
    void Print(const std::string& text) HXD_REQUIRES(m_lock);
    void DrawWork() HXD_REQUIRES(m_lock);
    void EraseWork() HXD_REQUIRES(m_lock);

    std::FILE* m_pResults;
    Source m_standard;      // of the driver alone
    Source m_errors;        // standard error while lines are held
    int m_nErrorsEnd = -1;  // takes the place of standard error
    int m_nErrors = -1;     // standard error
    int m_nWakeEvent = -1;  // asks the reader to settle or to end
    int m_nHeldEvent = -1;

    hxd::Mutex m_lock;
    std::condition_variable m_settled;
    unsigned m_nSettleAsked HXD_GUARDED_BY(m_lock) = 0;
    unsigned m_nSettleDone HXD_GUARDED_BY(m_lock) = 0;
    bool m_bStop HXD_GUARDED_BY(m_lock) = false;
    bool m_bHold HXD_GUARDED_BY(m_lock) = false;
    std::string m_strWork HXD_GUARDED_BY(m_lock);  // empty: nothing is at work
    std::chrono::steady_clock::time_point m_workBegun HXD_GUARDED_BY(m_lock);
    bool m_bWorkDrawn HXD_GUARDED_BY(m_lock) = false;
    std::vector<std::string> m_held HXD_GUARDED_BY(m_lock);
    std::string m_strLastLine HXD_GUARDED_BY(m_lock);
    // Mute() calls without their Unmute(), of each kind.
    std::array<int, 2> m_muted HXD_GUARDED_BY(m_lock) = {};
    std::function<void(const std::string& line)> m_tap HXD_GUARDED_BY(m_lock);
    std::atomic<bool> m_bShowAll{false};

    std::thread m_reader;  // started last, joined by the destructor
};

// Drops what the driver prints while it lives: collections and the start say the same every time.
class MutedDriver {
public:
    explicit MutedDriver(DriverOutput& output, DriverOutput::Muted what = DriverOutput::EVERYTHING)
        : m_output(output), m_eWhat(what) {
        m_output.Mute(m_eWhat);
    }
    ~MutedDriver() { m_output.Unmute(m_eWhat); }
    MutedDriver(const MutedDriver&) = delete;
    MutedDriver& operator=(const MutedDriver&) = delete;

private:
    DriverOutput& m_output;
    const DriverOutput::Muted m_eWhat;
};

// While it lives a terminal shows that the driver is at work on what was asked of it.
class WorkingDriver {
public:
    WorkingDriver(DriverOutput& output, const std::string& what) : m_output(output) {
        m_output.BeginWork(what);
    }
    ~WorkingDriver() { m_output.EndWork(); }
    WorkingDriver(const WorkingDriver&) = delete;
    WorkingDriver& operator=(const WorkingDriver&) = delete;

private:
    DriverOutput& m_output;
};

#endif
