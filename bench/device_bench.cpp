// The device object's calls beside what they cannot do without: the host's own callbacks, the files
// under /proc, reading a log once.
#include "SimPanel.h"
#include "bench/BenchHost.h"
#include "driver/CDevCtrl.h"
#include "driver/RefreshCycle.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

struct BenchDevice {
    BenchDevice() {
        const unsigned char blob[] = {2, 0, 0, 0, 1, 0, 0, 0, 200, 0, 0, 0};
        device.InitDevice(blob, sizeof blob);
    }
    ~BenchDevice() { device.CleanupDevice(); }
    void Collect(std::size_t channels) {
        const std::vector<int> list(channels, 1);
        device.CollectDevData(list.data(), static_cast<int>(channels));
    }

    BenchHost host;
    CDevCtrl device{"bench", &host};
};

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

void ReadProcFiles(benchmark::State& state) {
    const char* const paths[] = {"/proc/stat", "/proc/meminfo", "/proc/diskstats", "/proc/net/dev"};
    std::vector<int> files;
    for (const char* path : paths)
        files.push_back(::open(path, O_RDONLY | O_CLOEXEC));
    std::vector<char> buffer(65536);
    for (auto _ : state) {
        for (const int file : files)
            benchmark::DoNotOptimize(::pread(file, buffer.data(), buffer.size(), 0));
    }
    for (const int file : files)
        ::close(file);
}
BENCHMARK(ReadProcFiles)->Name("refresh/four_preads_of_proc");

// As a panel has them.
void MakeSettings() {
    std::ofstream("/usr/olma_app/config/olma_app_conf.ini")
        << "[DEVICE]\nbuzz_duration=30\nbacklight_status=1\nbacklight_duration=300000\n"
           "backlight_brightness=80\n";
    std::ofstream("/etc/iot_cfg/vncConfig.ini") << "[VNCCONFIG]\npasswd=panel\n";
}

// Without the storage manager's wait for its worker: that is a pause, not work.
void Refresh(benchmark::State& state) {
    MakeSettings();
    BenchDevice bench;
    for (auto _ : state) {
        state.PauseTiming();
        bench.device.CleanupDevice();
        const unsigned char blob[] = {0, 0};
        bench.device.InitDevice(blob, sizeof blob);
        state.ResumeTiming();
        bench.Collect(32);
    }
}
BENCHMARK(Refresh)->Name("refresh/first_collection")->Iterations(200);

// Every reading after the first, all threads' CPU time; on a clock that makes the wait for the
// storage's worker short.
void WarmRefresh(benchmark::State& state) {
    MakeSettings();
    sim::SimPanel::Instance().RunClock(1000.0);
    BenchDevice bench;
    bench.Collect(32);
    for (auto _ : state) {
        bench.device.DevIOCtrl("REFLESH()");
        bench.Collect(32);
    }
    sim::SimPanel::Instance().RunClock();
}
BENCHMARK(WarmRefresh)->Name("refresh/warm")->MeasureProcessCPUTime()->Iterations(500);

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

void LogTail(benchmark::State& state) {
    BenchDevice bench;
    MakeLog();
    for (auto _ : state)
        bench.device.DevIOCtrl("ReadAppLog(0,64,text,status)");
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
