# What makes a PC a simulated panel: the program with the driver, the stand-ins and what starts the
# sandbox in a folder of their own, laid out as in a build; example panels, manual pages, completion.
include(HxdPackageOwner)
set(program_dir lib/hxdpanel)
set(documents share/doc/hxdpanel)
set(made ${CMAKE_BINARY_DIR}/package)

set_target_properties(hxdpanel PROPERTIES INSTALL_RPATH "$ORIGIN/../lib")
install(TARGETS hxdpanel DESTINATION ${program_dir}/bin COMPONENT pc)
install(TARGETS hxdcontrol MfcToQt olma-hal olma-gui logger toolscom
    LIBRARY DESTINATION ${program_dir}/lib NAMELINK_SKIP COMPONENT pc)
install(PROGRAMS hxdpanel/in-panel DESTINATION ${program_dir}/bin COMPONENT pc)
install(DIRECTORY hxdpanel/sandbox/shims DESTINATION ${program_dir}/bin/sandbox USE_SOURCE_PERMISSIONS
    COMPONENT pc)
install(PROGRAMS hxdpanel/sandbox/panel-boot hxdpanel/sandbox/panel-files DESTINATION ${program_dir}/bin/sandbox COMPONENT pc)
install(DIRECTORY hxdpanel/page/web DESTINATION ${program_dir}/bin/page COMPONENT pc)
install(FILES docs/openapi.json docs/json-schema.json DESTINATION ${program_dir}/docs COMPONENT pc)
install(DIRECTORY hxdpanel/default-panel DESTINATION ${program_dir}/bin COMPONENT pc)
file(MAKE_DIRECTORY ${made})
file(CREATE_LINK ../${program_dir}/bin/hxdpanel ${made}/hxdpanel SYMBOLIC)
install(FILES ${made}/hxdpanel DESTINATION bin COMPONENT pc)

install(DIRECTORY tests/panels DESTINATION ${documents}/examples COMPONENT pc
    PATTERN channels.json EXCLUDE)  # what the tests expect
install(DIRECTORY hxdpanel/examples/ DESTINATION ${documents}/examples/scripts OPTIONAL COMPONENT pc)
install(FILES README.md packaging/copyright DESTINATION ${documents} COMPONENT pc)
install(DIRECTORY docs DESTINATION ${documents} COMPONENT pc)
install(FILES packaging/hxdpanel.bash-completion DESTINATION share/bash-completion/completions
    RENAME hxdpanel COMPONENT pc)

# The manual pages: what the programs say about themselves, and the panel.ini that shows every key.
function(hxd_compressed file section)  # as made by COMMAND, into share/man or the documents
    cmake_parse_arguments(page "" "" "DEPENDS;COMMAND" ${ARGN})
    add_custom_command(OUTPUT ${made}/${file}.gz
        DEPENDS ${page_DEPENDS}
        WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
        COMMAND ${page_COMMAND} > ${made}/${file}
        COMMAND gzip -9nf ${made}/${file}
        VERBATIM)
    install(FILES ${made}/${file}.gz DESTINATION ${section} COMPONENT pc)
    set_property(GLOBAL APPEND PROPERTY hxd_compressed ${made}/${file}.gz)
endfunction()
foreach(program hxdpanel hxdcheck)
    hxd_compressed(${program}.1 share/man/man1 DEPENDS ${program} packaging/${program}.h2m
        COMMAND help2man --no-info --include=packaging/${program}.h2m $<TARGET_FILE:${program}>)
endforeach()
hxd_compressed(panel.ini.5 share/man/man5
    DEPENDS packaging/panel.ini.5.in platform/standin/panel.ini.example
    COMMAND sed -e "/^@example@/r platform/standin/panel.ini.example" -e /^@example@/d
        packaging/panel.ini.5.in)
hxd_compressed(changelog ${documents} DEPENDS CHANGELOG.md packaging/changelog
    COMMAND packaging/changelog ${PROJECT_VERSION})
get_property(compressed GLOBAL PROPERTY hxd_compressed)
add_custom_target(hxdpanel_package DEPENDS hxdpanel hxdcontrol ${compressed})

set(CPACK_PACKAGE_NAME hxdpanel)
set(CPACK_PACKAGE_VENDOR hxdcontrol)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Simulated touch panel with its HMI runtime's device driver")
set(CPACK_PACKAGE_DESCRIPTION
    "Runs the driver library of an HMI runtime's touch panel on a PC, inside a\n\
sandbox that keeps all it does from the machine: channels are read and written,\n\
commands and scripts tried, other panels described.")
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL pc)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "bubblewrap, libjs-dygraphs")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
include(CPack)
