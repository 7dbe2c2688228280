# SPDX-License-Identifier: GPL-3.0-or-later
# Builds optimised programs as distributions build their packages: a memory error ends the program instead of letting a
# crafted file take it over. Debug builds go without: the checks of the C library need optimisation, and the sanitizers find
# more. tests/house/test_hardening.py looks at what was built.
if(NOT RAVLIN_SANITIZERS)
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        include(CheckPIESupported)
        check_pie_supported()
        set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    endif()
    set(RAVLIN_HARDENED "$<NOT:$<CONFIG:Debug>>")
    # The standard library checks indexes and what is empty. Most of our memory is behind its containers and Qt's.
    add_compile_definitions("$<${RAVLIN_HARDENED}:_GLIBCXX_ASSERTIONS>")
    if(UNIX AND NOT APPLE)
        # Level 3 also knows the sizes of blocks that were allocated with a size known only at run time. The checks show as
        # functions named _chk; calls into memory whose size nobody knows, such as a QByteArray's, can't be checked.
        add_compile_options("$<${RAVLIN_HARDENED}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3;-fstack-protector-strong;-fstack-clash-protection>")
        if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
            add_compile_options("$<${RAVLIN_HARDENED}:-fcf-protection>")
        endif()
        add_link_options("$<${RAVLIN_HARDENED}:LINKER:-z,relro,-z,now,-z,noexecstack>")
    endif()
endif()
