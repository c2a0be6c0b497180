// From loading the library to the first collection, as a host does it. The library stays loaded
// once it is, so each round has a process of its own; that one has Qt and the platform already, as
// a host has.
#include "host.h"

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct Start {
    double seconds;
    long addedKib;
};

// Accepts every value and keeps none.
class QuietHost final : public IRtdb {
public:
    int GetParamType(const char*, DATATYPE*) override { return -1; }
    int GetParamInt(const char*, int*) override { return -1; }
    int GetParamDouble(const char*, double*) override { return -1; }
    int GetParamString(const char*, std::string*) override { return -1; }
    int SetParamInt(const char*, int) override { return 0; }
    int SetParamDouble(const char*, double) override { return 0; }
    int SetParamString(const char*, const std::string*) override { return 0; }
    int GetChannelType(int, int* type) override {
        *type = DATATYPE_DOUBLE;
        return 0;
    }
    int ReservedSlot9() override { return 0; }
    int ReservedSlot10() override { return 0; }
    int ReservedSlot11() override { return 0; }
    int SetChannelInt(int, int) override { return 0; }
    int SetChannelDouble(int, double) override { return 0; }
    int SetChannelString(int, const std::string*) override { return 0; }
};

std::string DriverFile() {
    char path[PATH_MAX] = "";
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    return program.substr(0, program.rfind('/')) + "/../lib/libhxdcontrol_armv7.so.1";
}

// Without the pages of files: the child of a fork maps those of Qt and the platform anew.
long OwnMemoryKib() {
    std::ifstream status("/proc/self/status");
    long kib = 0;
    for (std::string word; kib == 0 && status >> word;) {
        if (word == "RssAnon:")
            status >> kib;
    }
    return kib;
}

bool LoadAndCollect(Start& result) {
    QuietHost host;
    const std::string file = DriverFile();
    const long before = OwnMemoryKib();
    const auto begin = std::chrono::steady_clock::now();
    void* const library = ::dlopen(file.c_str(), RTLD_NOW);
    if (library == nullptr)
        return false;
    const auto create = reinterpret_cast<IDeviceCtrl* (*)(const char*, IRtdb*)>(
        ::dlsym(library, "CreateDeviceCtrl"));
    IDeviceCtrl* const device = create("bench", &host);
    const unsigned char blob[] = {0, 0};
    device->InitDevice(blob, sizeof blob);
    const std::vector<int> channels(32, 1);
    device->CollectDevData(channels.data(), static_cast<int>(channels.size()));
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    result.addedKib = OwnMemoryKib() - before;
    return true;
}

bool InAProcessOfItsOwn(Start& result) {
    int ends[2];
    if (::pipe(ends) != 0)
        return false;
    const pid_t child = ::fork();
    if (child == 0) {
        Start start = {};
        const bool done = LoadAndCollect(start) && ::write(ends[1], &start, sizeof start) > 0;
        ::_exit(done ? 0 : 1);
    }
    ::close(ends[1]);
    const bool read = ::read(ends[0], &result, sizeof result) == sizeof result;
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    return read;
}

void StartUp(benchmark::State& state) {
    long addedKib = 0;
    for (auto _ : state) {
        Start start = {};
        if (!InAProcessOfItsOwn(start)) {
            state.SkipWithError("the driver could not be loaded");
            break;
        }
        state.SetIterationTime(start.seconds);
        addedKib += start.addedKib;
    }
    state.counters["added_KiB"] =
        benchmark::Counter(static_cast<double>(addedKib), benchmark::Counter::kAvgIterations);
}
BENCHMARK(StartUp)
    ->Name("start/dlopen_to_first_collection")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(20);

}  // namespace
