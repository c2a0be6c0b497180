// A panel for tests of time synchronisation: its settings file, its network and its clocks.
#ifndef HXD_TESTS_TIMEPANEL_H
#define HXD_TESTS_TIMEPANEL_H

#include "Record.h"
#include "TestFiles.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

class TimePanel : public RecordTest {
protected:
    static constexpr const char* SETTINGS = "/usr/olma_app/config/ntp_param_cfg.ini";
    static constexpr const char* COMMANDS = "/run/panel-commands.log";

    TimePanel() {
        ::unlink(COMMANDS);
        ::unlink(SETTINGS);
        ::unlink("/etc/timezone");
        ::unlink("/run/shims/ping");
        ::mkdir("/run/shims", 0755);
        writeFile("/etc/resolv.conf", "nameserver 127.0.0.53\n");
    }

    // What "ping" does; it gets "-c 1 -W 2 ADDRESS". Without it the real one runs.
    static void OnPing(const std::string& script) { writeFile("/run/shims/ping", script); }

    static void Settings(const char* on, const char* mode, const char* hours,
                         std::vector<std::string> servers) {
        servers.resize(4);
        std::string text = std::string("[NTP_PARAM]\nntp_switch=") + on + "\nntp_mode=" + mode +
                           "\nntp_freq=" + hours + "\n";
        for (std::size_t i = 0; i < servers.size(); ++i)
            text += "ntp_server" + std::to_string(i + 1) + "=" + servers[i] + "\n";
        writeFile(SETTINGS, text);
    }

    // How often a command was run.
    static int Runs(const std::string& command) {
        const std::string log = "\n" + readFile(COMMANDS);
        int count = 0;
        for (auto at = log.find("\n" + command); at != std::string::npos;
             at = log.find("\n" + command, at + 1))
            ++count;
        return count;
    }

    template <class CONDITION>
    static bool WaitFor(CONDITION condition) {
        for (int i = 0; i < 1000; ++i) {
            if (condition())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    static std::size_t EntriesOf(const char* directory) {
        DIR* const entries = ::opendir(directory);
        std::size_t count = 0;
        while (::readdir(entries) != nullptr)
            ++count;
        ::closedir(entries);
        return count;
    }
};

class Stopwatch {
public:
    long long Ms() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now() - m_start)
            .count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

#endif
