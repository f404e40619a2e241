// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/Dialect.h"
#include "receiver/families/FamilyFinder.h"

#include <QtTest>

using ReceiverFamily::Family;
using ReceiverFamily::UnicoreKind;

Q_DECLARE_METATYPE(Family)

class TestFamilyFinder : public QObject
{
    Q_OBJECT
private slots:
    void tellsTheFamily_data();
    void tellsTheFamily();
    void tellsNoFamilyFrom_data();
    void tellsNoFamilyFrom();
    void learnsTheGenerationOfAUblox();
    void learnsTheProtocolFromTheBanner();
    void tellsUnicoresTwoLanguagesApart();
    void isNotFooledByItsOwnQuestions();
    void keepsWhatIsCertain();
    void asksOnlyForDetailsOfAKnownFamily();
};

namespace {

QByteArray padded(const char *text, int size)
{
    return QByteArray(text).leftJustified(size, '\0');
}

QByteArray ubxVersion(const QList<const char *> &extensions)
{
    QByteArray payload = padded("ROM CORE 3.01 (107888)", 30) + padded("00080000", 10);
    for (const char *extension : extensions)
        payload += padded(extension, 30);
    return binaryFrameBytes({tBinaryFrame::Maker::Ublox, 0x0a, 0x04, payload});
}

} // namespace

void TestFamilyFinder::tellsTheFamily_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Family>("family");
    QTest::addColumn<bool>("certain");
    const auto row = [](const char *title, const QByteArray &bytes, Family family,
                        bool certain = true) {
        QTest::newRow(title) << bytes << family << certain;
    };
    row("PMTK start", "$PMTK010,001*2E\r\n", Family::Pmtk);
    row("PMTK release", "$PMTK705,AXN_5.1.6_3333_18060500,0001,Quectel-L76B,1.0*53\r\n",
        Family::Pmtk);
    row("PAIR acknowledgement", Dialect::sentence("PAIR001,004,0"), Family::Pair);
    row("PAIR version", Dialect::sentence("PAIR021,AG3335M_V2.5.0.AG3335.QT_V1_20230213,D,N"),
        Family::Pair);
    row("PQTM of any module", Dialect::sentence("PQTMEPE,2,1,2,3,4,5"), Family::Pqtm, false);
    row("PQTM version", "$PQTMVERNO,LG290P03AANR01A03S,2024/04/30,10:53:07*18\r\n", Family::Pqtm);
    row("PQTM version without its text", Dialect::sentence("PQTMVERNO,"), Family::Pqtm, false);
    row("PQTM version of a module with Airoha's chip",
        Dialect::sentence("PQTMVERNO,LC29HAANR01A04S,2022/07/26,10:00:00"), Family::Pair);
    row("u-blox banner", Dialect::sentence("GPTXT,01,01,02,u-blox ag - www.u-blox.com"),
        Family::Ubx);
    row("u-blox sentence", Dialect::sentence("PUBX,00,081350.00"), Family::Ubx);
    row("u-blox frame",
        "noise" + binaryFrameBytes({tBinaryFrame::Maker::Ublox, 5, 1, "\x06\x04"}) + "$GP",
        Family::Ubx);
    row("u-blox frame of the class that has the version",
        binaryFrameBytes({tBinaryFrame::Maker::Ublox, 0x0a, 0x09, {}}), Family::Ubx);
    row("CASIC banner", Dialect::sentence("GPTXT,01,01,02,MA=CASIC"), Family::Casic);
    row("CASIC version", "$GPTXT,01,01,02,SW=URANUS5,V5.2.1.0*1D\r\n", Family::Casic);
    // An acknowledgement as the maker's manual prints it.
    row("Allystar acknowledgement", QByteArray::fromHex("F1D90501020006404E77"), Family::Allystar);
    row("UFirebird product",
        "$PDTINFO,UC6580I-00,G1B1L1E1,V00,R6.1.1.1Build9074,2400615000514,20250427080308004*4D\r\n",
        Family::Unicore);
    row("UM98x version",
        "#VERSIONA,COM1,0,80.0,FINE,2400,123459.000,0,0,18,0;\"UM982\",\"R4.10\"*23abc4dc\r\n",
        Family::Unicore);
    row("UB version", "#VERSIONA,COM1,0,80.0;\"UB4B0\",\"R3.00\"*23abc4dc\r\n", Family::Unicore);
    // Both lines of an answer as drivers of a UM980 quote it; its checksum counts the $ too.
    row("UM98x response", "$command,VERSION,response: OK*04\r\n", Family::Unicore);
    row("UM98x version without quotes",
        "#VERSION,92,GPS,FINE,2289,167126600,0,0,18,155;UM980,R4.10Build7923,HRPT00-S10C-P,"
        "2310415000001-MD22B1224961040,ff3bd496fd7ca68b,2022/09/28*45d62771\r\n",
        Family::Unicore);
    row("SiRF version", Dialect::sentence("PSRF195,GSD4e_4.1.2-P1"), Family::Sirf);
}

void TestFamilyFinder::tellsTheFamily()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Family, family);
    QFETCH(bool, certain);
    for (const int piece : {1, 7, 1000}) {
        FamilyFinder finder;
        for (int at = 0; at < bytes.size(); at += piece)
            finder.feed(bytes.mid(at, piece));
        QVERIFY2(finder.found(), qPrintable(QString::number(piece)));
        QCOMPARE(*finder.found(), family);
        QCOMPARE(finder.isCertain(), certain);
        QVERIFY(!finder.evidence().isEmpty());
    }
}

void TestFamilyFinder::tellsNoFamilyFrom_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("ordinary sentences") << Dialect::sentence("GNRMC,120000.00,V,,,,,,,010125,,,N") +
                                               Dialect::sentence("GPGSV,1,1,01,05,10,100,30");
    QTest::newRow("wrong checksum") << QByteArray("$PMTK010,001*2F\r\n");
    QTest::newRow("a sentence that is cut off") << QByteArray("$PMTK010,001*2E$GP");
    QTest::newRow("a frame with wrong sums") << QByteArray::fromHex("B56205010200060412340000");
    QTest::newRow("a frame that claims to be endless") << QByteArray::fromHex("B5620501FFFF0604");
    QTest::newRow("another maker's version")
        << QByteArray("#VERSIONA,COM1,0,71.5,FINESTEERING,1362,3.4,0,3681,2291;1,GPSCARD,"
                      "\"L12RV\"*5e8df6e0\r\n");
    QTest::newRow("an answer to a command with a wrong checksum")
        << QByteArray("$command,VERSION,response: OK*05\r\n");
    QTest::newRow("a version without a product")
        << QByteArray("#VERSION,92,GPS,FINE;*45d62771\r\n");
    QTest::newRow("a product without a name") << Dialect::sentence("PDTINFO,");
    QTest::newRow("antenna text") << Dialect::sentence("GPTXT,01,01,01,ANTENNA OPEN");
}

void TestFamilyFinder::tellsNoFamilyFrom()
{
    QFETCH(QByteArray, bytes);
    FamilyFinder finder;
    finder.feed(bytes);
    QVERIFY(!finder.found());
    QVERIFY(!finder.isCertain());
    QVERIFY(finder.evidence().isEmpty());
}

void TestFamilyFinder::learnsTheGenerationOfAUblox()
{
    FamilyFinder eight;
    eight.feed(
        ubxVersion({"FWVER=SPG 3.01", "PROTVER=18.00", "GPS;GLO;GAL;BDS", "SBAS;IMES;QZSS"}));
    QCOMPARE(*eight.found(), Family::Ubx);
    QCOMPARE(eight.details().ubxProtocol, 1800);
    QCOMPARE(eight.details().constellations, unsigned(ConstellationMask::kAll));

    FamilyFinder older;
    older.feed(ubxVersion({"PROTVER 15.00", "GPS;SBAS;GLO"}));
    QCOMPARE(older.details().ubxProtocol, 1500);
    QCOMPARE(older.details().constellations,
             ConstellationMask::kGps | ConstellationMask::kSbas | ConstellationMask::kGlonass);

    FamilyFinder full; // no byte left for the end of the text
    full.feed(ubxVersion({"GPS;GLO;XXXXXXXXXXXXXXXXXX;GAL"}));
    QCOMPARE(full.details().constellations,
             ConstellationMask::kGps | ConstellationMask::kGlonass | ConstellationMask::kGalileo);

    FamilyFinder silent;
    silent.feed(ubxVersion({}));
    QCOMPARE(silent.details().ubxProtocol, 0);
    QCOMPARE(silent.details().constellations, 0U);
}

void TestFamilyFinder::learnsTheProtocolFromTheBanner()
{
    FamilyFinder finder;
    finder.feed(Dialect::sentence("GNTXT,01,01,02,PROTVER=32.01"));
    QCOMPARE(*finder.found(), Family::Ubx);
    QCOMPARE(finder.details().ubxProtocol, 3201);
    for (const char *number : {"nonsense", "0.00", "-1.00", "99.5"}) {
        finder.feed(Dialect::sentence(QByteArray("GNTXT,01,01,02,PROTVER=") + number));
        QCOMPARE(finder.details().ubxProtocol, 3201);
    }
}

void TestFamilyFinder::tellsUnicoresTwoLanguagesApart()
{
    FamilyFinder firebird;
    firebird.feed(Dialect::sentence("PDTINFO,UM220-IV,G1B1,V00"));
    QCOMPARE(firebird.details().unicore, UnicoreKind::Firebird);
    FamilyFinder lines;
    lines.feed("$command,VERSION,response: OK*04\r\n");
    QCOMPARE(lines.details().unicore, UnicoreKind::HighPrecision);
}

void TestFamilyFinder::isNotFooledByItsOwnQuestions()
{
    FamilyFinder finder;
    for (const QByteArray &query : FamilyFinder::queries())
        finder.feed(query);
    QVERIFY(!finder.found());
}

void TestFamilyFinder::keepsWhatIsCertain()
{
    FamilyFinder finder;
    finder.feed(Dialect::sentence("PQTMEPE,2,1,2,3,4,5"));
    QCOMPARE(*finder.found(), Family::Pqtm);
    finder.feed(Dialect::sentence("PAIR001,021,0"));
    QCOMPARE(*finder.found(), Family::Pair);
    finder.feed("$PMTK010,001*2E\r\n");
    QCOMPARE(*finder.found(), Family::Pair);
}

void TestFamilyFinder::asksOnlyForDetailsOfAKnownFamily()
{
    const QVector<QByteArray> all = FamilyFinder::queries();
    for (const char *query : {"$PMTK605*31\r\n", "$PAIR021*39\r\n", "$PQTMVERNO*58\r\n",
                              "$PCAS06,0*1B\r\n", "$PCAS06,1*1A\r\n", "$PSRF125*21\r\n"})
        QVERIFY2(all.contains(query), query);
    QVERIFY(all.contains(QByteArray::fromHex("B5620A0400000E34")));
    QVERIFY(all.contains(QByteArray::fromHex("F1D90A0400000E34")));
    QCOMPARE(FamilyFinder::queries(Family::Ubx),
             QVector<QByteArray>{QByteArray::fromHex("B5620A0400000E34")});
    QCOMPARE(FamilyFinder::queries(Family::Unicore),
             (QVector<QByteArray>{"$PDTINFO\r\n", "VERSION\r\n"}));
    QVERIFY(FamilyFinder::queries(Family::Pmtk).isEmpty());
}

QTEST_GUILESS_MAIN(TestFamilyFinder)
#include "TestFamilyFinder.moc"
