#!/bin/bash
# The packages made once more, as somebody else would: from a copy of the sources in another folder, with
# an SDK elsewhere and a vendor's toolchain, which is Debian's under other names. They must pass the same
# checks, and the stripped library must be the one that ./dev package has made before, byte for byte.
set -euo pipefail
cd "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/../.."
made=$PWD/build/package/package
sysroot=$PWD/build/sysroot-armhf
elsewhere=$PWD/build/elsewhere
[[ -e $made/libhxdcontrol_armv7.so.1 ]] || { echo "vendor: ./dev package comes first" >&2; exit 1; }
fail() { echo "vendor: $*" >&2; exit 1; }

rm -rf "$elsewhere"
mkdir -p "$elsewhere/a copy" "$elsewhere/toolchain/bin"
tar --exclude=./build --exclude=./.git -c . | tar -x -C "$elsewhere/a copy"
cp -r build/sdk "$elsewhere/sdk"
for tool in g++ ar ranlib ld nm objcopy objdump readelf strip; do
    ln -s "$(command -v "arm-linux-gnueabihf-$tool")" "$elsewhere/toolchain/bin/panelvendor-$tool"
done
cat >"$elsewhere/toolchain/vendor.cmake" <<END
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_SYSROOT $sysroot)
set(CMAKE_CXX_COMPILER \${CMAKE_CURRENT_LIST_DIR}/bin/panelvendor-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH $sysroot)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
END

HXD_COMMIT=$(strings -a "$made/libhxdcontrol_armv7.so.1" | sed -n 's/^@(#).* commit \(.*\), Qt .*/\1/p')
export HXD_COMMIT CCACHE_DISABLE=1
cd "$elsewhere/a copy"
in_vain() {  # SDK MESSAGE: refused, and the last good packages stay
    mkdir -p build/packages
    : >build/packages/good
    refusal=$(HXD_PLATFORM_DIR=$1 HXD_TOOLCHAIN=../toolchain/vendor.cmake ./dev package 2>&1) &&
        fail "SDK '$1' is taken"
    [[ $refusal == *"$2"* ]] || fail "SDK '$1' is refused with: $refusal"
    [[ -e build/packages/good ]] || fail "SDK '$1' has cost the last good packages"
}
in_vain ../skd 'there is no SDK in'
in_vain '' 'HXD_PLATFORM_DIR must name the SDK'
cp -r ../sdk ../broken
rm ../broken/lib/liblogger.so
in_vain ../broken '/lib/liblogger.so'

HXD_PLATFORM_DIR=../sdk HXD_TOOLCHAIN=../toolchain/vendor.cmake \
    ./dev package HXD_PLUGIN_DIR=olma_app/drivers HXD_PACKAGE_DEPENDS=vendor-runtime
[[ $(dpkg-deb --field build/packages/hxdcontrol_*.deb Depends) == vendor-runtime ]] ||
    fail "the packages do not depend on what was named"
[[ $(tar -tzf build/packages/hxdcontrol-*-armv7.tar.gz) == */olma_app/drivers/libhxdcontrol_armv7.so.1* ]] ||
    fail "the driver lies in another folder than named"
cmp build/package-vendor/package/libhxdcontrol_armv7.so.1 "$made/libhxdcontrol_armv7.so.1" ||
    fail "two builds of the same sources differ"
rm -rf "$elsewhere"
echo "vendor: packages made with a vendor's toolchain, the library the same byte for byte"
