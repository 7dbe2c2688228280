# SPDX-License-Identifier: GPL-3.0-or-later
# Builds Release as distributions build their packages: a memory error ends the program instead of letting a crafted file
# take it over. Other build types go without: the checks need optimisation, and the sanitizers find more.
if(UNIX AND NOT APPLE AND NOT RAVLIN_SANITIZERS)
    set(RAVLIN_HARDENED "$<CONFIG:Release>")
    add_compile_options("$<${RAVLIN_HARDENED}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong;-fstack-clash-protection>")
    add_link_options("$<${RAVLIN_HARDENED}:LINKER:-z,relro,-z,now>")
endif()
