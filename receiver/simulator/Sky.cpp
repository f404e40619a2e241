// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/simulator/Sky.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kGravitation = 3.986004418e14; // m^3/s^2
constexpr double kSemiMajorM = 6378137.0;
constexpr double kFlattening = 1.0 / 298.257223563;
constexpr double kEccentricitySquared = kFlattening * (2.0 - kFlattening);
constexpr double kSiderealAngle2000Deg = 280.46061837; // at noon of 1 January 2000

// Satellites spread evenly over planes that are spread evenly over the equator.
struct tWalker
{
    Constellation constellation;
    double radiusM;
    double inclinationDeg;
    double firstNodeDeg;
    int planes;
    int places;      // places a plane has
    double shiftDeg; // how far the satellites of a plane are ahead of those of the plane before
};

constexpr tWalker kGps = {Constellation::Gps, 26559.7e3, 55.0, 17.0, 6, 6, 23.0};
constexpr tWalker kGlonass = {Constellation::Glonass, 25508.2e3, 64.8, 31.0, 3, 8, 15.0};
constexpr tWalker kGalileo = {Constellation::Galileo, 29599.8e3, 56.0, 77.0, 3, 8, 15.0};
constexpr tWalker kBeiDouMedium = {Constellation::BeiDou, 27906.1e3, 55.0, 49.0, 3, 8, 15.0};

constexpr double kGeosynchronousRadiusM = 42164.2e3;

// A satellite that stays over a longitude, or swings over it to north and south in a figure of
// eight. Its rate is the earth's own, so that it never drifts.
struct tGeosynchronous
{
    int number;
    Constellation constellation;
    double inclinationDeg;
    double longitudeDeg;
    double nodeDeg;
};

constexpr tGeosynchronous kGeosynchronous[] = {
    {121, Constellation::BeiDou, 0.0, 140.0, 0.0},
    {122, Constellation::BeiDou, 0.0, 80.0, 0.0},
    {123, Constellation::BeiDou, 0.0, 110.5, 0.0},
    {124, Constellation::BeiDou, 0.0, 160.0, 0.0},
    {125, Constellation::BeiDou, 0.0, 58.75, 0.0},
    {126, Constellation::BeiDou, 55.0, 118.0, 210.0},
    {127, Constellation::BeiDou, 55.0, 118.0, 330.0},
    {128, Constellation::BeiDou, 55.0, 118.0, 90.0},
    {129, Constellation::BeiDou, 55.0, 95.0, 210.0},
    {130, Constellation::BeiDou, 55.0, 95.0, 330.0},
    {133, Constellation::BeiDou, 55.0, 95.0, 90.0},
    {193, Constellation::Qzss, 41.0, 136.0, 120.0},
    {194, Constellation::Qzss, 41.0, 136.0, 240.0},
    {195, Constellation::Qzss, 41.0, 136.0, 0.0},
    {199, Constellation::Qzss, 0.0, 127.0, 0.0},
};

// Numbers of the satellites, slot by slot through the planes; gaps as in the real numbering.
constexpr int kGalileoNumbers[] = {302, 303, 304, 305, 307, 308, 309, 310, 311, 312, 313, 315,
                                   319, 321, 324, 325, 326, 327, 330, 331, 333, 334, 336, 301};
constexpr int kBeiDouMediumNumbers[] = {131, 132, 134, 139, 140, 141, 142, 143, 144, 145, 146,
                                        147, 148, 149, 150, 152, 153, 154, 155, 156, 157};

double meanMotion(double radiusM)
{
    return std::sqrt(kGravitation / (radiusM * radiusM * radiusM));
}

tOrbit walkerOrbit(const tWalker &walker, int number, int plane, int slot, int slotsInPlane)
{
    tOrbit orbit;
    orbit.number = number;
    orbit.constellation = walker.constellation;
    orbit.radiusM = walker.radiusM;
    orbit.inclinationRad = qDegreesToRadians(walker.inclinationDeg);
    orbit.nodeRad = qDegreesToRadians(walker.firstNodeDeg + 360.0 * plane / walker.planes);
    orbit.phaseRad = qDegreesToRadians(360.0 * slot / slotsInPlane + walker.shiftDeg * plane);
    orbit.rateRadPerS = meanMotion(walker.radiusM);
    return orbit;
}

tOrbit geosynchronousOrbit(const tGeosynchronous &satellite)
{
    tOrbit orbit;
    orbit.number = satellite.number;
    orbit.constellation = satellite.constellation;
    orbit.radiusM = kGeosynchronousRadiusM;
    orbit.inclinationRad = qDegreesToRadians(satellite.inclinationDeg);
    orbit.nodeRad = qDegreesToRadians(satellite.nodeDeg);
    orbit.phaseRad =
        qDegreesToRadians(satellite.longitudeDeg + kSiderealAngle2000Deg - satellite.nodeDeg);
    orbit.rateRadPerS = Sky::kEarthRateRadPerS;
    return orbit;
}

// Two of the six planes hold six satellites, the others five.
void appendGps(QVector<tOrbit> &out)
{
    constexpr int kSatellites = 32;
    for (int i = 0; i < kSatellites; ++i) {
        const int plane = i % kGps.planes;
        const int slotsInPlane = plane < kSatellites % kGps.planes ? kGps.places : kGps.places - 1;
        out.append(walkerOrbit(kGps, i + 1, plane, i / kGps.planes, slotsInPlane));
    }
}

void appendGlonass(QVector<tOrbit> &out)
{
    for (int i = 0; i < kGlonass.planes * kGlonass.places; ++i)
        out.append(walkerOrbit(kGlonass, 65 + i, i / kGlonass.places, i % kGlonass.places,
                               kGlonass.places));
}

template<size_t count>
void appendNumbered(QVector<tOrbit> &out, const tWalker &walker, const int (&numbers)[count])
{
    int i = 0;
    for (const int number : numbers) {
        out.append(
            walkerOrbit(walker, number, i / walker.places, i % walker.places, walker.places));
        ++i;
    }
}

QVector<tOrbit> makeOrbits()
{
    QVector<tOrbit> all;
    appendGps(all);
    appendGlonass(all);
    appendNumbered(all, kGalileo, kGalileoNumbers);
    appendNumbered(all, kBeiDouMedium, kBeiDouMediumNumbers);
    for (const tGeosynchronous &satellite : kGeosynchronous)
        all.append(geosynchronousOrbit(satellite));
    std::sort(all.begin(), all.end(),
              [](const tOrbit &a, const tOrbit &b) { return a.number < b.number; });
    return all;
}

// Rows of the rotation from the earth-fixed frame to east, north, up.
tVector toLocal(const tPlace &place, const tVector &v)
{
    const double lat = qDegreesToRadians(place.latitudeDeg);
    const double lon = qDegreesToRadians(place.longitudeDeg);
    return {-std::sin(lon) * v.x + std::cos(lon) * v.y,
            -std::sin(lat) * std::cos(lon) * v.x - std::sin(lat) * std::sin(lon) * v.y +
                std::cos(lat) * v.z,
            std::cos(lat) * std::cos(lon) * v.x + std::cos(lat) * std::sin(lon) * v.y +
                std::sin(lat) * v.z};
}

tVector toEarthFixed(const tPlace &place, const tVector &v)
{
    const double lat = qDegreesToRadians(place.latitudeDeg);
    const double lon = qDegreesToRadians(place.longitudeDeg);
    return {-std::sin(lon) * v.x - std::sin(lat) * std::cos(lon) * v.y +
                std::cos(lat) * std::cos(lon) * v.z,
            std::cos(lon) * v.x - std::sin(lat) * std::sin(lon) * v.y +
                std::cos(lat) * std::sin(lon) * v.z,
            std::cos(lat) * v.y + std::sin(lat) * v.z};
}

double normalRadius(double lat)
{
    return kSemiMajorM / std::sqrt(1.0 - kEccentricitySquared * std::sin(lat) * std::sin(lat));
}

} // namespace

namespace Sky {

const QVector<tOrbit> &orbits()
{
    static const QVector<tOrbit> all = makeOrbits();
    return all;
}

tVector earthFixed(const tOrbit &orbit, double secondsSince2000)
{
    const double u = orbit.phaseRad + orbit.rateRadPerS * secondsSince2000;
    const double node = orbit.nodeRad - qDegreesToRadians(kSiderealAngle2000Deg) -
                        kEarthRateRadPerS * secondsSince2000;
    const double inPlaneX = orbit.radiusM * std::cos(u);
    const double inPlaneY = orbit.radiusM * std::sin(u);
    return {inPlaneX * std::cos(node) - inPlaneY * std::cos(orbit.inclinationRad) * std::sin(node),
            inPlaneX * std::sin(node) + inPlaneY * std::cos(orbit.inclinationRad) * std::cos(node),
            inPlaneY * std::sin(orbit.inclinationRad)};
}

tVector earthFixed(const tPlace &place)
{
    const double lat = qDegreesToRadians(place.latitudeDeg);
    const double lon = qDegreesToRadians(place.longitudeDeg);
    const double n = normalRadius(lat);
    return {(n + place.altitudeM) * std::cos(lat) * std::cos(lon),
            (n + place.altitudeM) * std::cos(lat) * std::sin(lon),
            (n * (1.0 - kEccentricitySquared) + place.altitudeM) * std::sin(lat)};
}

tPlace placeOf(const tVector &position)
{
    const double p = std::hypot(position.x, position.y);
    double lat = std::atan2(position.z, p * (1.0 - kEccentricitySquared));
    // Converges to less than a micrometre within a few rounds near the earth's surface.
    constexpr int kRounds = 8;
    for (int round = 0; round < kRounds; ++round) {
        const double n = normalRadius(lat);
        lat = std::atan2(position.z + kEccentricitySquared * n * std::sin(lat), p);
    }
    // Both terms, so that neither the pole nor the equator divides by something near zero.
    const double altitude = p * std::cos(lat) + position.z * std::sin(lat) -
                            kSemiMajorM * kSemiMajorM / normalRadius(lat);
    return {qRadiansToDegrees(lat), qRadiansToDegrees(std::atan2(position.y, position.x)),
            altitude};
}

tPlace displaced(const tPlace &place, double east, double north, double up)
{
    const tVector origin = earthFixed(place);
    const tVector step = toEarthFixed(place, {east, north, up});
    return placeOf({origin.x + step.x, origin.y + step.y, origin.z + step.z});
}

tVector lineOfSight(const tPlace &observer, const tVector &position)
{
    const tVector here = earthFixed(observer);
    const tVector local =
        toLocal(observer, {position.x - here.x, position.y - here.y, position.z - here.z});
    const double length = std::sqrt(local.x * local.x + local.y * local.y + local.z * local.z);
    return {local.x / length, local.y / length, local.z / length};
}

tDirection directionOf(const tVector &lineOfSight)
{
    double azimuth = qRadiansToDegrees(std::atan2(lineOfSight.x, lineOfSight.y));
    if (azimuth < 0.0)
        azimuth += 360.0;
    return {qRadiansToDegrees(std::asin(std::fmax(-1.0, std::fmin(1.0, lineOfSight.z)))), azimuth};
}

double secondsSince2000(const QDateTime &utc)
{
    static const QDateTime noon(QDate(2000, 1, 1), QTime(12, 0), Qt::UTC);
    return static_cast<double>(noon.msecsTo(utc)) / 1000.0;
}

} // namespace Sky
