# shellcheck shell=bash
# ./dev bench and ./dev instructions. Read by dev, whose functions it uses.

command_bench() {
    require_packages "${bench_packages[@]}"
    configure release HXD_TESTS=OFF HXD_BENCH=ON
    build release hxdcontrol_bench hxdcontrol_stripped
    if [[ ${1:-} == --peers ]]; then
        run_peers
    else
        "$in_panel" build/release/bin/hxdcontrol_bench "$@"
    fi
    report_size "this PC's" build/release
    report_size "the panel's" build/package  # of the last ./dev package
}

run_peers() {
    local results=build/peers/results
    require_packages "${peer_packages[@]}"
    unpack_packages build/peers/root "${unpacked_peers[@]}"
    # Where ntpdig looks for it when it is not installed.
    cp build/peers/root/usr/lib/*/ntp/libntpc.so.1 \
        build/peers/root/usr/lib/python3/dist-packages/ntp/libntpc.so
    mkdir -p "$results"
    "$in_panel" --rw "$PWD/$results" -- \
        python3 bench/peers.py build/release build/peers/root "$results/peers.json"
    say "the same as JSON: $results/peers.json"
}

# The same everywhere: libc and Qt choose their code by the processor, and large copies by its caches.
command_instructions() {
    local counted=build/release/instructions features tunables
    [[ $# -eq 0 || $* == --update ]] || die "instructions takes --update or nothing"
    require_packages "${count_packages[@]}"
    require_sandbox
    configure release HXD_TESTS=OFF HXD_BENCH=ON
    build release hxdcontrol_counted
    rm -rf "$counted"
    mkdir -p "$counted"
    features=-AVX,-AVX2,-AVX512F,-AVX512VL,-BMI1,-BMI2,-ERMS,-FSRM,-LZCNT,-MOVBE,-RTM,-SSE4_1,-SSE4_2,-SSSE3
    tunables=glibc.cpu.hwcaps=$features:glibc.cpu.x86_data_cache_size=0x8000
    tunables+=:glibc.cpu.x86_shared_cache_size=0x100000:glibc.cpu.x86_non_temporal_threshold=0xc0000
    "$in_panel" --panel tests/panels/emmc --rw "$PWD/$counted" -- \
        env GLIBC_TUNABLES="$tunables" QT_HASH_SEED=0 QT_LOGGING_RULES='*.debug=false' \
            QT_NO_CPU_FEATURE='sse3 ssse3 sse4.1 sse4.2 avx avx2 bmi bmi2 f16c rdrnd' \
            valgrind --tool=callgrind --quiet --dump-instr=no \
            --callgrind-out-file="$PWD/$counted/callgrind.out" build/release/bin/hxdcontrol_counted >&2
    bench/compare-instructions "$counted" bench/instructions.txt "$@" ||
        die "the counts have changed; ./dev instructions --update records a change that is meant"
}

report_size() {  # WHOSE BUILD
    local library=$2/package/libhxdcontrol_armv7.so.1
    [[ ! -e $library ]] || say "$1 library, stripped: $(stat -c %s "$library") bytes of at most 307200"
}
