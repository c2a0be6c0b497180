// hxdcontrol_start: a host that starts, with Qt and the platform's libraries as it would have them.
// Loads the driver named by its argument, collects once, and prints the seconds from dlopen() to
// the end of the collection, and the KiB by which its resident and its private memory have grown.
#include "bench/BenchHost.h"

#include <QCoreApplication>

#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
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

bool LoadAndCollect(const char* file, BenchHost& host) {
    void* const library = ::dlopen(file, RTLD_NOW);
    if (library == nullptr)
        return false;
    const auto create = reinterpret_cast<IDeviceCtrl* (*)(const char*, IRtdb*)>(
        ::dlsym(library, "CreateDeviceCtrl"));
    IDeviceCtrl* const device = create("bench", &host);
    const unsigned char blob[] = {0, 0};
    const int status = device->InitDevice(blob, sizeof blob);
    const std::vector<int> channels(32, 1);
    device->CollectDevData(channels.data(), static_cast<int>(channels.size()));
    return status == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || ::access("/run/hxd-panel", F_OK) != 0) {
        std::fprintf(stderr, "Usage, in the sandbox only: %s DRIVER\n", argv[0]);
        return 1;
    }
    QCoreApplication application(argc, argv);
    BenchHost host;
    std::FILE* const results = stdout;
    stdout = std::fopen("/dev/null", "w");  // for what the driver prints
    const Memory before = OwnMemory();
    const auto begin = std::chrono::steady_clock::now();
    const bool loaded = LoadAndCollect(argv[1], host);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    const Memory after = OwnMemory();
    if (!loaded)
        return 1;
    std::fprintf(results, "%.9f %ld %ld\n", elapsed.count(), after.residentKib - before.residentKib,
                 after.privateKib - before.privateKib);
    std::fflush(results);
    ::_exit(0);  // the device is not what is measured any more
}
