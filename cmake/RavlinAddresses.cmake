# SPDX-License-Identifier: GPL-3.0-or-later
# Where the makers of this build are reached. The sources hold addresses of a reserved domain, which reach nobody; a build
# that is told none keeps them.
set(ravlin_example_homepage "https://ravlin.example/")
set(ravlin_example_contact "ravlin@ravlin.example")
set(RAVLIN_HOMEPAGE "${ravlin_example_homepage}" CACHE STRING "Web address of this build's makers")
set(RAVLIN_CONTACT "${ravlin_example_contact}" CACHE STRING
    "Mail address of this build's makers; also what a CD database is told unless the user enters another")
if(RAVLIN_HOMEPAGE STREQUAL "")
    set(RAVLIN_HOMEPAGE "${ravlin_example_homepage}")
endif()
if(RAVLIN_CONTACT STREQUAL "")
    set(RAVLIN_CONTACT "${ravlin_example_contact}")
endif()

# They go into C++, XML and control files as they are.
if(NOT RAVLIN_HOMEPAGE MATCHES "^https?://[A-Za-z0-9][-A-Za-z0-9._~:/?=%+@]*$")
    message(FATAL_ERROR "RAVLIN_HOMEPAGE is not a web address: ${RAVLIN_HOMEPAGE}")
endif()
if(NOT RAVLIN_CONTACT MATCHES "^[A-Za-z0-9][-A-Za-z0-9._+]*@[A-Za-z0-9][-A-Za-z0-9.]*$")
    message(FATAL_ERROR "RAVLIN_CONTACT is not a mail address: ${RAVLIN_CONTACT}")
endif()

# ravlin_put_addresses(INPUT OUTPUT): copies a file and puts the build's addresses in the place of those of the sources.
function(ravlin_put_addresses input output)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${input}")
    file(READ "${input}" text)
    string(REPLACE "${ravlin_example_homepage}" "${RAVLIN_HOMEPAGE}" text "${text}")
    string(REPLACE "${ravlin_example_contact}" "${RAVLIN_CONTACT}" text "${text}")
    file(CONFIGURE OUTPUT "${output}" CONTENT "@text@" @ONLY)
endfunction()
