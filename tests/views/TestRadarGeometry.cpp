// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/RadarGeometry.h"

#include "support/OddNumbers.h"

#include <QtTest>

#include <cmath>

class TestRadarGeometry : public QObject
{
    Q_OBJECT

private slots:
    void placesDirections_data();
    void placesDirections();
    void putsTheZenithAtTheCentre();
    void fitsThePlot_data();
    void fitsThePlot();
    void placesRings();
    void placesLetters();
    void placesMarkerAndNumber_data();
    void placesMarkerAndNumber();
    void staysFiniteWithOddValues();
};

void TestRadarGeometry::placesDirections_data()
{
    QTest::addColumn<double>("azimuth");
    QTest::addColumn<double>("elevation");
    QTest::addColumn<QPointF>("point");
    QTest::newRow("north on the horizon is (0, -90)") << 0.0 << 0.0 << QPointF(0, -90);
    QTest::newRow("east on the horizon is (90, 0)") << 90.0 << 0.0 << QPointF(90, 0);
    QTest::newRow("south on the horizon") << 180.0 << 0.0 << QPointF(0, 90);
    QTest::newRow("west on the horizon") << 270.0 << 0.0 << QPointF(-90, 0);
    QTest::newRow("full circle") << 360.0 << 0.0 << QPointF(0, -90);
    QTest::newRow("45 and 45 is upper right")
        << 45.0 << 45.0 << QPointF(31.81980515339464, -31.81980515339464);
    QTest::newRow("30 and 60") << 30.0 << 60.0 << QPointF(15, -25.980762113533157);
    QTest::newRow("below the horizon") << 90.0 << -5.0 << QPointF(95, 0);
    QTest::newRow("beyond the zenith") << 90.0 << 100.0 << QPointF(-10, 0);
}

void TestRadarGeometry::placesDirections()
{
    QFETCH(double, azimuth);
    QFETCH(double, elevation);
    QFETCH(QPointF, point);
    const QPointF found = polarToPoint(azimuth, elevation);
    QVERIFY(std::abs(found.x() - point.x()) < 1e-12 * 100);
    QVERIFY(std::abs(found.y() - point.y()) < 1e-12 * 100);
}

void TestRadarGeometry::putsTheZenithAtTheCentre()
{
    for (int azimuth = 0; azimuth < 360; ++azimuth)
        QCOMPARE(polarToPoint(azimuth, 90.0), QPointF(0, 0));
}

void TestRadarGeometry::fitsThePlot_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QTransform>("transform");
    const auto expected = [](qreal x, qreal y, qreal scale) {
        return QTransform(scale, 0, 0, scale, x, y);
    };
    // Letters 11 wide, lines 15 high: 33 pixels go to the width, 45 to both.
    QTest::newRow("height decides") << QSize(600, 405) << expected(300, 202, 2.0);
    QTest::newRow("width decides") << QSize(258, 405) << expected(129, 202, 1.0);
    QTest::newRow("one pixel more is a 180th more")
        << QSize(600, 406) << expected(300, 203, 361.0 / 180.0);
    QTest::newRow("no room left") << QSize(600, 45) << expected(300, 22, 0.0);
    QTest::newRow("less than no room") << QSize(1, 1) << expected(0, 0, -77.0 / 180.0);
    QTest::newRow("nothing") << QSize(0, 0) << expected(0, 0, -78.0 / 180.0);
}

void TestRadarGeometry::fitsThePlot()
{
    QFETCH(QSize, size);
    QTEST(RadarGeometry(size, 11, 15).transform(), "transform");
}

void TestRadarGeometry::placesRings()
{
    QCOMPARE(RadarGeometry::ring(30), QRectF(-30, -30, 60, 60));
    QCOMPARE(RadarGeometry::ring(90), QRectF(-90, -90, 180, 180));
}

void TestRadarGeometry::placesLetters()
{
    const RadarGeometry geometry(QSize(600, 405), 11, 15);
    QCOMPARE(geometry.southOrigin(7), QPoint(-3, 101)); // -3.5, 101.25
    QCOMPARE(geometry.northOrigin(9), QPoint(-4, -93)); // -4.5, -93.75
    QCOMPARE(geometry.eastOrigin(7), QPoint(91, 3));    // 91.75, 3.75
    QCOMPARE(geometry.westOrigin(11), QPoint(-103, 3)); // -103.75, 3.75
}

void TestRadarGeometry::placesMarkerAndNumber_data()
{
    QTest::addColumn<QPointF>("position");
    QTest::addColumn<QPoint>("number");
    QTest::newRow("centre") << QPointF(0, 0) << QPoint(2, 2);
    QTest::newRow("north") << QPointF(0, -90) << QPoint(2, -88);
    QTest::newRow("fractions are cut towards zero") << QPointF(31.8, -31.8) << QPoint(33, -29);
    QTest::newRow("around zero") << QPointF(-2.9, -1.5) << QPoint(0, 0);
}

void TestRadarGeometry::placesMarkerAndNumber()
{
    QFETCH(QPointF, position);
    QCOMPARE(RadarGeometry::marker(position), QRectF(position.x() - 2, position.y() - 2, 4, 4));
    QTEST(RadarGeometry::numberOrigin(position), "number");
}

void TestRadarGeometry::staysFiniteWithOddValues()
{
    for (const double odd : kOddNumbers) {
        for (const QPointF point :
             {polarToPoint(odd, 45), polarToPoint(45, odd), polarToPoint(odd, odd)}) {
            QVERIFY(std::abs(point.x()) < 2e7 && std::abs(point.y()) < 2e7);
            QVERIFY(std::abs(RadarGeometry::numberOrigin(point).x()) < 20000000);
        }
    }
}

QTEST_GUILESS_MAIN(TestRadarGeometry)
#include "TestRadarGeometry.moc"
