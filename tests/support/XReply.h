// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <memory>

/// Gives back what the X client library has allocated.
struct XFreeing
{
    void operator()(void *pointer) const { std::free(pointer); }
};

/// A reply, an event or an error of the X client library.
template<typename T>
using XReply = std::unique_ptr<T, XFreeing>;
