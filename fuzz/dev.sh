# shellcheck shell=bash
# ./dev fuzz. Read by dev, whose functions it uses.

# What makes it fail is kept in build/fuzz/found; as a file of fuzz/seeds/TARGET it is tried in every
# run from then on. What a run has learnt is kept in build/fuzz/corpus.
command_fuzz() {  # [SECONDS | coverage | minimise] [TARGET...]
    local work=${1:-60} target targets=() failed=0
    [[ $work =~ ^([0-9]+|coverage|minimise)$ ]] || die "fuzz takes a number of seconds, coverage or minimise"
    shift $(($# > 0 ? 1 : 0))
    for target in "${@:-}"; do
        [[ -z $target || -d fuzz/seeds/$target ]] || die "there is no fuzzing target $target"
    done
    read -r -a targets <<<"${*:-$(cd fuzz/seeds && echo *)}"
    require_packages "${fuzz_packages[@]}"
    require_sandbox
    if [[ $work == coverage ]]; then
        fuzz_coverage "${targets[@]}"
        return
    fi
    configure fuzz
    build fuzz hxdcontrol_fuzz
    mkdir -p build/fuzz/found
    export -f fuzz_one fuzz_run
    printf '%s\0' "${targets[@]}" |
        in_panel=$in_panel xargs -0 -P "$(nproc)" -I TARGET bash -c 'fuzz_one "$@"' fuzz "$work" TARGET || failed=1
    [[ $failed -eq 0 ]] || die "fuzz: what failed is in build/fuzz/found"
    say "fuzz: ${#targets[@]} targets passed"
}

# The clean-up of what lives as long as the program is nobody's leak. For speed: who allocated is told
# by one frame, memory is soon used again, and what is allocated stays unfilled.
fuzz_run() {  # BUILD TARGET ARGUMENT...
    local folder=$PWD/build/$1 target=$2
    shift 2
    ASAN_OPTIONS="detect_leaks=0:malloc_context_size=1:quarantine_size_mb=1:max_malloc_fill_size=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}" \
        "$in_panel" --live --panel tests/panels/emmc --rw "$folder" -- "$folder/bin/hxdcontrol_fuzz" \
        --target="$target" -max_len=512 -close_fd_mask=3 "$@"
}

fuzz_one() {  # SECONDS|minimise TARGET
    local corpus=build/fuzz/corpus/$2 log=build/fuzz/$2.log small=build/fuzz/minimised/$2 arguments
    mkdir -p "$corpus"
    if [[ $1 == minimise ]]; then
        rm -rf "$small"
        mkdir -p "$small"
        arguments=(-set_cover_merge=1 -use_counters=0 "$small" "$corpus" "fuzz/seeds/$2")
    else
        arguments=(-dict=fuzz/words.dict -timeout=30 -detect_leaks=0 -entropic=0 -print_final_stats=1
            -max_total_time="$1" -artifact_prefix="build/fuzz/found/$2-" "$corpus" "fuzz/seeds/$2")
        [[ $1 -gt 0 ]] || arguments=(-runs=0 "${arguments[@]}")
    fi
    if fuzz_run fuzz "$2" "${arguments[@]}" >"$log" 2>&1; then
        sed -n "s/^#\([0-9]*\)\tDONE.*corp: \([0-9]*\).*exec.s: \([0-9]*\).*/fuzz: $2: \1 executions, \3 a second, \2 inputs kept/p" "$log"
    else
        tail -n 60 "$log"
        echo "fuzz: $2 has failed"
        return 1
    fi
}

# What the seeds alone reach of the driver.
fuzz_coverage() {  # TARGET...
    local target build=build/fuzz-coverage
    configure fuzz-coverage
    build fuzz-coverage hxdcontrol_fuzz
    rm -f "$build"/*.profraw
    for target in "$@"; do
        LLVM_PROFILE_FILE=$PWD/$build/$target.profraw fuzz_run fuzz-coverage "$target" -runs=0 \
            "fuzz/seeds/$target" >"$build/$target.log" 2>&1 ||
            die "fuzz: $target has failed: $build/$target.log"
    done
    llvm-profdata merge -o "$build/all.profdata" "$build"/*.profraw
    llvm-cov report "$build/bin/hxdcontrol_fuzz" -instr-profile="$build/all.profdata" \
        -show-branch-summary -show-region-summary=0 \
        -ignore-filename-regex="^$PWD/(hxdpanel|platform|fuzz|tests|build)/|^/usr/"
}
