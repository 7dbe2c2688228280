# SPDX-License-Identifier: GPL-3.0-or-later
# ravlin_structure checks the include rules of docs/architecture.md, before the core is compiled. It takes less than a tenth
# of a second, so it runs at every build.
# Prefer the system's Python: the package list installs modules for that one.
find_program(RAVLIN_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(RAVLIN_PYTHON NAMES python3 python REQUIRED)

# The folder of QtCore/, QtGui/ and so on. The script looks up there which module a header belongs to.
get_target_property(ravlin_qt_includes Qt6::Core INTERFACE_INCLUDE_DIRECTORIES)
set(RAVLIN_QT_HEADERS "")
foreach(directory IN LISTS ravlin_qt_includes)
    if(EXISTS "${directory}/QtCore/QObject")
        set(RAVLIN_QT_HEADERS "${directory}")
    endif()
endforeach()
if(NOT RAVLIN_QT_HEADERS)
    message(FATAL_ERROR "The folder of Qt's headers is not among those of Qt6::Core: ${ravlin_qt_includes}")
endif()

add_custom_target(ravlin_structure ALL
    COMMAND "${RAVLIN_PYTHON}" "${CMAKE_SOURCE_DIR}/tools/check-structure"
        --qt-headers "${RAVLIN_QT_HEADERS}" "${CMAKE_SOURCE_DIR}/src"
    COMMENT "Checking which file includes which" VERBATIM)
if(TARGET ravlin_core)
    add_dependencies(ravlin_core ravlin_structure)
endif()
