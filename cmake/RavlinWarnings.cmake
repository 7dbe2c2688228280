# SPDX-License-Identifier: GPL-3.0-or-later
# ravlin_warnings(TARGET): the warnings and definitions of our own targets.
function(ravlin_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
        -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough)
    if(RAVLIN_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS)
endfunction()
