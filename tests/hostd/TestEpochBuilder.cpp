// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/EpochBuilder.h"

#include "hostd/Dialect.h"

#include <QtTest>

class TestEpochBuilder : public QObject
{
    Q_OBJECT
private slots:
    void cutsWhereTheTimeChanges();
    void cutsAtARepeatedSentenceWithoutTimes();
    void numbersSatellites_data();
    void numbersSatellites();
    void numbersSatellitesInUse_data();
    void numbersSatellitesInUse();
    void joinsTheSetsOfSeveralSignals();
    void dropsEmptyGroupsAndSignalIds();
    void makesUpWhatIsMissing();
    void bringsTheLatestGsaToALoneGsv();
    void prefersGgaToGns();
    void countsSatellitesWithoutANumber();
};

namespace {

// The sentences, given without their checksums, as epochs.
QVector<tEpoch> epochsOf(const QList<QByteArray> &bodies, EpochBuilder *builder = nullptr)
{
    EpochBuilder own;
    EpochBuilder &used = builder ? *builder : own;
    QVector<tEpoch> epochs;
    for (const QByteArray &body : bodies) {
        const auto sentence = Nmea::parse(Dialect::sentence(body).trimmed(), Nmea::LineEnd::Seen);
        if (const auto epoch = used.add(*sentence))
            epochs.append(*epoch);
    }
    if (const auto rest = used.takeRest())
        epochs.append(*rest);
    return epochs;
}

QList<int> numbersInView(const tEpoch &epoch)
{
    QList<int> numbers;
    for (const tSatellite &satellite : epoch.inView)
        numbers.append(satellite.number);
    return numbers;
}

} // namespace

void TestEpochBuilder::cutsWhereTheTimeChanges()
{
    const auto epochs = epochsOf({
        "GNRMC,120000.00,A,4807.0380,N,01131.0000,E,,,010125,,,A",
        "GNGGA,120000.00,4807.0380,N,01131.0000,E,1,08,1.0,545.4,M,46.9,M,,",
        "GPGSV,1,1,01,05,10,100,30",
        "GNGLL,4807.0380,N,01131.0000,E,120000.00,A,A",
        "GNRMC,120001.00,V,,,,,,,010125,,,N",
    });
    QCOMPARE(epochs.size(), 2);
    QCOMPARE(*epochs[0].timeMs, 43200000);
    QVERIFY(epochs[0].valid);
    QCOMPARE(numbersInView(epochs[0]), QList<int>{5});
    QCOMPARE(*epochs[0].altitudeM, 545.4);
    QVERIFY(!epochs[1].valid);
    QVERIFY(!epochs[1].latitude);
    QVERIFY(epochs[1].inView.isEmpty());
}

void TestEpochBuilder::cutsAtARepeatedSentenceWithoutTimes()
{
    const QList<QByteArray> cycle = {"GPGGA,,,,,,0,,,,M,,M,,", "GPGLL,,,,,,V,N",
                                     "GPGSA,A,1,,,,,,,,,,,,,,,", "GPGSV,1,1,01,15,00,000,",
                                     "GPRMC,,V,,,,,,,,,,N"};
    const auto epochs = epochsOf(cycle + cycle + cycle);
    QCOMPARE(epochs.size(), 3);
    for (const tEpoch &epoch : epochs) {
        QVERIFY(!epoch.timeMs);
        QVERIFY(!epoch.valid);
        QCOMPARE(epoch.inView.size(), 1);
        QVERIFY(epoch.activeKnown);
    }
}

void TestEpochBuilder::numbersSatellites_data()
{
    QTest::addColumn<QByteArray>("talker");
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("expected"); // 0: none
    const auto row = [](const char *talker, int given, int expected) {
        QTest::addRow("%s %d", talker, given) << QByteArray(talker) << given << expected;
    };
    row("GP", 1, 1);
    row("GP", 32, 32);
    row("GP", 51, 51);
    row("GP", 122, 35);
    row("GP", 193, 193);
    row("GP", 70, 70);
    row("GL", 65, 65);
    row("GL", 88, 88);
    row("GL", 1, 65);
    row("GL", 24, 88);
    row("GL", 89, 0);
    row("GA", 1, 301);
    row("GA", 36, 336);
    row("GA", 37, 0);
    row("GA", 301, 301);
    row("GB", 1, 121);
    row("GB", 37, 157);
    row("GB", 38, 0);
    row("BD", 14, 134);
    row("BD", 201, 121);
    row("GQ", 1, 193);
    row("GQ", 193, 193);
    row("QZ", 199, 199);
    row("GN", 5, 5);
    row("GI", 3, 0);
    row("GP", 0, 0);
}

void TestEpochBuilder::numbersSatellites()
{
    QFETCH(QByteArray, talker);
    QFETCH(int, given);
    QFETCH(int, expected);
    const auto epochs = epochsOf({talker + "GSV,1,1,01," + QByteArray::number(given) + ",10,100,30",
                                  "GPRMC,120000,A,,,,,,,010125,,"});
    QCOMPARE(epochs.size(), 1);
    QCOMPARE(numbersInView(epochs[0]), expected == 0 ? QList<int>() : QList<int>{expected});
}

void TestEpochBuilder::numbersSatellitesInUse_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<QVector<int>>("expected");
    QTest::newRow("GPS talker") << QByteArray("GPGSA") << QByteArray("") << QVector<int>{7, 12};
    QTest::newRow("no system") << QByteArray("GNGSA") << QByteArray("") << QVector<int>{7, 12};
    QTest::newRow("system 1") << QByteArray("GNGSA") << QByteArray(",1") << QVector<int>{7, 12};
    QTest::newRow("system 3") << QByteArray("GNGSA") << QByteArray(",3") << QVector<int>{307, 312};
    QTest::newRow("system 4") << QByteArray("GNGSA") << QByteArray(",4") << QVector<int>{127, 132};
    QTest::newRow("BeiDou talker")
        << QByteArray("BDGSA") << QByteArray("") << QVector<int>{127, 132};
    QTest::newRow("no system but a number")
        << QByteArray("BDGSA") << QByteArray(",3.3") << QVector<int>{127, 132};
}

void TestEpochBuilder::numbersSatellitesInUse()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, end);
    QFETCH(QVector<int>, expected);
    const auto epochs = epochsOf(
        {start + ",A,3,07,12,,,,,,,,,,,1.5,0.9,1.2" + end, "GPRMC,120000,A,,,,,,,010125,,"});
    QCOMPARE(epochs.size(), 1);
    QCOMPARE(epochs[0].used, expected);
    QCOMPARE(*epochs[0].pdop, 1.5);
    QCOMPARE(*epochs[0].hdop, 0.9);
    QCOMPARE(*epochs[0].vdop, 1.2);
    QCOMPARE(epochs[0].fixMode, 3);
}

void TestEpochBuilder::joinsTheSetsOfSeveralSignals()
{
    const auto epochs = epochsOf({
        "GPGSV,1,1,02,05,06,110,19,10,,,,1",
        "GPGSV,1,1,02,05,06,110,31,10,24,284,,6",
        "GPRMC,120000,A,,,,,,,010125,,",
    });
    QCOMPARE(epochs.size(), 1);
    QCOMPARE(numbersInView(epochs[0]), (QList<int>{5, 10}));
    QCOMPARE(epochs[0].inView[0].cn0DbHz, 31);
    QCOMPARE(epochs[0].inView[1].cn0DbHz, 0);
    QCOMPARE(*epochs[0].inView[1].elevationDeg, 24);
    QCOMPARE(*epochs[0].inView[1].azimuthDeg, 284);
}

void TestEpochBuilder::dropsEmptyGroupsAndSignalIds()
{
    const auto epochs = epochsOf({
        "GPGSV,1,1,01,15,00,000,,,,,,,,,,,,,",
        "GAGSV,1,1,01,33,62,034,08,7",
        "GPRMC,120000,A,,,,,,,010125,,",
    });
    QCOMPARE(numbersInView(epochs[0]), (QList<int>{15, 333}));
}

void TestEpochBuilder::makesUpWhatIsMissing()
{
    const auto onlyRmc = epochsOf({"GPRMC,120000,A,4807.0380,N,01131.0000,E,0.5,90.0,010125,,,D"});
    QCOMPARE(onlyRmc[0].quality, 2);
    QCOMPARE(onlyRmc[0].mode, 'D');
    QVERIFY(onlyRmc[0].latitude);

    const auto onlyGga = epochsOf({
        "GPRMC,120000,A,4807.0380,N,01131.0000,E,0.5,90.0,010125,,,A",
        "GPGGA,120000,4807.0380,N,01131.0000,E,1,08,1.0,545.4,M,46.9,M,,",
        "GPGGA,120001,4807.0380,N,01131.0000,E,4,08,1.0,545.5,M,46.9,M,,",
        "GPRMC,120002,A,4807.0380,N,01131.0000,E,0.5,90.0,010125,,,A",
    });
    QCOMPARE(onlyGga.size(), 3);
    QVERIFY(onlyGga[1].valid);
    QCOMPARE(onlyGga[1].mode, 'R');
    QCOMPARE(onlyGga[1].date, QDate(2025, 1, 1));
    QCOMPARE(*onlyGga[2].altitudeM, 545.5); // the latest known, not none
    QCOMPARE(*onlyGga[2].satellitesInUse, 8);
}

void TestEpochBuilder::bringsTheLatestGsaToALoneGsv()
{
    const auto epochs = epochsOf({
        "GNRMC,120000.00,V,,,,,,,010125,,,N",
        "GNGSA,A,1,31,21,,,,,,,,,,,53.49,28.92,45.00",
        "GNRMC,120001.00,V,,,,,,,010125,,,N",
        "GNRMC,120002.00,V,,,,,,,010125,,,N",
        "GPGSV,1,1,01,31,56,245,20",
    });
    QCOMPARE(epochs.size(), 3);
    QVERIFY(!epochs[1].activeKnown);
    QVERIFY(epochs[2].activeKnown);
    QCOMPARE(epochs[2].used, (QVector<int>{31, 21}));
}

void TestEpochBuilder::prefersGgaToGns()
{
    const auto both = epochsOf({
        "GNGNS,120213.000,5957.0062,N,01100.6429,E,NDD,11,1.3,168.9,39.5,,,V",
        "GNGGA,120213.000,5957.0062,N,01100.6429,E,2,00,1.4,168.8,M,39.5,M,,",
    });
    QCOMPARE(both.size(), 1);
    QCOMPARE(both[0].quality, 2);
    QCOMPARE(*both[0].satellitesInUse, 11); // GGA counts none, so GNS is believed
    QCOMPARE(*both[0].altitudeM, 168.8);
    const auto gns =
        epochsOf({"GNGNS,120213.000,5957.0062,N,01100.6429,E,NDD,11,1.3,168.9,39.5,,"});
    QCOMPARE(gns[0].quality, 2);
    QVERIFY(gns[0].valid);
    const auto none = epochsOf({"GNGNS,120213.000,,,,,NNNN,00,,,0.0,,"});
    QCOMPARE(none[0].quality, 0);
    QVERIFY(!none[0].valid);
}

void TestEpochBuilder::countsSatellitesWithoutANumber()
{
    EpochBuilder builder;
    epochsOf({"GBGSV,1,1,02,40,24,038,44,43,14,069,43", "GBGSV,1,1,01,40,24,038,44",
              "GPRMC,120000,A,,,,,,,010125,,"},
             &builder);
    QCOMPARE(builder.unnumberedSatellites(), 2);
}

QTEST_GUILESS_MAIN(TestEpochBuilder)
#include "TestEpochBuilder.moc"
