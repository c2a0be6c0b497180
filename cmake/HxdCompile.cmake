# Warnings, hardening and sanitizers, the same for every target of the project.

function(hxd_compile_options target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
        -Woverloaded-virtual -Wcast-qual -Wformat=2)
    if(HXD_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    target_compile_options(${target} PRIVATE -fstack-protector-strong)
    if(HXD_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${HXD_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
        target_link_options(${target} PRIVATE -fsanitize=${HXD_SANITIZE})
    elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT HXD_QUICK)  # needs an optimiser
        target_compile_options(${target} PRIVATE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    endif()
endfunction()

# What goes into a package names no folder of the machine that built it, not even in the debug
# symbols: so the same sources are the same bytes, wherever they lie. The last option that fits counts.
if(HXD_PLATFORM_DIR OR HXD_PC_PACKAGE)
    get_filename_component(sdk "${HXD_PLATFORM_DIR}" ABSOLUTE BASE_DIR ${CMAKE_BINARY_DIR})
    add_compile_options(
        -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=./build
        -ffile-prefix-map=${sdk}=./sdk)
    if(CMAKE_SYSROOT)
        add_compile_options(-ffile-prefix-map=${CMAKE_SYSROOT}=)
    endif()
endif()

# For the driver library: only what the map names is exported; the code stays mapped after a
# dlclose, because threads and static objects may still need it. No search path: the host has loaded
# the platform's libraries already.
function(hxd_link_options target exports_map)
    hxd_compile_options(${target})
    target_link_options(${target} PRIVATE
        -Wl,--version-script=${exports_map}
        -Wl,-z,relro,-z,now,-z,noexecstack,-z,nodelete,-z,text)
    set_target_properties(${target} PROPERTIES SKIP_BUILD_RPATH ON)
    if(NOT HXD_SANITIZE)
        target_link_options(${target} PRIVATE -Wl,-z,defs)
    endif()
endfunction()
