# SPDX-License-Identifier: GPL-3.0-or-later
# Our playlists as other programs read them. The script exits with code 77 if one of them is missing.
add_test(NAME interop/playlists
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/support/with-own-home" "${RAVLIN_PYTHON}"
        "${CMAKE_CURRENT_LIST_DIR}/playlists.py" "$<TARGET_FILE:ravlin-cli>")
set_tests_properties(interop/playlists PROPERTIES
    LABELS interop TIMEOUT 300 SKIP_RETURN_CODE 77 ENVIRONMENT "PYTHONDONTWRITEBYTECODE=1")
