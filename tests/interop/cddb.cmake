# SPDX-License-Identifier: GPL-3.0-or-later
# The tests' CD database as a program, which tests/cli uses too, and a test that other clients understand it. The script
# exits with code 77 if one of them is missing.
add_executable(cddb_server "${CMAKE_CURRENT_LIST_DIR}/cddb_server.cpp")
set_target_properties(cddb_server PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
target_link_libraries(cddb_server PRIVATE ravlin_test_support)
ravlin_warnings(cddb_server)

add_test(NAME interop/cddb
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/support/with-own-home" "${RAVLIN_PYTHON}"
        "${CMAKE_CURRENT_LIST_DIR}/cddb.py" "$<TARGET_FILE:cddb_server>")
set_tests_properties(interop/cddb PROPERTIES
    LABELS interop TIMEOUT 300 SKIP_RETURN_CODE 77 ENVIRONMENT "PYTHONDONTWRITEBYTECODE=1")
