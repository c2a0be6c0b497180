#!/bin/bash
# ./dev where it is used wrongly or from elsewhere, in a copy whose tools are stand-ins.
# Argument: the folder of the sources.
set -u
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work"/tree/{driver,hxdpanel,build/{packages,dev/{bin,lib}}} "$work/bin" "$work/else"
(cd "$1" && cp --parents dev packaging/dev.sh "$work/tree/")
touch "$work/tree/build/packages/last-good.deb"
stand_in() { printf '#!/bin/sh\n%s\n' "$2" >"$1"; chmod +x "$1"; }
for tool in cmake apt-get sudo; do stand_in "$work/bin/$tool" 'exit 0'; done
# shellcheck disable=SC2016  # for the stand-in
stand_in "$work/bin/dpkg-query" 'for p in $PACKAGES; do echo "$p installed"; done'
stand_in "$work/tree/hxdpanel/in-panel" 'exit 0'
stand_in "$work/bin/ninja" 'echo built >&2'
touch "$work"/tree/build/dev/{CMakeCache.txt,lib/libhxdcontrol_armv7.so.1}
stand_in "$work/tree/build/dev/bin/hxdpanel" 'pwd; echo "$@"'
touch "$work/tree/build/dev/build.ninja"
PACKAGES=$(sed -n '/^build_packages/,/^arm_packages/p' "$1/dev" | tr -c 'a-z0-9+-' ' ')
export PACKAGES PATH="$work/bin:$PATH"

failures=0
expect() {  # WHAT CODE PATTERN ARGUMENT...
    local what=$1 code=$2 pattern=$3 shown
    shift 3
    shown=$(cd "$work/else" && "$work/tree/dev" "$@" 2>&1)
    local got=$?
    [[ $got -eq $code && $shown == *"$pattern"* ]] && return
    printf 'FAILED: %s: %d, %s\n' "$what" "$got" "$shown" >&2
    failures=1
}
expect 'relative paths begin where the caller is' 0 "$work/else"$'\n--panel ./p' run --panel ./p
expect 'nothing to build' 0 "$work/else" run
[[ $("$work/tree/dev" run 2>&1) != *built* ]] || { echo 'FAILED: asks the build for nothing' >&2; failures=1; }
touch "$work/tree/driver/New.cpp"
expect 'a new file is built' 0 built run
expect 'no such command' 2 'foo is no command' foo
expect 'no test of that name' 8 'No tests were found' test -R NoSuchTest
HXD_PLATFORM_DIR=nowhere expect 'no such SDK' 1 "no SDK in $work/else/nowhere" package
[[ -e $work/tree/build/packages/last-good.deb ]] ||
    { echo 'FAILED: the last good packages are gone' >&2; failures=1; }
exit "$failures"
