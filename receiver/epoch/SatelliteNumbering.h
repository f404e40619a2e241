// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/Epoch.h"

#include <QByteArray>

#include <optional>

/// How receivers number satellites in GSV and GSA sentences, and what the device calls each of
/// them. docs/dialect.md names the makers behind each custom. Pure functions, any thread.
namespace SatelliteNumbering {

/// One spelling for talkers that mean the same system: GB for BD and PQ, QZ for GQ, and GN for
/// every talker that is no satellite system, such as II of an integrated instrument.
QByteArray usualTalker(const QByteArray &talker);

/// Talker of a GSA sentence's system identifier (NMEA 0183 4.11: 1 to 6); nothing for other texts.
std::optional<QByteArray> talkerOfSystem(const QByteArray &systemId);

/// The device's number for a satellite that a sentence of this usual talker calls `number`; nothing
/// where the device has none.
std::optional<int> deviceNumber(const QByteArray &talker, int number);

/// The constellation that a number of the device's numbering belongs to, nothing for a number
/// outside of it.
std::optional<Constellation> constellationOf(int number);

} // namespace SatelliteNumbering
