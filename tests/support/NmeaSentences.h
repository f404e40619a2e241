// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/NmeaFraming.h"

#include <QByteArray>
#include <QVector>

/// Builds NMEA 0183 text for tests and benchmarks.
namespace NmeaSentences {

using NmeaFraming::sentence;

/// A satellite as GSV lists it.
struct Satellite
{
    int number = 0;
    int elevation = 0; ///< degrees
    int azimuth = 0;   ///< degrees
    int snr = 0;       ///< dB-Hz, 0..99
};

/// All GSV sentences of one talker.
QByteArray gsvSet(const QByteArray &talker, const QVector<Satellite> &satellites);

/// One second of the device's output with 31 satellites of four constellations in view: GGA, nine
/// GSV, four GSA, GLL, RMC. `second` counts from midnight.
QByteArray epochOf31Satellites(int second, int millisecond = 0);

/// Sentences in one epochOf31Satellites().
constexpr int kSentencesAnEpoch = 16;

} // namespace NmeaSentences
