// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QDate>
#include <QSet>
#include <QVector>

#include <optional>

/// A satellite in view, in the device's numbering.
struct tSourceSatellite
{
    int number = 0;
    int elevation = 0; ///< degrees; 0 where the receiver does not know it
    int azimuth = 0;   ///< degrees; 0 where the receiver does not know it
    int cn0 = 0;       ///< strongest of all signals, dB-Hz; 0 is not tracked
};

/// One fix of a recorded receiver, and what a viewer has to show once it has come.
struct tSourceEpoch
{
    std::optional<int> timeMs;       ///< UTC, milliseconds of the day
    QDate date;                      ///< UTC, years 2000 to 2099; invalid while none has come
    bool valid = false;              ///< navigation status
    int quality = 0;                 ///< as GGA counts it
    std::optional<qint64> latitude;  ///< 1/10000 minute, south negative
    std::optional<qint64> longitude; ///< 1/10000 minute, west negative
    std::optional<double> altitude;  ///< metres
    std::optional<double> pdop;      ///< of the latest GSA
    std::optional<double> hdop;
    std::optional<double> vdop;
    QVector<tSourceSatellite> inView; ///< the latest that can be shown, at most 32, best first
    QSet<int> used;                   ///< of the satellites in view
    int end = 0;                      ///< offset in the recording of what stands after its fix
};

/// Reads a recording by NMEA 0183 4.11 and the makers' numberings, to judge what the programs make
/// of it. It has the whole recording before it decides anything, and shares nothing with the
/// programs but how a sentence is framed. Pure functions.
namespace RecordingReader {

/// The fixes of a recording, in order.
QVector<tSourceEpoch> read(const QByteArray &recording);

/// A recording as the receiver sent it: a file that was stored without carriage returns gets them.
QByteArray asSent(const QByteArray &stored);

/// The device's number for a satellite that a sentence of `talker` calls `number`; 0 for one that
/// the device has no number for.
int deviceNumber(const QByteArray &talker, int number);

} // namespace RecordingReader
