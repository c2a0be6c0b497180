// ExecNTP against time servers that bench/peers.py has started, whose addresses it names in the
// environment.
#include "bench/BenchDevice.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

namespace {

std::string Servers() {
    const char* const servers = std::getenv("HXD_BENCH_TIME_SERVERS");
    return servers == nullptr ? "" : servers;
}

bool Prepare(BenchDevice& bench) {
    bench.device.DevIOCtrl("SetNTPMode(0)");
    bench.device.DevIOCtrl("EnableNTP(1)");
    return bench.device.DevIOCtrl(("SetNTPServer(" + Servers() + ")").c_str()) == 0;
}

// rounds: how often in a row; from the second on the workers may still be busy with a silent
// server.
void ExecNtp(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        BenchDevice bench;
        if (!Prepare(bench)) {
            state.SkipWithError("the servers are not accepted");
            break;
        }
        for (int round = 1; round < state.range(0); ++round)
            bench.device.DevIOCtrl("ExecNTP(status)");
        state.ResumeTiming();
        bench.device.DevIOCtrl("ExecNTP(status)");
        state.PauseTiming();
        if (bench.host.lastDouble != 0.0)
            state.SkipWithError("not synchronised");
        bench.device.CleanupDevice();
        state.ResumeTiming();
    }
}
// Where there are servers.
const bool REGISTERED =
    !Servers().empty() && benchmark::RegisterBenchmark("ntp/exec_in_row", ExecNtp)
                                  ->Arg(1)
                                  ->Arg(2)
                                  ->Arg(5)
                                  ->Iterations(1)
                                  ->Repetitions(5)
                                  ->UseRealTime()
                                  ->Unit(benchmark::kMillisecond) != nullptr;

}  // namespace
