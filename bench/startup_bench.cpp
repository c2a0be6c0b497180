// From loading the library to the first collection, as a host does it. The library stays loaded
// once it is, so each round has a process of its own.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

struct Start {
    double seconds;
    long residentKib;
    long privateKib;
};

std::string BuildFolder() {
    char path[PATH_MAX] = "";
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    return program.substr(0, program.rfind("/bin/"));
}

bool RunStart(Start& result) {
    const std::string folder = BuildFolder();
    const std::string command = "'" + folder + "/bin/hxdcontrol_start' '" + folder +
                                "/lib/libhxdcontrol_armv7.so.1' 2>/dev/null";
    std::FILE* const output = ::popen(command.c_str(), "re");
    if (output == nullptr)
        return false;
    const int read = std::fscanf(output, "%lf %ld %ld", &result.seconds, &result.residentKib,
                                 &result.privateKib);
    return ::pclose(output) == 0 && read == 3;
}

void StartUp(benchmark::State& state) {
    long residentKib = 0;
    long privateKib = 0;
    for (auto _ : state) {
        Start start = {};
        if (!RunStart(start)) {
            state.SkipWithError("the driver could not be loaded");
            break;
        }
        state.SetIterationTime(start.seconds);
        residentKib += start.residentKib;
        privateKib += start.privateKib;
    }
    state.SetLabel("aim: 20 ms, 1024 KiB beyond Qt");
    using benchmark::Counter;
    state.counters["resident_KiB"] =
        Counter(static_cast<double>(residentKib), Counter::kAvgIterations);
    state.counters["private_KiB"] =
        Counter(static_cast<double>(privateKib), Counter::kAvgIterations);
}
BENCHMARK(StartUp)
    ->Name("start/dlopen_to_first_collection")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(20);

}  // namespace
