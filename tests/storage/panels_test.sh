#!/bin/bash
# What the console shows of the storage on the panels of tests/panels/.
# Arguments: hxdpanel, the folder of the panels.
set -u
hxdpanel=$1 panels=$2
in_panel=${0%/*}/../../hxdpanel/in-panel
"$in_panel" true || exit  # 77: no panels on this machine

failures=0
while read -r panel life gear; do
    shown=$("$in_panel" --panel "$panels/$panel" -- "$hxdpanel" channels --json 2>/dev/null |
        tr -d ' \n' | grep -o '"number":2[67],[^}]*' | grep -o '"value":[^,}]*' | cut -d: -f2 | xargs)
    [[ $shown == "$life $gear" ]] && continue
    echo "$panel: expected '$life $gear', not '$shown'"
    failures=1
done <<'END'
emmc 80 1
emmc-old 20 1
emmc-two-matches -1 -1
nand 89 1
nand-worn 20 1
none -1 -1
END
exit "$failures"
