// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SatBarGeometry.h"

#include "support/OddNumbers.h"

#include <QtTest>

#include <cmath>

// With lines of 16 pixels the margin is 20, so that 240 pixels of height leave 2 for each dB-Hz.
class TestSatBarGeometry : public QObject
{
    Q_OBJECT

private slots:
    void scalesInSinglePrecision_data();
    void scalesInSinglePrecision();
    void placesGrid();
    void slotWidths_data();
    void slotWidths();
    void placesBars_data();
    void placesBars();
    void sevenBarsIn700PixelsAre90WideAnd5In();
    void placesTexts_data();
    void placesTexts();
    void staysFiniteWithOddValues();
};

void TestSatBarGeometry::scalesInSinglePrecision_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<float>("scale");
    QTest::newRow("240") << 240 << 2.0F;
    QTest::newRow("313") << 313 << 273.0F / 100.0F;
    QTest::newRow("only the margins") << 40 << 0.0F;
    QTest::newRow("lower than the margins") << 10 << -0.3F;
    QTest::newRow("nothing") << 0 << -0.4F;
}

void TestSatBarGeometry::scalesInSinglePrecision()
{
    QFETCH(int, height);
    QFETCH(float, scale);
    const SatBarGeometry geometry(QSize(100, height), 1, 16);
    QCOMPARE(geometry.margin(), 20);
    QVERIFY(geometry.scale() == scale); // to the bit
}

void TestSatBarGeometry::placesGrid()
{
    const SatBarGeometry even(QSize(100, 240), 1, 16);
    QCOMPARE(even.gridLineY(67), 154);
    QCOMPARE(even.gridLineY(33), 86);
    const SatBarGeometry odd(QSize(100, 313), 1, 16); // 20 + 67 * 2.73 = 202.91
    QCOMPARE(odd.gridLineY(67), 202);
    QCOMPARE(odd.gridLineY(33), 110);
}

void TestSatBarGeometry::slotWidths_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("slot");
    QTest::newRow("7 in 700") << 700 << 7 << 100;
    QTest::newRow("rest is left over") << 709 << 32 << 22;
    QTest::newRow("as many as pixels") << 32 << 32 << 1;
    QTest::newRow("more than pixels") << 31 << 32 << 0;
    QTest::newRow("no pixel") << 0 << 5 << 0;
    QTest::newRow("no satellite") << 700 << 0 << 0;
}

void TestSatBarGeometry::slotWidths()
{
    QFETCH(int, width);
    QFETCH(int, count);
    QTEST(SatBarGeometry(QSize(width, 240), count, 16).slotWidth(), "slot");
}

void TestSatBarGeometry::placesBars_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("cn0");
    QTest::addColumn<QRectF>("bar");
    const QSize even(700, 240);
    QTest::newRow("40 dB-Hz") << even << 7 << 0 << 40.0 << QRectF(5, 140, 90, 80);
    QTest::newRow("45.5 dB-Hz") << even << 7 << 6 << 45.5 << QRectF(605, 129, 90, 91);
    QTest::newRow("top is truncated, height is not")
        << even << 7 << 0 << 40.3 << QRectF(5, 139, 90, 40.3 * 2);
    QTest::newRow("0 dB-Hz has no height at the bottom margin")
        << even << 7 << 1 << 0.0 << QRectF(105, 220, 90, 0);
    QTest::newRow("100 dB-Hz reaches the top margin")
        << even << 7 << 1 << 100.0 << QRectF(105, 20, 90, 200);
    QTest::newRow("above 100 dB-Hz starts above the margin")
        << even << 7 << 1 << 120.0 << QRectF(105, -20, 90, 240);
    QTest::newRow("below 0 dB-Hz has a negative height")
        << even << 7 << 1 << -5.0 << QRectF(105, 230, 90, -10);
    QTest::newRow("left edge is truncated")
        << QSize(599, 240) << 31 << 2 << 50.0 << QRectF(38, 120, 0.9 * 19, 100);
    QTest::newRow("narrower than the satellites are many")
        << QSize(20, 240) << 32 << 31 << 50.0 << QRectF(0, 120, 0, 100);
}

void TestSatBarGeometry::placesBars()
{
    QFETCH(QSize, size);
    QFETCH(int, count);
    QFETCH(int, index);
    QFETCH(double, cn0);
    QTEST(SatBarGeometry(size, count, 16).bar(index, cn0), "bar");
}

void TestSatBarGeometry::sevenBarsIn700PixelsAre90WideAnd5In()
{
    const SatBarGeometry geometry(QSize(700, 313), 7, 15);
    for (int i = 0; i < 7; ++i) {
        const QRectF bar = geometry.bar(i, 33.0);
        QCOMPARE(bar.left(), i * 100.0 + 5.0);
        QCOMPARE(bar.width(), 90.0);
    }
}

void TestSatBarGeometry::placesTexts_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("cn0");
    QTest::addColumn<int>("textWidth");
    QTest::addColumn<QPoint>("number");
    QTest::addColumn<QPoint>("value");
    QTest::newRow("even slot, even text")
        << 700 << 0 << 40.0 << 14 << QPoint(43, 236) << QPoint(43, 136);
    QTest::newRow("even slot, odd text")
        << 700 << 1 << 40.0 << 7 << QPoint(146, 236) << QPoint(146, 136);
    QTest::newRow("odd slot, odd text")
        << 707 << 0 << 40.0 << 7 << QPoint(47, 236) << QPoint(47, 136);
    QTest::newRow("odd slot, even text")
        << 707 << 0 << 40.0 << 8 << QPoint(46, 236) << QPoint(46, 136);
    QTest::newRow("wider than its slot")
        << 70 << 0 << 0.0 << 21 << QPoint(-5, 236) << QPoint(-5, 216);
    QTest::newRow("height is truncated")
        << 700 << 0 << 40.3 << 14 << QPoint(43, 236) << QPoint(43, 135);
    QTest::newRow("no slot") << 6 << 3 << 40.0 << 9 << QPoint(-4, 236) << QPoint(-4, 136);
}

void TestSatBarGeometry::placesTexts()
{
    QFETCH(int, width);
    QFETCH(int, index);
    QFETCH(double, cn0);
    QFETCH(int, textWidth);
    const SatBarGeometry geometry(QSize(width, 240), 7, 16);
    QTEST(geometry.numberOrigin(index, textWidth), "number");
    QTEST(geometry.valueOrigin(index, cn0, textWidth), "value");
}

void TestSatBarGeometry::staysFiniteWithOddValues()
{
    for (const int height : {0, 1, 40, 240, 100000}) {
        const SatBarGeometry geometry(QSize(height, height), 32, 16);
        for (const double cn0 : kOddNumbers) {
            const QRectF bar = geometry.bar(31, cn0);
            QVERIFY(std::isfinite(bar.top()) && std::isfinite(bar.height()));
            QVERIFY(std::abs(bar.top()) < 2e7 && std::abs(bar.height()) < 2e7);
            QVERIFY(std::abs(geometry.valueOrigin(31, cn0, 20).y()) < 20000000);
        }
    }
}

QTEST_GUILESS_MAIN(TestSatBarGeometry)
#include "TestSatBarGeometry.moc"
