// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/NmeaReader.h"

#include "support/MessageLog.h"
#include "support/NmeaSentences.h"
#include "support/PlainDecoder.h"
#include "support/Publications.h"

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTextCodec>
#include <QtTest>

#include <limits>
#include <memory>
#include <numeric>

using NmeaSentences::gsvSet;
using NmeaSentences::Satellite;
using NmeaSentences::sentence;

namespace {

const QByteArray kGga = "GPGGA,123519.000,4807.0380,N,01131.0000,E,1,08,0.9,545.4,M,46.9,M,,";

QVector<Satellite> satellites(int firstNumber, int count)
{
    QVector<Satellite> list;
    for (int i = 0; i < count; ++i)
        list.append({firstNumber + i, 10 + i, 100 + i, 30 + i});
    return list;
}

QByteArray timeOf(int secondOfDay)
{
    return QTime(0, 0).addSecs(secondOfDay).toString(QStringLiteral("hhmmss.zzz")).toLatin1();
}

QByteArray rmc(const QByteArray &time, char status, const QByteArray &date = "230326")
{
    return sentence("GPRMC," + time + ',' + status + ",4807.0380,N,01131.0000,E,0.02,84.40," +
                    date + ",,,A");
}

QByteArray gsa(const QByteArray &numbers)
{
    const int count = numbers.isEmpty() ? 1 : numbers.count(',') + 1;
    return sentence("GPGSA,A,3," + numbers + QByteArray(12 - count, ',') + ",1.5,0.9,1.2");
}

QList<int> numbersOf(const tGnssSvStatus &status)
{
    QList<int> numbers;
    for (int i = 0; i < status.numSvs; ++i)
        numbers << status.svList[i].prn;
    return numbers;
}

QList<int> usedNumbersOf(const tGnssSvStatus &status)
{
    QList<int> numbers;
    for (const tGnssSv &sv : status.svList) {
        if (sv.usedInFix)
            numbers << sv.prn;
    }
    return numbers;
}

/// A sentence that is decoded, with few satellite numbers, so that they come again.
QByteArray anySentence(QRandomGenerator &random, int second)
{
    const QByteArray numbers[] = {"00", "01", "05", "07", "66", "130", "511", "512", ""};
    const QByteArray talkers[] = {"GP", "GL", "GB", "GA", "QZ", "GN"};
    const auto any = [&random](const auto &list) {
        return list[random.bounded(static_cast<int>(std::size(list)))];
    };
    switch (random.bounded(8)) {
    case 0:
        return sentence(kGga);
    case 1:
        return sentence("GPGGA,1,,,,,0,00,,,M");
    case 2:
        return sentence("GPGLL,1");
    case 3:
        return rmc(timeOf(second), random.bounded(2) != 0 ? 'A' : 'V');
    case 4:
    case 5:
        return gsa(any(numbers) + ',' + any(numbers));
    default:
        return sentence(any(talkers) + "GSV,1,1,02," + any(numbers) + ",10,100,30," + any(numbers) +
                        ",20,200,40");
    }
}

} // namespace

class TestNmeaDecoding : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void decodesPosition_data();
    void decodesPosition();
    void ignoresHemisphereLetter_data();
    void ignoresHemisphereLetter();
    void publishesPositionOnlyWithRmc();
    void takesFixTimeFromRmcLast();
    void gnsGivesFixZero();
    void readsNumbersAfterDamage_data();
    void readsNumbersAfterDamage();
    void readsSentenceWithOtherThanAsciiByCharacters_data();
    void readsSentenceWithOtherThanAsciiByCharacters();
    void takesTypeByCharacters_data();
    void takesTypeByCharacters();

    void clearsUsedInFixOnGsaWithoutFix_data();
    void clearsUsedInFixOnGsaWithoutFix();
    void keepsUsedInFixOnSecondGsaWithoutFix();
    void marksUsedSatellites();
    void gsaBeforeGsvMarksNothing();
    void marksFirstEntryOfNumberOnly();
    void marksNumbersOfAnySize_data();
    void marksNumbersOfAnySize();
    void marksOnlyEntriesStoredInThisCycle();
    void readsDop_data();
    void readsDop();

    void decodesGsvGroups_data();
    void decodesGsvGroups();
    void appendsEntryWithUsedInFixFalse();
    void appendsSatellitesOfUnknownTalkerWithoutCountingThem();
    void neverKeepsMoreThan32_data();
    void neverKeepsMoreThan32();
    void clampsAnnouncedCount_data();
    void clampsAnnouncedCount();
    void announcedTotalNeverOverflows();

    void sumsConstellations();
    void rejectsSetWithoutFirstMessage();
    void rejectsSetWithoutFirstMessageBesideWholeSet();
    void rejectsSetWithoutLastMessage();
    void rejectsRepeatedFirstMessage();
    void knowsConstellationOfTalker_data();
    void knowsConstellationOfTalker();
    void cycleWithoutGsvPublishesNoSatellites();
    void gllPublishesSatellitesOnly();
    void everyCycleStartsFreshList();
    void rmcForgetsBrokenSet();

    void decodesUtc();
    void rmcWithoutTimePublishesNoUtc();
    void midnight();
    void ttffAfter35SentencesWithoutFixIs36();
    void firstFixAfterClearIsOldData();
    void ttffWhenTimeJumps();
    void ttffAtMidnight();
    void ttffIsSetOnce();
    void ttffCountsFromBufferClear();
    void statusOtherThanACounts_data();
    void statusOtherThanACounts();

    void requestsNvmStoreOnce();
    void requestsNvmStoreWhenConstellationsAgree_data();
    void requestsNvmStoreWhenConstellationsAgree();
    void requestsNvmStoreAgainAfterClear();

    void clearBufClears();
    void clearBufLeavesNoFixFlag();
    void clearBufLeavesStoredEntriesAndTotal();
    void clearBufForgetsTheNumbersOfStoredEntries_data();
    void clearBufForgetsTheNumbersOfStoredEntries();
    void decodesAsPlainlyWrittenAcrossClears();

    void tracesRmc();
    void tracesRmcFieldsAsTheyAre_data();
    void tracesRmcFieldsAsTheyAre();
    void tracesGsvCycle();
    void tracesLostFix();
    void printsNothingWhenSilenced();
    void emitsSignalsInOrder();
    void ignoresWrongChecksum();

private:
    void feed(const QByteArray &bytes)
    {
        reader->feed({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    }
    tGnssLocation locationAfter(const QByteArray &bytes)
    {
        feed(bytes + rmc("123519.000", 'A'));
        return model->getLocation();
    }
    tGnssSvStatus satellitesAfter(const QByteArray &bytes)
    {
        feed(bytes + rmc("123519.000", 'A'));
        return model->getSvStatus();
    }

    GnssInfo *model = GnssInfo::instance();
    std::unique_ptr<MessageLog> log;
    std::unique_ptr<Publications> published;
    std::unique_ptr<NmeaReader> reader;
};

void TestNmeaDecoding::initTestCase()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

void TestNmeaDecoding::init()
{
    log = std::make_unique<MessageLog>();
    published = std::make_unique<Publications>();
    reader = std::make_unique<NmeaReader>();
}

void TestNmeaDecoding::cleanup()
{
    reader.reset();
    published.reset();
    const QStringList warnings = log->warnings();
    log.reset();
    QCOMPARE(warnings, QStringList());
}

void TestNmeaDecoding::decodesPosition_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<double>("altitude");
    QTest::addColumn<int>("fix");
    const double latitude = 7.0380 / 60.0 + 48.0;
    const double longitude = 31.0 / 60.0 + 11.0;
    QTest::newRow("GGA, normal") << kGga << latitude << longitude << 545.4 << 1;
    QTest::newRow("GGA, any talker")
        << QByteArray("XYGGA,1,4807.0380,N,01131.0000,E,2,08,0.9,545.4") << latitude << longitude
        << 545.4 << 2;
    QTest::newRow("GNS, normal")
        << QByteArray("GNGNS,123519.000,4807.0380,N,01131.0000,E,ANNA,08,0.9,545.4,46.9,,")
        << latitude << longitude << 545.4 << 0;
    QTest::newRow("latitude 4807.0380 north")
        << QByteArray("GPGGA,1,4807.0380,N,01131.0000,E,1,08,0.9,545.4") << 48.1173 << longitude
        << 545.4 << 1;
    QTest::newRow("latitude 4807.0380 south")
        << QByteArray("GPGGA,1,4807.0380,S,01131.0000,W,1,08,0.9,545.4") << 48.1173 << longitude
        << 545.4 << 1;
    QTest::newRow("latitude 4807.038 is cut at the wrong place")
        << QByteArray("GPGGA,1,4807.038,N,01131.0000,E,1,08,0.9,545.4") << 807.038 / 60.0 + 4.0
        << longitude << 545.4 << 1;
    QTest::newRow("coordinate shorter than seven characters has degrees 0")
        << QByteArray("GPGGA,1,7.0380,N,1.0,E,1,08,0.9,545.4") << 7.0380 / 60.0 << 1.0 / 60.0
        << 545.4 << 1;
    QTest::newRow("missing elements") << QByteArray("GPGGA,123519.000") << 0.0 << 0.0 << 0.0 << 0;
    QTest::newRow("empty elements") << QByteArray("GPGGA,,,,,,,,,,,,,,") << 0.0 << 0.0 << 0.0 << 0;
    QTest::newRow("address only") << QByteArray("GPGGA") << 0.0 << 0.0 << 0.0 << 0;
    QTest::newRow("non-numeric") << QByteArray("GPGGA,a,bbbbbbbbb,c,ddddddddd,e,f,g,h,i") << 0.0
                                 << 0.0 << 0.0 << 0;
    QTest::newRow("altitude is the last field: cut at the asterisk")
        << QByteArray("GPGGA,1,4807.0380,N,01131.0000,E,1,08,0.9,545.4") << latitude << longitude
        << 545.4 << 1;
    QTest::newRow("quality is the last field: cut at the asterisk")
        << QByteArray("GPGGA,1,4807.0380,N,01131.0000,E,4") << latitude << longitude << 0.0 << 4;
    QTest::newRow("longitude is the last field: cut at the asterisk")
        << QByteArray("GPGGA,1,4807.0380,N,01131.0000") << latitude << longitude << 0.0 << 0;
    QTest::newRow("overlong") << QByteArray("GPGGA,1,4807.0380,N,01131.0000,E,1,08,0.9,545.4" +
                                            QByteArray(700, ','))
                              << latitude << longitude << 545.4 << 1;
    QTest::newRow("negative altitude")
        << QByteArray("GPGGA,1,4807.0380,N,01131.0000,E,1,08,0.9,-17.25,M") << latitude << longitude
        << -17.25 << 1;
    QTest::newRow("altitude not finite")
        << QByteArray("GPGGA,1,4807.0380,N,01131.0000,E,1,08,0.9,inf,M") << latitude << longitude
        << 0.0 << 1;
    QTest::newRow("quality with trailing garbage")
        << QByteArray("GPGGA,1,4807.0380,N,01131.0000,E,1x,08,0.9,545.4,M") << latitude << longitude
        << 545.4 << 0;
}

void TestNmeaDecoding::decodesPosition()
{
    QFETCH(QByteArray, body);
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(double, altitude);
    QFETCH(int, fix);
    const tGnssLocation location = locationAfter(sentence(body));
    QCOMPARE(location.latitude, latitude);
    QCOMPARE(location.longitude, longitude);
    QCOMPARE(location.altitude, altitude);
    QCOMPARE(location.fix, fix);
    QCOMPARE(location.status, 0);
    QCOMPARE(location.speed, 0.0F);
}

void TestNmeaDecoding::ignoresHemisphereLetter_data()
{
    QTest::addColumn<QByteArray>("northSouth");
    QTest::addColumn<QByteArray>("eastWest");
    QTest::newRow("north east") << QByteArray("N") << QByteArray("E");
    QTest::newRow("south west") << QByteArray("S") << QByteArray("W");
    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("other") << QByteArray("x") << QByteArray("-");
}

void TestNmeaDecoding::ignoresHemisphereLetter()
{
    QFETCH(QByteArray, northSouth);
    QFETCH(QByteArray, eastWest);
    const tGnssLocation location = locationAfter(
        sentence("GPGGA,1,4807.0380," + northSouth + ",01131.0000," + eastWest + ",1,08,0.9,1.0"));
    QCOMPARE(location.latitude, 48.1173);
    QCOMPARE(location.longitude, 31.0 / 60.0 + 11.0);
}

void TestNmeaDecoding::publishesPositionOnlyWithRmc()
{
    feed(sentence(kGga) + gsa("1,2") + sentence("GPGLL,4807.0380,N,01131.0000,E,123519.000,A,A"));
    QCOMPARE(published->all().size(), std::size_t(0));
    QCOMPARE(model->getLocation().latitude, 0.0);
    feed(rmc("123519.000", 'V'));
    QCOMPARE(published->all().size(), std::size_t(1));
    QCOMPARE(model->getLocation().latitude, 48.1173);
}

void TestNmeaDecoding::takesFixTimeFromRmcLast()
{
    feed(sentence(kGga) + rmc("", 'A'));
    QCOMPARE(model->getLocation().fixTime, 0.0);
    feed(sentence(kGga) + rmc("123520.500", 'A'));
    QCOMPARE(model->getLocation().fixTime, 123520.5);
    QCOMPARE(model->getLocation().latitude, 48.1173);
}

void TestNmeaDecoding::gnsGivesFixZero()
{
    feed(sentence(kGga));
    const tGnssLocation location = locationAfter(
        sentence("GNGNS,123519.000,4807.0380,N,01131.0000,E,AAAA,08,0.9,545.4,46.9,,"));
    QCOMPARE(location.fix, 0);
}

// One rule for all numbers: what is no whole number in Qt's eyes is 0. Shown at the altitude.
void TestNmeaDecoding::readsNumbersAfterDamage_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("trailing garbage gives 0") << QByteArray("12.5m") << 0.0;
    QTest::newRow("blank in front") << QByteArray(" 12.5") << 12.5;
    QTest::newRow("blank behind") << QByteArray("12.5 ") << 12.5;
    QTest::newRow("plus sign") << QByteArray("+12.5") << 12.5;
    QTest::newRow("exponent") << QByteArray("1.25e1") << 12.5;
    QTest::newRow("inf") << QByteArray("inf") << 0.0;
    QTest::newRow("nan") << QByteArray("nan") << 0.0;
    QTest::newRow("overflow") << QByteArray("1e999") << 0.0;
    QTest::newRow("NUL byte") << QByteArray("12\0.5", 5) << 0.0;
    QTest::newRow("line feed behind") << QByteArray("12.5\n") << 12.5;
}

void TestNmeaDecoding::readsNumbersAfterDamage()
{
    QFETCH(QByteArray, text);
    const tGnssLocation location =
        locationAfter(sentence("GPGGA,1,4807.0380,N,01131.0000,E,1,08,0.9," + text + ",M"));
    QTEST(location.altitude, "value");
}

void TestNmeaDecoding::readsSentenceWithOtherThanAsciiByCharacters_data()
{
    QTest::addColumn<QByteArray>("latitudeText");
    QTest::addColumn<double>("latitude");
    QTest::newRow("two-byte character in the degrees") << QByteArray("\xc3\xa9"
                                                                     "807.0380")
                                                       << 7.0380 / 60.0;
    QTest::newRow("three-byte character in the minutes") << QByteArray("4807.\xe2\x82\xac"
                                                                       "380")
                                                         << 48.0;
    QTest::newRow("broken character") << QByteArray("48\xff"
                                                    "7.0380")
                                      << 48.0;
    QTest::newRow("typographic minus sign") << QByteArray("\xe2\x88\x92"
                                                          "4807.0380")
                                            << 7.0380 / 60.0 - 48.0;
    QTest::newRow("em space in front") << QByteArray("\xe2\x80\x83"
                                                     "4807.0380")
                                       << 48.1173;
}

void TestNmeaDecoding::readsSentenceWithOtherThanAsciiByCharacters()
{
    QFETCH(QByteArray, latitudeText);
    const tGnssLocation location =
        locationAfter(sentence("GPGGA,1," + latitudeText + ",N,01131.0000,E,1,08,0.9,545.4"));
    QTEST(location.latitude, "latitude");
    QCOMPARE(location.altitude, 545.4);
}

void TestNmeaDecoding::takesTypeByCharacters_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("decoded");
    QTest::newRow("two letters before the type") << QByteArray("GPGGA") << true;
    QTest::newRow("one two-byte character and a letter") << QByteArray("\xc3\xa9"
                                                                       "PGGA")
                                                         << true;
    QTest::newRow("two three-byte characters") << QByteArray("\xe2\x82\xac\xe2\x82\xacGGA") << true;
    QTest::newRow("one two-byte character alone") << QByteArray("\xc3\xa9"
                                                                "GGA")
                                                  << false;
    QTest::newRow("two broken bytes") << QByteArray("\xff\xffGGA") << true;
}

void TestNmeaDecoding::takesTypeByCharacters()
{
    QFETCH(QByteArray, address);
    const tGnssLocation location =
        locationAfter(sentence(address + ",1,4807.0380,N,01131.0000,E,1,08,0.9,\xc3\xa9,M"));
    QTEST(location.fix == 1, "decoded");
}

void TestNmeaDecoding::clearsUsedInFixOnGsaWithoutFix_data()
{
    QTest::addColumn<QByteArray>("position");
    QTest::addColumn<bool>("cleared");
    QTest::newRow("GGA quality 0") << QByteArray("GPGGA,1,,,,,0,00,,,M") << true;
    QTest::newRow("GGA quality empty") << QByteArray("GPGGA,1,,,,,,00,,,M") << true;
    QTest::newRow("GGA quality missing") << QByteArray("GPGGA,1") << true;
    QTest::newRow("GGA quality non-numeric") << QByteArray("GPGGA,1,,,,,A,00,,,M") << true;
    QTest::newRow("GGA quality 1") << QByteArray("GPGGA,1,,,,,1,00,,,M") << false;
    QTest::newRow("GGA quality 6") << QByteArray("GPGGA,1,,,,,6,00,,,M") << false;
    QTest::newRow("GNS mode NNNN") << QByteArray("GNGNS,1,,,,,NNNN,00,,,") << true;
    QTest::newRow("GNS mode NNNN in the last field") << QByteArray("GNGNS,1,,,,,NNNN") << true;
    QTest::newRow("GNS mode NN") << QByteArray("GNGNS,1,,,,,NN,00,,,") << false;
    QTest::newRow("GNS mode empty") << QByteArray("GNGNS,1,,,,,,00,,,") << false;
    QTest::newRow("GNS mode ANNN") << QByteArray("GNGNS,1,,,,,ANNN,00,,,") << false;
    QTest::newRow("GNS mode 0") << QByteArray("GNGNS,1,,,,,0,00,,,") << false;
}

void TestNmeaDecoding::clearsUsedInFixOnGsaWithoutFix()
{
    QFETCH(QByteArray, position);
    QFETCH(bool, cleared);
    feed(gsvSet("GP", satellites(1, 3)) + gsa("1,2,3"));
    const tGnssSvStatus status = satellitesAfter(sentence(position) + gsa("2"));
    QCOMPARE(usedNumbersOf(status), cleared ? QList<int>({2}) : QList<int>({1, 2, 3}));
}

// The flag is taken back with the first GSA: a second one of the same epoch adds to it.
void TestNmeaDecoding::keepsUsedInFixOnSecondGsaWithoutFix()
{
    feed(gsvSet("GP", satellites(1, 3)) + gsa("1,2,3"));
    const tGnssSvStatus status =
        satellitesAfter(sentence("GPGGA,1,,,,,0,00,,,M") + gsa("2") + gsa("3"));
    QCOMPARE(usedNumbersOf(status), QList<int>({2, 3}));
}

void TestNmeaDecoding::marksUsedSatellites()
{
    const tGnssSvStatus status = satellitesAfter(
        gsvSet("GP", satellites(1, 6)) + gsvSet("GL", satellites(65, 3)) +
        sentence("GNGSA,A,3,04,,,2,99,x,,,,,,6,1.5,0.9,1.2") + sentence("GNGSA,A,3,66*"));
    QCOMPARE(usedNumbersOf(status), QList<int>({2, 4, 6, 66}));
}

void TestNmeaDecoding::gsaBeforeGsvMarksNothing()
{
    const tGnssSvStatus status = satellitesAfter(gsa("1,2") + gsvSet("GP", satellites(1, 3)));
    QCOMPARE(numbersOf(status), QList<int>({1, 2, 3}));
    QCOMPARE(usedNumbersOf(status), QList<int>());
}

void TestNmeaDecoding::marksFirstEntryOfNumberOnly()
{
    const tGnssSvStatus status =
        satellitesAfter(gsvSet("GP", satellites(1, 2)) + gsvSet("GA", satellites(1, 2)) + gsa("2"));
    QCOMPARE(numbersOf(status), QList<int>({1, 2, 1, 2}));
    QVERIFY(status.svList[1].usedInFix);
    QVERIFY(!status.svList[3].usedInFix);
}

void TestNmeaDecoding::marksNumbersOfAnySize_data()
{
    QTest::addColumn<QByteArray>("number");
    for (const char *number :
         {"0", "1", "336", "511", "512", "513", "2147483647", "-1", "-2147483648"})
        QTest::newRow(number) << QByteArray(number);
}

void TestNmeaDecoding::marksNumbersOfAnySize()
{
    QFETCH(QByteArray, number);
    const QByteArray groups = number + ",10,20,30," + number + ",40,50,60,7,70,80,90";
    const tGnssSvStatus status = satellitesAfter(sentence("GPGSV,1,1,03," + groups) + gsa(number));
    QCOMPARE(numbersOf(status), QList<int>({number.toInt(), number.toInt(), 7}));
    QVERIFY(status.svList[0].usedInFix);
    QVERIFY(!status.svList[1].usedInFix);
    QVERIFY(!status.svList[2].usedInFix);
}

void TestNmeaDecoding::marksOnlyEntriesStoredInThisCycle()
{
    feed(gsvSet("GP", satellites(1, 4)) + rmc("123519.000", 'A'));
    feed(gsvSet("GP", satellites(1, 2)) + gsa("1,4") + rmc("123520.000", 'A'));
    QCOMPARE(usedNumbersOf(model->getSvStatus()), QList<int>({1}));
}

void TestNmeaDecoding::readsDop_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<float>("pdop");
    QTest::addColumn<float>("hdop");
    QTest::addColumn<float>("vdop");
    const QByteArray head = "GPGSA,A,3,,,,,,,,,,,,";
    QTest::newRow("normal") << head + ",1.5,0.9,1.2" << 1.5F << 0.9F << 1.2F;
    QTest::newRow("with system id behind") << head + ",1.5,0.9,1.2,1" << 1.5F << 0.9F << 1.2F;
    QTest::newRow("empty") << head + ",,," << 0.0F << 0.0F << 0.0F;
    QTest::newRow("missing") << QByteArray("GPGSA,A,1") << 0.0F << 0.0F << 0.0F;
    QTest::newRow("non-numeric") << head + ",a,b,c" << 0.0F << 0.0F << 0.0F;
    QTest::newRow("cut in two") << head + ",1.5,0." << 1.5F << 0.0F << 0.0F;
    QTest::newRow("larger than a float") << head + ",1e39,-1e39,99.9" << 0.0F << 0.0F << 99.9F;
}

void TestNmeaDecoding::readsDop()
{
    QFETCH(QByteArray, body);
    feed(sentence("GPGSA,A,3,,,,,,,,,,,,,9.9,9.9,9.9"));
    const tGnssLocation location = locationAfter(sentence(body));
    QTEST(location.pdop, "pdop");
    QTEST(location.hdop, "hdop");
    QTEST(location.vdop, "vdop");
}

void TestNmeaDecoding::decodesGsvGroups_data()
{
    QTest::addColumn<QByteArray>("groups");       // everything behind the count in view
    QTest::addColumn<QVector<double>>("entries"); // number, elevation, azimuth, SNR of each
    using List = QVector<double>;
    const auto row = [](const char *name, const QByteArray &groups, const List &entries) {
        QTest::newRow(name) << groups << entries;
    };
    row("normal", ",04,45,120,38,12,05,359,41*7F", {4, 45, 120, 38, 12, 5, 359, 41});
    row("no group", "*7F", {});
    row("no group, comma", ",*7F", {});
    row("SNR of the last group cut to two characters", ",04,45,120,123*7F", {4, 45, 120, 12});
    row("SNR of the last group, one digit and asterisk", ",04,45,120,7*7F", {4, 45, 120, 0});
    row("SNR of the last group, asterisk only", ",04,45,120,*7F", {4, 45, 120, 0});
    row("SNR of the last group, decimals", ",04,45,120,38.5*7F", {4, 45, 120, 38});
    row("SNR of the last group, no asterisk", ",04,45,120,38", {4, 45, 120, 38});
    row("SNR of inner group in full", ",04,45,120,38.5,05,1,2,30*7F",
        {4, 45, 120, 38.5, 5, 1, 2, 30});
    row("SNR in full before a signal id", ",04,45,120,38.5,1*7F", {4, 45, 120, 38.5});
    row("signal id adds nothing", ",04,45,120,38,05,1,2,30,7*7F", {4, 45, 120, 38, 5, 1, 2, 30});
    row("empty elevation, azimuth and SNR read as 0", ",04,,,,05,1,2,30*7F",
        {4, 0, 0, 0, 5, 1, 2, 30});
    row("empty number: group left out", ",,45,120,38,05,1,2,30*7F", {5, 1, 2, 30});
    row("padded with empty groups", ",04,45,120,38,,,,,,,,*7F", {4, 45, 120, 38});
    row("group with three fields left out", ",04,45,120,38,05,1,2*7F", {4, 45, 120, 38});
    row("SNR in full before a broken group", ",04,45,120,38.5,05,1*7F", {4, 45, 120, 38.5});
    row("cut in two inside the only group", ",04,45", {});
    row("non-numeric number is 0", ",x,45,120,38*7F", {0, 45, 120, 38});
    row("non-numeric others are 0", ",04,a,b,c,05,1,2,30*7F", {4, 0, 0, 0, 5, 1, 2, 30});
    row("overlong: more than four groups", ",1,1,1,11,2,2,2,12,3,3,3,13,4,4,4,14,5,5,5,15*7F",
        {1, 1, 1, 11, 2, 2, 2, 12, 3, 3, 3, 13, 4, 4, 4, 14, 5, 5, 5, 15});
    row("number with blank and sign", ", +4,45,120,38*7F", {4, 45, 120, 38});
    row("number too large for an int", ",99999999999,45,120,38*7F", {0, 45, 120, 38});
    row("azimuth larger than a float", ",04,45,1e39,38*7F", {4, 45, 0, 38});
}

void TestNmeaDecoding::decodesGsvGroups()
{
    QFETCH(QByteArray, groups);
    QFETCH(QVector<double>, entries);
    const int count = entries.size() / 4;
    // Announces more than it has, so that the entry behind the last one is looked at as well.
    const tGnssSvStatus status =
        satellitesAfter("$GPGSV,1,1," + QByteArray::number(count + 1) + groups + "\r\n");
    QCOMPARE(status.numSvs, count + 1);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(status.svList[i].prn, int(entries.at(4 * i)));
        QCOMPARE(status.svList[i].elevation, entries.at(4 * i + 1));
        QCOMPARE(status.svList[i].azimuth, float(entries.at(4 * i + 2)));
        QCOMPARE(status.svList[i].snr, entries.at(4 * i + 3));
        QVERIFY(!status.svList[i].usedInFix);
    }
    QVERIFY(status.svList[count] == tGnssSv());
}

void TestNmeaDecoding::appendsEntryWithUsedInFixFalse()
{
    feed(gsvSet("GP", satellites(1, 3)) + gsa("1,2,3") + rmc("123519.000", 'A'));
    QCOMPARE(usedNumbersOf(model->getSvStatus()).size(), 3);
    feed(gsvSet("GP", satellites(1, 3)) + rmc("123520.000", 'A'));
    QCOMPARE(usedNumbersOf(model->getSvStatus()), QList<int>());
}

void TestNmeaDecoding::appendsSatellitesOfUnknownTalkerWithoutCountingThem()
{
    const tGnssSvStatus status =
        satellitesAfter(gsvSet("GN", satellites(40, 2)) + gsvSet("GP", satellites(1, 3)));
    QCOMPARE(status.numSvs, 3);
    QCOMPARE(status.svList[0].prn, 40);
    QCOMPARE(status.svList[1].prn, 41);
    QCOMPARE(status.svList[2].prn, 1);
    QCOMPARE(status.svList[4].prn, 3);
}

void TestNmeaDecoding::neverKeepsMoreThan32_data()
{
    QTest::addColumn<QByteArray>("gsv");
    QTest::addColumn<int>("last");
    QTest::newRow("exactly 32") << gsvSet("GP", satellites(1, 32)) << 32;
    QTest::newRow("33 of one constellation") << gsvSet("GP", satellites(1, 33)) << 32;
    QTest::newRow("48 of two constellations")
        << gsvSet("GP", satellites(1, 24)) + gsvSet("GL", satellites(65, 24)) << 72;
    QTest::newRow("400") << gsvSet("GP", satellites(1, 400)) << 32;
    QByteArray inOne = "$GPGSV,1,1,100";
    for (int n = 1; n <= 100; ++n)
        inOne += ',' + QByteArray::number(n) + ",1,2,30";
    QTest::newRow("100 in one sentence") << inOne + "*00\r\n" << 32;
}

void TestNmeaDecoding::neverKeepsMoreThan32()
{
    QFETCH(QByteArray, gsv);
    const tGnssSvStatus status = satellitesAfter(gsv);
    QCOMPARE(status.numSvs, 32);
    QCOMPARE(status.svList[0].prn, 1);
    QTEST(status.svList[31].prn, "last");
}

void TestNmeaDecoding::clampsAnnouncedCount_data()
{
    QTest::addColumn<QByteArray>("announced");
    QTest::addColumn<int>("total");
    QTest::newRow("normal") << QByteArray("12") << 12;
    QTest::newRow("999") << QByteArray("999") << 999;
    QTest::newRow("1000") << QByteArray("1000") << 999;
    QTest::newRow("largest int") << QByteArray("2147483647") << 999;
    QTest::newRow("too large for an int") << QByteArray("2147483648") << 0;
    QTest::newRow("negative") << QByteArray("-5") << 0;
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("non-numeric") << QByteArray("x") << 0;
}

void TestNmeaDecoding::clampsAnnouncedCount()
{
    QFETCH(QByteArray, announced);
    QFETCH(int, total);
    feed(sentence("GPGSV,1,1," + announced) + sentence("GLGSV,2,1,1") + rmc("123519.000", 'A'));
    const QString line = QStringLiteral("GSVs not fulfilled: totalInView %1 totalCnt %1 allOK 0");
    QVERIFY(log->lines().contains(line.arg(total + 1)));
}

// A receiver that sends GSV alone never ends a cycle.
void TestNmeaDecoding::announcedTotalNeverOverflows()
{
    log.reset();
    QLoggingCategory::setFilterRules("default.debug=false");
    const QByteArray gsv = QByteArray("$GPGSV,1,1,999\r").repeated(5000);
    for (int i = 0; i < 440; ++i)
        feed(gsv);
    QLoggingCategory::setFilterRules(QString());
    log = std::make_unique<MessageLog>();
    feed("$GPGLL\r");
    const QStringList lines = log->lines().filter("GSVs not fulfilled: totalInView ");
    QCOMPARE(lines.size(), 1);
    QVERIFY2(!lines.first().contains('-'), qPrintable(lines.first()));
}

void TestNmeaDecoding::sumsConstellations()
{
    // A GPS set of three messages and a GLONASS set of two.
    const tGnssSvStatus status =
        satellitesAfter(gsvSet("GP", satellites(1, 11)) + gsvSet("GL", satellites(65, 7)));
    QCOMPARE(status.numSvs, 18);
    QCOMPARE(status.svList[10].prn, 11);
    QCOMPARE(status.svList[11].prn, 65);
    QCOMPARE(status.svList[17].prn, 71);
    QVERIFY(log->lines().contains("d> NmeaReader: GSVs fulfilled"));
}

void TestNmeaDecoding::rejectsSetWithoutFirstMessage()
{
    QByteArray gps = gsvSet("GP", satellites(1, 11));
    gps = gps.mid(gps.indexOf("$GPGSV,3,2"));
    QCOMPARE(satellitesAfter(gps).numSvs, 0);
    // Nothing was announced, so that there is nothing to be fulfilled.
    QVERIFY(log->lines().filter("fulfilled").isEmpty());
}

void TestNmeaDecoding::rejectsSetWithoutFirstMessageBesideWholeSet()
{
    QByteArray gps = gsvSet("GP", satellites(1, 11));
    gps = gps.mid(gps.indexOf("$GPGSV,3,2"));
    QCOMPARE(satellitesAfter(gps + gsvSet("GL", satellites(65, 7))).numSvs, 0);
    QCOMPARE(log->lines().filter("fulfilled"),
             QStringList("GSVs not fulfilled: totalInView 7 totalCnt 7 allOK 0"));
}

void TestNmeaDecoding::rejectsSetWithoutLastMessage()
{
    QByteArray gps = gsvSet("GP", satellites(1, 11));
    gps = gps.left(gps.indexOf("$GPGSV,3,3"));
    QCOMPARE(satellitesAfter(gps).numSvs, 0);
    QCOMPARE(log->lines().filter("fulfilled"),
             QStringList("GSVs not fulfilled: totalInView 11 totalCnt 11 allOK 0"));
}

void TestNmeaDecoding::rejectsRepeatedFirstMessage()
{
    const QByteArray gps = gsvSet("GP", satellites(1, 3));
    QCOMPARE(satellitesAfter(gps + gps).numSvs, 0);
    QCOMPARE(log->lines().filter("fulfilled"),
             QStringList("GSVs not fulfilled: totalInView 6 totalCnt 3 allOK 1"));
}

void TestNmeaDecoding::knowsConstellationOfTalker_data()
{
    QTest::addColumn<QByteArray>("talker");
    QTest::addColumn<bool>("known");
    for (const char *talker : {"GP", "GL", "BD", "GB", "GA", "QZ"})
        QTest::newRow(talker) << QByteArray(talker) << true;
    for (const char *talker : {"GN", "GQ", "gp", "XX", "PG"})
        QTest::newRow(talker) << QByteArray(talker) << false;
}

void TestNmeaDecoding::knowsConstellationOfTalker()
{
    QFETCH(QByteArray, talker);
    QFETCH(bool, known);
    QCOMPARE(satellitesAfter(gsvSet(talker, satellites(1, 5))).numSvs, known ? 5 : 0);
    // BD and GB are one constellation: two sets of it announce more than it counts.
    feed(gsvSet(talker, satellites(1, 5)) + gsvSet("GB", satellites(121, 2)) +
         rmc("123520.000", 'A'));
    const bool beiDou = talker == "BD" || talker == "GB";
    QCOMPARE(model->getSvStatus().numSvs, beiDou ? 5 : known ? 7 : 2);
}

void TestNmeaDecoding::cycleWithoutGsvPublishesNoSatellites()
{
    feed(gsvSet("GP", satellites(1, 3)) + rmc("123519.000", 'A'));
    feed(rmc("123520.000", 'A') + rmc("123521.000", 'A'));
    QCOMPARE(model->getSvStatus().numSvs, 3);
    QCOMPARE(log->lines().filter("fulfilled").size(), 1);
}

void TestNmeaDecoding::gllPublishesSatellitesOnly()
{
    feed(sentence(kGga) + gsvSet("GP", satellites(1, 3)));
    QCOMPARE(model->getSvStatus().numSvs, 0);
    feed(sentence("GPGLL,4807.0380,N,01131.0000,E,123519.000,A,A"));
    QCOMPARE(model->getSvStatus().numSvs, 3);
    QCOMPARE(model->getLocation().latitude, 0.0);
    QCOMPARE(published->current().utcUpdates, 0);
    // The cycle is closed: the RMC behind it finds nothing announced.
    feed(rmc("123519.000", 'A'));
    QCOMPARE(log->lines().filter("fulfilled"), QStringList("d> NmeaReader: GSVs fulfilled"));
}

void TestNmeaDecoding::everyCycleStartsFreshList()
{
    // Fulfilled, not fulfilled and empty cycles alike.
    feed(gsvSet("GP", satellites(1, 9)) + rmc("123519.000", 'A'));
    feed("$GPGSV,2,1,8,20,1,2,30*00\r\n" + rmc("123520.000", 'A'));
    feed(sentence("GNGSV,1,1,1,21,1,2,30") + rmc("123521.000", 'A'));
    feed(gsvSet("GL", satellites(65, 2)) + rmc("123522.000", 'A'));
    QCOMPARE(numbersOf(model->getSvStatus()), QList<int>({65, 66}));
}

void TestNmeaDecoding::rmcForgetsBrokenSet()
{
    feed("$GPGSV,2,1,8,20,1,2,30*00\r\n" + rmc("123519.000", 'A'));
    feed(gsvSet("GL", satellites(65, 2)) + rmc("123520.000", 'A'));
    QCOMPARE(numbersOf(model->getSvStatus()), QList<int>({65, 66}));
}

void TestNmeaDecoding::decodesUtc()
{
    feed(rmc("123519.250", 'V', "230394"));
    const tUTCTime utc = model->getUtcTime();
    QCOMPARE(utc.year, qint16(2094));
    QCOMPARE(utc.month, qint16(3));
    QCOMPARE(utc.day, qint16(23));
    QCOMPARE(utc.hour, qint16(12));
    QCOMPARE(utc.minute, qint16(35));
    QCOMPARE(utc.second, 19.25);
    QCOMPARE(utc.reserved, 0);
    QVERIFY(utc.valid);
    QCOMPARE(published->current().utcUpdates, 1);
    // The date may be the last field, and the time, too.
    feed(sentence("GPRMC,010203.000,A,,,,,,,050607"));
    QCOMPARE(model->getUtcTime().year, qint16(2007));
    feed(sentence("GPRMC,040506.000"));
    QCOMPARE(model->getUtcTime().hour, qint16(4));
    QCOMPARE(model->getUtcTime().second, 6.0);
    QCOMPARE(model->getUtcTime().year, qint16(2000));
}

void TestNmeaDecoding::rmcWithoutTimePublishesNoUtc()
{
    feed(rmc("123519.000", 'A'));
    feed(rmc("", 'A') + sentence("GPRMC"));
    QCOMPARE(published->current().utcUpdates, 1);
    QCOMPARE(model->getUtcTime().second, 19.0);
    QCOMPARE(published->all().size(), std::size_t(3)); // the location is published all the same
}

void TestNmeaDecoding::midnight()
{
    feed(rmc("235959.000", 'V') + rmc("000000.000", 'V'));
    QCOMPARE(model->utcGap(), -82799);
}

void TestNmeaDecoding::ttffAfter35SentencesWithoutFixIs36()
{
    feed(rmc(timeOf(3600), 'V'));
    reader->clearBuf();
    model->clearGnssInfo();
    for (int second = 1; second <= 35; ++second)
        feed(rmc(timeOf(3600 + second), 'V'));
    QVERIFY(!model->isTtffSet());
    feed(rmc(timeOf(3636), 'A'));
    QVERIFY(model->isTtffSet());
    QCOMPARE(model->getTtff(), 36U);
    QCOMPARE(published->current().ttffUpdates, 1);
    QVERIFY(log->lines().contains("TTFF: 36"));
}

void TestNmeaDecoding::firstFixAfterClearIsOldData()
{
    feed(rmc(timeOf(3600), 'V'));
    reader->clearBuf();
    model->clearGnssInfo();
    for (int second = 1; second <= 3; ++second) {
        feed(rmc(timeOf(3600 + second), 'A'));
        QVERIFY(!model->isTtffSet());
        QCOMPARE(log->lines().filter("Exist rest data after the reset, avoid!").size(), second);
    }
    // Only after a sentence without a fix a fix counts.
    feed(rmc(timeOf(3604), 'V') + rmc(timeOf(3605), 'A'));
    QCOMPARE(model->getTtff(), 2U);
    QCOMPARE(log->lines().filter("Exist rest data").size(), 3);
}

void TestNmeaDecoding::ttffWhenTimeJumps()
{
    feed(rmc(timeOf(3600), 'V'));
    reader->clearBuf();
    model->clearGnssInfo();
    feed(rmc(timeOf(3601), 'A'));
    QVERIFY(!model->isTtffSet());
    feed(rmc(timeOf(3603), 'A'));
    QCOMPARE(model->getTtff(), 1U);
}

// Over midnight the gap is not 1, so that the first fix counts at once.
void TestNmeaDecoding::ttffAtMidnight()
{
    feed(rmc("235959.000", 'V'));
    reader->clearBuf();
    model->clearGnssInfo();
    feed(rmc("000000.000", 'A'));
    QVERIFY(model->isTtffSet());
    QCOMPARE(model->getTtff(), 1U);
    QVERIFY(log->lines().filter("Exist rest data").isEmpty());
}

void TestNmeaDecoding::ttffIsSetOnce()
{
    feed(rmc(timeOf(10), 'V') + rmc(timeOf(11), 'A') + rmc(timeOf(12), 'V') + rmc(timeOf(13), 'V') +
         rmc(timeOf(14), 'A'));
    QCOMPARE(model->getTtff(), 2U);
    QCOMPARE(published->current().ttffUpdates, 1);
    // A cleared TTFF counts from its own clear.
    model->clearTtff();
    feed(rmc(timeOf(15), 'V') + rmc(timeOf(16), 'A'));
    QCOMPARE(model->getTtff(), 2U);
    QCOMPARE(published->current().ttffUpdates, 2);
}

void TestNmeaDecoding::ttffCountsFromBufferClear()
{
    feed(rmc(timeOf(10), 'V') + rmc(timeOf(11), 'V') + rmc(timeOf(12), 'V'));
    reader->clearBuf();
    feed(rmc(timeOf(13), 'V') + rmc(timeOf(14), 'A'));
    QCOMPARE(model->getTtff(), 2U);
}

void TestNmeaDecoding::statusOtherThanACounts_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<bool>("fix");
    QTest::newRow("A") << QByteArray("A") << true;
    QTest::newRow("V") << QByteArray("V") << false;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("lower case") << QByteArray("a") << false;
    QTest::newRow("two letters") << QByteArray("AA") << false;
    QTest::newRow("with blank") << QByteArray("A ") << false;
}

void TestNmeaDecoding::statusOtherThanACounts()
{
    QFETCH(QByteArray, status);
    feed(rmc(timeOf(10), 'V') + sentence("GPRMC,000011.000," + status + ",,,,,,,230326"));
    QTEST(model->isTtffSet(), "fix");
    // The same where it is the last field.
    model->clearTtff();
    feed(rmc(timeOf(12), 'V') + sentence("GPRMC,000013.000," + status));
    QTEST(model->isTtffSet(), "fix");
}

void TestNmeaDecoding::requestsNvmStoreOnce()
{
    const QByteArray cycle = gsvSet("GP", satellites(1, 3)) + gsa("1,2,3");
    feed(cycle + rmc(timeOf(10), 'V'));
    QVERIFY(!model->isNvmSaved()); // no TTFF yet
    feed(cycle + rmc(timeOf(11), 'A'));
    QVERIFY(model->isNvmSaved());
    feed(cycle + rmc(timeOf(12), 'A') + cycle + rmc(timeOf(13), 'A'));
    QCOMPARE(published->current().nvmUpdates, 1);
}

void TestNmeaDecoding::requestsNvmStoreWhenConstellationsAgree_data()
{
    QTest::addColumn<QByteArray>("cycle");
    QTest::addColumn<int>("requests");
    const QByteArray gps = gsvSet("GP", satellites(1, 3));
    const QByteArray glonass = gsvSet("GL", satellites(65, 3));
    const QByteArray beiDou = gsvSet("GB", satellites(121, 3));
    QTest::newRow("neither seen") << QByteArray() << 1;
    QTest::newRow("GPS in both") << gps + gsa("1") << 1;
    QTest::newRow("GPS only in GSV") << gps + gsa("") << 0;
    QTest::newRow("GPS only in GSA") << gsa("32") << 0;
    QTest::newRow("GLONASS only in GSV") << gps + glonass + gsa("1") << 0;
    QTest::newRow("GLONASS in both, lowest number") << glonass + gsa("65") << 1;
    QTest::newRow("GLONASS in both, highest number") << glonass + gsa("88") << 1;
    QTest::newRow("BeiDou only in GSV") << beiDou << 0;
    QTest::newRow("BeiDou in both, lowest number") << beiDou + gsa("121") << 1;
    QTest::newRow("BeiDou in both, highest number") << beiDou + gsa("157") << 1;
    QTest::newRow("numbers between the ranges mark nothing")
        << gsa("0,33,64,89,120,158,193,301") + gsa("-1,x") << 1;
    QTest::newRow("Galileo is not compared") << gsvSet("GA", satellites(301, 3)) << 1;
    QTest::newRow("QZSS is not compared") << gsvSet("QZ", satellites(193, 3)) << 1;
    QTest::newRow("all three") << gps + glonass + beiDou + gsa("1,65,121") << 1;
}

void TestNmeaDecoding::requestsNvmStoreWhenConstellationsAgree()
{
    QFETCH(QByteArray, cycle);
    feed(rmc(timeOf(10), 'V') + cycle + rmc(timeOf(11), 'A'));
    QVERIFY(model->isTtffSet());
    QTEST(published->current().nvmUpdates, "requests");
    QTEST(int(model->isNvmSaved()), "requests");
}

void TestNmeaDecoding::requestsNvmStoreAgainAfterClear()
{
    feed(rmc(timeOf(10), 'V') + rmc(timeOf(11), 'A'));
    QCOMPARE(published->current().nvmUpdates, 1);
    model->clearGnssInfo();
    feed(rmc(timeOf(12), 'V') + rmc(timeOf(13), 'A'));
    QCOMPARE(published->current().nvmUpdates, 1); // the model's clear alone leaves the flag
    reader->clearBuf();
    model->clearGnssInfo();
    feed(rmc(timeOf(14), 'V') + rmc(timeOf(15), 'A'));
    QCOMPARE(published->current().nvmUpdates, 2);
}

void TestNmeaDecoding::clearBufClears()
{
    feed(sentence(kGga) + gsvSet("GP", satellites(1, 11)).left(60) + gsa("1") +
         rmc(timeOf(10), 'V'));
    model->setNvmStatus(true);
    QVERIFY(model->isDataReceived());
    reader->clearBuf();
    QVERIFY(log->lines().contains("d> NmeaReader: NmeaReader clearBuf"));
    QVERIFY(!model->isDataReceived());
    QVERIFY(!model->isNvmSaved());
    // The working location, the satellites and the flags are gone ...
    feed(rmc(timeOf(11), 'V') + rmc(timeOf(12), 'A'));
    QCOMPARE(model->getLocation().latitude, 0.0);
    QCOMPARE(model->getLocation().pdop, 0.0F);
    QCOMPARE(published->current().nvmUpdates, 1);
    QCOMPARE(model->getTtff(), 2U); // ... and the time count began at 0
}

void TestNmeaDecoding::clearBufLeavesNoFixFlag()
{
    feed(sentence("GPGGA,1,,,,,0,00,,,M"));
    reader->clearBuf();
    feed(gsvSet("GP", satellites(1, 3)) + gsa("1"));
    QVERIFY(log->lines().contains("d> NmeaReader: lost fix clean used in fix"));
}

void TestNmeaDecoding::clearBufLeavesStoredEntriesAndTotal()
{
    feed(gsvSet("GP", satellites(1, 3)));
    reader->clearBuf();
    // Three entries, now empty, stay counted, and so do the three announced.
    feed(gsvSet("GL", satellites(65, 2)) + rmc(timeOf(10), 'A'));
    QVERIFY(log->lines().contains("GSVs not fulfilled: totalInView 5 totalCnt 2 allOK 1"));
    QCOMPARE(model->getSvStatus().numSvs, 0);
    feed(gsvSet("GP", satellites(1, 3)));
    reader->clearBuf();
    feed("$GPGSV,1,1,0,9,1,2,30*00\r\n$GPGSV,1,1,-,10,1,2,30*00\r\n" +
         gsvSet("GL", satellites(65, 2)));
    feed("$GPGSV,1,1,3*00\r\n");
    // 3 + 0 + 0 + 2 + 3 against 3 + 2
    feed("$GPGLL\r");
    QVERIFY(log->lines().contains("GSVs not fulfilled: totalInView 8 totalCnt 5 allOK 1"));
}

void TestNmeaDecoding::clearBufForgetsTheNumbersOfStoredEntries_data()
{
    QTest::addColumn<QByteArray>("used");   ///< number in GSA
    QTest::addColumn<QList<int>>("marked"); ///< entries of the list
    // Entry 0 stays counted and is empty, entry 1 is satellite 7.
    QTest::newRow("of the entry before the clear") << QByteArray("05") << QList<int>{};
    QTest::newRow("of the entry after the clear") << QByteArray("07") << QList<int>{1};
    QTest::newRow("0, which the empty entry has") << QByteArray("00") << QList<int>{0};
    QTest::newRow("beyond the indexed ones") << QByteArray("9999") << QList<int>{};
}

void TestNmeaDecoding::clearBufForgetsTheNumbersOfStoredEntries()
{
    QFETCH(QByteArray, used);
    feed("$GNGSV,1,1,01,05,10,100,30*00\r\n");
    reader->clearBuf();
    const tGnssSvStatus status = satellitesAfter("$GPGSV,1,1,01,07,10,100,30*00\r\n" + gsa(used));
    QCOMPARE(status.numSvs, 1);
    QCOMPARE(status.svList[0].prn, 0);
    QCOMPARE(status.svList[1].prn, 7);
    QList<int> marked;
    for (int i = 0; i < kMaxSatellites; ++i) {
        if (status.svList[i].usedInFix)
            marked << i;
    }
    QTEST(marked, "marked");
}

void TestNmeaDecoding::decodesAsPlainlyWrittenAcrossClears()
{
    for (quint32 seed = 0; seed < 1000; ++seed) {
        published = std::make_unique<Publications>();
        reader = std::make_unique<NmeaReader>();
        PlainDecoder plain;
        QRandomGenerator random(seed);
        for (int step = 0; step < 40; ++step) {
            if (random.bounded(8) == 0) {
                reader->clearBuf();
                model->clearGnssInfo();
                plain.clear();
                continue;
            }
            const QByteArray bytes = anySentence(random, step);
            feed(bytes);
            plain.read(bytes);
        }
        const QString difference = firstDifference(published->all(), plain.all());
        QVERIFY2(difference.isEmpty(), qPrintable(QString::number(seed) + ": " + difference));
        QVERIFY(published->current() == plain.current());
    }
}

void TestNmeaDecoding::tracesRmc()
{
    const QByteArray one = rmc("123519.000", 'V');
    const QByteArray two = rmc("123520.000", 'A');
    feed(one);
    feed(two);
    feed(rmc("", 'A', ""));
    const QString length = "read len %1";
    const QStringList lines = {
        length.arg(one.size()),
        "d> NmeaReader: RMC received V 123519.000 230326",
        "TTFF Set? : 0 time count: 1",
        length.arg(two.size()),
        "d> NmeaReader: RMC received A 123520.000 230326",
        "TTFF: 2",
        "TTFF Set? : 1 time count: 0",
        length.arg(rmc("", 'A', "").size()),
        "d> NmeaReader: RMC received A  ",
        "TTFF Set? : 1 time count: 0",
    };
    QCOMPARE(log->lines(), lines);
}

void TestNmeaDecoding::tracesRmcFieldsAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("traced");
    const auto row = [](const char *name, const QByteArray &body, const QString &traced) {
        QTest::newRow(name) << body << traced;
    };
    row("beyond Latin-1",
        "GPRMC,12\xe2\x82\xac"
        "519.000,\xd0\x90,,,,,,,2303\xf0\x9d\x84\x9e,,,A",
        QString::fromUtf8("\xd0\x90 12\xe2\x82\xac"
                          "519.000 2303\xf0\x9d\x84\x9e"));
    row("undecodable",
        "GPRMC,1\xff"
        "3519.000,A,,,,,,,230326,,,A",
        QString::fromUtf8("A 1\xef\xbf\xbd"
                          "3519.000 230326"));
    row("Latin-1", "GPRMC,123519.000,\xc3\xbc,,,,,,,230326,,,A",
        QString::fromUtf8("\xc3\xbc 123519.000 230326"));
    row("question mark", "GPRMC,12?519.000,A,,,,,,,230326,,,\xff", "A 12?519.000 230326");
    row("date in the last field",
        "GPRMC,123519.000,A,,,,,,,\xe2\x82\xac"
        "326",
        QString::fromUtf8("A 123519.000 \xe2\x82\xac"
                          "326"));
    row("byte order mark",
        "GPRMC,\xef\xbb\xbf"
        "123519.000,A,,,,,,,230326,,,A",
        "A \\uFEFF123519.000 230326"); // as Qt prints what has no shape
    row("no date", "GPRMC,\xe2\x82\xac", QString::fromUtf8(" \xe2\x82\xac "));
    row("in the address",
        "\xe2\x82\xac"
        "PRMC,123519.000,A,,,,,,,230326,,,A",
        "A 123519.000 230326");
}

void TestNmeaDecoding::tracesRmcFieldsAsTheyAre()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, traced);
    feed(sentence(body));
    QCOMPARE(log->lines().value(1), "d> NmeaReader: RMC received " + traced);
}

void TestNmeaDecoding::tracesGsvCycle()
{
    feed(gsvSet("GP", satellites(1, 3)) + rmc("123519.000", 'V'));
    const QStringList lines = log->lines().mid(1);
    const QStringList expected = {
        "d> NmeaReader: RMC received V 123519.000 230326",
        "TTFF Set? : 0 time count: 1",
        "d> NmeaReader: GSVs fulfilled",
    };
    QCOMPARE(lines, expected);
    for (const MessageLog::Message &message : log->messages()) {
        QCOMPARE(message.type, QtDebugMsg);
        QCOMPARE(message.category, QString("default"));
    }
}

void TestNmeaDecoding::tracesLostFix()
{
    feed(sentence("GPGGA,1,,,,,0,00,,,M") + gsa("") + gsa(""));
    QCOMPARE(log->lines().mid(1), QStringList("d> NmeaReader: lost fix clean used in fix"));
}

void TestNmeaDecoding::printsNothingWhenSilenced()
{
    QLoggingCategory::setFilterRules("default.debug=false");
    feed(sentence("GPGGA,1,,,,,0,00,,,M") + gsa("1") + gsvSet("GP", satellites(1, 3)) +
         rmc(timeOf(10), 'A') + rmc(timeOf(11), 'A') + gsvSet("GP", satellites(1, 11)).left(60) +
         "\r" + rmc(timeOf(12), 'V') + rmc(timeOf(13), 'A'));
    reader->clearBuf();
    const QStringList lines = log->lines();
    QLoggingCategory::setFilterRules(QString());
    QCOMPARE(lines, QStringList());
    QVERIFY(model->isTtffSet());
}

void TestNmeaDecoding::emitsSignalsInOrder()
{
    QStringList order;
    QObject context;
    connect(model, &GnssInfo::dataReceived, &context, [&] { order << "dataReceived"; });
    connect(model, &GnssInfo::utcUpdate, &context, [&] { order << "utcUpdate"; });
    connect(model, &GnssInfo::locationUpdate, &context, [&] { order << "locationUpdate"; });
    connect(model, &GnssInfo::svStatusUpdate, &context, [&] { order << "svStatusUpdate"; });
    connect(model, &GnssInfo::ttffUpdate, &context, [&] { order << "ttffUpdate"; });
    connect(model, &GnssInfo::nvmUpdate, &context, [&] { order << "nvmUpdate"; });
    feed(rmc(timeOf(10), 'V'));
    order.clear();
    bool savedDuringSignal = true;
    connect(model, &GnssInfo::nvmUpdate, &context,
            [&] { savedDuringSignal = model->isNvmSaved(); });
    feed(gsvSet("GP", satellites(1, 3)) + gsa("1") + rmc(timeOf(11), 'A'));
    QCOMPARE(order, QStringList({"dataReceived", "utcUpdate", "ttffUpdate", "nvmUpdate",
                                 "locationUpdate"}));
    QVERIFY(!savedDuringSignal); // the flag follows the signal
}

void TestNmeaDecoding::ignoresWrongChecksum()
{
    feed('$' + kGga + "*00\r\n$GPRMC,123519.000,A,,,,,,,230326*ZZ\r\n");
    QCOMPARE(model->getLocation().latitude, 48.1173);
}

QTEST_GUILESS_MAIN(TestNmeaDecoding)
#include "TestNmeaDecoding.moc"
