# SPDX-FileCopyrightText: 2026 The TavrinViewer authors
# SPDX-License-Identifier: Apache-2.0

# Cross-builds for 32-bit ARM with hardware floating point, with Debian's cross compiler, against the
# root that packaging/make-sysroot makes. -DTAVRIN_SYSROOT=, or the environment variable of that
# name, says where it is.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAVRIN_SYSROOT)
if(NOT TAVRIN_SYSROOT)
    if(DEFINED ENV{TAVRIN_SYSROOT})
        set(TAVRIN_SYSROOT $ENV{TAVRIN_SYSROOT})
    elseif(DEFINED ENV{XDG_CACHE_HOME})
        set(TAVRIN_SYSROOT $ENV{XDG_CACHE_HOME}/tavrin-viewer/armhf-bookworm)
    else()
        set(TAVRIN_SYSROOT $ENV{HOME}/.cache/tavrin-viewer/armhf-bookworm)
    endif()
endif()
set(TAVRIN_SYSROOT ${TAVRIN_SYSROOT} CACHE PATH "Root of the device, from packaging/make-sysroot")
if(NOT EXISTS ${TAVRIN_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
    message(FATAL_ERROR "There is no armhf root at ${TAVRIN_SYSROOT}: run packaging/make-sysroot")
endif()

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Notes on what compilers of ten years ago did otherwise; nothing here is linked with their output.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(CMAKE_SYSROOT ${TAVRIN_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${TAVRIN_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${TAVRIN_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${TAVRIN_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")

# ctest then runs the tests itself.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L ${TAVRIN_SYSROOT})
