# SPDX-License-Identifier: GPL-3.0-or-later
# Toolchain for 64-bit Windows on Debian, with MinGW-w64 (g++-mingw-w64-x86-64-posix). It takes Qt and the headers of
# tl::expected from the cache folder, which packaging/windows/provide-qt fills.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(RAVLIN_MINGW x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${RAVLIN_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${RAVLIN_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${RAVLIN_MINGW}-windres)

if(DEFINED ENV{RAVLIN_WINDOWS_CACHE})
    set(ravlin_cache "$ENV{RAVLIN_WINDOWS_CACHE}")
elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(ravlin_cache "$ENV{XDG_CACHE_HOME}/ravlin-windows")
else()
    set(ravlin_cache "$ENV{HOME}/.cache/ravlin-windows")
endif()
set(RAVLIN_WINDOWS_CACHE "${ravlin_cache}" CACHE PATH "Folder that packaging/windows/provide-qt fills")
# CMake's compiler checks run this file again in a project of their own, which lacks our cache variables.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES RAVLIN_WINDOWS_CACHE)
set(RAVLIN_WINDOWS_QT "${RAVLIN_WINDOWS_CACHE}/qt6-mingw")

set(CMAKE_FIND_ROOT_PATH
    "${RAVLIN_WINDOWS_QT}" "${RAVLIN_WINDOWS_CACHE}/headers" "${RAVLIN_WINDOWS_CACHE}/sqlite" /usr/${RAVLIN_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_PREFIX_PATH "${RAVLIN_WINDOWS_QT}" "${RAVLIN_WINDOWS_CACHE}/headers" "${RAVLIN_WINDOWS_CACHE}/sqlite")

# Use Debian's own moc, rcc and so on, which are of the same version.
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake)
set(Qt6HostInfo_DIR "${QT_HOST_PATH_CMAKE_DIR}/Qt6HostInfo")

# Unoptimised objects have more sections than the plain object format allows.
set(CMAKE_CXX_FLAGS_INIT -Wa,-mbig-obj)
