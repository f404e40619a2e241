// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Publications.h"

#include <QByteArray>
#include <QDate>
#include <QMap>
#include <QSet>
#include <QVector>

#include <optional>

/// One cycle of a recorded receiver, and what a viewer has to show for it.
struct tSourceEpoch
{
    std::optional<int> timeMs; ///< of the day, rounded to milliseconds
    QDate date;                ///< of RMC; invalid without one
    double latitude = 0.0;     ///< degrees without sign, of minutes rounded to four decimals
    double longitude = 0.0;
    QMap<int, int> strengths; ///< strongest C/N0 by number, numbers unique over constellations
    QSet<int> used;           ///< numbers in the latest GSA sentences
    int rmc = -1;             ///< which of all RMC sentences of the recording is its own
};

/// Reads recordings without any code of the programs: what comes out of them is compared with what
/// the viewer's decoder publishes. Pure functions.
namespace SourceOracle {

/// The cycles of a recording, in order: what stands between two changes of time.
QVector<tSourceEpoch> read(const QByteArray &recording);

/// A recording as the receiver sent it: a file that was stored without carriage returns gets them.
QByteArray asSent(const QByteArray &stored);

/// What is wrong with a publication for this epoch; empty when nothing is. An epoch that tells no
/// satellites or no date says nothing about them.
QString fault(const tSourceEpoch &epoch, const Publication &shown);

/// The first epoch that a viewer does not show rightly when it is fed with what the daemon makes of
/// the recording, in order and one for one; empty when all are shown rightly.
QString faultOfDialect(const QVector<tSourceEpoch> &epochs, const std::vector<Publication> &shown);

/// The same for a viewer that is fed with the recording itself. A position and satellites of the
/// epoch before are right as well, because receivers send RMC before or after them; of the first
/// epoch only the time counts.
QString faultOfRaw(const QVector<tSourceEpoch> &epochs, const std::vector<Publication> &shown);

} // namespace SourceOracle
