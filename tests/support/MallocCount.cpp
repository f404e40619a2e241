// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/MallocCount.h"

#include <cstddef>

namespace {

thread_local bool counting = false;
thread_local int count = 0;

} // namespace

namespace MallocCount {

void start()
{
    count = 0;
    counting = true;
}

int stop()
{
    counting = false;
    return count;
}

} // namespace MallocCount

// The executable's functions go before those of glibc, also for the libraries; glibc's own free()
// takes back what its other names gave.
#ifndef VIEWER_FOREIGN_MALLOC

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t items, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

void *malloc(std::size_t size)
{
    count += counting ? 1 : 0;
    return __libc_malloc(size);
}

void *calloc(std::size_t items, std::size_t size)
{
    count += counting ? 1 : 0;
    return __libc_calloc(items, size);
}

void *realloc(void *block, std::size_t size)
{
    count += counting ? 1 : 0;
    return __libc_realloc(block, size);
}
}

#endif
