#include "fuzz/FuzzDevice.h"

#include "SimPanel.h"
#include "fuzz/Machine.h"
#include "fuzz/Refusals.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

namespace {

constexpr std::size_t A_DAY_LATER = 0xF5;
constexpr long long DAY_MS = 24LL * 3600000;

// What is broken, by number.
std::size_t BreakThePlatform(Input& input, sim::PanelState& state) {
    const auto& names = sim::FailableFunctions();
    const std::size_t choice = input.ConsumeIntegral<std::uint8_t>();
    if (choice < names.size())
        state.failures[names[choice]] = {input.PickValueInArray({-1, -19, 1}), -1, 0, 0, true, 0};
    if (choice == 0xF0)
        state.interfaces.clear();
    if (choice == 0xF1)
        state.interfaces.resize(5);
    if (choice == 0xF2)
        state.uarts[0].counters = {INT_MAX, INT_MIN, -1, INT_MIN};
    if (choice == 0xF4)
        state.storageMounted = true;
    if (choice == 0xF3)
        std::fill_n(state.interfaces[0].record.name, sizeof state.interfaces[0].record.name, 'n');
    return choice;
}

// Of the input's third number; the last one: no command of the shell's works.
constexpr int FIRST_REFUSAL = 0xC0;
constexpr int NO_COMMANDS = 0xFF;

// What others may have put, or taken away, where the driver has its files.
constexpr const char* PLACES[] = {"/tmp/olma_app_conf.lck",
                                  "/tmp/ping.lock",
                                  "/tmp/dns_access_lock.lck",
                                  "/tmp/ping.sh",
                                  "/tmp/dmesg.log",
                                  "/usr/olma_app/config/olma_app_conf.ini",
                                  "/usr/olma_app/config/ntp_param_cfg.ini",
                                  "/etc/timezone"};
constexpr const char* IN_THE_WAY = "/in_the_way";

void Plant(Input& input) {
    static std::string planted;
    if (!planted.empty()) {
        ::rmdir((planted + IN_THE_WAY).c_str());
        std::remove(planted.c_str());
    }
    planted.clear();
    const std::size_t choice = input.ConsumeIntegral<std::uint8_t>();
    if (choice >= sizeof PLACES / sizeof *PLACES * 4)
        return;
    planted = PLACES[choice / 4];
    std::remove(planted.c_str());
    if (choice % 4 == 1)
        ::mkfifo(planted.c_str(), 0600);
    if (choice % 4 == 2)
        FUZZ_EXPECT(::symlink("/tmp/elsewhere", planted.c_str()) == 0);
    if (choice % 4 == 3 && ::mkdir(planted.c_str(), 0700) == 0)
        ::mkdir((planted + IN_THE_WAY).c_str(), 0700);
}

}  // namespace

FuzzDevice::FuzzDevice() {
    const unsigned char blob[] = {0, 0};
    device.InitDevice(blob, sizeof blob);
    device.UpdataCommunication(&link);
}

FuzzDevice& FuzzDevice::Fresh(Input& input) {
    static FuzzDevice& made = *new FuzzDevice;
    static const std::map<std::string, int> ints = {
        {"i", 1}, {"zero", 0}, {"minus", -1}, {"most", INT_MAX}, {"r", 99}};
    static const std::map<std::string, double> doubles = {
        {"d", 1.5}, {"huge", 1e300}, {"nan", 0.0 / 0.0}};
    static const std::map<std::string, std::string> texts = {
        {"t", "text"},      {"empty", ""},
        {"n", "5"},         {"long", std::string(5000, 'a')},
        {"ip", "10.1.2.3"}, {"path", "$OLMA_DIR_USR/a b/x.png"}};
    made.host.ints = ints;
    made.host.doubles = doubles;
    made.host.texts = texts;
    made.host.onParameter = made.host.onDelivery = made.link.onCall = [] {};
    made.host.status = 0;
    made.link.deviceName.clear();
    static const sim::PanelState asMade;
    std::size_t broken = 0;
    sim::SimPanel::Instance().Change([&](sim::PanelState& state) {
        state = asMade;
        broken = BreakThePlatform(input, state);
    });
    if (broken == A_DAY_LATER)
        sim::SimPanel::Instance().AdvanceClock(DAY_MS);
    made.status = made.device.DevIOCtrl(made.mayBeOn ? "EnableNTP(0)" : "Nothing()");
    made.mayBeOn = false;
    Plant(input);
    const int fault = input.ConsumeIntegral<std::uint8_t>();
    machine::commandsFail = fault == NO_COMMANDS;
    machine::Refuse(fault - FIRST_REFUSAL);
    return made;
}

int FuzzDevice::Collect() {
    static const std::vector<int> channels(32, 1);
    return device.CollectDevData(channels.data(), 32);
}

void FuzzDevice::Run(const std::string& command) {
    mayBeOn |= ::strcasestr(command.c_str(), "EnableNTP") != nullptr ||
               ::strcasestr(command.c_str(), "OLMA_WRITE") != nullptr;
    status = device.DevIOCtrl(command.c_str());
}

void FuzzDevice::RunCommands(Input& input, int most) {
    for (int step = 0; step < most && input.remaining_bytes() > 0; ++step)
        Run(input.ConsumeRandomLengthString());
    FUZZ_EXPECT(Collect() == status);
}
