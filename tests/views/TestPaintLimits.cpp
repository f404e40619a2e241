// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/PaintLimits.h"

#include <QtTest>

#include <limits>

class TestPaintLimits : public QObject
{
    Q_OBJECT

private slots:
    void limits_data();
    void limits();
};

void TestPaintLimits::limits_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("limited");
    QTest::addColumn<int>("truncated");
    constexpr double farthest = PaintLimits::kFarthest;
    QTest::newRow("zero") << 0.0 << 0.0 << 0;
    QTest::newRow("ordinary") << 123.75 << 123.75 << 123;
    QTest::newRow("negative is cut towards zero") << -123.75 << -123.75 << -123;
    QTest::newRow("just below one") << 0.999999 << 0.999999 << 0;
    QTest::newRow("at the limit") << farthest << farthest << 16777216;
    QTest::newRow("beyond the limit") << 1e308 << farthest << 16777216;
    QTest::newRow("beyond the limit, negative") << -1e308 << -farthest << -16777216;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << farthest << 16777216;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 0.0 << 0;
}

void TestPaintLimits::limits()
{
    QFETCH(double, value);
    QTEST(PaintLimits::limited(value), "limited");
    QTEST(PaintLimits::truncated(value), "truncated");
}

QTEST_GUILESS_MAIN(TestPaintLimits)
#include "TestPaintLimits.moc"
