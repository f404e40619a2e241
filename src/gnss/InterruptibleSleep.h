// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>

/// A sleep that another thread can cut short for good, so that a worker is never waited for.
class InterruptibleSleep
{
public:
    /// Sleeps for SystemHooks::waitLength(nominalMs) milliseconds, or until interrupt(); not at all
    /// once interrupted.
    void sleep(int nominalMs);

    /// Ends a sleep under way and all later ones. Any thread.
    void interrupt();

private:
    std::mutex mutex;
    std::condition_variable wake;
    bool interrupted = false;
};
