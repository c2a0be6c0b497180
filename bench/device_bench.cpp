// The device object's calls beside what they cannot do without: the host's own callbacks, reading a
// log once.
#include "bench/BenchDevice.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

void CachedCollection(benchmark::State& state) {
    BenchDevice bench;
    const std::vector<int> list(static_cast<std::size_t>(state.range(0)), 1);
    bench.Collect(list.size());
    for (auto _ : state)
        bench.device.CollectDevData(list.data(), static_cast<int>(list.size()));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CachedCollection)->Name("collection/cached")->Arg(32)->Arg(1024);

void CallbacksAlone(benchmark::State& state) {
    BenchHost host;
    IRtdb* volatile called = &host;  // through the virtual table, as the driver calls it
    for (auto _ : state) {
        for (int channel = 0; channel < state.range(0); ++channel) {
            int type = 0;
            called->GetChannelType(channel, &type);
            called->SetChannelDouble(channel, type);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CallbacksAlone)->Name("collection/host_callbacks_alone")->Arg(32)->Arg(1024);

void UnknownCommand(benchmark::State& state) {
    BenchDevice bench;
    for (auto _ : state)
        bench.device.DevIOCtrl("Nothing(1)");
}
BENCHMARK(UnknownCommand)->Name("command/unknown_name");

void RefusedWrite(benchmark::State& state) {
    BenchDevice bench;
    int value = 1;
    for (auto _ : state)
        bench.device.WriteChannel(9, DATATYPE_INTEGER, &value);
}
BENCHMARK(RefusedWrite)->Name("command/write_to_read_only_channel");

constexpr const char* LOG = "/storage/log/restart.log";
constexpr long LOG_BYTES = 48L << 20;  // what fits the panel's storage

void MakeLog() {
    FILE* const log = std::fopen(LOG, "w");
    const std::string line(99, 'x');
    for (long written = 0; log != nullptr && written < LOG_BYTES; written += 100)
        std::fprintf(log, "%s\n", line.c_str());
    if (log != nullptr)
        std::fclose(log);
}

// The most that was resident since the kernel was told to forget it.
long PeakKib() {
    std::ifstream status("/proc/self/status");
    long kib = 0;
    for (std::string word; status >> word;) {
        if (word == "VmHWM:")
            status >> kib;
    }
    return kib;
}

void LogTail(benchmark::State& state) {
    BenchDevice bench;
    MakeLog();
    std::ofstream("/proc/self/clear_refs") << "5";
    const long before = PeakKib();
    for (auto _ : state)
        bench.device.DevIOCtrl("ReadAppLog(0,64,text,status)");
    state.counters["peak_KiB"] = static_cast<double>(PeakKib() - before);
    state.SetBytesProcessed(state.iterations() * LOG_BYTES);
}
BENCHMARK(LogTail)->Name("log/newest_64_kib_of_48_mib")->Unit(benchmark::kMillisecond);

void ReadOnce(benchmark::State& state) {
    MakeLog();
    for (auto _ : state) {
        const std::unique_ptr<char[]> buffer(new char[LOG_BYTES]);
        const int file = ::open(LOG, O_RDONLY | O_CLOEXEC);
        benchmark::DoNotOptimize(::read(file, buffer.get(), LOG_BYTES));
        ::close(file);
    }
    state.SetBytesProcessed(state.iterations() * LOG_BYTES);
}
BENCHMARK(ReadOnce)->Name("log/one_read_of_48_mib")->Unit(benchmark::kMillisecond);

}  // namespace
