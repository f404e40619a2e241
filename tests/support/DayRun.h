// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/HostdProcess.h"

#include <QByteArray>
#include <QFile>
#include <QString>

/// What a reader of the daemon's pipe saw of a long stream with one epoch a second.
struct tDayRun
{
    qint64 epochs = 0;    ///< RMC sentences, each a second after the one before
    qint64 bytes = 0;     ///< all of them
    qint64 earlyKb = 0;   ///< most memory of the daemon in the first tenth, resident
    qint64 lateKb = 0;    ///< most memory after that
    QString fault;        ///< the first epoch that is lost, twice or out of order; empty without
    QString text() const; ///< one line for a person
    bool isMemoryFlat() const; ///< no growth that goes on with the stream
};

namespace DayRun {

/// Starts the daemon below `root` with these arguments and reads its pipe until it has brought so
/// many epochs, or nothing for a while. `copy`, where given, gets everything that was read.
tDayRun watch(const QString &root, const QStringList &arguments, qint64 epochs,
              QFile *copy = nullptr);

} // namespace DayRun
