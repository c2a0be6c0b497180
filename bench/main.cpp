// Entry of the benchmarks. The driver reboots, sets clocks and mounts, so they run inside the
// sandbox only.
#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace {

// OpenSSL looks at its capability masks while it is being loaded, hence the fresh start. Without
// SHA instructions and vectors it is a peer for portable code.
void RestartWithScalarOpenssl(char** argv) {
    const char* const mark = "HXD_BENCH_RESTARTED";
    if (std::getenv(mark) != nullptr)
        return;
    ::setenv(mark, "1", 1);
    ::setenv("OPENSSL_ia32cap", "0:0", 1);
    ::setenv("OPENSSL_armcap", "0", 1);
    ::execv("/proc/self/exe", argv);
    std::perror("hxdcontrol_bench: cannot restart itself");
    std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
    if (::access("/run/hxd-panel", F_OK) != 0) {
        std::fprintf(stderr, "%s runs in the sandbox only: hxdpanel/in-panel %s\n", argv[0],
                     argv[0]);
        return 1;
    }
    RestartWithScalarOpenssl(argv);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    // The driver's tasks say when they start and end; a host's user never sees that.
    ::setenv("QT_LOGGING_RULES", "*.debug=false", 0);
    QCoreApplication application(argc, argv);
    // Standard output is the table's alone: what the driver prints there would stand in between.
    std::ios::sync_with_stdio(false);
    stdout = std::fopen("/dev/null", "w");
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
