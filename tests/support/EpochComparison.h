// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/DialectChecker.h"
#include "support/Publications.h"
#include "support/RecordingReader.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

#include <vector>

/// Compares what came of a recording with the recording itself, epoch by epoch: time, date,
/// position, fix, altitude, DOP, satellites, their angles and C/N0, and those in use.
namespace EpochComparison {

/// How much is right.
struct tVerdict
{
    int epochs = 0; ///< of the recording
    int right = 0;  ///< of these
    /// Each departure: epoch, its time, field, expected and found; lost and invented epochs too.
    QStringList faults;
};

/// For what the daemon writes.
tVerdict ofCycles(const QVector<tSourceEpoch> &epochs, const QVector<tReadCycle> &cycles);

/// For what a viewer that reads what the daemon writes shows, one publication for each epoch.
tVerdict ofShown(const QVector<tSourceEpoch> &epochs, const std::vector<Publication> &shown);

/// For a viewer that reads the recording as it is, looked at when an epoch's sentences have come.
/// All but the time may still be that of the epoch before, because many receivers send RMC first.
tVerdict ofRaw(const QVector<tSourceEpoch> &epochs, const QByteArray &recording);

} // namespace EpochComparison
