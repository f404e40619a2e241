// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/InterruptibleSleep.h"

#include "base/SystemHooks.h"

#include <chrono>

void InterruptibleSleep::sleep(int nominalMs)
{
    const std::chrono::milliseconds length(SystemHooks::waitLength(nominalMs));
    std::unique_lock<std::mutex> lock(mutex);
    wake.wait_for(lock, length, [this] { return interrupted; });
}

void InterruptibleSleep::interrupt()
{
    const std::lock_guard<std::mutex> lock(mutex);
    interrupted = true;
    wake.notify_all();
}
