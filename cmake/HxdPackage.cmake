# What goes on a panel: the stripped library, the programs that check the panel, and the documentation;
# the library's debug symbols are a package of their own.
include(HxdPackageOwner)
set(packaged ${CMAKE_BINARY_DIR}/package)
set(library libhxdcontrol_armv7.so.1)
add_custom_command(
    OUTPUT ${packaged}/${library} ${packaged}/${library}.debug
    DEPENDS hxdcontrol
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${packaged}
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:hxdcontrol> ${packaged}/${library}.debug
    COMMAND ${CMAKE_STRIP} --strip-unneeded -o ${packaged}/${library} $<TARGET_FILE:hxdcontrol>
    COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=${packaged}/${library}.debug ${packaged}/${library}
    VERBATIM)
set(programs)
foreach(program hxdcheck hxdcheck-host)
    add_custom_command(
        OUTPUT ${packaged}/${program}
        DEPENDS ${program}
        COMMAND ${CMAKE_STRIP} -o ${packaged}/${program} $<TARGET_FILE:${program}>
        VERBATIM)
    list(APPEND programs ${packaged}/${program})
endforeach()
set(wanted ${packaged}/${library} ${programs})

# What the .deb depends on is known when all is linked: CPack reads it then.
set(HXD_PACKAGE_DEPENDS "" CACHE STRING
    "What the .deb depends on; empty: what its files need, in Debian's names")
set(CPACK_DEBIAN_DRIVER_PACKAGE_DEPENDS "${HXD_PACKAGE_DEPENDS}")
if(NOT HXD_PACKAGE_DEPENDS)
    set(qt ${Qt5Core_VERSION})
    if(HXD_QT EQUAL 4)
        set(qt ${QT_VERSION_MAJOR}.${QT_VERSION_MINOR})
    endif()
    string(REGEX MATCH "^[0-9]+\\.[0-9]+" qt "${qt}")
    set(depends ${CMAKE_SOURCE_DIR}/packaging/depends)
    add_custom_command(
        OUTPUT ${packaged}/depends
        DEPENDS ${wanted} ${depends}
        COMMAND ${depends} ${CMAKE_READELF} ${qt} ${packaged}/${library} ${packaged}/hxdcheck-host
            > ${packaged}/depends
        VERBATIM)
    list(APPEND wanted ${packaged}/depends)
    file(WRITE ${packaged}/depends.cmake
        "file(STRINGS ${packaged}/depends CPACK_DEBIAN_DRIVER_PACKAGE_DEPENDS)\n")
    set(CPACK_PROJECT_CONFIG_FILE ${packaged}/depends.cmake)
endif()
add_custom_target(hxdcontrol_stripped DEPENDS ${wanted})
file(CONFIGURE OUTPUT ${packaged}/VERSION CONTENT "${PROJECT_VERSION}\n")

set(documents share/doc/hxdcontrol)
install(FILES ${packaged}/${library} DESTINATION ${HXD_PLUGIN_DIR} COMPONENT driver)
install(PROGRAMS ${programs} DESTINATION bin COMPONENT driver)
install(FILES ${packaged}/${library}.debug DESTINATION lib/debug/usr/${HXD_PLUGIN_DIR}
    COMPONENT debug)
install(FILES README.md CHANGELOG.md packaging/copyright ${packaged}/VERSION DESTINATION ${documents}
    COMPONENT driver)
install(DIRECTORY docs/ DESTINATION ${documents}/docs COMPONENT driver)

set(CPACK_PACKAGE_NAME hxdcontrol)
set(CPACK_PACKAGE_VENDOR hxdcontrol)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Device driver of a touch panel for its HMI runtime")
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_COMPONENTS_ALL driver debug)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_FILE_NAME hxdcontrol-${PROJECT_VERSION}-armv7)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_DRIVER_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_DEBUG_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}-debug)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
set(CPACK_DEBIAN_DRIVER_PACKAGE_NAME hxdcontrol)
set(CPACK_DEBIAN_DRIVER_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME hxdcontrol-dbgsym)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_DEPENDS "hxdcontrol (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEBUG_DESCRIPTION "Debug symbols of the device driver")
include(CPack)
