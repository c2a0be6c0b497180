# HXD_UNITY: the files of a folder are compiled as one, at about half the cost: for builds from scratch.
# The build that is edited keeps a file by itself, so that each includes what it uses. Names
# in anonymous namespaces differ within a folder, and within all of hxdpanel (HXD_QUICK).
option(HXD_UNITY "Compile the files of a folder together" OFF)

function(hxd_unite)  # TARGET...
    if(NOT HXD_UNITY)
        return()
    endif()
    foreach(target ${ARGN})
        if(NOT TARGET ${target})
            continue()
        endif()
        get_target_property(sources ${target} SOURCES)
        get_target_property(folder ${target} SOURCE_DIR)
        list(FILTER sources INCLUDE REGEX "\\.cpp$")
        list(TRANSFORM sources PREPEND "${folder}/" REGEX "^[^/]")
        hxd_unite_folders(${target} "" ${sources})
    endforeach()
endfunction()

# Folders of the same name stay apart by the prefix.
function(hxd_unite_folders target prefix)  # SOURCE..., with its path
    foreach(source ${ARGN})
        get_filename_component(group ${source} DIRECTORY)
        file(RELATIVE_PATH group ${CMAKE_SOURCE_DIR} ${group})
        string(MAKE_C_IDENTIFIER "${prefix}${group}" group)
        set_property(SOURCE ${source} TARGET_DIRECTORY ${target} PROPERTY UNITY_GROUP ${group})
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")  # to this warning all of it comes from headers
        target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endif()
endfunction()
