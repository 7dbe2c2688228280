# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the user guide, the HTML files of docs/guide as they are. The program looks for it relative to its own folder:
# beside itself on Windows, in share/doc elsewhere. A link gives the build tree the same shape.
if(WIN32)
    set(RAVLIN_GUIDE_DESTINATION "guide")
else()
    set(RAVLIN_GUIDE_DESTINATION "${CMAKE_INSTALL_DOCDIR}/guide")
endif()
install(DIRECTORY "${CMAKE_SOURCE_DIR}/docs/guide/" DESTINATION "${RAVLIN_GUIDE_DESTINATION}")
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/share/doc/ravlin")
file(CREATE_LINK "${CMAKE_SOURCE_DIR}/docs/guide" "${CMAKE_BINARY_DIR}/share/doc/ravlin/guide" SYMBOLIC COPY_ON_ERROR)
