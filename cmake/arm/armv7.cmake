# Toolchain file: ARMv7, hard float, VFPv3-D16 (no NEON), with Debian's cross compiler. The C and C++
# libraries are the compiler's own; Qt and GoogleTest come from the folder that make-sysroot made.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)

set(HXD_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot-armhf CACHE PATH "armhf root")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES HXD_SYSROOT)
get_filename_component(CMAKE_SYSROOT ${HXD_SYSROOT} ABSOLUTE)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Passing some records changed with GCC 7, which everything here is newer than.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# A processor without NEON, so that a build that needs it fails its tests.
find_program(HXD_EMULATOR qemu-arm-static)
set(CMAKE_CROSSCOMPILING_EMULATOR
    ${HXD_EMULATOR} -cpu cortex-a9,neon=off -L ${CMAKE_SYSROOT})
