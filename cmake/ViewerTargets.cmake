# SPDX-FileCopyrightText: 2026 The TavrinViewer authors
# SPDX-License-Identifier: Apache-2.0

# What every target of this project is compiled with; linked privately so that it never leaks.
add_library(viewer_options INTERFACE)
target_compile_options(viewer_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    -Wconversion -Wsign-conversion -Wformat=2 -Wimplicit-fallthrough -Wundef
    $<$<BOOL:${VIEWER_WERROR}>:-Werror>)
# Everything that Qt 5.15 calls deprecated is gone in Qt 6; keeping it out keeps that port small.
target_compile_definitions(viewer_options INTERFACE
    QT_DISABLE_DEPRECATED_BEFORE=0x050F00 QT_DEPRECATED_WARNINGS QT_NO_FOREACH)

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Logs and recordings may grow beyond two gigabytes there as well.
    target_compile_definitions(viewer_options INTERFACE _FILE_OFFSET_BITS=64)
endif()

if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The libraries' objects also hold machine code: the programs are optimised as a whole, while the
    # many tests, which switch that off, link in no time.
    target_compile_options(viewer_options INTERFACE -ffat-lto-objects)
endif()

if(VIEWER_SANITIZE STREQUAL "address")
    set(viewer_sanitizer_flags -fsanitize=address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
elseif(VIEWER_SANITIZE STREQUAL "thread")
    set(viewer_sanitizer_flags -fsanitize=thread -fno-omit-frame-pointer)
elseif(VIEWER_SANITIZE)
    message(FATAL_ERROR "VIEWER_SANITIZE takes address or thread, not '${VIEWER_SANITIZE}'")
endif()
if(viewer_sanitizer_flags)
    target_compile_options(viewer_options INTERFACE ${viewer_sanitizer_flags})
    target_link_options(viewer_options INTERFACE ${viewer_sanitizer_flags})
endif()

if(VIEWER_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang" OR NOT VIEWER_TESTS)
        message(FATAL_ERROR "VIEWER_FUZZ needs clang as the compiler, and VIEWER_TESTS")
    endif()
    # Everything reports its coverage; only the fuzz targets get libFuzzer's main().
    target_compile_options(viewer_options INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(viewer_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Settings that a property, not an interface library, has to carry.
function(viewer_set_up_target target)
    target_link_libraries(${target} PRIVATE viewer_options)
    set_target_properties(${target} PROPERTIES AUTOMOC ON
        CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
    get_target_property(type ${target} TYPE)
    if(VIEWER_COVERAGE AND NOT CMAKE_CURRENT_SOURCE_DIR MATCHES "^${PROJECT_SOURCE_DIR}/tests")
        # Line by line as written; the counts are atomic because there are threads.
        target_compile_options(${target} PRIVATE --coverage -O0 -fprofile-update=atomic)
        target_link_options(${target} PUBLIC --coverage)
    endif()
    if(VIEWER_SANITIZE STREQUAL "thread" AND type STREQUAL "EXECUTABLE")
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/TsanQtMutex.cpp)
        target_link_libraries(${target} PRIVATE ${CMAKE_DL_LIBS})
    endif()
endfunction()
