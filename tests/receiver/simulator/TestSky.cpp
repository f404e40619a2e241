// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/simulator/Sky.h"

#include "receiver/epoch/SatelliteNumbering.h"

#include <QSet>
#include <QtTest>

#include <cmath>

class TestSky : public QObject
{
    Q_OBJECT
private slots:
    void hasKnownPeriods_data();
    void hasKnownPeriods();
    void numbersEverySatelliteOnce();
    void repeatsTheGroundTrackOfGpsAfterASiderealDay();
    void keepsStationarySatellitesInPlace();
    void neverLeavesItsInclination();
    void seesAPlausibleNumber_data();
    void seesAPlausibleNumber();
    void movesWithoutJumps();
    void convertsPlacesBothWays_data();
    void convertsPlacesBothWays();
    void looksInTheRightDirection();
};

namespace {

constexpr double kSiderealDayS = 86164.0905;

double length(const tVector &v)
{
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

tOrbit orbitOf(int number)
{
    for (const tOrbit &orbit : Sky::orbits()) {
        if (orbit.number == number)
            return orbit;
    }
    return {};
}

double longitudeDeg(const tVector &v)
{
    return std::atan2(v.y, v.x) * 180.0 / M_PI;
}

} // namespace

void TestSky::hasKnownPeriods_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<double>("hours");
    QTest::newRow("GPS") << 1 << 11.0 + 58.0 / 60.0;
    QTest::newRow("GLONASS") << 65 << 11.0 + 15.0 / 60.0 + 44.0 / 3600.0;
    QTest::newRow("Galileo") << 301 << 14.0 + 5.0 / 60.0;
    QTest::newRow("BeiDou medium") << 140 << 12.0 + 53.0 / 60.0;
    QTest::newRow("BeiDou stationary") << 121 << kSiderealDayS / 3600.0;
    QTest::newRow("QZSS") << 193 << kSiderealDayS / 3600.0;
}

void TestSky::hasKnownPeriods()
{
    QFETCH(int, number);
    QFETCH(double, hours);
    QVERIFY(std::fabs(2.0 * M_PI / orbitOf(number).rateRadPerS - hours * 3600.0) < 60.0);
}

void TestSky::numbersEverySatelliteOnce()
{
    QSet<int> numbers;
    QMap<Constellation, int> counts;
    for (const tOrbit &orbit : Sky::orbits()) {
        QVERIFY(!numbers.contains(orbit.number));
        numbers.insert(orbit.number);
        ++counts[orbit.constellation];
        QVERIFY(SatelliteNumbering::constellationOf(orbit.number) == orbit.constellation);
    }
    QCOMPARE(counts[Constellation::Gps], 32);
    QCOMPARE(counts[Constellation::Glonass], 24);
    QCOMPARE(counts[Constellation::Galileo], 24);
    QCOMPARE(counts[Constellation::BeiDou], 32);
    QCOMPARE(counts[Constellation::Qzss], 4);
}

void TestSky::repeatsTheGroundTrackOfGpsAfterASiderealDay()
{
    const tVector before = Sky::earthFixed(orbitOf(7), 8e8);
    const tVector after = Sky::earthFixed(orbitOf(7), 8e8 + kSiderealDayS);
    // Two revolutions and one turn of the earth, to within the few seconds of the nominal radius.
    QVERIFY(length({before.x - after.x, before.y - after.y, before.z - after.z}) < 100e3);
    const tVector half = Sky::earthFixed(orbitOf(7), 8e8 + kSiderealDayS / 2.0);
    QVERIFY(length({before.x - half.x, before.y - half.y, before.z - half.z}) > 10000e3);
}

void TestSky::keepsStationarySatellitesInPlace()
{
    for (int hour = 0; hour < 48; ++hour) {
        const tVector at = Sky::earthFixed(orbitOf(121), 8e8 + hour * 3600.0);
        QVERIFY(std::fabs(longitudeDeg(at) - 140.0) < 1e-3);
        QVERIFY(std::fabs(at.z) < 1.0);
        const tVector swinging = Sky::earthFixed(orbitOf(126), 8e8 + hour * 3600.0);
        QVERIFY(std::fabs(longitudeDeg(swinging) - 118.0) < 20.0);
    }
}

void TestSky::neverLeavesItsInclination()
{
    for (const tOrbit &orbit : Sky::orbits()) {
        for (int hour = 0; hour < 26; ++hour) {
            const tVector at = Sky::earthFixed(orbit, 8e8 + hour * 3600.0);
            QVERIFY(std::fabs(length(at) - orbit.radiusM) < 1.0);
            QVERIFY(std::asin(std::fabs(at.z) / length(at)) <= orbit.inclinationRad + 1e-9);
        }
    }
}

void TestSky::seesAPlausibleNumber_data()
{
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    for (const double latitude : {-90.0, -60.0, -33.0, 0.0, 20.0, 48.0, 70.0, 90.0}) {
        for (const double longitude : {-120.0, 11.0, 139.0})
            QTest::addRow("%g %g", latitude, longitude) << latitude << longitude;
    }
}

void TestSky::seesAPlausibleNumber()
{
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    for (int hour = 0; hour < 24; ++hour) {
        QMap<Constellation, int> counts;
        for (const tOrbit &orbit : Sky::orbits()) {
            const tVector sight = Sky::lineOfSight({latitude, longitude, 0.0},
                                                   Sky::earthFixed(orbit, 8e8 + hour * 3600.0));
            if (Sky::directionOf(sight).elevationDeg >= 5.0)
                ++counts[orbit.constellation];
        }
        QVERIFY(counts[Constellation::Gps] >= 6 && counts[Constellation::Gps] <= 17);
        QVERIFY(counts[Constellation::Glonass] >= 4 && counts[Constellation::Glonass] <= 13);
        QVERIFY(counts[Constellation::Galileo] >= 4 && counts[Constellation::Galileo] <= 13);
        QVERIFY(counts[Constellation::BeiDou] >= 3);
    }
}

void TestSky::movesWithoutJumps()
{
    const tPlace observer = {48.0, 11.0, 500.0};
    int moved = 0;
    for (const tOrbit &orbit : Sky::orbits()) {
        tVector last = Sky::lineOfSight(observer, Sky::earthFixed(orbit, 8e8));
        const tVector first = last;
        for (int second = 1; second <= 3600; ++second) {
            const tVector now = Sky::lineOfSight(observer, Sky::earthFixed(orbit, 8e8 + second));
            // Below 0.02 degrees a second on every orbit.
            QVERIFY(length({now.x - last.x, now.y - last.y, now.z - last.z}) < 3.5e-4);
            last = now;
        }
        moved += length({first.x - last.x, first.y - last.y, first.z - last.z}) > 0.1 ? 1 : 0;
    }
    QVERIFY(moved >= 90);
}

void TestSky::convertsPlacesBothWays_data()
{
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<double>("altitude");
    for (const double latitude : {-90.0, -89.9999, -33.8, 0.0, 1e-7, 48.1, 90.0}) {
        for (const double longitude : {-179.9, -70.0, 0.0, 151.2, 180.0}) {
            for (const double altitude : {-400.0, 0.0, 8848.0})
                QTest::addRow("%g %g %g", latitude, longitude, altitude)
                    << latitude << longitude << altitude;
        }
    }
}

void TestSky::convertsPlacesBothWays()
{
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(double, altitude);
    const tPlace back = Sky::placeOf(Sky::earthFixed(tPlace{latitude, longitude, altitude}));
    QVERIFY(std::fabs(back.latitudeDeg - latitude) < 1e-9);
    QVERIFY(std::fabs(back.altitudeM - altitude) < 1e-5);
    if (std::fabs(latitude) < 90.0)
        QVERIFY(std::fabs(std::remainder(back.longitudeDeg - longitude, 360.0)) < 1e-6);
}

void TestSky::looksInTheRightDirection()
{
    const tPlace observer = {0.0, 0.0, 0.0};
    const auto direction = [&observer](const tPlace &to) {
        return Sky::directionOf(Sky::lineOfSight(observer, Sky::earthFixed(to)));
    };
    QVERIFY(direction({0.0, 0.0, 2e7}).elevationDeg > 89.9);
    QVERIFY(std::fabs(direction({30.0, 0.0, 2e7}).azimuthDeg) < 1e-6);
    QVERIFY(std::fabs(direction({0.0, 30.0, 2e7}).azimuthDeg - 90.0) < 1e-6);
    QVERIFY(std::fabs(direction({-30.0, 0.0, 2e7}).azimuthDeg - 180.0) < 1e-6);
    QVERIFY(std::fabs(direction({0.0, -30.0, 2e7}).azimuthDeg - 270.0) < 1e-6);
    const tPlace east = Sky::displaced({48.0, 11.0, 500.0}, 100.0, 0.0, 0.0);
    QVERIFY(east.longitudeDeg > 11.001 && std::fabs(east.latitudeDeg - 48.0) < 1e-6);
}

QTEST_GUILESS_MAIN(TestSky)
#include "TestSky.moc"
