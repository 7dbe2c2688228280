# SPDX-License-Identifier: GPL-3.0-or-later
# cpack runs this between installing and packing. It gives the files the form that Debian's policy requires.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()
set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr")
set(documentation "${root}/share/doc/ravlin")

file(REMOVE "${documentation}/LICENSE") # every system has it in common-licenses, and copyright points there
file(COPY "${CPACK_RAVLIN_DEBIAN_FOLDER}/copyright" DESTINATION "${documentation}")
file(RENAME "${documentation}/CHANGELOG.md" "${documentation}/changelog")
file(COPY_FILE "${CPACK_RAVLIN_DEBIAN_FOLDER}/changelog" "${documentation}/changelog.Debian")
file(COPY "${CPACK_RAVLIN_DEBIAN_FOLDER}/ravlin.lintian-overrides" DESTINATION "${root}/share/lintian/overrides")
file(RENAME "${root}/share/lintian/overrides/ravlin.lintian-overrides" "${root}/share/lintian/overrides/ravlin")

file(GLOB programs "${root}/bin/*")
execute_process(COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note ${programs}
    COMMAND_ERROR_IS_FATAL ANY)

file(GLOB texts "${root}/share/man/man1/*.1")
list(APPEND texts "${documentation}/changelog" "${documentation}/changelog.Debian")
execute_process(COMMAND gzip -9 --no-name ${texts} COMMAND_ERROR_IS_FATAL ANY)

# Set the modes, whatever umask the package is made with.
set(everybody OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(everybody_enters ${everybody} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
file(CHMOD_RECURSE "${root}" FILE_PERMISSIONS ${everybody} DIRECTORY_PERMISSIONS ${everybody_enters})
file(CHMOD ${programs} PERMISSIONS ${everybody_enters})
