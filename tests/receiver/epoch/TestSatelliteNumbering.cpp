// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/epoch/SatelliteNumbering.h"

#include <QtTest>

class TestSatelliteNumbering : public QObject
{
    Q_OBJECT
private slots:
    void numbersSatellites_data();
    void numbersSatellites();
    void givesOnlyNumbersOfTheDevice();
    void knowsTheSystemsByTheirIdentifiers_data();
    void knowsTheSystemsByTheirIdentifiers();
};

void TestSatelliteNumbering::numbersSatellites_data()
{
    QTest::addColumn<QByteArray>("talker");
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("expected"); // 0: none
    const auto row = [](const char *talker, int given, int expected) {
        QTest::addRow("%s %d", talker, given) << QByteArray(talker) << given << expected;
    };
    row("GP", 0, 0);
    row("GP", 1, 1);
    row("GP", 32, 32);
    row("GP", 51, 51);
    row("GP", 70, 70);
    row("GP", 96, 96);
    row("GP", 97, 0);
    row("GP", 119, 0);
    row("GP", 120, 33);
    row("GP", 151, 64);
    row("GP", 152, 0);
    row("GP", 193, 193);
    row("GP", 200, 200);
    row("GP", 201, 121);
    row("GP", 263, 183);
    row("GP", 264, 0);
    row("GP", 301, 301);
    row("GP", 337, 0);
    row("GP", 401, 121);
    row("GP", 464, 0);
    row("GL", 1, 65);
    row("GL", 24, 88);
    row("GL", 32, 96);
    row("GL", 33, 33);
    row("GL", 65, 65);
    row("GL", 96, 96);
    row("GL", 97, 0);
    row("GA", 1, 301);
    row("GA", 36, 336);
    row("GA", 37, 0);
    row("GA", 101, 301);
    row("GA", 136, 336);
    row("GA", 137, 0);
    row("GA", 301, 301);
    row("GA", 337, 0);
    row("GB", 1, 121);
    row("GB", 63, 183);
    row("GB", 64, 0);
    row("GB", 121, 121);
    row("GB", 183, 183);
    row("GB", 184, 0);
    row("BD", 14, 134);
    row("BD", 201, 121);
    row("BD", 263, 183);
    row("BD", 463, 183);
    row("PQ", 14, 134);
    row("PQ", 201, 121);
    row("PQ", 193, 193);
    row("QZ", 1, 193);
    row("QZ", 10, 202);
    row("QZ", 11, 0);
    row("QZ", 199, 199);
    row("QZ", 202, 202);
    row("QZ", 203, 0);
    row("GQ", 1, 193);
    row("GQ", 193, 193);
    row("GN", 5, 5);
    row("GN", 96, 96);
    row("GN", 120, 33);
    row("GN", 121, 121);
    row("GN", 183, 183);
    row("GN", 201, 121);
    row("GN", 401, 121);
    row("GN", 437, 157);
    row("II", 5, 5);
    row("IN", 301, 301);
    row("GI", 3, 0);
}

void TestSatelliteNumbering::numbersSatellites()
{
    QFETCH(QByteArray, talker);
    QFETCH(int, given);
    QFETCH(int, expected);
    const QByteArray usual = SatelliteNumbering::usualTalker(talker);
    QCOMPARE(SatelliteNumbering::deviceNumber(usual, given).value_or(0), expected);
}

void TestSatelliteNumbering::givesOnlyNumbersOfTheDevice()
{
    int given = 0;
    for (const char *talker : {"GP", "GL", "GA", "GB", "QZ", "GI", "GN"}) {
        for (int number = -1; number < 1000; ++number) {
            const std::optional<int> device = SatelliteNumbering::deviceNumber(talker, number);
            given += device ? 1 : 0;
            QVERIFY2(!device || SatelliteNumbering::constellationOf(*device),
                     talker + QByteArray::number(number));
        }
    }
    QVERIFY(given > 500);
}

void TestSatelliteNumbering::knowsTheSystemsByTheirIdentifiers_data()
{
    QTest::addColumn<QByteArray>("identifier");
    QTest::addColumn<QByteArray>("talker");
    QTest::newRow("1") << QByteArray("1") << QByteArray("GP");
    QTest::newRow("2") << QByteArray("2") << QByteArray("GL");
    QTest::newRow("3") << QByteArray("3") << QByteArray("GA");
    QTest::newRow("4") << QByteArray("4") << QByteArray("GB");
    QTest::newRow("5") << QByteArray("5") << QByteArray("QZ");
    QTest::newRow("6") << QByteArray("6") << QByteArray("GI");
    QTest::newRow("0") << QByteArray("0") << QByteArray();
    QTest::newRow("7") << QByteArray("7") << QByteArray();
    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("a DOP") << QByteArray("3.3") << QByteArray();
}

void TestSatelliteNumbering::knowsTheSystemsByTheirIdentifiers()
{
    QFETCH(QByteArray, identifier);
    QFETCH(QByteArray, talker);
    QCOMPARE(SatelliteNumbering::talkerOfSystem(identifier).value_or(QByteArray()), talker);
}

QTEST_GUILESS_MAIN(TestSatelliteNumbering)
#include "TestSatelliteNumbering.moc"
