// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/Epoch.h"

#include <QDateTime>
#include <QVector>

/// A place on the WGS 84 ellipsoid.
struct tPlace
{
    double latitudeDeg = 0.0;  ///< -90..90
    double longitudeDeg = 0.0; ///< -180..180
    double altitudeM = 0.0;
};

/// A point or a difference in a right-handed frame, metres.
struct tVector
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// Where a satellite stands for an observer.
struct tDirection
{
    double elevationDeg = 0.0; ///< -90..90
    double azimuthDeg = 0.0;   ///< 0..360, from north over east
};

/// A nominal circular orbit.
struct tOrbit
{
    int number = 0; ///< in the device's numbering
    Constellation constellation = Constellation::Gps;
    double radiusM = 0.0;
    double inclinationRad = 0.0;
    double nodeRad = 0.0;     ///< right ascension of the ascending node
    double phaseRad = 0.0;    ///< argument of latitude at noon of 1 January 2000
    double rateRadPerS = 0.0; ///< mean motion
};

/// The satellites of all constellations on their nominal orbits and what an observer on the
/// turning earth sees of them. Pure, any thread.
namespace Sky {

/// Speed of the earth's rotation, rad/s.
constexpr double kEarthRateRadPerS = 7.2921151467e-5;

/// Every satellite there is.
const QVector<tOrbit> &orbits();

/// Position in the earth-fixed frame. `secondsSince2000` counts from noon of 1 January 2000.
tVector earthFixed(const tOrbit &orbit, double secondsSince2000);

/// Earth-fixed position of a place.
tVector earthFixed(const tPlace &place);

/// The place of an earth-fixed position.
tPlace placeOf(const tVector &position);

/// The place `east`, `north` and `up` metres away.
tPlace displaced(const tPlace &place, double east, double north, double up);

/// Unit vector east (x), north (y), up (z) towards an earth-fixed position.
tVector lineOfSight(const tPlace &observer, const tVector &position);

/// Elevation and azimuth of such a unit vector.
tDirection directionOf(const tVector &lineOfSight);

/// Seconds of a UTC time since noon of 1 January 2000.
double secondsSince2000(const QDateTime &utc);

} // namespace Sky
