// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/simulator/FixGeometry.h"

#include <QtTest>

#include <cmath>

class TestFixGeometry : public QObject
{
    Q_OBJECT
private slots:
    void agreesWithAWorkedExample();
    void needsFourInDifferentDirections();
    void getsBetterWithMore();
};

namespace {

tVector towards(double azimuthDeg, double elevationDeg)
{
    const double azimuth = azimuthDeg * M_PI / 180.0;
    const double elevation = elevationDeg * M_PI / 180.0;
    return {std::sin(azimuth) * std::cos(elevation), std::cos(azimuth) * std::cos(elevation),
            std::sin(elevation)};
}

} // namespace

void TestFixGeometry::agreesWithAWorkedExample()
{
    // One overhead, three at the horizon 120 degrees apart. By hand: the horizontal part of the
    // normal equations is 3/2 times the unit matrix, so HDOP = sqrt(2 / 1.5); up and clock have
    // [1 1; 1 4], whose inverse has 4/3 for up.
    const auto dilution =
        dilutionOf({towards(0, 90), towards(0, 0), towards(120, 0), towards(240, 0)});
    QVERIFY(dilution);
    QVERIFY(std::fabs(dilution->hdop - std::sqrt(4.0 / 3.0)) < 1e-9);
    QVERIFY(std::fabs(dilution->vdop - std::sqrt(4.0 / 3.0)) < 1e-9);
    QVERIFY(std::fabs(dilution->pdop - std::sqrt(8.0 / 3.0)) < 1e-9);
}

void TestFixGeometry::needsFourInDifferentDirections()
{
    QVERIFY(!dilutionOf({}));
    QVERIFY(!dilutionOf({towards(0, 90), towards(0, 10), towards(120, 10)}));
    QVERIFY(!dilutionOf({towards(0, 30), towards(90, 30), towards(180, 30), towards(270, 30)}));
    QVERIFY(!dilutionOf(QVector<tVector>(8, towards(45, 45))));
}

void TestFixGeometry::getsBetterWithMore()
{
    QVector<tVector> sights = {towards(10, 80), towards(20, 15), towards(140, 25),
                               towards(260, 10)};
    double last = dilutionOf(sights)->pdop;
    for (const double azimuth : {60.0, 200.0, 320.0}) {
        sights.append(towards(azimuth, 40));
        const auto dilution = dilutionOf(sights);
        QVERIFY(dilution->pdop < last);
        QVERIFY(std::fabs(std::hypot(dilution->hdop, dilution->vdop) - dilution->pdop) < 1e-9);
        last = dilution->pdop;
    }
}

QTEST_GUILESS_MAIN(TestFixGeometry)
#include "TestFixGeometry.moc"
