#!/bin/bash
# The launcher seen from the machine: what a panel keeps, forgets, is given and lets out.
# Usage: in_panel_test.sh PATH-OF-IN-PANEL
# shellcheck disable=SC2016  # what stands in single quotes is for the shell in the panel
set -u
in_panel=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

expect() {  # WHAT EXPECTED ACTUAL
    [[ $2 == "$3" ]] && return
    printf 'FAILED: %s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3" >&2
    failures=$((failures + 1))
}

"$in_panel" true || exit  # 77 where namespaces are forbidden

# Exit codes, arguments and streams are the command's own.
"$in_panel" sh -c 'exit 3'
expect 'exit code' 3 $?
"$in_panel" sh -c 'kill -TERM $$'
expect 'exit code after a signal' 143 $?
"$in_panel" no-such-command 2>/dev/null
expect 'exit code of an unknown command' 127 $?
expect 'arguments' $'<a b><q"\'><><*><--root>' "$("$in_panel" -- printf '<%s>' 'a b' $'q"\'' '' '*' --root)"
expect 'streams' 'in:x' "$(echo x | "$in_panel" sh -c 'read -r l; echo "in:$l"; echo noise >&2' 2>"$work/err")"
expect 'standard error' noise "$(cat "$work/err")"

# What is written stays inside and is gone with the panel; a kept root keeps it.
write='for f in /etc /tmp /storage/log /media/usb0 /usr/olma_app/config; do echo kept >$f/hxd-trace; done'
read_back='cat /etc/hxd-trace /tmp/hxd-trace /storage/log/hxd-trace /media/usb0/hxd-trace \
    /usr/olma_app/config/hxd-trace 2>/dev/null | wc -l'
"$in_panel" sh -c "$write"
expect 'a fresh panel forgets' 0 "$("$in_panel" sh -c "$read_back")"
"$in_panel" --root "$work/kept" sh -c "$write"
expect 'a kept root keeps' 5 "$("$in_panel" --root "$work/kept" sh -c "$read_back")"
"$in_panel" --rw "$work" sh -c "echo out >'$work/out'; echo no >'$in_panel-trace'" 2>/dev/null
expect '--rw lets out' out "$(cat "$work/out")"
expect 'nothing else reaches the machine' '' "$(ls -d {/etc,/tmp,/storage/log}/hxd-trace \
    /usr/olma_app "$in_panel-trace" 2>/dev/null)"

# Files of a panel are laid over, may be changed, and are never changed themselves; a setting that a
# kept root holds is not overwritten by them.
panel="$work/a panel"
mkdir -p "$panel"/root/{proc,sys/class/x,etc,dev}
echo 'cpu 1 2 3' >"$panel/root/proc/stat"
echo 7 >"$panel/root/sys/class/x/size"
echo 'nameserver 192.0.2.1' >"$panel/root/etc/resolv.conf"
echo chip >"$panel/root/dev/mtd0"
touch "$panel/panel.ini"
change='test -r "$HXD_PANEL_DIR/panel.ini" &&
    cat /proc/stat /sys/class/x/size /dev/mtd0 /etc/resolv.conf &&
    for f in /proc/stat /sys/class/x/size /etc/resolv.conf; do echo new >$f || exit; done; cat /proc/stat'
seen=$'cpu 1 2 3\n7\nchip\nnameserver 192.0.2.1\nnew'
expect 'panel files' "$seen" "$("$in_panel" --panel "$panel" --root "$work/b" sh -c "$change")"
expect 'panel files, again' "${seen/nameserver 192.0.2.1/new}" \
    "$("$in_panel" --panel "$panel" --root "$work/b" sh -c "$change")"
expect 'the panel folder is untouched' $'cpu 1 2 3\n7\nnameserver 192.0.2.1' \
    "$(cat "$panel"/root/{proc/stat,sys/class/x/size,etc/resolv.conf})"

# A reboot ends the panel and is told; what cannot be set up is an error, and only a machine without
# the means is a skip.
reboot='import ctypes; ctypes.CDLL(None).reboot(0x01234567)'
if command -v python3 >/dev/null; then
    "$in_panel" python3 -c "$reboot" 2>"$work/err"
    expect 'exit code of a reboot' 129 $?
    expect 'a reboot is told' 'in-panel: the panel was rebooted' "$(cat "$work/err")"
fi
"$in_panel" --ro /no/such/file /x true 2>"$work/err"
expect 'exit code of a panel that cannot be set up' 125 $?
expect 'lines of its message' 1 "$(wc -l <"$work/err")"
"$in_panel" --panel "$work/none" true 2>/dev/null
expect 'exit code of a missing panel' 125 $?
PATH=/none "$BASH" "$in_panel" true 2>/dev/null
expect 'exit code without bubblewrap' 77 $?

[[ $failures -eq 0 ]] && echo 'in-panel: all as expected'
exit $((failures > 0))
