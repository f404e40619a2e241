// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchSizes.h"

#include <QtTest>

class TestTouchSizes : public QObject
{
    Q_OBJECT

private slots:
    void followTheScreen_data();
    void followTheScreen();
};

void TestTouchSizes::followTheScreen_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QVector<int>>("sizes"); // font, finger, indicator, margin, spacing
    const auto row = [](const char *name, QSize screen, const QVector<int> &sizes) {
        QTest::newRow(name) << screen << sizes;
    };
    row("the measure", {800, 480}, {13, 40, 24, 9, 6});
    row("it with all pixels doubled", {400, 240}, {10, 20, 14, 5, 3});
    row("narrow for its height", {480, 320}, {10, 24, 14, 5, 4});
    row("upright: the width decides", {480, 800}, {10, 24, 14, 5, 4});
    row("wider than usual: the height decides", {1280, 480}, {13, 40, 24, 9, 6});
    row("720 lines", {1280, 720}, {20, 60, 36, 14, 9});
    row("1080 lines", {1920, 1080}, {29, 90, 54, 20, 14});
    row("nothing gets smaller than this", {120, 80}, {10, 20, 14, 2, 2});
    row("no screen", {0, 0}, {10, 20, 14, 2, 2});
}

void TestTouchSizes::followTheScreen()
{
    QFETCH(QSize, screen);
    const TouchSizes sizes(screen);
    QTEST(QVector<int>({sizes.fontPixels(), sizes.fingerPixels(), sizes.indicatorPixels(),
                        sizes.marginPixels(), sizes.spacingPixels()}),
          "sizes");
}

QTEST_APPLESS_MAIN(TestTouchSizes)
#include "TestTouchSizes.moc"
