#!/bin/bash
# pc_use.sh PROGRAM VERSION: what somebody who has only the package of the simulated panel does first.
set -euo pipefail
program=$1
share=$(realpath -- "$(dirname -- "$program")/../share")
HOME=$(mktemp -d)
export HOME
trap 'rm -rf "$HOME"' EXIT

says() {  # CODE TEXT ARGUMENT...: hxdpanel with the arguments ends with the code and prints the text
    local wanted=$1 text=$2 code=0 output
    shift 2
    output=$("$program" "$@" 2>&1) || code=$?
    [[ $code == "$wanted" && $output == *"$text"* && $output != *'without the sandbox'* ]] && return
    printf 'package: hxdpanel %s ends with %d and prints\n%s\ninstead of %d and\n%s\n' \
        "$*" "$code" "$output" "$wanted" "$text" >&2
    exit 1
}
says 0 "hxdcontrol $2, commit " --version
says 0 HX2024060017 channels
says 0 ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad \
    exec --set text=abc --set digest:text= 'STRSHA256(text,digest)'
says 0 80 write 21 80
says 129 'rebooted' exec 'REBOOT()'
says 0 HX2024060101 channels --panel "$share/doc/hxdpanel/examples/panels/emmc"
says 0 '' script "$share/doc/hxdpanel/examples/scripts/night-mode.script"

"$program" --fresh --page <<<page >"$HOME/address" &
shown=$!
trap 'kill "$shown" 2>/dev/null || true; rm -rf "$HOME"' EXIT
for ((i = 0; i < 100; ++i)); do
    grep -q '^http://' "$HOME/address" && break
    sleep 0.1
done
exec 3<>"/dev/tcp/127.0.0.1/$(sed -n 's|^http://127.0.0.1:\([0-9]*\)/$|\1|p' "$HOME/address")"
printf 'GET / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n' >&3
answer=$(cat <&3)
kill "$shown"
wait "$shown"
[[ $answer == *'<title>'* ]] || { printf 'package: the page is\n%s\n' "$answer" >&2; exit 1; }

for page in man1/hxdpanel.1 man1/hxdcheck.1 man5/panel.ini.5; do
    zcat "$share/man/$page.gz" | grep -q '^\.SH NAME' || { echo "package: no page $page" >&2; exit 1; }
done
zcat "$share/man/man5/panel.ini.5.gz" | grep -q '^brightness=' || { echo "package: no keys" >&2; exit 1; }

# shellcheck disable=SC1091  # the installed file
source "$share/bash-completion/completions/hxdpanel"
completes() {  # WANTED WORD...: the last word is the one to be completed
    local wanted=$1
    shift
    COMP_WORDS=(hxdpanel "$@") COMP_CWORD=$#
    _hxdpanel "$program" "${*: -1}" "${COMP_WORDS[COMP_CWORD - 1]}"
    [[ " ${COMPREPLY[*]} " == *" $wanted "* ]] && return
    printf 'package: "%s" completes to "%s"\n' "$*" "${COMPREPLY[*]}" >&2
    exit 1
}
completes channels ch
completes --panel --p
completes --interval watch --
completes brightness read Br
(cd "$HOME" && touch a.script && completes a.script script a && completes a.script script --junit a)
echo "package: the simulated panel works as installed"
