// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/families/ReceiverFamily.h"

#include <QtTest>

using namespace ReceiverFamily;
using Kind = tReceiverCommand::Kind;

Q_DECLARE_METATYPE(Family)
Q_DECLARE_METATYPE(Kind)
Q_DECLARE_METATYPE(tDetails)

class TestReceiverFamily : public QObject
{
    Q_OBJECT
private slots:
    void namesEveryFamily();
    void encodesCommands_data();
    void encodesCommands();
    void saysWhatAFamilyCannotDo_data();
    void saysWhatAFamilyCannotDo();
    void encodesConstellations_data();
    void encodesConstellations();
    void refusesConstellations_data();
    void refusesConstellations();
    void namesTheConstellationsThatItLeavesOut();
    void warnsOfWhatARestartBringsAbout();
    void neverSendsAnythingForWhatItCannotDo();
};

namespace {

tDetails ublox(int protocol, unsigned constellations = 0)
{
    return {protocol, constellations, UnicoreKind::Unknown};
}

tDetails unicore(UnicoreKind kind)
{
    return {0, 0, kind};
}

const tDetails kUnknown = {};
const tDetails kLines = unicore(UnicoreKind::HighPrecision);
const tDetails kFirebird = unicore(UnicoreKind::Firebird);

QByteArray joined(const tFamilyCommand &command)
{
    QByteArray all;
    for (const tFrame &frame : command.frames)
        all += frame.bytes;
    return all;
}

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace

void TestReceiverFamily::namesEveryFamily()
{
    QStringList names;
    for (const Family family : all()) {
        names << name(family);
        QVERIFY(parse(name(family)) == family);
    }
    QCOMPARE(names.join(' '),
             QStringLiteral("pmtk pair pqtm ubx casic allystar unicore sirf none"));
    for (const char *other : {"", "auto", "PMTK", "ublox", "pmtk "})
        QVERIFY2(!parse(QString::fromLatin1(other)), other);
}

// The texts as the makers and other programs print them, their checksums included.
void TestReceiverFamily::encodesCommands_data()
{
    QTest::addColumn<Family>("family");
    QTest::addColumn<tDetails>("details");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *title, Family family, const tDetails &details, Kind kind,
                        const QByteArray &expected) {
        QTest::newRow(title) << family << details << kind << expected;
    };
    const auto text = [&row](Family family, const tDetails &details, Kind kind,
                             const char *sentence) {
        row(sentence, family, details, kind, QByteArray(sentence) + "\r\n");
    };
    text(Family::Pmtk, kUnknown, Kind::HotStart, "$PMTK101*32");
    text(Family::Pmtk, kUnknown, Kind::WarmStart, "$PMTK102*31");
    text(Family::Pmtk, kUnknown, Kind::ColdStart, "$PMTK103*30");
    text(Family::Pmtk, kUnknown, Kind::FactoryStart, "$PMTK104*37");
    text(Family::Pmtk, kUnknown, Kind::Stop, "$PMTK161,0*28");
    row("PMTK start", Family::Pmtk, kUnknown, Kind::Start, "\r\n");
    text(Family::Pair, kUnknown, Kind::HotStart, "$PAIR004*3E");
    text(Family::Pair, kUnknown, Kind::WarmStart, "$PAIR005*3F");
    text(Family::Pair, kUnknown, Kind::ColdStart, "$PAIR006*3C");
    text(Family::Pair, kUnknown, Kind::FactoryStart, "$PAIR007*3D");
    text(Family::Pair, kUnknown, Kind::Start, "$PAIR002*38");
    text(Family::Pair, kUnknown, Kind::Stop, "$PAIR003*39");
    text(Family::Pair, kUnknown, Kind::StoreNvm, "$PAIR513*3D");
    text(Family::Pqtm, kUnknown, Kind::HotStart, "$PQTMHOT*4B");
    text(Family::Pqtm, kUnknown, Kind::WarmStart, "$PQTMWARM*11");
    text(Family::Pqtm, kUnknown, Kind::ColdStart, "$PQTMCOLD*1C");
    row("PQTM factory", Family::Pqtm, kUnknown, Kind::FactoryStart,
        "$PQTMRESTOREPAR*13\r\n$PQTMSRR*4B\r\n");
    text(Family::Pqtm, kUnknown, Kind::Start, "$PQTMGNSSSTART*51");
    text(Family::Pqtm, kUnknown, Kind::Stop, "$PQTMGNSSSTOP*09");
    text(Family::Pqtm, kUnknown, Kind::StoreNvm, "$PQTMSAVEPAR*5A");
    row("UBX hot", Family::Ubx, kUnknown, Kind::HotStart, hex("B56206040400000002001068"));
    row("UBX warm", Family::Ubx, kUnknown, Kind::WarmStart, hex("B5620604040001000200116C"));
    row("UBX cold", Family::Ubx, kUnknown, Kind::ColdStart, hex("B56206040400FFFF02000E61"));
    row("UBX factory", Family::Ubx, kUnknown, Kind::FactoryStart,
        hex("B56206090D001F1F0000000000001F1F0000079FDE B56206040400FFFF02000E61"));
    row("UBX start", Family::Ubx, kUnknown, Kind::Start, hex("B56206040400000009001776"));
    row("UBX stop", Family::Ubx, kUnknown, Kind::Stop, hex("B56206040400000008001674"));
    text(Family::Casic, kUnknown, Kind::HotStart, "$PCAS10,0*1C");
    text(Family::Casic, kUnknown, Kind::WarmStart, "$PCAS10,1*1D");
    text(Family::Casic, kUnknown, Kind::ColdStart, "$PCAS10,2*1E");
    text(Family::Casic, kUnknown, Kind::FactoryStart, "$PCAS10,3*1F");
    text(Family::Casic, kUnknown, Kind::StoreNvm, "$PCAS00*01");
    row("Allystar hot", Family::Allystar, kUnknown, Kind::HotStart, hex("F1D906400100034A24"));
    row("Allystar warm", Family::Allystar, kUnknown, Kind::WarmStart, hex("F1D906400100024923"));
    row("Allystar cold", Family::Allystar, kUnknown, Kind::ColdStart, hex("F1D906400100014822"));
    row("Allystar stop", Family::Allystar, kUnknown, Kind::Stop, hex("F1D906400100105731"));
    row("Allystar start", Family::Allystar, kUnknown, Kind::Start, hex("F1D906400100115832"));
    text(Family::Unicore, kLines, Kind::HotStart, "RESET");
    text(Family::Unicore, kLines, Kind::WarmStart, "RESET EPHEM");
    text(Family::Unicore, kLines, Kind::FactoryStart, "FRESET");
    text(Family::Unicore, kLines, Kind::StoreNvm, "SAVECONFIG");
    text(Family::Unicore, kFirebird, Kind::HotStart, "$RESET,0,H00");
    text(Family::Unicore, kFirebird, Kind::WarmStart, "$RESET,0,H01");
    text(Family::Unicore, kFirebird, Kind::ColdStart, "$RESET,0,H85");
    text(Family::Unicore, kFirebird, Kind::Stop, "$RESET,3,H00");
    row("UFirebird start", Family::Unicore, kFirebird, Kind::Start, "$RESET,0,H00\r\n");
    text(Family::Unicore, kFirebird, Kind::StoreNvm, "$CFGSAVE");
    text(Family::Sirf, kUnknown, Kind::HotStart, "$PSRF101,0,0,0,0,0,0,12,1*15");
    text(Family::Sirf, kUnknown, Kind::WarmStart, "$PSRF101,0,0,0,0,0,0,12,2*16");
    text(Family::Sirf, kUnknown, Kind::ColdStart, "$PSRF101,0,0,0,0,0,0,12,4*10");
    text(Family::Sirf, kUnknown, Kind::FactoryStart, "$PSRF101,0,0,0,0,0,0,12,8*1C");
}

void TestReceiverFamily::encodesCommands()
{
    QFETCH(Family, family);
    QFETCH(tDetails, details);
    QFETCH(Kind, kind);
    QFETCH(QByteArray, expected);
    const tFamilyCommand command = encode(family, {kind, 0}, details);
    QVERIFY(command.supported);
    QCOMPARE(joined(command).toHex(), expected.toHex());
    QVERIFY(command.text.startsWith(QStringLiteral("sent ")));
    QVERIFY(!command.text.contains('\n') && !command.text.contains('\r'));
}

void TestReceiverFamily::saysWhatAFamilyCannotDo_data()
{
    QTest::addColumn<Family>("family");
    QTest::addColumn<tDetails>("details");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("expected");
    const auto row = [](Family family, const tDetails &details, Kind kind, const char *expected) {
        QTest::newRow(expected) << family << details << kind << QString::fromLatin1(expected);
    };
    row(Family::Pmtk, kUnknown, Kind::StoreNvm,
        "pmtk: store of the memory is not supported: its memory lives on the backup battery");
    row(Family::Casic, kUnknown, Kind::Stop,
        "casic: stop is not supported: its standby cannot be ended");
    row(Family::Casic, kUnknown, Kind::Start, "casic: start is not supported");
    row(Family::Sirf, kUnknown, Kind::Start, "sirf: start is not supported");
    row(Family::Sirf, kUnknown, Kind::Stop, "sirf: stop is not supported");
    row(Family::Sirf, kUnknown, Kind::StoreNvm, "sirf: store of the memory is not supported");
    row(Family::Sirf, kUnknown, Kind::SelectConstellations,
        "sirf: choice of constellations is not supported");
    row(Family::Unicore, kLines, Kind::ColdStart,
        "unicore: cold start is not supported: what RESET forgets is told in two ways");
    row(Family::Unicore, kLines, Kind::Start, "unicore: start is not supported");
    row(Family::Unicore, kLines, Kind::Stop, "unicore: stop is not supported");
    row(Family::Unicore, kFirebird, Kind::FactoryStart, "unicore: factory start is not supported");
    row(Family::Unicore, kUnknown, Kind::HotStart,
        "unicore: hot start is not supported while the receiver has not told whether it is a "
        "UM98x or a UFirebird");
    row(Family::None, kUnknown, Kind::ColdStart, "none: the receiver's family is not known");
}

void TestReceiverFamily::saysWhatAFamilyCannotDo()
{
    QFETCH(Family, family);
    QFETCH(tDetails, details);
    QFETCH(Kind, kind);
    QFETCH(QString, expected);
    const tFamilyCommand command = encode(family, {kind, ConstellationMask::kDefault}, details);
    QVERIFY(!command.supported);
    QCOMPARE(command.text, expected);
    QVERIFY(command.frames.isEmpty());
}

void TestReceiverFamily::encodesConstellations_data()
{
    using namespace ConstellationMask;
    QTest::addColumn<Family>("family");
    QTest::addColumn<tDetails>("details");
    QTest::addColumn<uint>("mask");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *title, Family family, const tDetails &details, unsigned mask,
                        const QByteArray &expected) {
        QTest::newRow(title) << family << details << mask << expected;
    };
    row("PMTK GPS and GLONASS", Family::Pmtk, kUnknown, kGps | kGlonass,
        "$PMTK353,1,1,0,0,0*2B\r\n");
    row("PMTK GPS and BeiDou", Family::Pmtk, kUnknown, kGps | kBeiDou, "$PMTK353,1,0,0,0,1*2B\r\n");
    row("PAIR all but SBAS", Family::Pair, kUnknown, kDefault | kQzss,
        "$PAIR066,1,1,1,1,1,0*3B\r\n");
    row("PAIR GPS", Family::Pair, kUnknown, kGps, "$PAIR066,1,0,0,0,0,0*3B\r\n");
    row("PQTM the usual four", Family::Pqtm, kUnknown, kDefault,
        "$PQTMCFGCNST,W,1,1,1,1,0,0*2B\r\n$PQTMSAVEPAR*5A\r\n$PQTMHOT*4B\r\n");
    row("CASIC all it has", Family::Casic, kUnknown, kGps | kBeiDou | kGlonass, "$PCAS04,7*1E\r\n");
    row("CASIC BeiDou", Family::Casic, kUnknown, kBeiDou, "$PCAS04,2*1B\r\n");
    // CFG-VALSET: version 0, RAM and battery, six keys.
    row("u-blox 9", Family::Ubx, ublox(2700), kGps | kGalileo | kQzss,
        hex("B562068A220000030000 1F00311001 2000311000 2100311001 2200311000 2400311001 "
            "2500311000 09E3"));
    row("u-blox 10 without GLONASS", Family::Ubx, ublox(3400, kGps | kGalileo), kGps,
        hex("B562068A0E0000030000 1F00311001 2100311000 6429"));
    // CFG-GNSS: version 0, all channels, six blocks of identifier, fewest, most, flags.
    row("u-blox 8", Family::Ubx, ublox(1800), kGps | kGlonass | kSbas,
        hex("B562063E34000000FF06 0008100001000100 0101030001000100 0204080000000100 "
            "0308100000000100 0500030000000100 06080E0001000100 F0C1"));
    row("u-blox 8 with GPS and GLONASS alone", Family::Ubx, ublox(1800, kGps | kGlonass), kGps,
        hex("B562063E14000000FF02 0008100001000100 06080E0000000100 9016"));
    // GPS with its four signals, Galileo with its four.
    row("Allystar", Family::Allystar, kUnknown, kGps | kGalileo, hex("F1D9060C040011077000 9ED5"));
    row("UFirebird", Family::Unicore, kFirebird, kGps | kGalileo, "$CFGSYS,h1001\r\n");
    row("UFirebird GPS", Family::Unicore, kFirebird, kGps, "$CFGSYS,h01\r\n");
    row("UM98x", Family::Unicore, kLines, kGps | kBeiDou,
        "UNMASK GPS\r\nUNMASK BDS\r\nMASK GLO\r\nMASK GAL\r\nMASK QZSS\r\n");
}

void TestReceiverFamily::encodesConstellations()
{
    QFETCH(Family, family);
    QFETCH(tDetails, details);
    QFETCH(uint, mask);
    QFETCH(QByteArray, expected);
    const tFamilyCommand command = encode(family, {Kind::SelectConstellations, mask}, details);
    QVERIFY2(command.supported, qPrintable(command.text));
    const QByteArray bytes = joined(command);
    const bool readable = expected.startsWith('$') || expected.startsWith('U');
    QCOMPARE(readable ? bytes : bytes.toHex(), readable ? expected : expected.toHex());
    QVERIFY(command.text.startsWith(QStringLiteral("sent ")));
}

void TestReceiverFamily::refusesConstellations_data()
{
    using namespace ConstellationMask;
    QTest::addColumn<Family>("family");
    QTest::addColumn<tDetails>("details");
    QTest::addColumn<uint>("mask");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *title, Family family, const tDetails &details, unsigned mask,
                        const char *expected) {
        QTest::newRow(title) << family << details << mask << QString::fromLatin1(expected);
    };
    row("only what it has not", Family::Casic, kUnknown, kGalileo,
        "casic: constellation Galileo is not supported");
    row("two that it has not", Family::Casic, kUnknown, kGalileo | kQzss,
        "casic: constellations Galileo, QZSS are not supported");
    row("none", Family::Pair, kUnknown, 0,
        "pair: a choice without GPS, GLONASS, Galileo and BeiDou is not supported");
    row("only augmentation", Family::Allystar, kUnknown, kSbas | kQzss,
        "allystar: a choice without GPS, GLONASS, Galileo and BeiDou is not supported");
    row("u-blox of unknown generation", Family::Ubx, kUnknown, kGps,
        "ubx: choice of constellations is not supported while the receiver has not told its "
        "protocol version");
    row("u-blox 7", Family::Ubx, ublox(1400), kGps,
        "ubx: choice of constellations is not supported with protocol version 14.00");
    row("between the two ways", Family::Ubx, ublox(2400), kGps,
        "ubx: choice of constellations is not supported with protocol version 24.00");
    row("u-blox 8 with three bands", Family::Ubx, ublox(1800), kDefault,
        "ubx: GLONASS and BeiDou together with GPS or Galileo are not supported by this u-blox 8");
    row("what this u-blox has not", Family::Ubx, ublox(3400, kGps | kGalileo), kGlonass,
        "ubx: constellation GLONASS is not supported");
}

void TestReceiverFamily::refusesConstellations()
{
    QFETCH(Family, family);
    QFETCH(tDetails, details);
    QFETCH(uint, mask);
    QFETCH(QString, expected);
    const tFamilyCommand command = encode(family, {Kind::SelectConstellations, mask}, details);
    QVERIFY(!command.supported);
    QVERIFY(command.frames.isEmpty());
    QCOMPARE(command.text, expected);
}

void TestReceiverFamily::namesTheConstellationsThatItLeavesOut()
{
    const tFamilyCommand command =
        encode(Family::Casic, {Kind::SelectConstellations, ConstellationMask::kDefault});
    QVERIFY(command.supported);
    QCOMPARE(command.text, QStringLiteral("casic: constellation Galileo is not supported; "
                                          "sent $PCAS04,7*1E"));
    QCOMPARE(joined(command), QByteArray("$PCAS04,7*1E\r\n"));
}

void TestReceiverFamily::warnsOfWhatARestartBringsAbout()
{
    QVERIFY(encode(Family::Pmtk, {Kind::FactoryStart, 0}).mayChangeBaud);
    QVERIFY(encode(Family::Casic, {Kind::FactoryStart, 0}).mayChangeBaud);
    QVERIFY(encode(Family::Ubx, {Kind::FactoryStart, 0}).mayChangeBaud);
    QVERIFY(!encode(Family::Pmtk, {Kind::ColdStart, 0}).mayChangeBaud);
    QVERIFY(encode(Family::Allystar, {Kind::FactoryStart, 0}).mayChangeBaud);
    QVERIFY(!encode(Family::Pqtm, {Kind::ColdStart, 0}).mayChangeBaud);
    QVERIFY(encode(Family::Unicore, {Kind::HotStart, 0}, kLines)
                .text.contains(QStringLiteral("sources differ")));
}

void TestReceiverFamily::neverSendsAnythingForWhatItCannotDo()
{
    for (const Family family : all()) {
        for (const tDetails &details :
             {kUnknown, kLines, kFirebird, ublox(1400), ublox(1800), ublox(2700)}) {
            for (int kind = 0; kind <= static_cast<int>(Kind::StoreNvm); ++kind) {
                for (unsigned mask = 0; mask <= ConstellationMask::kAll; ++mask) {
                    const tFamilyCommand command =
                        encode(family, {static_cast<Kind>(kind), mask}, details);
                    QCOMPARE(command.supported, !command.frames.isEmpty());
                    QVERIFY(!command.text.isEmpty());
                    for (const tFrame &frame : command.frames)
                        QVERIFY(!frame.bytes.isEmpty() && frame.pauseMs >= 0);
                }
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestReceiverFamily)
#include "TestReceiverFamily.moc"
