// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemHooks.h"

#include <QtGlobal>

#include <atomic>

namespace {

std::atomic<int (*)(int)> waitLengthHook = nullptr;

} // namespace

namespace SystemHooks {

QByteArray systemPath(const char *devicePath)
{
    return qgetenv("TAVRIN_ROOT") + devicePath;
}

int waitLength(int nominalMs)
{
    const auto hook = waitLengthHook.load();
    return hook ? hook(nominalMs) : nominalMs;
}

void setWaitLength(int (*waitLength)(int))
{
    waitLengthHook = waitLength;
}

} // namespace SystemHooks
