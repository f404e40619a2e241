// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"

#include <atomic>
#include <chrono>
#include <thread>

/// Writes an epoch into the viewer's pipe every so often, also while the test itself waits. Each is
/// a second after the one before; what finds the pipe full is lost.
class SteadyReceiver
{
public:
    /// `pipe` must outlive it.
    SteadyReceiver(const NmeaPipe &pipe, std::chrono::milliseconds period)
        : thread([this, &pipe, period] {
            while (!stop) {
                pipe.write(NmeaSentences::epochOf31Satellites(++second));
                std::this_thread::sleep_for(period);
            }
        })
    {
    }

    ~SteadyReceiver()
    {
        stop = true;
        thread.join();
    }

    SteadyReceiver(const SteadyReceiver &) = delete;
    SteadyReceiver &operator=(const SteadyReceiver &) = delete;

    /// Of the day, as in the latest epoch.
    int latestSecond() const { return second; }

private:
    std::atomic<bool> stop = false;
    std::atomic<int> second = 43200; // from noon on: earlier hours are shown without their zero
    std::thread thread;
};
