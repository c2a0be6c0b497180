// The simulated panel behind the stand-in libraries: one state for the whole process, which the
// platform functions read and change, and which tests and the console set up and look at.
//
// Lives in libolma-hal; the other stand-ins link it. Every function here may be called from any
// thread.
#ifndef SIMPANEL_H
#define SIMPANEL_H

#include "olma_hal.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <ctime>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#define SIM_API __attribute__((visibility("default")))

namespace sim {

struct Interface {
    hal_network_t record;
    std::string macAddress;  // as hal_get_mac_address delivers it; empty: the call fails
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

// What a platform function does instead of its work.
struct Failure {
    int result = -1;       // returned; functions that return text return ""
    int times = -1;        // calls that fail before the function works again; -1: all
    unsigned delayMs = 0;  // waited (real time) before returning
    bool fails = true;     // false: only slow
};

struct SIM_API PanelState {
    PanelState();  // a plausible panel with two ports

    std::string serialNumber;
    int brightness;  // per cent; -19: no brightness control
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
    std::deque<LogLine> log;
    int echoLogLevel = 0;  // lines up to this level also go to standard error; 0: none

    std::map<std::string, Failure> failures;  // by function name

    // Rows of the picture that __gui_screen_capture draws: name and value.
    std::vector<std::pair<std::string, std::string>> screenRows;
};

class SIM_API SimPanel {
public:
    static SimPanel& instance();

    // The factory state, and the clock running at its normal speed.
    void reset();
    // Reads a panel.ini over the present state. Unknown keys and bad values are reported in error
    // (one line each) and make it return false; what was valid has been taken.
    bool loadIni(const std::string& path, std::string& error);

    PanelState state() const;  // a copy
    void change(const std::function<void(PanelState&)>& edit);
    void fail(const std::string& function, const Failure& failure);
    void mend(const std::string& function);

    // Consults the failures: waits if the function is slow; true if it is to fail with result.
    bool shallFail(const char* function, int& result);

    // The clock behind Olma_GetTickCount and Olma_Sleep. While held it moves only by advance(),
    // and a sleeping thread wakes up when it has been moved past its time, or when it is let run.
    // Advancing moves a running clock ahead as well.
    void holdClock();
    void advanceClock(long long milliseconds);
    void runClock(double speed = 1.0);  // 10.0: ten times as fast; also ends a hold
    long long tick() const;
    void sleep(unsigned int milliseconds);
    // Threads now inside sleep(); lets a test wait until a worker has come to rest.
    int sleepers() const;

private:
    SimPanel();
    long long tickLocked() const;
    void rebaseLocked(long long stepMs);

    mutable std::mutex m_lock;  // guards everything below
    PanelState m_state;
    std::condition_variable m_clockChanged;
    bool m_bHeld = false;
    double m_dSpeed = 1.0;
    long long m_llBaseTick = 0;
    std::chrono::steady_clock::time_point m_base;
    int m_nSleepers = 0;
};

}  // namespace sim

#endif
