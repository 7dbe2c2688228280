# SPDX-License-Identifier: GPL-3.0-or-later
# What users get (CMAKE_BUILD_TYPE Release) is built as distributions build their packages: a mistake in memory ends the program
# instead of serving who made the file. Not for the others: tests are not optimised, which the checks need, and sanitizers
# see more.
if(UNIX AND NOT APPLE AND NOT RAVLIN_SANITIZERS)
    set(RAVLIN_HARDENED "$<CONFIG:Release>")
    add_compile_options("$<${RAVLIN_HARDENED}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong;-fstack-clash-protection>")
    add_link_options("$<${RAVLIN_HARDENED}:LINKER:-z,relro,-z,now>")
endif()
