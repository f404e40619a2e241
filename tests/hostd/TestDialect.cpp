// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/Dialect.h"
#include "hostd/DialectChecker.h"

#include <QtTest>

class TestDialect : public QObject
{
    Q_OBJECT
private slots:
    void writesAWholeCycle();
    void leavesUnknownFieldsEmpty();
    void writesAngles_data();
    void writesAngles();
    void keepsTheBestThirtyTwo();
    void usesOnlyThoseThatItKeeps();
    void splitsMoreThanTwelveInUse();
    void alwaysSaysTwoDigitsOfStrength();
    void leavesOutNumbersThatTheDeviceHasNot();
    void keepsFieldsWithinTheirRoom();
    void keepsTheDecimalsOfTheReceiver_data();
    void keepsTheDecimalsOfTheReceiver();
    void makesUpNoFixWhereNoneWasSaid();
    void fitsIntoThePipeInOnePiece();
};

namespace {

QByteArray joined(const tEpoch &epoch)
{
    QByteArray all;
    for (const QByteArray &sentence : Dialect::sentences(epoch))
        all += sentence;
    return all;
}

tEpoch fix()
{
    tEpoch epoch;
    epoch.timeMs = 45296789; // 12:34:56.789
    epoch.date = QDate(2025, 6, 1);
    epoch.valid = true;
    epoch.quality = 1;
    epoch.mode = 'A';
    epoch.latitude = -(33 * 600000 + 514080);
    epoch.longitude = 151 * 600000 + 129180;
    epoch.altitudeM = 40.04;
    epoch.separationM = 0.0;
    epoch.speedKnots = 0.5;
    epoch.satellitesInUse = 4;
    epoch.activeKnown = true;
    epoch.fixMode = 3;
    epoch.pdop = 2.0;
    epoch.hdop = 1.234;
    epoch.vdop = 150.0;
    return epoch;
}

tSatellite satellite(int number, int cn0)
{
    return {number, 45, 7, cn0};
}

} // namespace

void TestDialect::writesAWholeCycle()
{
    tEpoch epoch = fix();
    epoch.inView = {satellite(303, 40), satellite(5, 33), satellite(70, 0), satellite(121, 9),
                    satellite(193, 20)};
    epoch.used = {303, 5, 121};
    const QByteArray expected =
        "$GNGGA,123456.789,3351.4080,S,15112.9180,E,1,04,1.234,40.04,M,0.0,M,,*4D\r\n"
        "$GPGSV,1,1,01,05,45,007,33*4F\r\n"
        "$GLGSV,1,1,01,70,45,007,00*52\r\n"
        "$GAGSV,1,1,01,303,45,007,40*6E\r\n"
        "$GBGSV,1,1,01,121,45,007,09*65\r\n"
        "$QZGSV,1,1,01,193,45,007,20*68\r\n"
        "$GPGSA,A,3,05,,,,,,,,,,,,2.00,1.234,150.00*0D\r\n"
        "$GAGSA,A,3,303,,,,,,,,,,,,2.00,1.234,150.00*29\r\n"
        "$GBGSA,A,3,121,,,,,,,,,,,,2.00,1.234,150.00*2A\r\n"
        "$GNGLL,3351.4080,S,15112.9180,E,123456.789,A,A*55\r\n"
        "$GNRMC,123456.789,A,3351.4080,S,15112.9180,E,0.50,,010625,,,A*76\r\n";
    const auto withoutSums = [](const QByteArray &text) {
        return QString::fromLatin1(text).remove(QRegularExpression(QStringLiteral("\\*..")));
    };
    QCOMPARE(withoutSums(joined(epoch)), withoutSums(expected));
    DialectChecker checker;
    checker.read(joined(epoch));
    QCOMPARE(checker.error(), QString());
    QCOMPARE(checker.cycles().size(), 1);
}

void TestDialect::leavesUnknownFieldsEmpty()
{
    const QByteArray text = joined(tEpoch());
    QVERIFY(text.startsWith("$GNGGA,,,,,,0,00,,,M,,M,,*"));
    QVERIFY(text.contains("$GNGLL,,,,,,V,N*"));
    QVERIFY(text.contains("$GNRMC,,V,,,,,,,,,,N*"));
    QVERIFY(!text.contains("GSV"));
    QVERIFY(!text.contains("GSA"));
    tEpoch searching;
    searching.activeKnown = true;
    QVERIFY(joined(searching).contains("$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n"));
}

void TestDialect::writesAngles_data()
{
    QTest::addColumn<qlonglong>("latitude");
    QTest::addColumn<qlonglong>("longitude");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, qint64 latitude, qint64 longitude, const char *expected) {
        QTest::newRow(name) << static_cast<qlonglong>(latitude) << static_cast<qlonglong>(longitude)
                            << QByteArray(expected);
    };
    row("equator", 0, 0, "0000.0000,N,00000.0000,E");
    row("one unit south west", -1, -1, "0000.0001,S,00000.0001,W");
    row("last before a degree", 599999, 599999, "0059.9999,N,00059.9999,E");
    row("pole and date line", -54000000, -108000000, "9000.0000,S,18000.0000,W");
}

void TestDialect::writesAngles()
{
    QFETCH(qlonglong, latitude);
    QFETCH(qlonglong, longitude);
    QFETCH(QByteArray, expected);
    tEpoch epoch = fix();
    epoch.latitude = latitude;
    epoch.longitude = longitude;
    const QVector<QByteArray> sentences = Dialect::sentences(epoch);
    QCOMPARE(sentences.first().split(',').mid(2, 4).join(','), expected);
    QCOMPARE(sentences.last().split(',').mid(3, 4).join(','), expected);
}

void TestDialect::keepsTheBestThirtyTwo()
{
    tEpoch epoch = fix();
    for (int number = 1; number <= 32; ++number)
        epoch.inView.append(satellite(number, number)); // 32 is the strongest
    for (int number = 301; number <= 310; ++number)
        epoch.inView.append(satellite(number, 50));
    epoch.used = {1, 2, 301};
    DialectChecker checker;
    checker.read(joined(epoch));
    QCOMPARE(checker.error(), QString());
    const auto &inView = checker.cycles().first().inView;
    QCOMPARE(inView.size(), 32);
    QVERIFY(inView.contains(1) && inView.contains(2) && inView.contains(301));
    QVERIFY(!inView.contains(3) && !inView.contains(12)); // weakest ten of those not in use
    QVERIFY(inView.contains(13) && inView.contains(310));
    QCOMPARE(checker.cycles().first().used, (QList<int>{1, 2, 301}));
}

void TestDialect::usesOnlyThoseThatItKeeps()
{
    tEpoch epoch = fix();
    for (int number = 1; number <= 32; ++number)
        epoch.inView.append(satellite(number, number)); // 32 is the strongest
    epoch.inView.append(satellite(301, 50));
    epoch.inView.append(satellite(302, 50));
    for (const tSatellite &inView : qAsConst(epoch.inView))
        epoch.used.append(inView.number);
    DialectChecker checker;
    checker.read(joined(epoch));
    QCOMPARE(checker.error(), QString());
    const auto &used = checker.cycles().first().used;
    QCOMPARE(used.size(), 32);
    QVERIFY(!used.contains(1) && !used.contains(2));
    QVERIFY(used.contains(3) && used.contains(302));
}

void TestDialect::splitsMoreThanTwelveInUse()
{
    tEpoch epoch = fix();
    for (int number = 1; number <= 14; ++number)
        epoch.used.append(number);
    const QByteArray text = joined(epoch);
    QCOMPARE(text.count("$GPGSA"), 2);
    QVERIFY(text.contains("$GPGSA,A,3,13,14,,,,,,,,,,,"));
}

void TestDialect::alwaysSaysTwoDigitsOfStrength()
{
    tEpoch epoch = fix();
    epoch.inView = {satellite(1, 5), satellite(2, 0), satellite(3, 120), satellite(4, -3)};
    epoch.inView[1].elevationDeg.reset();
    epoch.inView[1].azimuthDeg.reset();
    QVERIFY(
        joined(epoch).contains("$GPGSV,1,1,04,01,45,007,05,02,,,00,03,45,007,99,04,45,007,00*"));
}

void TestDialect::leavesOutNumbersThatTheDeviceHasNot()
{
    tEpoch epoch = fix();
    for (const int number : {0, 97, 120, 184, 192, 203, 300, 337, -1})
        epoch.inView.append(satellite(number, 30));
    epoch.used = {0, 97, 337, 6};
    const QByteArray text = joined(epoch);
    QVERIFY(!text.contains("GSV"));
    QCOMPARE(text.count("GSA"), 1);
    QVERIFY(text.contains("$GPGSA,A,3,06,,"));
}

void TestDialect::keepsFieldsWithinTheirRoom()
{
    tEpoch epoch = fix();
    epoch.altitudeM = 1e308;
    epoch.separationM = -100000.0;
    epoch.speedKnots = 99999.0;
    epoch.courseDeg = -1e20;
    epoch.hdop = -3.0;
    epoch.pdop = 1e300;
    const QByteArray text = joined(epoch);
    QVERIFY2(text.contains(",04,0.00,,M,,M,,*"), text);
    QVERIFY2(text.contains(",99999.00,,010625,"), text);
    QVERIFY2(text.contains(",,0.00,150.00*"), text);
}

void TestDialect::keepsTheDecimalsOfTheReceiver_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("altitude");
    QTest::addColumn<QByteArray>("dop");
    QTest::newRow("none") << 176.0 << QByteArray("176.0") << QByteArray("176.00");
    QTest::newRow("one") << 0.5 << QByteArray("0.5") << QByteArray("0.50");
    QTest::newRow("two") << 500.04 << QByteArray("500.04") << QByteArray("500.04");
    QTest::newRow("three") << 278.161 << QByteArray("278.161") << QByteArray("278.161");
    QTest::newRow("four") << 0.0001 << QByteArray("0.0001") << QByteArray("0.00");
    QTest::newRow("five") << 1.00006 << QByteArray("1.0001") << QByteArray("1.00");
    QTest::newRow("zero") << 0.0 << QByteArray("0.0") << QByteArray("0.00");
    QTest::newRow("below zero") << -31.442 << QByteArray("-31.442") << QByteArray("0.00");
    QTest::newRow("beyond any field") << 1e5 << QByteArray() << QByteArray();
}

void TestDialect::keepsTheDecimalsOfTheReceiver()
{
    QFETCH(double, value);
    QFETCH(QByteArray, altitude);
    QFETCH(QByteArray, dop);
    tEpoch epoch = fix();
    epoch.altitudeM = value;
    epoch.separationM = value;
    epoch.pdop = value;
    epoch.hdop = value;
    epoch.vdop = value;
    const QVector<QByteArray> sentences = Dialect::sentences(epoch);
    const QByteArray gga = sentences.first();
    QVERIFY2(gga.contains(",04," + dop + ',' + altitude + ",M," + altitude + ",M,,*"), gga);
    const QByteArray gsa = sentences.at(1);
    QVERIFY2(gsa.contains(',' + dop + ',' + dop + ',' + dop + '*'), gsa);
}

void TestDialect::makesUpNoFixWhereNoneWasSaid()
{
    tEpoch epoch;
    epoch.withoutFix = true;
    QVERIFY(Dialect::sentences(epoch).isEmpty());
    epoch.inView = {satellite(5, 30)};
    epoch.others = {"$GPVTG,,T,,M,,N,,K*4E\r\n"};
    QCOMPARE(joined(epoch), "$GPGSV,1,1,01,05,45,007,30*48\r\n" + epoch.others.first());
}

// The most that a cycle can hold.
void TestDialect::fitsIntoThePipeInOnePiece()
{
    constexpr int kPipeBuf = 4096;
    tEpoch epoch = fix();
    epoch.gnsModes = "RRRRRR";
    epoch.altitudeM = epoch.separationM = -12345.6789;
    epoch.pdop = epoch.hdop = epoch.vdop = 12345.6789;
    epoch.speedKnots = epoch.courseDeg = -12345.67;
    for (const int first : {1, 65, 121, 193, 301}) {
        for (int number = first; number < first + 7; ++number) {
            epoch.inView.append(satellite(number, 50));
            epoch.used.append(number);
        }
    }
    epoch.others = {QByteArray(1536, 'x')};
    const QByteArray bytes = joined(epoch);
    QVERIFY2(bytes.size() <= kPipeBuf, QByteArray::number(bytes.size()));
}

QTEST_GUILESS_MAIN(TestDialect)
#include "TestDialect.moc"
