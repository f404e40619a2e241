// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/BusMonitor.h"

namespace {

constexpr int kToolMs = 30000;

/// What follows `name` in a line of dbus-monitor, up to `end`.
QByteArray valueOf(const QByteArray &line, const QByteArray &name, const QByteArray &end)
{
    const int from = line.indexOf(name) + name.size();
    const int to = line.indexOf(end, from);
    return line.mid(from, to < 0 ? -1 : to - from);
}

} // namespace

BusMonitor::~BusMonitor()
{
    monitor.kill();
    monitor.waitForFinished(kToolMs);
}

bool BusMonitor::start()
{
    output.clear();
    monitor.start(QStringLiteral("dbus-monitor"), {QStringLiteral("--system")});
    // The bus takes its name away from a client that becomes a monitor.
    while (!output.contains("member=NameLost")) {
        if (!monitor.waitForReadyRead(kToolMs))
            return false;
        output += monitor.readAllStandardOutput();
    }
    return true;
}

QByteArrayList BusMonitor::signalsOf(const QByteArray &interface)
{
    output += monitor.readAllStandardOutput();
    QByteArrayList found;
    bool wanted = false;
    const QByteArrayList lines = output.left(output.lastIndexOf('\n') + 1).split('\n');
    for (const QByteArray &line : lines) {
        const bool argument = line.startsWith(' ');
        if (argument && wanted)
            found.last() += line;
        if (argument)
            continue;
        wanted = line.startsWith("signal ") && valueOf(line, "interface=", ";") == interface;
        if (wanted)
            found << valueOf(line, "path=", ";") + ' ' + interface + ' ' +
                         valueOf(line, "member=", "\n") + ' ' +
                         valueOf(line, "destination=", " serial");
    }
    return found;
}
