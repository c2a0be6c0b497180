// hxdcontrol_counted: operations whose instructions callgrind counts, each in a dump of its own
// that carries its name: ./dev instructions. What a count is, the threads of the driver included,
// does not depend on what else the machine does.
#include "SimPanel.h"
#include "bench/BenchHost.h"
#include "commands/Sha256.h"
#include "driver/CDevCtrl.h"
#include "ntp/SntpPacket.h"

#include <QCoreApplication>

#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

// Repeated, so that what happens once or by chance counts for little; the first time warms up.
void Count(const char* name, int times, const std::function<void()>& operation) {
    operation();
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < times; ++i)
        operation();
    CALLGRIND_DUMP_STATS_AT(name);
}

void MakeFiles() {
    std::ofstream("/usr/olma_app/config/olma_app_conf.ini")
        << "[DEVICE]\nbuzz_duration=30\nbacklight_status=1\nbacklight_duration=300000\n"
           "backlight_brightness=80\n";
    std::ofstream("/etc/iot_cfg/vncConfig.ini") << "[VNCCONFIG]\npasswd=panel\n";
    std::ofstream log("/storage/log/restart.log");
    for (int line = 0; line < 10000; ++line)
        log << std::string(99, 'x') << '\n';
}

void Initialise(CDevCtrl& device) {
    const unsigned char blob[] = {2, 0, 0, 0, 1, 0, 0, 0, 200, 0, 0, 0};
    device.InitDevice(blob, sizeof blob);
}

void CountDevice(BenchHost& host) {
    CDevCtrl device("bench", &host);
    Initialise(device);
    std::vector<int> channels(1024, 1);
    const auto collect = [&](int count) { device.CollectDevData(channels.data(), count); };
    Count("warm_reading", 20, [&] {
        device.DevIOCtrl("REFLESH()");
        collect(32);
    });
    Count("cached_collection_32", 1000, [&] { collect(32); });
    Count("cached_collection_1024", 100, [&] { collect(1024); });
    Count("unknown_command", 1000, [&] { device.DevIOCtrl("Nothing(1)"); });
    int brightness = 40;
    Count("channel_write", 20, [&] {
        brightness ^= 1;
        device.WriteChannel(20, DATATYPE_INTEGER, &brightness);
    });
    Count("log_tail", 10, [&] { device.DevIOCtrl("ReadAppLog(0,64,text,status)"); });
    sim::SimPanel::Instance().RunClock(1000.0);  // its end waits for threads that sleep
    device.CleanupDevice();
}

void CountDigest(const char* name, std::size_t bytes, int times) {
    const std::vector<unsigned char> text(bytes, 0x5a);
    unsigned char digest[SHA256::DIGEST_BYTES];
    Count(name, times, [&] {
        SHA256 hash;
        hash.update(text.data(), text.size());
        hash.finish(digest);
    });
}

void CountTimeClient() {
    timeval now = {1700000000, 250000};
    Count("time_request_and_answer", 1000, [&] {
        sntp::Packet packet = sntp::MakeRequest(now);
        sntp::WriteTimestamp(packet, sntp::RECEIVE_OFFSET, sntp::ToTimestamp(now));
        now.tv_usec = sntp::CorrectTime(packet, now).seconds % 1000000;
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (::access("/run/hxd-panel", F_OK) != 0 || !RUNNING_ON_VALGRIND) {
        std::fprintf(stderr,
                     "%s runs in the sandbox and under callgrind only: ./dev instructions\n",
                     argv[0]);
        return 1;
    }
    QCoreApplication application(argc, argv);
    stdout = std::fopen("/dev/null", "w");  // for what the driver prints
    // No real time: the driver's sleeps are over when this thread sleeps.
    sim::SimPanel::Instance().HoldClock();
    sim::SimPanel::Instance().MoveHeldClock();
    MakeFiles();
    BenchHost host;
    CountDevice(host);
    CountDigest("sha256_64", 64, 1000);
    CountDigest("sha256_1_mib", 1 << 20, 3);
    CountTimeClient();
    Count("init_and_cleanup", 20, [&] {
        CDevCtrl device("bench", &host);
        Initialise(device);
        device.CleanupDevice();
    });
    return 0;
}
