// Whatever comes from outside, against the sanitizers: command texts, configuration blobs, and the
// files and packets that the driver reads. The first byte of an input chooses the subject.
#include "FakeHost.h"
#include "driver/CDevCtrl.h"
#include "network/ResolverText.h"
#include "ntp/SntpPacket.h"
#include "storage/Wear.h"
#include "sysinfo/CpuSample.h"
#include "sysinfo/MemInfo.h"

#include <QCoreApplication>
#include <QStringList>

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace {

// Lives as long as the program, as in a host.
struct FuzzDevice {
    FuzzDevice() {
        host.ints["i"] = 1;
        host.doubles["d"] = 1.5;
        host.texts["t"] = "text";
        const unsigned char blob[] = {0, 0};
        if (device.InitDevice(blob, sizeof blob) != 0)
            std::abort();
    }
    FakeHost host;
    CDevCtrl device{"fuzz", &host};
};

FuzzDevice& TheDevice() {
    static FuzzDevice device;
    return device;
}

void Command(const std::string& text) {
    std::string upper = text;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (upper.find("REBOOT") != std::string::npos)
        return;  // would end the sandbox
    TheDevice().device.DevIOCtrl(text.c_str());
    const std::vector<int> channels(33, 1);
    TheDevice().device.CollectDevData(channels.data(), static_cast<int>(channels.size()));
}

void Blob(const std::string& text) {
    FakeHost host;
    CDevCtrl device("fuzz", &host);
    device.InitDevice(reinterpret_cast<const unsigned char*>(text.data()),
                      static_cast<int>(text.size()));
    device.CleanupDevice();
}

void ResolverFile(const std::string& text) {
    std::vector<std::string> servers;
    if (!ParseNameServers(text, servers) && !servers.empty())
        std::abort();
    for (const std::string& server : servers) {
        if (!IsDottedAddress(server))
            std::abort();
    }
}

void ProcFiles(const std::string& text) {
    const cpu_occupy_ sample = cpu::ParseSample(cpu::SplitAtBlanks(text));
    cpu::BusyHundredths(static_cast<double>(cpu::IdleJiffies(sample)) /
                        static_cast<double>(cpu::TotalJiffies(sample)));
    meminfo::ParseAvailable(text);
    std::string line = text;
    meminfo::OldEstimate estimate;
    for (int i = 0; i < 4 && estimate.Feed(&line[0]) == meminfo::OldEstimate::MORE; ++i)
        line = text.substr(std::min(text.size(), static_cast<std::size_t>(i) * 8));
}

void StorageFiles(const std::string& text) {
    const QString all = QString::fromLatin1(text.data(), static_cast<int>(text.size()));
    const QVector<QString> lines = all.split(QLatin1Char('\n')).toVector();
    const long long sectors = wear::SectorsWritten(lines);
    const long long erased = wear::EraseSum(lines);
    wear::LifeFromEstimates(all);
    wear::LifeFromPreEol(all);
    wear::NandLife(erased, sectors, static_cast<int>(text.size()), 20);
    wear::Gear(wear::Increase(erased, sectors), wear::EmmcEndurance(sectors));
}

void TimeAnswer(const std::string& text) {
    sntp::Packet packet{};
    std::copy_n(text.begin(), std::min(text.size(), packet.size()), packet.begin());
    const timeval arrival = {static_cast<decltype(timeval::tv_sec)>(text.size() << 20), 999999};
    sntp::CorrectTime(packet, arrival);
}

void (*const SUBJECTS[])(const std::string&) = {Command,   Blob,         ResolverFile,
                                                ProcFiles, StorageFiles, TimeAnswer};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    if (::access("/run/hxd-panel", F_OK) != 0) {
        std::fprintf(stderr, "%s runs in the sandbox only: ./dev fuzz\n", (*arguments)[0]);
        std::exit(1);
    }
    static QCoreApplication application(*count, *arguments);
    stdout = std::fopen("/dev/null", "w");  // what the driver prints
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string text(data + 1, data + size);
    SUBJECTS[data[0] % (sizeof SUBJECTS / sizeof *SUBJECTS)](text);
    return 0;
}
