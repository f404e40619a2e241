// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"

#include <QString>
#include <QTemporaryDir>

/// A real dbus-daemon in the role of the system bus, at an address that stays the same while it is
/// stopped and started. This process and its children find it in their environment; libdbus looks
/// there only once in a process, therefore one object a test program. Other programs (dbus-send,
/// dbus-monitor) are what talks to the one under test.
class SystemBus
{
public:
    /// Makes the bus known, starts nothing.
    SystemBus();
    ~SystemBus();

    SystemBus(const SystemBus &) = delete;
    SystemBus &operator=(const SystemBus &) = delete;

    /// Starts the daemon and waits until it takes connections. True when it already runs.
    bool start();
    /// Ends the daemon without any notice to its clients.
    void stop();
    /// Lets the daemon hang: it keeps its connections and serves none of them.
    bool hang();
    bool goOn();

    /// Broadcasts a signal without arguments, "interface.member", with dbus-send. True when the bus
    /// has it.
    bool emitSignal(const QString &signal) const;

private:
    bool writeConfiguration() const;
    bool sendToDaemon(int signal) const;
    QString configurationPath() const { return folder.filePath(QStringLiteral("bus.conf")); }

    QTemporaryDir folder;
    QString address;
    BoundProcess daemon;
};
