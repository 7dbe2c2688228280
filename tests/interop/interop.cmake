# SPDX-License-Identifier: GPL-3.0-or-later
# Tests against other programs. Each exits with code 77 if a program that it needs is not installed.
# cmake/RavlinStructure.cmake sets RAVLIN_PYTHON.
add_executable(xanalyze_dump "${CMAKE_CURRENT_LIST_DIR}/xanalyze_dump.cpp")
set_target_properties(xanalyze_dump PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
target_link_libraries(xanalyze_dump PRIVATE ravlin_core)
ravlin_warnings(xanalyze_dump)

add_test(NAME interop/analysis
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/support/with-own-home" "${RAVLIN_PYTHON}"
        "${CMAKE_CURRENT_LIST_DIR}/analysis.py" "$<TARGET_FILE:xanalyze_dump>")
set_tests_properties(interop/analysis PROPERTIES
    LABELS interop TIMEOUT 600 SKIP_RETURN_CODE 77
    ENVIRONMENT "RAVLIN_SOURCE_DIR=${CMAKE_SOURCE_DIR};PYTHONDONTWRITEBYTECODE=1")
