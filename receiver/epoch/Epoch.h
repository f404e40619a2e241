// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDate>
#include <QMetaType>
#include <QVector>

#include <optional>

/// The satellite systems that the device's numbering has room for. SBAS satellites travel among
/// the GPS ones, with the numbers 33..64 that NMEA keeps for them.
enum class Constellation { Gps, Glonass, Galileo, BeiDou, Qzss };

/// All of them, in the order in which the device sends their sentences.
constexpr Constellation kConstellations[] = {Constellation::Gps, Constellation::Glonass,
                                             Constellation::Galileo, Constellation::BeiDou,
                                             Constellation::Qzss};

/// One satellite in view.
struct tSatellite
{
    int number = 0;                  ///< in the device's numbering, unique over all constellations
    std::optional<int> elevationDeg; ///< 0..90, nothing while unknown
    std::optional<int> azimuthDeg;   ///< 0..359, nothing while unknown
    int cn0DbHz = 0;                 ///< carrier-to-noise density, 1..99; 0 is not tracked
};

/// What a receiver reports once a cycle, free of any sentence form. Coordinates are counted in
/// ten-thousandths of a minute, the last digit that the device sends, so that no rounding is left.
struct tEpoch
{
    std::optional<int> timeMs;          ///< UTC, milliseconds of the day
    QDate date;                         ///< UTC; invalid while unknown
    bool valid = false;                 ///< navigation status: A when true, V otherwise
    int quality = 0;                    ///< GGA fix quality; 0 is no fix
    QByteArray gnsModes;                ///< mode letters of GNS; empty when there was none
    char mode = 'N';                    ///< mode letter of GLL and RMC
    std::optional<qint64> latitude;     ///< 1/10000 minute, south negative
    std::optional<qint64> longitude;    ///< 1/10000 minute, west negative
    std::optional<double> altitudeM;    ///< above mean sea level
    std::optional<double> separationM;  ///< geoid above the ellipsoid
    std::optional<double> speedKnots;   ///< over ground
    std::optional<double> courseDeg;    ///< over ground, 0..360
    std::optional<int> satellitesInUse; ///< as GGA counts them
    std::optional<double> ggaHdop;      ///< HDOP of GGA where it differs from the one below
    bool activeKnown = false;           ///< the four below are known (a GSA was there)
    int fixMode = 1;                    ///< 1 none, 2 flat, 3 in space
    QVector<int> used;                  ///< numbers of the satellites in the fix
    std::optional<double> pdop;         ///< nothing without a fix
    std::optional<double> hdop;         ///< nothing without a fix
    std::optional<double> vdop;         ///< nothing without a fix
    QVector<tSatellite> inView;         ///< empty when the cycle says nothing about satellites
    QVector<QByteArray> others;         ///< whole sentences of other types, unchanged, with CR LF
    bool withoutFix = false; ///< none of GGA, GNS, GLL and RMC came: none of them is made up
};

Q_DECLARE_METATYPE(tEpoch)
