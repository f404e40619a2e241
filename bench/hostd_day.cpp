// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// A day of epochs, one a second, through the daemon at a thousand epochs a second: first a
// simulated receiver, then what that one sent as a recording, which also goes through the reading
// of foreign sentences. Counts the epochs at the pipe and watches the daemon's memory; fails when
// one is lost or out of order or the memory grows.

#include "support/DayRun.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

constexpr qint64 kDay = 86400;

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    const QString given = QCoreApplication::arguments().value(1, QString::number(kDay));
    const qint64 epochs = given.toLongLong();
    QTemporaryDir root;
    if (epochs < 100 || !root.isValid() || !QDir(root.path()).mkpath(QStringLiteral("tmp"))) {
        out << "usage: hostd-day [EPOCHS], at least 100\n";
        return 2;
    }
    QFile copy(root.filePath(QStringLiteral("day.log")));
    if (!copy.open(QIODevice::WriteOnly))
        return 1;
    const tDayRun simulated =
        DayRun::watch(root.path(),
                      {QStringLiteral("simulate"), QStringLiteral("--time-scale"),
                       QStringLiteral("1000"), QStringLiteral("--seed"), QStringLiteral("1"),
                       QStringLiteral("--start-time"), QStringLiteral("2025-06-01T12:00:00Z")},
                      epochs, &copy);
    copy.close();
    out << "simulate: " << simulated.text() << '\n';
    out.flush();
    // Fewer: the last ones of the copy may be cut off.
    const tDayRun replayed = DayRun::watch(root.path(),
                                           {QStringLiteral("replay"), QStringLiteral("--speed"),
                                            QStringLiteral("1000"), copy.fileName()},
                                           epochs - 10);
    out << "replay: " << replayed.text() << '\n';
    const bool good = simulated.fault.isEmpty() && replayed.fault.isEmpty() &&
                      simulated.isMemoryFlat() && replayed.isMemoryFlat();
    return good ? 0 : 1;
}
