// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemHooks.h"

#include <QtTest>

class TestSystemHooks : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void putsRootBeforePath_data();
    void putsRootBeforePath();
    void leavesPathWithoutRoot();
    void leavesWaitsAsTheyAre();
    void takesOtherWaits();
};

void TestSystemHooks::init()
{
    qunsetenv("TAVRIN_ROOT");
    SystemHooks::setWaitLength(nullptr);
}

void TestSystemHooks::putsRootBeforePath_data()
{
    QTest::addColumn<QByteArray>("root");
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("empty") << QByteArray("") << QByteArray("/etc/config.xml");
    QTest::newRow("folder") << QByteArray("/srv/two") << QByteArray("/srv/two/etc/config.xml");
    QTest::newRow("local bytes") << QByteArray("/gr\xC3\xBC\xC3\x9F")
                                 << QByteArray("/gr\xC3\xBC\xC3\x9F/etc/config.xml");
}

void TestSystemHooks::putsRootBeforePath()
{
    QFETCH(QByteArray, root);
    qputenv("TAVRIN_ROOT", root);
    QTEST(SystemHooks::systemPath("/etc/config.xml"), "path");
}

void TestSystemHooks::leavesPathWithoutRoot()
{
    QCOMPARE(SystemHooks::systemPath("/tmp/agiin"), QByteArray("/tmp/agiin"));
}

void TestSystemHooks::leavesWaitsAsTheyAre()
{
    QCOMPARE(SystemHooks::waitLength(0), 0);
    QCOMPARE(SystemHooks::waitLength(1000), 1000);
}

void TestSystemHooks::takesOtherWaits()
{
    SystemHooks::setWaitLength([](int nominalMs) { return nominalMs / 100; });
    QCOMPARE(SystemHooks::waitLength(1000), 10);
    SystemHooks::setWaitLength(nullptr);
    QCOMPARE(SystemHooks::waitLength(1000), 1000);
}

QTEST_GUILESS_MAIN(TestSystemHooks)
#include "TestSystemHooks.moc"
