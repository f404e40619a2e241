// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/epoch/EpochBuilder.h"

#include "hostd/Dialect.h"

#include <QtTest>

class TestEpochBuilder : public QObject
{
    Q_OBJECT
private slots:
    void cutsWhereTheTimeChanges();
    void cutsAtARepeatedSentenceWithoutTimes();
    void numbersSatellitesInUse_data();
    void numbersSatellitesInUse();
    void joinsTheSetsOfSeveralSignals();
    void dropsEmptyGroupsAndSignalIds();
    void makesUpWhatIsMissing();
    void bringsTheLatestGsaToALoneGsv();
    void prefersGgaToGns();
    void countsSatellitesWithoutANumber();
    void remembersSoManyNumbersOnly();
    void tellsTheQualityByTheMode_data();
    void tellsTheQualityByTheMode();
    void bringsTimesAndAnglesIntoForm_data();
    void bringsTimesAndAnglesIntoForm();
    void rewritesTheModesOfGns_data();
    void rewritesTheModesOfGns();
    void endsAnEpochAtAPause();
    void takesSetsBeforeAPauseForThoseOfTheTime();
    void learnsFromAPauseThatSetsComeLast();
    void forgetsTheSatellitesOfBeforeARestart_data();
    void forgetsTheSatellitesOfBeforeARestart();
    void makesNoSecondEpochOfALatePart();
    void goesOnWhereTheTimeStandsStill();
    void takesTwoTalkersOfOneCycleAsOne();
    void passesOtherSentencesOn();
    void leavesOutWhatTheViewerWouldMistake_data();
    void leavesOutWhatTheViewerWouldMistake();
    void owesSatellitesToTheNextTime();
    void tellsSatellitesThatAPauseSeparated();
    void holdsNoOtherSentencesForEver();
    void takesALoneGllForAnEpoch();
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

QList<QByteArray> textsOf(const tEpoch &epoch)
{
    QList<QByteArray> texts;
    for (const QByteArray &sentence : Dialect::sentences(epoch))
        texts.append(sentence.trimmed());
    return texts;
}

void addTo(EpochBuilder &builder, const QByteArray &body)
{
    QVERIFY(!builder.add(*Nmea::parse(Dialect::sentence(body).trimmed(), Nmea::LineEnd::Seen)));
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
    QTest::newRow("system 5, up to its tenth")
        << QByteArray("GNGSA") << QByteArray(",5") << QVector<int>{199};
    QTest::newRow("system 6, for which there is no room")
        << QByteArray("GNGSA") << QByteArray(",6") << QVector<int>{};
    QTest::newRow("other BeiDou talker")
        << QByteArray("PQGSA") << QByteArray("") << QVector<int>{127, 132};
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
    epochsOf({"GBGSV,1,1,02,64,24,038,44,65,14,069,43", "GBGSV,1,1,01,64,24,038,44",
              "GPRMC,120000,A,,,,,,,010125,,"},
             &builder);
    QCOMPARE(builder.unnumberedSatellites(), 2);
}

void TestEpochBuilder::remembersSoManyNumbersOnly()
{
    EpochBuilder builder;
    QList<QByteArray> noise;
    for (int i = 0; i < 1500; ++i)
        noise << "GAGSV,1,1,01," + QByteArray::number(1000 + i) + ",24,038,44";
    epochsOf(noise, &builder);
    QCOMPARE(builder.unnumberedSatellites(), 1000);
}

void TestEpochBuilder::tellsTheQualityByTheMode_data()
{
    QTest::addColumn<char>("mode");
    QTest::addColumn<int>("quality");
    QTest::newRow("autonomous") << 'A' << 1;
    QTest::newRow("differential") << 'D' << 2;
    QTest::newRow("precise") << 'P' << 3;
    QTest::newRow("RTK") << 'R' << 4;
    QTest::newRow("RTK float") << 'F' << 5;
    QTest::newRow("estimated") << 'E' << 6;
    QTest::newRow("manual") << 'M' << 7;
    QTest::newRow("simulated") << 'S' << 8;
}

// Each way round, where only one of the two is told.
void TestEpochBuilder::tellsTheQualityByTheMode()
{
    QFETCH(char, mode);
    QFETCH(int, quality);
    const auto byMode = epochsOf({QByteArray("GNRMC,120000,A,4807,N,01131,E,,,010125,,,") + mode});
    QCOMPARE(byMode.size(), 1);
    QCOMPARE(byMode[0].quality, quality);
    const auto byQuality = epochsOf(
        {"GNGGA,120000,4807,N,01131,E," + QByteArray::number(quality) + ",08,1.0,545,M,46,M,,"});
    QCOMPARE(byQuality.size(), 1);
    QCOMPARE(byQuality[0].mode, mode);
    // What no letter or number stands for is an ordinary fix.
    QCOMPARE(epochsOf({"GNRMC,120000,A,4807,N,01131,E,,,010125,,,X"})[0].quality, 1);
    QCOMPARE(epochsOf({"GNGGA,120000,4807,N,01131,E,9,08,1.0,545,M,46,M,,"})[0].mode, 'A');
}

void TestEpochBuilder::bringsTimesAndAnglesIntoForm_data()
{
    QTest::addColumn<QByteArray>("time");
    QTest::addColumn<QByteArray>("position");
    QTest::addColumn<QByteArray>("expectedTime");
    QTest::addColumn<QByteArray>("expectedPosition");
    const auto row = [](const char *title, const char *time, const char *position,
                        const char *expectedTime, const char *expectedPosition) {
        QTest::newRow(title) << QByteArray(time) << QByteArray(position) << QByteArray(expectedTime)
                             << QByteArray(expectedPosition);
    };
    row("as the device", "120000.250", "4807.0380,N,01131.0000,E", "120000.250",
        "4807.0380,N,01131.0000,E");
    row("no decimals", "120000", "4807,N,01131,E", "120000.000", "4807.0000,N,01131.0000,E");
    row("hundredths, three decimals", "120000.25", "4807.038,S,01131.1,W", "120000.250",
        "4807.0380,S,01131.1000,W");
    row("five decimals, down", "120000.25049", "4807.03804,N,01131.00004,E", "120000.250",
        "4807.0380,N,01131.0000,E");
    row("five decimals, up", "120000.2505", "4807.03805,N,01131.00005,E", "120000.251",
        "4807.0381,N,01131.0001,E");
    row("eight decimals", "120000.25", "4807.03804999,N,01131.00005000,E", "120000.250",
        "4807.0380,N,01131.0001,E");
    row("carry into the degrees", "120000", "4859.99996,N,17959.99996,W", "120000.000",
        "4900.0000,N,18000.0000,W");
    row("carry at the pole", "120000", "8959.99995,S,00059.99995,E", "120000.000",
        "9000.0000,S,00100.0000,E");
    row("almost a carry", "120000", "4859.99994,N,01159.99994,E", "120000.000",
        "4859.9999,N,01159.9999,E");
    row("carry into the minute", "120059.9996", "4807.0380,N,01131.0000,E", "120100.000",
        "4807.0380,N,01131.0000,E");
    row("carry into the hour", "125959.9995", "4807.0380,N,01131.0000,E", "130000.000",
        "4807.0380,N,01131.0000,E");
    row("no carry out of the day", "235959.9996", "4807.0380,N,01131.0000,E", "235959.999",
        "4807.0380,N,01131.0000,E");
    row("beyond the pole", "120000", "9000.0001,N,01131.0000,E", "120000.000", ",,,");
    row("sixty minutes", "120000", "4860.0000,N,01131.0000,E", "120000.000", ",,,");
    row("no number", "12:00", "48x,N,01131.0000,E", "", ",,,");
}

void TestEpochBuilder::bringsTimesAndAnglesIntoForm()
{
    QFETCH(QByteArray, time);
    QFETCH(QByteArray, position);
    QFETCH(QByteArray, expectedTime);
    QFETCH(QByteArray, expectedPosition);
    const auto epochs = epochsOf({"GNGGA," + time + ',' + position + ",1,08,1.0,545.4,M,46.9,M,,",
                                  "GNRMC," + time + ",A," + position + ",,,010125,,,A"});
    QCOMPARE(epochs.size(), 1);
    const QList<QByteArray> texts = textsOf(epochs[0]);
    const QList<QByteArray> gga = texts.first().split(',');
    QCOMPARE(gga.at(1), expectedTime);
    QCOMPARE(gga.mid(2, 4).join(','), expectedPosition);
    const QList<QByteArray> gll = texts.at(1).split(',');
    QCOMPARE(gll.mid(1, 4).join(','), expectedPosition);
    QCOMPARE(gll.at(5), expectedTime);
    const QList<QByteArray> rmc = texts.last().split(',');
    QCOMPARE(rmc.at(1), expectedTime);
    QCOMPARE(rmc.mid(3, 4).join(','), expectedPosition);
}

void TestEpochBuilder::rewritesTheModesOfGns_data()
{
    QTest::addColumn<QByteArray>("modes");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<int>("quality");
    const auto row = [](const char *modes, const char *expected, int quality) {
        QTest::newRow(*modes ? modes : "empty")
            << QByteArray(modes) << QByteArray(expected) << quality;
    };
    row("N", "NNNN", 0);
    row("NN", "NNNN", 0);
    row("NNN", "NNNN", 0);
    row("NNNN", "NNNN", 0);
    row("NNNNN", "NNNN", 0);
    row("NNNNNN", "NNNN", 0);
    row("", "NNNN", 0);
    row("n?", "NNNN", 0);
    row("0?", "NNNN", 0);
    row("ANNA", "ANNA", 1);
    row("NDD", "NDD", 2);
    row("AA", "AA", 1);
    row("RRRRR", "RRRRR", 4);
}

void TestEpochBuilder::rewritesTheModesOfGns()
{
    QFETCH(QByteArray, modes);
    QFETCH(QByteArray, expected);
    QFETCH(int, quality);
    const auto epochs = epochsOf(
        {"GNGNS,120213.00,5957.00621,N,01100.64291,E," + modes + ",11,1.3,168.9,39.5,,,V"});
    QCOMPARE(epochs.size(), 1);
    const QList<QByteArray> texts = textsOf(epochs[0]);
    QVERIFY2(texts.at(0).startsWith("$GNGNS,120213.000,5957.0062,N,01100.6429,E," + expected +
                                    ",11,1.30,168.9,39.5,,*"),
             texts.at(0));
    QVERIFY2(texts.at(1).startsWith("$GNGGA,120213.000,5957.0062,N,01100.6429,E," +
                                    QByteArray::number(quality) + ",11,"),
             texts.at(1));
    QCOMPARE(epochs[0].valid, quality != 0);
}

void TestEpochBuilder::endsAnEpochAtAPause()
{
    EpochBuilder builder;
    QVERIFY(!builder.isOpen());
    QVERIFY(!builder.pause());
    addTo(builder, "GPGSV,1,1,01,05,10,100,30");
    QVERIFY(builder.isOpen());
    addTo(builder, "GNRMC,120000.00,A,4807.0380,N,01131.0000,E,,,010125,,,A");
    const auto first = builder.pause();
    QVERIFY(first);
    QCOMPARE(*first->timeMs, 43200000);
    QCOMPARE(numbersInView(*first), QList<int>{5});
    QVERIFY(!builder.isOpen());
    QVERIFY(!builder.pause());
    // Satellites that come first belong to the epoch that follows them.
    addTo(builder, "GPGSV,1,1,01,06,10,100,30");
    addTo(builder, "GNRMC,120001.00,A,4807.0380,N,01131.0000,E,,,010125,,,A");
    const auto second = builder.pause();
    QVERIFY(second);
    QCOMPARE(*second->timeMs, 43201000);
    QCOMPARE(numbersInView(*second), QList<int>{6});
}

// Listening began between the sets of a receiver that sends them last.
void TestEpochBuilder::takesSetsBeforeAPauseForThoseOfTheTime()
{
    EpochBuilder builder;
    addTo(builder, "GPGSV,1,1,01,05,10,100,30");
    for (int second = 0; second < 3; ++second) {
        const QByteArray number = QByteArray::number(10 + second);
        addTo(builder, "GNRMC,12000" + QByteArray::number(second) +
                           ".00,A,4807.0380,N,01131.0000,E,,,010125,,,A");
        addTo(builder, "GPGSV,1,1,01," + number + ",10,100,30");
        const auto epoch = builder.pause();
        QVERIFY(epoch);
        QCOMPARE(numbersInView(*epoch), QList<int>{10 + second});
    }
}

// Here the sets seemed to come first, until a pause came behind one.
void TestEpochBuilder::learnsFromAPauseThatSetsComeLast()
{
    const auto rmc = [](int second) {
        return "GNRMC,12000" + QByteArray::number(second) +
               ".00,A,4807.0380,N,01131.0000,E,,,010125,,,A";
    };
    const auto next = [](EpochBuilder &builder, const QByteArray &body) {
        return builder.add(*Nmea::parse(Dialect::sentence(body).trimmed(), Nmea::LineEnd::Seen));
    };
    EpochBuilder builder;
    addTo(builder, "GPGSV,1,1,01,05,10,100,30");
    addTo(builder, rmc(0));
    QVERIFY(next(builder, rmc(1)));
    addTo(builder, "GPGSV,1,1,01,07,10,100,30");
    QCOMPARE(numbersInView(*builder.pause()), QList<int>{7});
    addTo(builder, rmc(2));
    addTo(builder, "GPGSV,1,1,01,08,10,100,30");
    const auto epoch = next(builder, rmc(3));
    QVERIFY(epoch);
    QCOMPARE(numbersInView(*epoch), QList<int>{8});
}

void TestEpochBuilder::forgetsTheSatellitesOfBeforeARestart_data()
{
    QTest::addColumn<QByteArray>("time");
    QTest::addColumn<bool>("forgotten");
    QTest::newRow("the clock goes on") << QByteArray("120001.00") << false;
    QTest::newRow("a minute is missing") << QByteArray("120100.00") << false;
    QTest::newRow("more than a minute is missing") << QByteArray("120100.01") << true;
    QTest::newRow("the clock goes back") << QByteArray("115959.00") << true;
    QTest::newRow("no time") << QByteArray("") << true;
}

void TestEpochBuilder::forgetsTheSatellitesOfBeforeARestart()
{
    QFETCH(QByteArray, time);
    QFETCH(bool, forgotten);
    const auto epochs =
        epochsOf({"GNRMC,120000.00,A,4807.0380,N,01131.0000,E,,,010125,,,A",
                  "GPGSV,1,1,01,05,10,100,30", "GPGSA,A,3,05,,,,,,,,,,,,1,1,1",
                  "GNRMC," + time + ",V,,,,,,,010125,,,N", "GPGSA,A,1,,,,,,,,,,,,,,,"});
    QCOMPARE(epochs.size(), 2);
    QCOMPARE(numbersInView(epochs[1]), forgotten ? QList<int>() : QList<int>{5});
}

void TestEpochBuilder::makesNoSecondEpochOfALatePart()
{
    EpochBuilder builder;
    addTo(builder, "GNGGA,120000.00,4807.0380,N,01131.0000,E,1,08,1.0,545.4,M,46.9,M,,");
    QVERIFY(builder.pause());
    addTo(builder, "GNRMC,120000.00,A,4807.0380,N,01131.0000,E,,,010125,,,A");
    QVERIFY(!builder.isOpen());
    QCOMPARE(builder.leftOutSentences(), static_cast<qint64>(1));
    addTo(builder, "GNGGA,120001.00,4807.0380,N,01131.0000,E,1,08,1.0,545.4,M,46.9,M,,");
    const auto next = builder.pause();
    QVERIFY(next);
    QCOMPARE(*next->timeMs, 43201000);
    QCOMPARE(next->date, QDate(2025, 1, 1));
}

// A receiver without a clock may say midnight until it has found the first satellite.
void TestEpochBuilder::goesOnWhereTheTimeStandsStill()
{
    const QList<QByteArray> cycle = {"GPGGA,000000.00,,,,,0,,,,M,,M,,",
                                     "GPRMC,000000.00,V,,,,,,,060180,,,N"};
    QCOMPARE(epochsOf(cycle + cycle + cycle).size(), 3);
    EpochBuilder builder;
    for (int i = 0; i < 3; ++i) {
        for (const QByteArray &body : cycle)
            addTo(builder, body);
        QVERIFY(builder.pause());
    }
    QCOMPARE(builder.leftOutSentences(), static_cast<qint64>(0));
}

void TestEpochBuilder::takesTwoTalkersOfOneCycleAsOne()
{
    const auto epochs = epochsOf({
        "GPRMC,120000.00,A,4807.0380,N,01131.0000,E,,,010125,,,A",
        "GNRMC,120000.00,A,4807.0380,N,01131.0000,E,,,010125,,,A",
        "GNGGA,120000.00,4807.0380,N,01131.0000,E,1,08,1.0,545.4,M,46.9,M,,",
        "GPRMC,120001.00,A,4807.0380,N,01131.0000,E,,,010125,,,A",
    });
    QCOMPARE(epochs.size(), 2);
}

void TestEpochBuilder::passesOtherSentencesOn()
{
    EpochBuilder builder;
    const QList<QByteArray> others = {
        "$GPVTG,89.68,T,,M,0.00,N,0.0,K*5f", "$GPZDA,120000.00,01,01,2025,00,00*60",
        "$PUBX,00,081350.00,4717.113210,N*75", "$GNTXT,01,01,02,u-blox ag*3E"};
    QVERIFY(!builder.add(*Nmea::parse("$GPRMC,120000,A,,,,,,,010125,,", Nmea::LineEnd::Seen)));
    for (const QByteArray &other : others) {
        const QByteArray body = other.mid(1, other.indexOf('*') - 1);
        const QByteArray whole = Dialect::sentence(body).trimmed();
        QVERIFY(!builder.add(*Nmea::parse(whole, Nmea::LineEnd::Seen)));
    }
    QVERIFY(!builder.add(*Nmea::parse("$GPXTE,A,A,0.67,L,N", Nmea::LineEnd::Seen)));
    const auto epoch = builder.pause();
    QVERIFY(epoch);
    const QList<QByteArray> texts = textsOf(*epoch);
    QCOMPARE(texts.size(), 3 + others.size() + 1);
    QVERIFY(texts.at(2).startsWith("$GNRMC,"));
    for (int i = 0; i < others.size(); ++i)
        QCOMPARE(texts.at(3 + i).left(others[i].size() - 3), others[i].chopped(3));
    QCOMPARE(texts.last(), QByteArray("$GPXTE,A,A,0.67,L,N*6F")); // without a checksum it gets one

    const auto lower = Nmea::parse("$GPVTG,1*3d", Nmea::LineEnd::Seen);
    QVERIFY(!lower || !builder.add(*lower));
}

void TestEpochBuilder::leavesOutWhatTheViewerWouldMistake_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("Garmin's sensor configuration") << QByteArray("PGRMC,A,220.5,100,,,,A,3,1,1,4");
    QTest::newRow("letters of an ordinary type") << QByteArray("PAGGA,1,2,3");
    QTest::newRow("longer address") << QByteArray("GPRMCX,1,2,3");
}

void TestEpochBuilder::leavesOutWhatTheViewerWouldMistake()
{
    QFETCH(QByteArray, body);
    EpochBuilder builder;
    addTo(builder, body);
    QVERIFY(!builder.isOpen());
    QCOMPARE(builder.leftOutSentences(), static_cast<qint64>(1));
}

// The viewer adds up sets until the next time, so that none may come twice before it.
void TestEpochBuilder::owesSatellitesToTheNextTime()
{
    EpochBuilder builder;
    for (int second = 0; second < 100; ++second) {
        for (const char *body : {"GPGSV,2,1,05,01,10,100,30,02,10,110,31,03,10,120,32,04,10,130,33",
                                 "GPGSV,2,2,05,05,10,140,34", "GLGSV,1,1,01,65,10,100,30"})
            addTo(builder, body);
        QVERIFY(!builder.pause());
    }
    addTo(builder, "GPRMC,115959,A,,,,,,,010125,,");
    const auto epoch = builder.pause();
    QVERIFY(epoch);
    QCOMPARE(numbersInView(*epoch), (QList<int>{1, 2, 3, 4, 5, 65}));

    // After the last sentence with a time too.
    addTo(builder, "GPRMC,120000,A,,,,,,,010125,,");
    int held = 0;
    while (!builder.add(*Nmea::parse(Dialect::sentence("GPGSV,1,1,01,05,10,100,30").trimmed(),
                                     Nmea::LineEnd::Seen)))
        QVERIFY(++held < EpochBuilder::kMostSentences);
}

void TestEpochBuilder::tellsSatellitesThatAPauseSeparated()
{
    EpochBuilder builder;
    for (int second = 0; second < 4; ++second) {
        const QByteArray time = "12000" + QByteArray::number(second) + ".00";
        addTo(builder, "GNGGA," + time + ",4807.0380,N,01131.0000,E,1,08,1.0,545.4,M,46.9,M,,");
        addTo(builder, "GPGSA,A,3,05,,,,,,,,,,,,1,1,1");
        addTo(builder, "GNRMC," + time + ",A,4807.0380,N,01131.0000,E,,,010125,,,A");
        const auto epoch = builder.pause();
        QVERIFY(epoch);
        QCOMPARE(numbersInView(*epoch), second == 0 ? QList<int>() : QList<int>{5});
        QCOMPARE(epoch->used, QVector<int>{5});
        addTo(builder, "GPGSV,1,1,01,05,10,100,30");
        QVERIFY(!builder.pause());
    }
}

void TestEpochBuilder::holdsNoOtherSentencesForEver()
{
    EpochBuilder builder;
    QByteArray out;
    QByteArray expected;
    for (int i = 0; i < 500; ++i) {
        const QByteArray whole =
            Dialect::sentence("PTEST," + QByteArray::number(i) + ',' + QByteArray(60, 'x'));
        expected += whole;
        const auto epoch = builder.add(*Nmea::parse(whole.trimmed(), Nmea::LineEnd::Seen));
        if (!epoch)
            continue;
        QByteArray bytes;
        for (const QByteArray &sentence : Dialect::sentences(*epoch))
            bytes += sentence;
        QVERIFY(bytes.size() <= EpochBuilder::kMostOtherBytes);
        out += bytes;
    }
    for (const QByteArray &sentence : Dialect::sentences(*builder.pause()))
        out += sentence;
    QCOMPARE(out, expected);
}

void TestEpochBuilder::takesALoneGllForAnEpoch()
{
    const QByteArray rmc = "GPRMC,120001,A,4807.0380,N,01131.0000,E,,,010125,,";
    const auto tail = epochsOf({"GPGLL,4807.0380,N,01131.0000,E,120000,A", rmc});
    QCOMPARE(tail.size(), 2);
    QCOMPARE(tail[0].quality, 1);
    QVERIFY(!tail[0].altitudeM);
    const auto only = epochsOf({"GPGLL,4807.0380,N,01131.0000,E,120000,A",
                                "GPGLL,4807.0380,N,01131.0000,E,120001,A",
                                "GPGLL,4807.0380,N,01131.0000,E,120002,A"});
    QCOMPARE(only.size(), 3);
    QVERIFY(only[1].valid && only[1].latitude);
}

QTEST_GUILESS_MAIN(TestEpochBuilder)
#include "TestEpochBuilder.moc"
