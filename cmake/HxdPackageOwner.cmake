# Who answers for the packages: packaging/copyright is the one place that says it.
file(STRINGS ${CMAKE_SOURCE_DIR}/packaging/copyright contact REGEX "^Upstream-Contact: ")
string(REPLACE "Upstream-Contact: " "" CPACK_PACKAGE_CONTACT "${contact}")
