// The host of the benchmarks.
#ifndef HXD_BENCH_BENCHHOST_H
#define HXD_BENCH_BENCHHOST_H

#include "host.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

// Takes values as a host with a plain table would.
class BenchHost final : public IRtdb {
public:
    int GetParamType(const char* name, DATATYPE* type) override {
        *type = *name == 't' ? DATATYPE_TEXT : *name == 's' ? DATATYPE_DOUBLE : DATATYPE();
        return 0;
    }
    int GetParamInt(const char*, int*) override { return -1; }
    int GetParamDouble(const char*, double*) override { return -1; }
    int GetParamString(const char*, std::string*) override { return -1; }
    int SetParamInt(const char*, int) override { return 0; }
    int SetParamDouble(const char*, double value) override {
        lastDouble = value;
        return 0;
    }
    int SetParamString(const char*, const std::string* value) override {
        benchmark::DoNotOptimize(value->size());
        return 0;
    }
    int GetChannelType(int, int* type) override {
        *type = DATATYPE_DOUBLE;
        return 0;
    }
    int ReservedSlot9() override { return 0; }
    int ReservedSlot10() override { return 0; }
    int ReservedSlot11() override { return 0; }
    int SetChannelInt(int, int) override { return 0; }
    int SetChannelDouble(int channel, double value) override {
        m_values[static_cast<std::size_t>(channel) % m_values.size()] = value;
        return 0;
    }
    int SetChannelString(int, const std::string*) override { return 0; }

    double lastDouble = 0.0;  // the parameter that was set last

private:
    std::vector<double> m_values = std::vector<double>(1024);
};

#endif
