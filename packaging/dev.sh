# shellcheck shell=bash
# ./dev package: the packages, for a panel and for a PC. Read by dev, whose functions it uses.

# What has not passed its test never lies in build/packages; what lay there before stays until then.
# A ccache is kept from writing paths of its own: the bytes are to be the same in every folder.
command_package() {  # [pc] or [VARIABLE=VALUE...]
    export CCACHE_BASEDIR='' CCACHE_HASHDIR=true
    if [[ ${1:-} == pc ]]; then package_pc; else package_panel "$@"; fi
    ! grep -qi 'to be stated' packaging/copyright ||
        say "owner and licence are not stated yet: packaging/copyright"
}

# Against a vendor's SDK when HXD_PLATFORM_DIR names one, else against the stand-ins, installed as
# one; with the vendor's toolchain when HXD_TOOLCHAIN names its file, else with Debian's.
package_panel() {  # VARIABLE=VALUE...
    local platform toolchain preset=package made=build/packages.new
    platform=$(from_caller "${HXD_PLATFORM_DIR:-}")
    toolchain=$(from_caller "${HXD_TOOLCHAIN:-}")
    [[ -z $platform || -d $platform/lib ]] || die "HXD_PLATFORM_DIR: there is no SDK in $platform"
    rm -rf "$made"
    if [[ -n $toolchain ]]; then
        [[ -r $toolchain ]] || die "HXD_TOOLCHAIN: cannot read $toolchain"
        [[ -n $platform ]] || die "HXD_TOOLCHAIN: HXD_PLATFORM_DIR must name the SDK that goes with it"
        require_packages "${build_packages[@]}"
        preset="package-vendor"
        set -- CMAKE_TOOLCHAIN_FILE="$toolchain" "$@"
        grep -qxF "CMAKE_TOOLCHAIN_FILE:FILEPATH=$toolchain" "build/$preset/CMakeCache.txt" 2>/dev/null ||
            rm -rf "build/$preset"  # CMake keeps the compiler of the first time
    else
        configure_arm
    fi
    if [[ -z $platform ]]; then
        platform=$PWD/build/sdk
        build arm MfcToQt olma-hal olma-gui logger toolscom
        rm -rf "$platform"
        cmake --install build/arm --component standin --prefix "$platform" >&2
    fi
    configure "$preset" HXD_PLATFORM_DIR="$platform" "$@"
    make_packages "$preset" hxdcontrol_stripped "$made"
    expect_of_packages "$preset" "$platform" "$made/expected"
    "$in_panel" tests/package/package_test.sh "$PWD/$made"
    rm -r "$made/expected"
    publish "$made" build/packages
}

from_caller() {  # PATH: as it is meant where the caller stands
    [[ -z $1 || $1 == /* ]] && printf '%s' "$1" || printf '%s' "$caller/$1"
}

package_pc() {
    local made=build/packages-pc.new
    require_packages "${build_packages[@]}" dpkg-dev help2man lintian
    require_sandbox
    rm -rf "$made"
    configure package-pc
    make_packages package-pc hxdpanel_package "$made"
    tests/package/pc_test.sh "$made"
    publish "$made" build/packages-pc
}

make_packages() {  # PRESET TARGET FOLDER
    cmake "build/$1" >/dev/null  # asks for the commit again
    build "$1" "$2"
    cpack --config "build/$1/CPackConfig.cmake" -B "$PWD/$3" >&2
    rm -rf "$3/_CPack_Packages"
    (cd "$3" && sha256sum -- * >SHA256SUMS)
}

# What only this script knows of them.
expect_of_packages() {  # PRESET SDK FOLDER
    local qt=(libQt5Core.so.5 libQt5Gui.so.5)
    ! grep -q '^HXD_QT:[A-Z]*=4$' "build/$1/CMakeCache.txt" || qt=(libQtCore.so.4 libQtGui.so.4)
    mkdir "$3"
    printf '%s\n' "${qt[@]}" >"$3/qt.names"
    platform_names "$2" >"$3/platform.names"
    [[ $1 != package ]] || cp build/sysroot-armhf/packages.status "$3/"
    if [[ $2 == "$PWD/build/sdk" ]]; then
        echo "$2/lib" >"$3/standins"
        echo "qemu-arm-static -cpu cortex-a9,neon=off -L $PWD/build/sysroot-armhf" >"$3/emulator"
    fi
}

publish() {  # FOLDER AS
    rm -rf "$2"
    mv "$1" "$2"
    say "in $2: $(cd "$2" && echo *)"
}

# The names by which the loader finds the platform's libraries.
platform_names() {  # SDK
    local library soname
    for library in MfcToQt olma-hal olma-gui logger toolscom; do
        soname=$(readelf -dW "$1/lib/lib$library.so" | sed -n 's/.*(SONAME).*\[\(.*\)\].*/\1/p')
        echo "${soname:-lib$library.so}"
    done
}
