#!/bin/bash
# What hxdcheck says on a healthy panel and on broken ones.
# Arguments: the case (a function below, or a fault of the platform), the build's folder, the library
# with the faults, words of an emulator.
set -u
case=$1 build=$2 faults=$3
shift 3
here=$(dirname -- "$(realpath -- "$0")") emulator=$*
in_panel=$here/../../hxdpanel/in-panel
driver=libhxdcontrol_armv7.so.1
"$in_panel" true || exit  # 77: no panels on this machine
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/lib" "$work/few" "$work/old" "$work/empty"
cp -L "$build"/lib/{libMfcToQt,libolma-hal,libolma-gui,liblogger,libtoolscom}.so "$build/lib/$driver" "$work/lib"
failures=0 panel=$here/panel fault='' libraries=$work/lib said='' code=0 input=/dev/null

check() {  # IN-PANEL-OPTION... -- HXDCHECK-ARGUMENT...
    local options=()
    while [[ $1 != -- ]]; do
        options+=("$1")
        shift
    done
    shift
    # shellcheck disable=SC2086  # the emulator is words
    said=$(ASAN_OPTIONS="${ASAN_OPTIONS:-}:verify_asan_link_order=0" \
        "$in_panel" --panel "$panel" --ro "$work" "$work" "${options[@]}" -- env \
        LD_LIBRARY_PATH="$libraries${HXD_QT4_DIR:+:$HXD_QT4_DIR/lib}" LD_PRELOAD="$faults" \
        HXD_FAULT="$fault" HXD_EMULATOR="$emulator" \
        $emulator "$build/bin/hxdcheck" "$@" <"$input" 2>&1)
    code=$?
    said=$(tr -s ' \n' ' ' <<<"$said")
}

fail() {
    printf '%s, exit code %s in:\n%s\n' "$1" "$code" "$said"
    failures=$((failures + 1))
}

expect() {  # CODE TEXT...
    [[ $code == "$1" ]] || fail "not exit code $1"
    shift
    for text in "$@"; do
        [[ $said == *"$text"* ]] || fail "'$text' is missing"
    done
}

# Nothing to complain about, and nothing changed but the lock file. A busy machine may be slow.
healthy() {
    "$in_panel" --root "$work/root" --panel "$panel" -- true
    # Nor is what Qt 4 keeps below its user's Settings ours.
    files() { find "$work/root" -type f ! -name olma_app_conf.lck ! -path '*/root/Settings/*' -exec sha256sum {} +; }
    before=$(files)
    check --root "$work/root" --
    after=$(files)
    [[ -n $before && $before == "$after" ]] || fail "files have changed: $(diff <(echo "$before") <(echo "$after"))"
    [[ $code -le 1 && ${said//but slow/} != *WRONG* ]] || fail "a healthy panel is not ok"
    [[ $code == 0 || $said == *'but slow'* ]] || fail "something to look at on a healthy panel"
    for text in "processor: " "std::string goes there and back" "channel 20 arrives as the platform says" "32 delivered" ", 0 left after" \
        "30 COM2 use 50 %" "eth0 192.168.1.20 mask 255.255.255.0"; do
        [[ $said == *"$text"* ]] || fail "'$text' is missing"
    done
}

# The driver's file.
driver_file() {
    cp "$work"/lib/*.so "$work/few" && rm "$work/few/libtoolscom.so"
    libraries=$work/few check -- "$work/lib/$driver"
    expect 2 "libraries: not found: libtoolscom.so (for $driver)" "start: not tried: it cannot be loaded"
    while IFS='|' read -r change text; do
        cp "$work/lib/$driver" "$work/old/"
        (cd "$work/old" && eval "$change") || fail "cannot make the case"
        check -- "$work/old/$driver"
        expect 2 "$text"
    done <<END
sed -i s/GLIBCXX_3.4.21/GLIBCXX_9.4.21/g $driver|versions: too old here: GLIBCXX_9.4.21 of libstdc++.so.6, for $driver
sed -i s/hal_uart_info/hal_uart_infx/g $driver|functions: no library has hal_uart_infx
dd of=$driver bs=1 seek=18 conv=notrunc status=none <<<\$'\x08'|processor: the driver is for another processor
truncate -s 9000 $driver|has no section table
cp ../lib/libtoolscom.so $driver|does not export CreateDeviceCtrl and DestroyDeviceCtrl
echo text >$driver|is no program or library
rm $driver|No such file or directory
END
}

# The platform, with the fault that names the case.
platform() {
    while IFS='|' read -r fault code_wanted text; do
        [[ $fault == "$case" ]] || continue
        check --
        expect "$code_wanted" "$text"
        return
    done <<'END'
record|2|hal_get_network: the library writes at least 4 bytes beyond hal_network_t of 52 bytes
mac|2|hal_get_mac_address eth0: the library writes at least 7 bytes beyond the text of 20 bytes
crash|2|hal_uart_info: crashed: Aborted
hang|2|__gui_get_serial_number: did not come to an end in time
serial|2|delivered text: channel 20 arrives as "11
tick|2|Olma_GetTickCount: is up to 10
END
    fail "there is no case '$case'"
}

# The panel: no zone, a storage that is read-only, an odd resolver, a lock file that is none.
broken_panel() {
    panel=$work/broken
    mkdir -p "$panel/root/etc" "$panel/root/tmp/ping.lock"
    printf 'nameserver\t192.168.1.1\n' >"$panel/root/etc/resolv.conf"
    check --ro "$work/empty" /storage/user_dir --
    expect 2 "time zone: neither /etc/localtime nor /etc/timezone" "ping.lock: is no ordinary file" \
        "/storage/user_dir: cannot be written (Read-only file system)" "name server line that the driver cannot read" \
        "vncConfig.ini: is not there" "without a value: channels 26, 27, 31, 32"

    # Where a start would set the clock, it is asked about.
    mkdir -p "$panel/root/usr/olma_app/config"
    printf '[NTP_PARAM]\nntp_switch=1\nntp_mode=1\nntp_server1=a.invalid\n' >"$panel/root/usr/olma_app/config/ntp_param_cfg.ini"
    check --
    expect 2 "start: not tried: automatic time synchronisation is on" "a.invalid: "
    [[ $said != *'first collection'* ]] || fail "the device was started"
}

# Acts, options and the form for programs.
options() {
    panel=$here/panel
    printf 'y\ny\ny\nn\nn\n' >"$work/answers"
    input=$work/answers check -- --act
    expect 1 "beep: works" "dim: done, but not noticed" "light: not tried"
    check -- --channels
    expect "$code" "The channels 1 IP address 1 192.168.1.20"
    [[ $said != *'ok processor'* ]] || fail "--channels shows what is ok"
    check -- --runtime "$build/bin/hxdcheck-host" --version
    expect 0 "hxdcontrol "
    check -- --nonsense
    expect 3 "--nonsense is not understood"
    check -- --json
    echo "$said" >"$work/report.json"
    cat >"$work/json.cmake" <<END
file(READ $work/report.json json)
string(JSON status GET "\${json}" checks 1 status)
string(JSON value GET "\${json}" channels 19 value)
string(JSON name GET "\${json}" checks 1 name)
string(JSON last LENGTH "\${json}")
math(EXPR last "\${last} - 1")
foreach(i RANGE \${last})
    string(JSON member MEMBER "\${json}" \${i})
    string(APPEND members " \${member}")
endforeach()
string(JSON format GET "\${json}" format)
message("\${status} \${name} \${value}, format \${format}:\${members}")
END
    said=$(cmake -P "$work/json.cmake" 2>&1)
    documented=$(sed -n '/^### As JSON/,/^## W/s/^| \W\([a-z]*\)\W .*/\1/p' "$here/../../docs/porting.md" | sort | xargs)
    expect "$code" "ok processor HX2024060017, format 1: $documented"
}

case $case in
    healthy) healthy ;;
    driver_file) driver_file ;;
    broken_panel) broken_panel ;;
    options) options ;;
    *) platform ;;
esac
exit $((failures > 0))
