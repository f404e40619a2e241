// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Counts what the calling thread takes from the heap, by whatever way, in an executable that links
/// the malloc_count library. Qt's containers call malloc, not operator new.
namespace MallocCount {

// A sanitizer brings a malloc of its own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VIEWER_FOREIGN_MALLOC
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VIEWER_FOREIGN_MALLOC
#endif
#endif

#ifdef VIEWER_FOREIGN_MALLOC
constexpr bool kCounts = false;
#else
constexpr bool kCounts = true;
#endif

void start();

/// Calls of malloc, calloc and realloc since start().
int stop();

} // namespace MallocCount
