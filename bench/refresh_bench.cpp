// A full reading of the panel beside the system calls that it cannot do without, on panels with
// eMMC, with NAND and without any storage.
#include "SimPanel.h"
#include "bench/BenchDevice.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr const char* SETTINGS = "/usr/olma_app/config/olma_app_conf.ini";
constexpr const char* VNC_SETTINGS = "/etc/iot_cfg/vncConfig.ini";

enum Storage { EMMC, NAND, NONE };
constexpr const char* STORAGE_NAMES[] = {"emmc", "nand", "none"};

// The panel's storage becomes that of a test panel, and it gets the settings that a panel has.
void MakePanel(Storage storage) {
    const std::string files =
        std::string(HXD_SOURCE_DIR "/tests/panels/") + STORAGE_NAMES[storage] + "/root";
    const std::string command =
        "rm -rf /sys/class /sys/devices/platform/* /sys/kernel /dev/mtd0; "
        "for f in sys dev; do ! cd " +
        files + "/$f || cp -r . /$f; done";
    if (std::system((command + " 2>/dev/null").c_str()) != 0)
        std::fprintf(stderr, "hxdcontrol_bench: the panel's files are incomplete\n");
    std::ofstream(SETTINGS) << "[DEVICE]\nbuzz_duration=30\nbacklight_status=1\n"
                               "backlight_duration=300000\nbacklight_brightness=80\n";
    std::ofstream(VNC_SETTINGS) << "[VNCCONFIG]\npasswd=panel\n";
}

// With the storage manager's first look for its files, but without a wait for its worker.
void FirstCollection(benchmark::State& state, Storage storage) {
    MakePanel(storage);
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

// Every reading after the first, the CPU time of all threads. The reader moves the clock itself
// when it waits for the storage's worker, so that every thread does in a wait what it does in 200
// ms.
void WarmRefresh(benchmark::State& state, Storage storage) {
    MakePanel(storage);
    sim::SimPanel& panel = sim::SimPanel::Instance();
    panel.HoldClock();
    panel.MoveHeldClock();
    {
        BenchDevice bench;
        bench.Collect(32);
        for (auto _ : state) {
            bench.device.DevIOCtrl("REFLESH()");
            bench.Collect(32);
        }
        panel.RunClock();
    }
}

// Reads as often as the file has pieces of this size.
void ReadFile(const char* path, std::size_t piece) {
    static char buffer[65536];
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    while (::read(file, buffer, piece) == static_cast<ssize_t>(piece))
        benchmark::DoNotOptimize(buffer);
    ::close(file);
}

void RunCommand(const char* command) {
    std::FILE* const output = ::popen(command, "re");
    if (output != nullptr)
        ::pclose(output);
}

void ReadStorage(Storage storage) {
    if (storage == EMMC)
        ReadFile("/proc/diskstats", 65536);
    if (storage != NAND)
        return;
    RunCommand("mount -t debugfs none /sys/kernel/debug");
    ReadFile("/sys/kernel/debug/ubi/ubi0/detailed_erase_block_info", 65536);
    RunCommand("umount -l /sys/kernel/debug");
}

// What a reading asks of the kernel if nothing else costs anything: each file in its turn, each
// setting under a lock of its own.
void BareCalls(benchmark::State& state, Storage storage) {
    MakePanel(storage);
    for (auto _ : state) {
        const int lock = ::open("/tmp/olma_app_conf.lck", O_RDONLY | O_CREAT | O_CLOEXEC, 0777);
        for (int setting = 0; setting < 3; ++setting) {
            ::flock(lock, LOCK_EX);
            ReadFile(SETTINGS, 4096);
            ::flock(lock, LOCK_UN);
        }
        ReadFile("/proc/stat", 128);
        ReadFile("/proc/meminfo", 4096);
        struct stat there = {};
        benchmark::DoNotOptimize(::stat(VNC_SETTINGS, &there));
        ReadFile(VNC_SETTINGS, 4096);
        ReadStorage(storage);
        struct statfs space = {};
        benchmark::DoNotOptimize(::statfs("/", &space));
        ::close(lock);
    }
}

// Without storage every reading looks for it: the warm reading is a first one.
BENCHMARK_CAPTURE(FirstCollection, emmc, EMMC)->Name("refresh/first/emmc")->Iterations(200);
BENCHMARK_CAPTURE(FirstCollection, nand, NAND)->Name("refresh/first/nand")->Iterations(200);
BENCHMARK_CAPTURE(FirstCollection, none, NONE)->Name("refresh/first/none")->Iterations(200);
BENCHMARK_CAPTURE(WarmRefresh, emmc, EMMC)->Name("refresh/warm/emmc")->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(BareCalls, emmc, EMMC)->Name("refresh/bare_calls/emmc")->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(WarmRefresh, nand, NAND)->Name("refresh/warm/nand")->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(BareCalls, nand, NAND)->Name("refresh/bare_calls/nand")->MeasureProcessCPUTime();

}  // namespace
