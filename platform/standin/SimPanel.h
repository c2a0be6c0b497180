// The simulated panel behind the stand-in libraries: one state for the whole process, which the
// platform functions read and change, and which tests and the console set up and look at.
//
// Lives in libolma-hal; the other stand-ins link it. Every function here may be called from any
// thread.
#ifndef SIMPANEL_H
#define SIMPANEL_H

#include "SimClock.h"
#include "common/Mutex.h"
#include "hal/TextStore.h"
#include "olma_hal.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace sim {

struct Interface {
    hal_network_t record;
    std::string macAddress;  // as hal_get_mac_address delivers it; empty: the call fails
    bool plugged = true;     // false: the platform does not list it
};

struct Uart {
    bool present = false;  // false: hal_uart_info fails
    hal_uart_info_t counters = {};
};

struct Beep {
    unsigned int frequencyHz;
    unsigned int milliseconds;
};

struct Capture {
    std::string dirMacro;
    std::string relativePath;
    int flag, x, y, width, height;
};

struct LogLine {
    std::string function;
    std::string file;
    int line;
    int level;
    std::string tag;
    std::string text;
};

// The GUI's buzzer and backlight settings, as __gui_get_* deliver them.
struct GuiSettings {
    bool loaded = false;  // false: the next __gui_get_* reads the settings file
    int buzzingTime = 30;
    int lightStatus = 1;
    int lightTime = 300000;
};

// What a platform function does instead of its work. Functions that return text return "",
// functions without a result do nothing.
struct Failure {
    int result = -1;       // returned
    int times = -1;        // calls concerned before the function works again; -1: all; 0: it does
    int after = 0;         // calls that still work before the first of these
    unsigned delayMs = 0;  // waited (real time) before anything else
    bool fails = true;     // false: only slow
    int hits = 0;          // calls concerned so far; the record stays when none is left
};
// From "RESULT", "RESULT,TIMES", "slow,MS" or "slow,MS,TIMES"; false for anything else.
bool ParseFailure(const std::string& text, Failure& failure);

struct PanelState {
    PanelState();  // a plausible panel with two ports

    std::string serialNumber;
    int brightness;  // per cent; HAL_NO_SUCH_DEVICE: no brightness control
    bool lightOn;
    std::vector<Interface> interfaces;
    Uart uarts[4];
    std::map<int, std::string> directories;  // kind -> path, for Olma_GetDirectory
    bool storageMounted;       // what Olma_Check_Mount_Path answers (non-zero if true)
    std::string settingsFile;  // what the GUI reloads its settings from; empty: directory 1's file

    // What the panel was told to do, oldest first; the newest 1,000 of each are kept.
    std::deque<Beep> beeps;
    std::deque<Capture> captures;
    std::deque<std::string> guiCalls;  // "__gui_get_buzzing_time(1)", ...
    std::deque<hal_network_t> appliedRecords;
    std::deque<std::tm> rtcSettings;
    std::chrono::system_clock::time_point rtcSetAt;  // the newest of these
    std::deque<LogLine> log;
    int echoLogLevel = 0;  // lines up to this level also go to standard error; 0: none

    GuiSettings guiSettings;

    std::map<std::string, Failure> failures;  // by function name, one of FailableFunctions()

    // Rows of the picture that __gui_screen_capture draws: name and value.
    std::vector<std::pair<std::string, std::string>> screenRows;
};

// How many of each thing the panel keeps in mind.
const std::size_t KEPT_RECORDS = 1000;

// Hears of each thing that is kept as it happens, on the thread that does it and under the panel's
// lock: what it does must be short and must not call the panel.
class Observer {
public:
    virtual ~Observer() = default;
    virtual void Did(const Beep& beep) = 0;
    virtual void Did(const Capture& capture) = 0;
    virtual void Did(const std::string& guiCall) = 0;
    virtual void Did(const hal_network_t& appliedRecord) = 0;
    virtual void Did(const std::tm& rtcSetting) = 0;
    virtual void Did(const LogLine& line) = 0;
};

// The names of the platform functions that can be made to fail, sorted.
const std::vector<std::string>& FailableFunctions();

class SimPanel {
public:
    // Made at the first call and never destroyed, so threads may use it until the process ends.
    static SimPanel& Instance();

    // The factory state, and the clock running at its normal speed (it is not set back).
    void Reset();
    // Reads a panel.ini over the present state. Unknown keys and bad values are reported in error
    // (one line each) and make it return false; what was valid has been taken.
    bool LoadIni(const std::string& path, std::string& error);

    PanelState State() const;  // a copy
    // edit runs under the panel's lock: it must not call the panel or a platform function, and
    // should be short.
    void Change(const std::function<void(PanelState&)>& edit);
    // A name that is not in FailableFunctions() is a mistake of the caller: the program stops.
    void Fail(const std::string& function, const Failure& failure);
    void Mend(const std::string& function);

    // Consults the failures: waits if the function is slow; true if it is to fail with result.
    bool ShallFail(const char* function, int& result);

    // A copy of text that stays valid while the platform functions hand out fewer than
    // TextStore::CAPACITY other texts.
    const char* KeepText(const std::string& text);

    // observer: null for none; the one before hears nothing more when this returns.
    void SetObserver(Observer* observer);
    Observer* TheObserver() const { return m_pObserver; }

    // The clock behind Olma_GetTickCount and Olma_Sleep; see SimClock.
    void HoldClock() { m_clock.Hold(); }
    void AdvanceClock(long long milliseconds) { m_clock.Advance(milliseconds); }
    void RunClock(double speed = 1.0) { m_clock.Run(speed); }
    double ClockSpeed() const { return m_clock.Speed(); }
    void PassClock(long long milliseconds) { m_clock.Pass(milliseconds); }
    void MoveHeldClock() { m_clock.MoveHeld(); }
    long long Tick() const { return m_clock.Tick(); }
    void Sleep(unsigned int milliseconds) { m_clock.Sleep(milliseconds); }
    int Sleepers() const { return m_clock.Sleepers(); }
    bool WaitForSleepers(int count, unsigned int timeoutMs = 10000) const {
        return m_clock.WaitForSleepers(count, timeoutMs);
    }

private:
    SimPanel() = default;

    mutable hxd::Mutex m_lock;
    PanelState m_state HXD_GUARDED_BY(m_lock);
    SimClock m_clock;
    TextStore m_texts;
    std::atomic<Observer*> m_pObserver{nullptr};  // changed under m_lock
};

// Appends to one of the panel's lists, dropping the oldest beyond KEPT_RECORDS. Under its lock.
template <class T>
void Keep(std::deque<T>& list, const T& item) {
    list.push_back(item);
    while (list.size() > KEPT_RECORDS)
        list.pop_front();
    Observer* const observer = SimPanel::Instance().TheObserver();
    if (observer != nullptr)
        observer->Did(item);
}

}  // namespace sim

#endif
