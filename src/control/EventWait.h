// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

/// Keeps the calling thread's events going for at least `nominalMs` milliseconds (as
/// SystemHooks::waitLength() has them), or until `stop` returns true. The thread sleeps between
/// events. `stop`, which must be quick and change nothing, is looked at before and after every
/// processEvents() call, so that whatever a handler changes ends the wait at once.
///
/// Waits may nest: one begun by a handler inside another runs to its own end first.
///
/// Returns false when the application was asked to quit: then this and every later wait end at
/// once, and the caller should unwind. User-interface thread.
bool waitProcessingEvents(int nominalMs, const std::function<bool()> &stop);
