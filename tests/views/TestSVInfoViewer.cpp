// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SVInfoViewer.h"

#include <QtTest>

#include <limits>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<tSvInfo>);

namespace {

struct Viewer : SVInfoViewer
{
    using SVInfoViewer::svCount;
    using SVInfoViewer::svInfo;
    using SVInfoViewer::SVInfoViewer;
};

tSvInfo entry(int number)
{
    return {number, number + 0.25, number + 0.5, number + 0.75, number % 2 == 1};
}

} // namespace

class TestSVInfoViewer : public QObject
{
    Q_OBJECT

private slots:
    void startsEmpty();
    void copiesWithinItsRoom_data();
    void copiesWithinItsRoom();
    void keepsEveryField();
    void takesNothingFromNowhere();
};

void TestSVInfoViewer::startsEmpty()
{
    QWidget parent;
    const Viewer viewer(&parent);
    QCOMPARE(viewer.svCount, 0);
    QCOMPARE(viewer.parentWidget(), &parent);
    QCOMPARE(viewer.metaObject()->className(), "SVInfoViewer");
}

void TestSVInfoViewer::copiesWithinItsRoom_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("stored");
    QTest::newRow("none") << 0 << 0;
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("31") << 31 << 31;
    QTest::newRow("32 fill it") << 32 << 32;
    QTest::newRow("33 are cut to 32") << 33 << 32;
    QTest::newRow("72 are cut to 32") << 72 << 32;
    QTest::newRow("highest") << std::numeric_limits<int>::max() << 32;
    QTest::newRow("negative is none") << -1 << 0;
    QTest::newRow("lowest is none") << std::numeric_limits<int>::min() << 0;
}

void TestSVInfoViewer::copiesWithinItsRoom()
{
    QFETCH(int, count);
    QFETCH(int, stored);
    tSvInfo entries[72];
    for (int i = 0; i < 72; ++i)
        entries[i] = entry(i + 1);
    Viewer viewer;
    viewer.setSvInfo(entries, count);
    QCOMPARE(viewer.svCount, stored);
    for (int i = 0; i < kMaxSatellites; ++i)
        QCOMPARE(viewer.svInfo[i].prn, i < stored ? i + 1 : 0);
}

void TestSVInfoViewer::keepsEveryField()
{
    const tSvInfo sv = entry(65);
    Viewer viewer;
    viewer.setSvInfo(&sv, 1);
    QCOMPARE(viewer.svInfo[0].prn, 65);
    QCOMPARE(viewer.svInfo[0].azimuth, 65.25);
    QCOMPARE(viewer.svInfo[0].elevation, 65.5);
    QCOMPARE(viewer.svInfo[0].cn0, 65.75);
    QVERIFY(viewer.svInfo[0].used);
}

void TestSVInfoViewer::takesNothingFromNowhere()
{
    const tSvInfo sv = entry(1);
    Viewer viewer;
    viewer.setSvInfo(&sv, 1);
    viewer.setSvInfo(nullptr, 0);
    QCOMPARE(viewer.svCount, 0);
}

QTEST_MAIN(TestSVInfoViewer)
#include "TestSVInfoViewer.moc"
