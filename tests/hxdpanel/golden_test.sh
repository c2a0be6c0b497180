#!/bin/bash
# The channels of each panel of tests/panels/ against its channels.json. HXD_UPDATE_GOLDEN=1 writes
# the files anew. What is this machine's own (CPU, memory, free space) is left out.
# Arguments: hxdpanel, the folder of the panels.
set -u
hxdpanel=$1 panels=$2
in_panel=${0%/*}/../../hxdpanel/in-panel
"$in_panel" true || exit  # 77: no panels on this machine

channels() {  # PANEL
    "$in_panel" --panel "$1" -- "$hxdpanel" --panel "$1" channels --json |
        sed -E '/"number":(10|11|28),/ s/"value":[^,]*/"value":"(of this machine)"/'
}

failures=0
for panel in "$panels"/*/; do
    panel=${panel%/}
    golden=$panel/channels.json
    shown=$(channels "$panel")
    if [[ -n ${HXD_UPDATE_GOLDEN:-} ]]; then
        printf '%s\n' "$shown" >"$golden"
        continue
    fi
    while IFS= read -r line; do
        name=$(sed -nE 's/.*"number":([0-9]+),"name":"([^"]*)".*/channel \1 \2/p' <<<"$line")
        echo "${panel##*/}: ${name:-other text}: ${line:0:1} ${line#?}"
        failures=1
    done < <(diff -U 0 "$golden" - <<<"$shown" | grep '^[-+] ')
    [[ $shown == "$(<"$golden")" ]] || failures=1
done
[[ $failures -eq 0 ]] || echo "(- stored, + shown; HXD_UPDATE_GOLDEN=1 stores what is shown)"
exit "$failures"
