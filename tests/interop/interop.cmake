# Tests against other programs. Each says by the code 77 that a program it needs is not installed.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core)
find_program(RAVLIN_TEST_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT RAVLIN_TEST_PYTHON)
    find_program(RAVLIN_TEST_PYTHON NAMES python3)
endif()

add_executable(xanalyze_dump "${CMAKE_CURRENT_LIST_DIR}/xanalyze_dump.cpp")
set_target_properties(xanalyze_dump PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
target_link_libraries(xanalyze_dump PRIVATE ravlin_core)
ravlin_warnings(xanalyze_dump)

if(RAVLIN_TEST_PYTHON)
    add_test(NAME interop/analysis
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/support/with-own-home" "${RAVLIN_TEST_PYTHON}"
            "${CMAKE_CURRENT_LIST_DIR}/analysis.py" "$<TARGET_FILE:xanalyze_dump>")
    set_tests_properties(interop/analysis PROPERTIES
        LABELS interop TIMEOUT 600 SKIP_RETURN_CODE 77
        ENVIRONMENT "RAVLIN_SOURCE_DIR=${CMAKE_SOURCE_DIR}")
endif()
