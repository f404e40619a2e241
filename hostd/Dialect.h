// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/NmeaFraming.h"
#include "receiver/epoch/Epoch.h"

#include <QByteArray>
#include <QVector>

/// The device's way of writing NMEA 0183: GGA, the GSV sets, the GSAs, GLL, RMC, then everything
/// else; four decimals of a minute, three of a second; satellite numbers that no two constellations
/// share. Pure functions, any thread.
namespace Dialect {

/// Most satellites that one cycle lists, over all constellations.
constexpr int kMaxInView = 32;

/// Two letters of the GSV and GSA sentences of a constellation.
QByteArray talkerOf(Constellation constellation);

using NmeaFraming::sentence;

/// All sentences of one cycle in the device's order, each with CR and LF.
QVector<QByteArray> sentences(const tEpoch &epoch);

} // namespace Dialect
