#!/bin/bash
# Runs the scripts that come with hxdpanel, and those beside this file.
# Arguments: hxdpanel, the folder of the sources.
set -u
hxdpanel=$1 sources=$2
in_panel=$sources/hxdpanel/in-panel
"$in_panel" true || exit  # 77: no panels on this machine

failures=0
run() {  # PANEL SCRIPT [OPTION...]
    "$in_panel" --live --panel "$sources/$1" -- "$hxdpanel" --panel "$sources/$1" "${@:3}" script "$sources/$2" ||
        failures=1
}
run hxdpanel/default-panel hxdpanel/examples/commissioning.script
run hxdpanel/default-panel hxdpanel/examples/night-mode.script
run hxdpanel/default-panel hxdpanel/examples/storage-alarm.script
run hxdpanel/default-panel tests/hxdpanel/scripts/failures.script --time-server
run tests/panels/emmc tests/hxdpanel/scripts/emmc.script
run tests/panels/nand tests/hxdpanel/scripts/nand.script
exit "$failures"
