# SPDX-License-Identifier: GPL-3.0-or-later
# The user guide is HTML as it lies in docs/guide. The program looks for it from its own folder (src/core/app/guide.h): beside it
# on Windows, in share/doc elsewhere. The build tree has the same shape, by a link.
if(WIN32)
    set(RAVLIN_GUIDE_DESTINATION "guide")
else()
    set(RAVLIN_GUIDE_DESTINATION "${CMAKE_INSTALL_DOCDIR}/guide")
endif()
install(DIRECTORY "${CMAKE_SOURCE_DIR}/docs/guide/" DESTINATION "${RAVLIN_GUIDE_DESTINATION}")
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/share/doc/ravlin")
file(CREATE_LINK "${CMAKE_SOURCE_DIR}/docs/guide" "${CMAKE_BINARY_DIR}/share/doc/ravlin/guide" SYMBOLIC COPY_ON_ERROR)
