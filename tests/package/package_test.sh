#!/bin/bash
# package_test.sh DIR: holds the packages in DIR against what a panel needs of them, and installs and
# removes them in a Debian root. DIR/expected has the names of the libraries, platform.names and qt.names;
# where the panel is Debian's, packages.status lists what it has already, elsewhere no dependency is
# looked at; where the platform is the stand-ins, standins is their folder and emulator the words that
# start a panel's program.
set -euo pipefail
packages=$(realpath -- "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

check() {  # WHAT WANTED GOT
    [[ $2 == "$3" ]] && return
    printf 'package: %s is\n  %s\ninstead of\n  %s\n' "$1" "$3" "$2" >&2
    failures=$((failures + 1))
}

none() {  # WHAT GOT
    check "$1" '' "$2"
}

# The archives and the packages hold the same files.
deb=("$packages"/hxdcontrol_*_armhf.deb) debug_deb=("$packages"/hxdcontrol-dbgsym_*_armhf.deb)
archive=("$packages"/hxdcontrol-*-armv7.tar.gz)
[[ -e ${deb[0]} && -e ${debug_deb[0]} && -e ${archive[0]} ]] || { echo "package: none in $1" >&2; exit 1; }
mkdir "$work/archive" "$work/root"
tar -xzf "${archive[0]}" -C "$work/archive" --strip-components=1
dpkg-deb --extract "${deb[0]}" "$work/deb"
check "the archive's content" "$(cd "$work/deb/usr" && find . -type f | sort)" \
    "$(cd "$work/archive/usr" 2>/dev/null || cd "$work/archive"; find . -type f | sort)"

library=$(find "$work/deb" -name '*.so.1')
documents=$work/deb/usr/share/doc/hxdcontrol
for file in README.md CHANGELOG.md copyright VERSION docs/commands.md; do
    [[ -s $documents/$file ]] || check "$file" "there" "missing"
done
none "a wrong checksum" "$(cd "$packages" && sha256sum --quiet --check SHA256SUMS 2>&1)"
check "what has a checksum" "$(cd "$packages" && printf '%s\n' *.deb *.gz | sort | xargs)" \
    "$(cut -c 67- "$packages/SHA256SUMS" | sort | xargs)"
version=$(dpkg-deb --field "${deb[0]}" Version)
check "the version" "$version" "$(cat "$documents/VERSION")"

# What checks a panel starts without any of its libraries, and starts the rest with all of them.
programs=$work/deb/usr/bin
none "a library that hxdcheck needs" "$(readelf -dW "$programs/hxdcheck" | grep NEEDED || :)"
check "hxdcheck-host's platform" "$(xargs <"$packages/expected/platform.names")" \
    "$(readelf -dW "$programs/hxdcheck-host" | grep -oFf "$packages/expected/platform.names" | xargs)"
none "a path of the build machine" "$(strings "$programs"/* | grep -E '^/(work|home|root|builds)/|/build/' || :)"
if [[ -e $packages/expected/emulator ]]; then
    emulator=$(<"$packages/expected/emulator")
    # shellcheck disable=SC2086  # the emulator is words
    report=$(LD_LIBRARY_PATH=$(<"$packages/expected/standins") HXD_EMULATOR=$emulator \
        $emulator "$programs/hxdcheck" 2>&1) || [[ $? -eq 1 ]] || check "the report" "nothing wrong" "$report"
    check "the report's end" "0 wrong." "$(tail -n 1 <<<"$report" | grep -o '[0-9]* wrong\.')"
fi

dynamic=$(readelf -dW "$library")
tagged() { sed -n "s/.*($1).*\[\(.*\)\].*/\1/p" <<<"$dynamic"; }
check "the SONAME" libhxdcontrol_armv7.so.1 "$(tagged SONAME)"
c_library='^(ld-linux|lib(c|m|dl|rt|pthread)\.so)'  # in how many files depends on its age
check "the list of needed libraries" \
    "$({ cat "$packages/expected/"{platform,qt}.names; printf '%s\n' libgcc_s.so.1 libstdc++.so.6; } |
        LC_ALL=C sort | xargs)" \
    "$(tagged NEEDED | grep -vE "$c_library" | LC_ALL=C sort | xargs)"
dynamic_symbols=$(readelf -W --dyn-syms "$library")
check "what is exported" "CreateDeviceCtrl DestroyDeviceCtrl" \
    "$(awk '$7 != "UND" && $5 != "LOCAL" && $7 != "ABS" && $1 ~ /^[0-9]+:$/ { sub(/@.*/, "", $8); print $8 }' \
        <<<"$dynamic_symbols" | sort | xargs)"
none "a search path or text relocation" "$(grep -E 'RPATH|RUNPATH|TEXTREL' <<<"$dynamic" || :)"
check "binding at load time" "yes" "$(grep -qE 'BIND_NOW|FLAGS_1.*NOW' <<<"$dynamic" && echo yes)"
check "staying loaded" "yes" "$(grep -q 'FLAGS_1.*NODELETE' <<<"$dynamic" && echo yes)"
segments=$(readelf -lW "$library")
check "read-only relocations" "yes" "$(grep -q GNU_RELRO <<<"$segments" && echo yes)"
check "the stack's access" RW "$(awk '/GNU_STACK/ { print $7 }' <<<"$segments")"
header=$(readelf -hW "$library")
check "the processor" "ARM, hard float" \
    "$(grep -q 'Machine: *ARM$' <<<"$header" && grep -q hard-float <<<"$header" && echo 'ARM, hard float')"
[[ ! -e $packages/expected/packages.status ]] ||  # a vendor's compiler knows its panel's processor
    none "NEON" "$(readelf -AW "$library" | grep -i 'SIMD' || :)"
check "calls guarded against overflow" "yes" \
    "$(grep -q __stack_chk_fail <<<"$dynamic_symbols" && grep -q '_chk@' <<<"$dynamic_symbols" && echo yes)"
none "debug sections" "$(readelf -SW "$library" | grep -E '\.debug_|\.symtab' || :)"
none "a path of the build machine" "$(strings "$library" | grep -E '^/(work|home|root|builds)/|/build/' || :)"
size=$(stat -c %s "$library")
[[ $size -le $((300 * 1024)) ]] || check "the size" "at most 300 KiB" "$size bytes"

dpkg-deb --extract "${debug_deb[0]}" "$work/debug"
symbols=$(find "$work/debug" -name '*.debug')
check "the symbols' folder" "/usr/lib/debug${library#"$work/deb"}.debug" "${symbols#"$work/debug"}"
build_id() { readelf -nW "$1" | sed -n 's/.*Build ID: //p'; }
check "the symbols' build id" "$(build_id "$library")" "$(build_id "$symbols")"
[[ -n $(build_id "$library") ]] || check "the build id" "there" "missing"

# Installs next to what it depends on, leaves nothing when removed.
database=$work/root/var/lib/dpkg
mkdir -p "$database/info" "$database/updates" "$work/root/tmp"
dependencies=--force-depends
touch "$database/status" "$database/available"
if [[ -e $packages/expected/packages.status ]]; then
    cp "$packages/expected/packages.status" "$database/status"
    dependencies=--no-force-depends
    newest=$(readelf -VW "$library" "$programs/hxdcheck-host" | grep -o 'GLIBC_[0-9.]*' | sort -V | tail -n 1)
    check "the C library it depends on" "libc6 (>= ${newest#GLIBC_})" \
        "$(dpkg-deb --field "${deb[0]}" Depends | grep -o 'libc6 ([^)]*)')"
fi
on_root() { dpkg --root="$work/root" --log=/dev/null --force-script-chrootless "$dependencies" "$@"; }
on_root --add-architecture armhf
files() { (cd "$work/root" && find . -path ./var -prune -o -print | sort); }
before=$(files)
on_root --install "${deb[0]}" "${debug_deb[0]}" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
[[ -e $work/root${library#"$work/deb"} ]] || check "the installed library" "there" "missing"
on_root --purge hxdcontrol:armhf hxdcontrol-dbgsym:armhf >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
check "what is left after removal" "$before" "$(files)"

[[ $failures -eq 0 ]] || exit 1
printf 'package: version %s, library %d bytes, everything as it should be\n' "$version" "$size"
