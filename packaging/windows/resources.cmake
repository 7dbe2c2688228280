# SPDX-License-Identifier: GPL-3.0-or-later
# ravlin_windows_resources(TARGET DESCRIPTION): adds the version, icon and manifest that Windows reads from a program's file.
enable_language(RC)
find_program(RAVLIN_ICOTOOL icotool NO_CMAKE_FIND_ROOT_PATH)
if(NOT RAVLIN_ICOTOOL)
    message(FATAL_ERROR "icotool is missing: tools/install-packages windows installs it")
endif()

set(RAVLIN_ICO "${CMAKE_BINARY_DIR}/ravlin.ico")
set(ravlin_icon_pictures "")
foreach(size IN ITEMS 16 24 32 48 64 128)
    list(APPEND ravlin_icon_pictures "${CMAKE_SOURCE_DIR}/assets/png/${size}/ravlin.png")
endforeach()
set(ravlin_large_picture "${CMAKE_SOURCE_DIR}/assets/png/256/ravlin.png")
add_custom_command(OUTPUT "${RAVLIN_ICO}"
    COMMAND "${RAVLIN_ICOTOOL}" --create --output "${RAVLIN_ICO}" ${ravlin_icon_pictures} --raw "${ravlin_large_picture}"
    DEPENDS ${ravlin_icon_pictures} "${ravlin_large_picture}"
    COMMENT "Making the program's icon" VERBATIM)
add_custom_target(ravlin_ico DEPENDS "${RAVLIN_ICO}")

set(RAVLIN_WINDOWS_FILES "${CMAKE_CURRENT_LIST_DIR}")
function(ravlin_windows_resources target description)
    set(RAVLIN_DESCRIPTION "${description}")
    set(RAVLIN_FILE "${target}")
    string(REPLACE "." "," RAVLIN_VERSION_NUMBERS "${PROJECT_VERSION}.0")
    configure_file("${RAVLIN_WINDOWS_FILES}/ravlin.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
    configure_file("${RAVLIN_WINDOWS_FILES}/ravlin.manifest.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest" @ONLY)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
    set_source_files_properties("${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" PROPERTIES
        OBJECT_DEPENDS "${RAVLIN_ICO};${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest")
    add_dependencies(${target} ravlin_ico)
endfunction()
