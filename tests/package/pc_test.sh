#!/bin/bash
# pc_test.sh DIR: holds the package of the simulated panel in DIR against Debian's rules and uses it, from
# the folder where it was unpacked.
set -euo pipefail
here=$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")
package=$(echo "$1"/hxdpanel_*_amd64.deb)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
lintian --allow-root --fail-on error "$package"
dpkg-deb --extract "$package" "$work"
if grep -rlF -- "${here%/tests/package}/" "$work"; then
    echo "package: names a path of the build machine" >&2
    exit 1
fi
"$here/pc_use.sh" "$work/usr/bin/hxdpanel" "$(dpkg-deb --field "$package" Version)"
