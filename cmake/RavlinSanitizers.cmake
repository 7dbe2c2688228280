# SPDX-License-Identifier: GPL-3.0-or-later
# RAVLIN_SANITIZERS=address,undefined builds every target with these sanitizers. A finding ends the program.
if(RAVLIN_SANITIZERS)
    add_compile_options(-fsanitize=${RAVLIN_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${RAVLIN_SANITIZERS})
endif()
