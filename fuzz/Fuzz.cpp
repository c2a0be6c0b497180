// The program: which target, and where it runs.
#include "fuzz/Fuzz.h"

#include "SimPanel.h"
#include "fuzz/Machine.h"
#include "fuzz/Refusals.h"
#include "hxdpanel/host/LockPlugin.h"

#include <QCoreApplication>

#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace {

struct Target {
    const char* name;
    void (*run)(Input& input);
};
constexpr Target TARGETS[] = {
    {"archive", fuzz::Archive},
    {"text", fuzz::Text},
    {"proc", fuzz::ProcFiles},
    {"expectation", fuzz::Expectations},
    {"options", fuzz::CommandLine},
    {"panelini", fuzz::PanelDescription},
    {"command", fuzz::Commands},
    {"write", fuzz::Writes},
    {"log", fuzz::Logs},
    {"host", fuzz::Host},
    {"time", fuzz::Time},
    {"files", fuzz::SystemFiles},
    {"script", fuzz::Scripts},
    {"page", fuzz::Requests},
    {"settings", fuzz::Settings},
    {"sntp", fuzz::TimeAnswers},
};

const Target* g_target = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    const char* const option = "--target=";
    for (int i = 1; i < *count; ++i) {
        for (const Target& target : TARGETS) {
            const char* const argument = (*arguments)[i];
            if (std::strncmp(argument, option, std::strlen(option)) == 0 &&
                std::strcmp(argument + std::strlen(option), target.name) == 0)
                g_target = &target;
        }
    }
    if (::access("/run/hxd-panel", F_OK) != 0 || g_target == nullptr) {
        std::fprintf(stderr, "%s runs in the sandbox only, ./dev fuzz, with a --target=, one of",
                     (*arguments)[0]);
        for (const Target& target : TARGETS)
            std::fprintf(stderr, " %s", target.name);
        std::fputs("\n", stderr);
        std::exit(1);
    }
    ::setenv("TZ", "UTC", 1);         // or Qt has the zone's file read for every time stamp
    ::prctl(PR_SET_TIMERSLACK, 1UL);  // waits are short here
    static QCoreApplication application(*count, *arguments);
    new LockPlugin(&application);
    // So that hours pass.
    sim::SimPanel::Instance().RunClock(2000.0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    machine::driven = true;
    Input input(data, size);
    g_target->run(input);
    machine::Refuse(machine::NOTHING);
    return 0;
}
