// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"

#include <QByteArray>
#include <QByteArrayList>

/// What passes over the system bus of the environment, told by dbus-monitor.
class BusMonitor
{
public:
    BusMonitor() = default;
    ~BusMonitor();

    BusMonitor(const BusMonitor &) = delete;
    BusMonitor &operator=(const BusMonitor &) = delete;

    /// Returns once every later message will be seen.
    bool start();

    /// The signals of one interface so far, each as "path interface member destination arguments":
    /// without a destination "(null destination)", arguments only where there are any.
    QByteArrayList signalsOf(const QByteArray &interface);

private:
    BoundProcess monitor;
    QByteArray output;
};
