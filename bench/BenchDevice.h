// A device as a host drives it, for the benchmarks.
#ifndef HXD_BENCH_BENCHDEVICE_H
#define HXD_BENCH_BENCHDEVICE_H

#include "bench/BenchHost.h"
#include "driver/CDevCtrl.h"

#include <cstddef>
#include <vector>

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

#endif
