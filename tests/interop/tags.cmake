# SPDX-License-Identifier: GPL-3.0-or-later
# Tags against other programs. The script exits with code 77 if one of them is missing.
add_executable(tag_tool "${CMAKE_CURRENT_LIST_DIR}/tag_tool.cpp")
set_target_properties(tag_tool PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
target_link_libraries(tag_tool PRIVATE ravlin_core)
ravlin_warnings(tag_tool)

add_test(NAME interop/tags
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/support/with-own-home" "${RAVLIN_PYTHON}"
        "${CMAKE_CURRENT_LIST_DIR}/tags.py" "$<TARGET_FILE:tag_tool>")
set_tests_properties(interop/tags PROPERTIES
    LABELS interop TIMEOUT 600 SKIP_RETURN_CODE 77 ENVIRONMENT "PYTHONDONTWRITEBYTECODE=1")

# tst_taglibwitness compares our reading with TagLib's.
find_package(PkgConfig REQUIRED)
pkg_check_modules(TAGLIB REQUIRED IMPORTED_TARGET taglib)
target_link_libraries(tst_taglibwitness PRIVATE PkgConfig::TAGLIB)

# The tags that the command line writes, as mutagen reads them.
add_test(NAME interop/naming
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/support/with-own-home" "${RAVLIN_PYTHON}"
        "${CMAKE_CURRENT_LIST_DIR}/naming.py" "$<TARGET_FILE:ravlin-cli>")
set_tests_properties(interop/naming PROPERTIES
    LABELS interop TIMEOUT 600 SKIP_RETURN_CODE 77 ENVIRONMENT "PYTHONDONTWRITEBYTECODE=1")
