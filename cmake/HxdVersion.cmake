# HxdVersion.h: version and commit, known when CMake runs, which it does anew after each commit. Sources
# without their history are told: HXD_COMMIT in the environment.
set(HXD_COMMIT $ENV{HXD_COMMIT})
if(NOT HXD_COMMIT)
    execute_process(COMMAND git -C ${CMAKE_SOURCE_DIR} describe --always --dirty=-changed --abbrev=12 --exclude=*
        OUTPUT_VARIABLE HXD_COMMIT OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT HXD_COMMIT)
    set(HXD_COMMIT unknown)
endif()
execute_process(COMMAND git -C ${CMAKE_SOURCE_DIR} rev-parse --path-format=absolute --git-path logs/HEAD
    OUTPUT_VARIABLE commits OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(commits AND EXISTS ${commits})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${commits})
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/HxdVersion.h.in ${CMAKE_BINARY_DIR}/generated/HxdVersion.h)
