// A panel with a time controller, and with the commands that reach it.
#ifndef HXD_TESTS_TIMECONTROL_H
#define HXD_TESTS_TIMECONTROL_H

#include "TimePanel.h"
#include "ntp/ClockText.h"
#include "ntp/NtpCommands.h"
#include "ntp/NtpCtrl.h"

class TimeControl : public TimePanel {
protected:
    TimeControl() {
        OnPing("exit 0");
        writeFile("/etc/timezone", "Etc/UTC\n");
        host.ints["r"] = 99;
    }
    ~TimeControl() override {
        writeFile("/etc/hosts", "127.0.0.1 localhost panel\n");
        writeFile("/etc/nsswitch.conf", "hosts: files\n");
    }
    NtpCtrl& Start() {
        context.m_pNtpCtrl = std::make_unique<NtpCtrl>();
        return *context.m_pNtpCtrl;
    }
    void Stop() { context.m_pNtpCtrl.reset(); }
    // Switched on, on demand.
    NtpCtrl& StartOnDemand(const std::vector<std::string>& servers) {
        Settings("1", "0", "2", servers);
        return Start();
    }
    NtpCtrl& StartAutomatic(const std::vector<std::string>& servers) {
        Settings("1", "1", "2", servers);
        return Start();
    }
    // Both clocks were last set to this time, as if the zone were UTC. The arithmetic drops parts
    // of a second, so one second off is right.
    static void ExpectClocksAt(long long seconds) {
        std::tm set = Panel().rtcSettings.back();
        const std::string command = ClockCommand(set);  // date -s "..."
        EXPECT_NE(readFile(COMMANDS).find(command.substr(9, command.size() - 10) + "'"),
                  std::string::npos);
        EXPECT_LE(std::abs(::timegm(&set) - seconds), 1);
    }
    // The number that the command leaves in its result variable.
    int Exec() {
        host.ints["r"] = 99;
        EXPECT_EQ(CDevBas::ExecNtp(record, "r"), 0);
        return host.ints["r"];
    }
};

#endif
