// hxdcontrol_start: a host that starts, with Qt and the platform's libraries as it would have them.
// Loads the driver named by its argument, collects once, and prints the seconds from dlopen() to
// the end of the collection, and the KiB by which its resident and its private memory have grown.
// With a number of seconds as a second argument it stays and reads the panel again that often.
#include "bench/BenchHost.h"

#include <QCoreApplication>

#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct Memory {
    long residentKib;
    long privateKib;
};

Memory OwnMemory() {
    std::ifstream status("/proc/self/status");
    Memory memory = {};
    for (std::string word; status >> word;) {
        if (word == "VmRSS:")
            status >> memory.residentKib;
        else if (word == "RssAnon:")
            status >> memory.privateKib;
    }
    return memory;
}

void Collect(IDeviceCtrl& device) {
    const std::vector<int> channels(32, 1);
    device.CollectDevData(channels.data(), static_cast<int>(channels.size()));
}

// Null when the driver cannot be loaded or does not start.
IDeviceCtrl* LoadAndCollect(const char* file, BenchHost& host) {
    void* const library = ::dlopen(file, RTLD_NOW);
    if (library == nullptr)
        return nullptr;
    const auto create = reinterpret_cast<IDeviceCtrl* (*)(const char*, IRtdb*)>(
        ::dlsym(library, "CreateDeviceCtrl"));
    IDeviceCtrl* const device = create("bench", &host);
    const unsigned char blob[] = {0, 0};
    const int status = device->InitDevice(blob, sizeof blob);
    Collect(*device);
    return status == 0 ? device : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3 || ::access("/run/hxd-panel", F_OK) != 0) {
        std::fprintf(stderr, "Usage, in the sandbox only: %s DRIVER [SECONDS]\n", argv[0]);
        return 1;
    }
    QCoreApplication application(argc, argv);
    BenchHost host;
    std::FILE* const results = stdout;
    stdout = std::fopen("/dev/null", "w");  // for what the driver prints
    const Memory before = OwnMemory();
    const auto begin = std::chrono::steady_clock::now();
    IDeviceCtrl* const device = LoadAndCollect(argv[1], host);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    const Memory after = OwnMemory();
    if (device == nullptr)
        return 1;
    std::fprintf(results, "%.9f %ld %ld\n", elapsed.count(), after.residentKib - before.residentKib,
                 after.privateKib - before.privateKib);
    std::fflush(results);
    if (argc == 3) {
        for (const auto seconds = static_cast<unsigned>(std::atoi(argv[2]));;) {
            ::sleep(seconds);
            device->DevIOCtrl("REFLESH()");
            Collect(*device);
        }
    }
    ::_exit(0);  // the device is not what is measured any more
}
