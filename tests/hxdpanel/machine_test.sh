#!/bin/bash
# hxdpanel as it is started on the machine, outside the sandbox: whose paths, files and streams are
# meant. Arguments: hxdpanel, the launcher of the sandbox, the folder of the panels.
set -u
hxdpanel=$1 in_panel=$2 panels=$3
"$in_panel" true || exit  # 77: no panels on this machine
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
cp -r "$panels/emmc" p
mkdir bad && printf '[panel]\nserial=1\n\nnonsense\n' >bad/panel.ini
failures=0

expect() {  # WHAT CODE PATTERN SHOWN
    local got=$?
    [[ $got -eq $2 && $4 == *"$3"* ]] && return
    printf 'FAILED: %s: %d, %s\n' "$1" "$got" "$4" >&2
    failures=1
}
run() { "$hxdpanel" "$@" 2>&1; }

shown=$(run --panel ./p --root kept read serial)
expect 'a relative panel' 0 HX2024060101 "$shown"
[[ -d kept/etc ]] || expect 'a relative root' 0 'kept/etc' missing
echo precious >x.csv
for refused in '--panel nowhere' '--panel bad' '--driver x.csv' '--fresh --blob 0'; do
    # shellcheck disable=SC2086  # words
    run $refused watch --csv x.csv >/dev/null
    [[ $(<x.csv) == precious ]] || { echo "FAILED: $refused has emptied x.csv" >&2; failures=1; }
done
shown=$(run --panel p watch 21 --count 2 --interval 0.01 --csv x.csv; cat x.csv)
expect 'a run that starts writes it anew' 0 'time,"Brightness [%]"' "$shown"
[[ $(wc -l <x.csv) -eq 3 ]] || { echo 'FAILED: not a title and two readings' >&2; failures=1; }

shown=$(run --fresh --driver x.csv channels)
expect 'no driver: named as the user did' 3 'cannot load the driver: x.csv: ' "$shown"
shown=$(run --panel bad channels)
expect 'a mistake in panel.ini' 4 'panel.ini: line 4: neither' "$shown"
mkdir over && printf '[panel]\nserial=MINE\n' >over/panel.ini
shown=$(run --panel over --over-default exec 'read serial' 'read 26' 'read 1')
expect 'a folder over the default panel' 0 $'MINE\n80\n192.168.1.20' "$shown"
shown=$(run script <(echo 'expect 1 = 2'))
expect 'a script that is no plain file' 2 'not a plain file' "$shown"
shown=$(run --fresh exec 'REBOOT()')
expect 'a reboot' 129 'the command restart comes back' "$shown"
shown=$(run --root '' channels)
expect 'an empty path' 2 '--root: needs a path' "$shown"
shown=$("$hxdpanel" --fresh channels 2>&1 >&-)
expect 'no standard output' 2 'standard output is closed' "$shown"
shown=$(run --panel p --json panel)
expect 'the flash, for programs' 0 '"flash": {"kind":"eMMC","lifeTime":"0x0' "$shown"
shown=$(run --panel p --root none exec 'brightness none' && run --panel p --root none panel)
expect 'no brightness control is kept' 0 'panel/brightness = none (described as 80)' "$shown"
shown=$(run --panel p --root kept write 21 42 && run --panel p --root kept panel)
expect 'what is kept is shown' 0 'panel/brightness = 40 (described as 80)' "$shown"
# The page: its socket is the machine's, the panel has none; a pipe of commands goes first.
printf 'write 21 40\npage\n' >lines
"$hxdpanel" --fresh --page <lines >page.out 2>page.err &
server=$!
for ((i = 0; i < 100; ++i)); do
    grep -q '^http://' page.out && break
    sleep 0.1
done
port=$(sed -n 's|^http://127.0.0.1:\([0-9]*\)/$|\1|p' page.out)
ask() {  # PATH
    exec 3<>"/dev/tcp/127.0.0.1/$port" || return
    printf 'GET %s HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n' "$1" >&3
    cat <&3
}
shown=$(ask /api/channels/21)
expect 'the page answers the machine' 0 '"value":40' "$shown"
shown=$(ask /api/openapi.json)
expect 'and has its files in the sandbox' 0 '"openapi"' "$shown"
shown=$(run --fresh --page "$port" </dev/null)
expect 'a port that is taken' 2 'cannot listen at 127.0.0.1' "$shown"
kill -TERM "$server"
wait "$server"
expect 'the page ends in good order' 0 '' ''
shown=$(run --fresh --page channels)
expect 'a page without a console' 2 'goes with the console' "$shown"
exit "$failures"
