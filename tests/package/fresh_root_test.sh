#!/bin/bash
# fresh_root_test.sh: installs the package that ./dev package pc has made in a Debian 12 made anew, uses it
# there and removes it. Takes minutes and the network, so it is no part of the tests, but run by hand before
# a version is given out, and after a change of what the package depends on. The Debian lies in
# build/fresh-root and runs in namespaces of its own, in which hxdpanel makes its own again.
set -euo pipefail
cd "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/../.."
package=$(echo build/packages-pc/hxdpanel_*_amd64.deb)
[[ -e $package ]] || { echo "package: ./dev package pc comes first" >&2; exit 1; }
command -v mmdebstrap bwrap >/dev/null || { echo "package: needs mmdebstrap and bubblewrap" >&2; exit 1; }
root=$PWD/build/fresh-root
rm -rf "$root"
# The machine's /dev, for with one of its own bubblewrap covers parts of /proc, and no sandbox starts inside.
in_root() {
    bwrap --bind "$root" / --dev-bind /dev /dev --proc /proc --unshare-user --unshare-pid --unshare-net \
        --die-with-parent --clearenv --setenv PATH /usr/sbin:/usr/bin:/sbin:/bin --setenv HOME /tmp "$@"
}

# What it depends on comes with it, from Debian alone.
# shellcheck disable=SC2016  # expanded by the hook's shell
mmdebstrap --quiet --variant=minbase --customize-hook="copy-in $package /tmp" \
    --customize-hook='chroot "$1" sh -c "apt-get install -qq -y --no-install-recommends /tmp/hxdpanel_*.deb"' \
    bookworm "$root"
cp tests/package/pc_use.sh "$root/tmp/"
# As an ordinary user, for the same reason.
in_root --uid 1000 --gid 1000 /tmp/pc_use.sh /usr/bin/hxdpanel "$(dpkg-deb --field "$package" Version)"
in_root --uid 0 --gid 0 dpkg --purge hxdpanel >/dev/null
left=$(find "$root" -xdev -name '*hxdpanel*' -not -path "$root/tmp/*")
[[ -z $left ]] || { printf 'package: left after removal:\n%s\n' "$left" >&2; exit 1; }
rm -rf "$root"
echo "package: installed, used and removed in a new Debian 12"
