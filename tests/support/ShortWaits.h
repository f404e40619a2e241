// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/SystemHooks.h"

#include <mutex>
#include <vector>

/// While it lives, every wait of the program is as long as the test says, and noted. One at a time.
class ShortWaits
{
public:
    explicit ShortWaits(int lengthMs = 0)
    {
        setLength(lengthMs);
        SystemHooks::setWaitLength(&ShortWaits::note);
    }

    ~ShortWaits() { SystemHooks::setWaitLength(nullptr); }

    ShortWaits(const ShortWaits &) = delete;
    ShortWaits &operator=(const ShortWaits &) = delete;

    /// From the next wait on; forgets the waits so far.
    static void setLength(int lengthMs)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        length = lengthMs;
        asked.clear();
    }

    /// Nominal lengths, in milliseconds, of all waits since the start or the last setLength().
    static std::vector<int> nominal()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return asked;
    }

private:
    static int note(int nominalMs)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        asked.push_back(nominalMs);
        return length;
    }

    inline static std::mutex mutex;
    inline static int length = 0;
    inline static std::vector<int> asked;
};
