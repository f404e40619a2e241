// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// The reader that judges what the programs make of recordings: small recordings, read by hand.

#include "base/NmeaFraming.h"
#include "support/RecordingReader.h"

#include <QTime>
#include <QtTest>

#include <algorithm>

namespace {

using Lines = QList<QByteArray>;

/// A recording of these sentences, written without their frames.
QByteArray framed(const Lines &bodies)
{
    QByteArray bytes;
    for (const QByteArray &body : bodies)
        bytes += NmeaFraming::sentence(body);
    return bytes;
}

QByteArray gga(const QByteArray &time)
{
    return "GNGGA," + time + ",4800.0000,N,01100.0000,E,1,08,0.9,500.0,M,47.0,M,,";
}

QByteArray gll(const QByteArray &time)
{
    return "GNGLL,4800.0000,N,01100.0000,E," + time + ",A,A";
}

QByteArray rmc(const QByteArray &time)
{
    return "GNRMC," + time + ",A,4800.0000,N,01100.0000,E,0.0,0.0,010125,,,A";
}

/// Satellites, then the fix.
QByteArray withFix(const Lines &satellites)
{
    return framed(satellites + Lines{gga("120000.00"), rmc("120000.00")});
}

/// A whole set of GSV.
Lines sets(const QByteArray &talker, const QByteArrayList &groups)
{
    Lines lines;
    const QByteArray messages = QByteArray::number((groups.size() + 3) / 4);
    for (int i = 0; i < groups.size(); i += 4)
        lines << talker + "GSV," + messages + ',' + QByteArray::number(i / 4 + 1) + ',' +
                     QByteArray::number(groups.size()) + ',' + groups.mid(i, 4).join(',');
    return lines;
}

QString timeOf(const tSourceEpoch &epoch)
{
    return epoch.timeMs ? QTime::fromMSecsSinceStartOfDay(*epoch.timeMs).toString("HHmmss.zzz")
                        : QStringLiteral("-");
}

/// Numbers in rising order, those in use with a star.
QString numbersOf(const tSourceEpoch &epoch)
{
    QMap<int, QString> numbers;
    for (const tSourceSatellite &satellite : epoch.inView)
        numbers[satellite.number] =
            QString::number(satellite.number) + (epoch.used.contains(satellite.number) ? "*" : "");
    return QStringList(numbers.values()).join(' ');
}

QString anglesOf(const tSourceEpoch &epoch)
{
    QStringList all;
    for (const tSourceSatellite &satellite : epoch.inView)
        all << QStringLiteral("%1:%2/%3/%4")
                   .arg(satellite.number)
                   .arg(satellite.elevation)
                   .arg(satellite.azimuth)
                   .arg(satellite.cn0);
    return all.join(' ');
}

template<typename T>
QString optional(const std::optional<T> &value)
{
    return value ? QString::number(*value) : QStringLiteral("-");
}

using Field = QString (*)(const tSourceEpoch &);

const QMap<QString, Field> &fields()
{
    static const QMap<QString, Field> all = {
        {"time", timeOf},
        {"numbers", numbersOf},
        {"angles", anglesOf},
        {"date",
         [](const tSourceEpoch &epoch) {
             return epoch.date.toString(Qt::ISODate);
         }},
        {"position",
         [](const tSourceEpoch &epoch) {
             return optional(epoch.latitude) + ' ' + optional(epoch.longitude);
         }},
        {"fix",
         [](const tSourceEpoch &epoch) {
             return (epoch.valid ? "A " : "V ") + QString::number(epoch.quality);
         }},
        {"altitude",
         [](const tSourceEpoch &epoch) {
             return optional(epoch.altitude);
         }},
        {"DOP",
         [](const tSourceEpoch &epoch) {
             return optional(epoch.pdop) + ' ' + optional(epoch.hdop) + ' ' + optional(epoch.vdop);
         }},
    };
    return all;
}

/// One field of all epochs.
QStringList read(const QByteArray &recording, const QString &field)
{
    QStringList values;
    for (const tSourceEpoch &epoch : RecordingReader::read(recording))
        values << fields()[field](epoch);
    return values;
}

void columns()
{
    QTest::addColumn<QByteArray>("recording");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QStringList>("expected");
}

void compare()
{
    QFETCH(QByteArray, recording);
    QFETCH(QString, field);
    QFETCH(QStringList, expected);
    QCOMPARE(read(recording, field), expected);
}

constexpr auto row = [](const char *name, const QByteArray &recording, const char *field,
                        const QStringList &expected) {
    QTest::newRow(name) << recording << QString::fromLatin1(field) << expected;
};

} // namespace

class TestRecordingReader : public QObject
{
    Q_OBJECT
private slots:
    void numbersSatellitesAsTheDevice_data();
    void numbersSatellitesAsTheDevice();
    void takesOnlySoundSentences_data();
    void takesOnlySoundSentences();
    void findsTheFixes_data();
    void findsTheFixes();
    void readsAFix_data();
    void readsAFix();
    void readsSatellites_data();
    void readsSatellites();
    void readsThoseInUse_data();
    void readsThoseInUse();
    void followsSatellitesFromCycleToCycle_data();
    void followsSatellitesFromCycleToCycle();
    void keepsTheBestOfTooMany();
    void addsCarriageReturnsThatWereNotStored();
    void tellsWhereAFixEnds();
};

void TestRecordingReader::numbersSatellitesAsTheDevice_data()
{
    QTest::addColumn<QByteArray>("talker");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<int>("firstNumber"); // 0: the device has none
    const auto range = [](const char *name, const char *talker, int first, int last, int number) {
        QTest::newRow(name) << QByteArray(talker) << first << last << number;
    };
    range("GPS", "GP", 1, 32, 1);
    range("SBAS", "GP", 33, 64, 33);
    range("GLONASS of talker GP", "GP", 65, 96, 65);
    range("between", "GP", 97, 119, 0);
    range("SBAS by PRN", "GP", 120, 151, 33);
    range("SBAS without room", "GP", 152, 158, 0);
    range("QZSS of talker GP", "GP", 193, 200, 193);
    range("BeiDou of talker GP", "GP", 201, 235, 121);
    range("Galileo of talker GP", "GP", 301, 336, 301);
    range("BeiDou of talker GP, u-blox", "GP", 401, 463, 121);
    range("nothing", "GP", 0, 0, 0);
    range("instruments", "II", 1, 96, 1);
    range("all systems", "GN", 1, 96, 1);
    range("all systems, QZSS", "GN", 193, 200, 193);
    range("GLONASS", "GL", 65, 96, 65);
    range("GLONASS slots", "GL", 1, 32, 65);
    range("GLONASS, no such", "GL", 33, 64, 0);
    range("GLONASS, beyond", "GL", 97, 97, 0);
    range("Galileo", "GA", 1, 36, 301);
    range("Galileo, no such", "GA", 37, 100, 0);
    range("Galileo, Quectel", "GA", 101, 136, 301);
    range("Galileo with offset", "GA", 301, 336, 301);
    range("Galileo, beyond", "GA", 337, 337, 0);
    for (const char *talker : {"GB", "BD", "PQ"}) {
        QTest::addRow("BeiDou %s", talker) << QByteArray(talker) << 1 << 63 << 121;
        QTest::addRow("BeiDou %s, none", talker) << QByteArray(talker) << 64 << 120 << 0;
        QTest::addRow("BeiDou %s of the device", talker) << QByteArray(talker) << 121 << 183 << 121;
        QTest::addRow("BeiDou %s, SkyTraq", talker) << QByteArray(talker) << 203 << 263 << 123;
        QTest::addRow("BeiDou %s, u-blox", talker) << QByteArray(talker) << 401 << 463 << 121;
        QTest::addRow("BeiDou %s, beyond", talker) << QByteArray(talker) << 464 << 464 << 0;
    }
    range("BeiDou of two customs", "GB", 201, 202, 121);
    range("QZSS of talker PQ", "PQ", 193, 200, 193);
    for (const char *talker : {"QZ", "GQ"}) {
        QTest::addRow("QZSS %s", talker) << QByteArray(talker) << 1 << 10 << 193;
        QTest::addRow("QZSS %s, none", talker) << QByteArray(talker) << 11 << 192 << 0;
        QTest::addRow("QZSS %s by PRN", talker) << QByteArray(talker) << 193 << 202 << 193;
        QTest::addRow("QZSS %s, beyond", talker) << QByteArray(talker) << 203 << 203 << 0;
    }
    range("NavIC", "GI", 1, 14, 0);
}

void TestRecordingReader::numbersSatellitesAsTheDevice()
{
    QFETCH(QByteArray, talker);
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(int, firstNumber);
    for (int number = first; number <= last; ++number) {
        const int expected = firstNumber == 0 ? 0 : firstNumber + number - first;
        QCOMPARE(RecordingReader::deviceNumber(talker, number), expected);
    }
}

void TestRecordingReader::takesOnlySoundSentences_data()
{
    columns();
    const QByteArray first = framed({rmc("120000.00")});
    const QByteArray second = framed({rmc("120001.00")});
    const QStringList both = {"120000.000", "120001.000"};
    const QStringList one = {"120000.000"};
    row("both", first + second, "time", both);
    row("line feeds alone", QByteArray(first + second).replace('\r', ""), "time", both);
    row("wrong checksum", first + QByteArray(second).replace("120001", "120002"), "time", one);
    row("cut off at the end", first + "$GNRMC,120001.00,A,4800.0000,N,01100.0000,E,0.", "time",
        one);
    row("cut off, with a line end", first + "$GNRMC,120001.00,A,4800.0000,N\r\n", "time", one);
    row("cut off within the checksum", first + second.left(second.indexOf('*') + 2), "time", one);
    row("two in a line", first.trimmed() + second, "time", both);
    row("something behind the checksum", first.trimmed() + "0,*4E\r\n" + second, "time", both);
    row("begins within another", "$GPGSV,3,1,11,23," + first, "time", one);
    row("binary around",
        QByteArray("\xd3\0\x13$G\xff", 6) + first + QByteArray("\0#\n", 3) + second, "time", both);
    row("comment", "# $" + rmc("115959.00") + "*00\n# " + framed({rmc("115959.00")}) + first,
        "time", one);
    row("proprietary", "$PRMC,120000.00*7A\r\n" + first, "time", one);
    const QByteArray unchecked = '$' + rmc("120000.00") + "\r\n$" + rmc("120001.00") + "\r\n";
    row("none has a checksum", unchecked, "time", both);
    row("none has a checksum, cut off", unchecked + '$' + rmc("120002.00"), "time", both);
    row("a kind without checksum", '$' + gll("120001.00") + "\r\n" + second, "time",
        {"120001.000"});
    row("nothing", "", "time", {});
}

void TestRecordingReader::takesOnlySoundSentences()
{
    compare();
}

void TestRecordingReader::findsTheFixes_data()
{
    columns();
    row("a sentence repeated word for word",
        framed({gga("120000.00"), rmc("120000.00"), gga("120000.00"), gga("120001.00"),
                rmc("120001.00")}),
        "time", {"120000.000", "120001.000"});
    row("repeated after the next has begun",
        framed({gga("120000.00"), rmc("120000.00"), gga("120001.00"), rmc("120000.00"),
                rmc("120001.00")}),
        "time", {"120000.000", "120001.000"});
    row("a GLL at a time of its own",
        framed({rmc("120000.00"), gll("120001.00"), rmc("120002.00")}), "time",
        {"120000.000", "120001.000", "120002.000"});
    row("a rounded time",
        framed({gll("120000.076"), gll("120000.076"), gga("120000.08"), rmc("120000.08"),
                gll("120001.076"), gga("120001.08"), rmc("120001.08")}),
        "time", {"120000.080", "120001.080"});
    row("hundred a second", framed({rmc("120000.00"), rmc("120000.01"), rmc("120000.02")}), "time",
        {"120000.000", "120000.010", "120000.020"});
    row("the time of RMC counts", framed({gga("120000.076"), rmc("120000.08")}), "time",
        {"120000.080"});
    row("the time of GGA before that of GLL", framed({gll("120000.076"), gga("120000.08")}), "time",
        {"120000.080"});
    row("GNS", framed({"GNGNS,120000.00,,,,,NN,0,,,,,", "GNGNS,120001.00,,,,,NN,0,,,,,"}), "time",
        {"120000.000", "120001.000"});
    row("other sentences with a time",
        framed({rmc("120000.00"), "GNZDA,120001.00,01,01,2025,,", "GNGST,120002.00,,,,,,,"}),
        "time", {"120000.000"});
    row("no time yet",
        framed({"GPGGA,,,,,,0,,,,M,,M,,", "GPRMC,,V,,,,,,,,,,N", "GPGGA,,,,,,0,,,,M,,M,,",
                "GPRMC,,V,,,,,,,,,,N"}),
        "time", {"-", "-"});
    row("the first time comes within a cycle",
        framed({"GPGGA,,,,,,0,,,,M,,M,,", "GPRMC,120000.00,V,,,,,,,,,,N"}), "time", {"120000.000"});
    row("no time of day", framed({"GPRMC,250000.00,V,,,,,,,,,,N", "GPRMC,12,V,,,,,,,,,,N"}), "time",
        {"-", "-"});
    row("no such second", framed({"GPRMC,120075.00,V,,,,,,,,,,N"}), "time", {"-"});
    row("leap second", framed({"GPRMC,235960.00,V,,,,,,,,,,N"}), "time", {"235959.999"});
    row("finer than milliseconds", framed({"GPRMC,120000.0005,V,,,,,,,,,,N"}), "time",
        {"120000.001"});
}

void TestRecordingReader::findsTheFixes()
{
    compare();
}

void TestRecordingReader::readsAFix_data()
{
    columns();
    const auto position = [](const char *sentence) {
        return Lines{QByteArray(sentence)};
    };
    row("a coarser position first",
        framed({"GPGLL,4800.01,N,01100.01,E,120000.00,A,A",
                "GNRMC,120000.00,A,4800.0149,N,01100.0151,E,,,010125,,,A"}),
        "position", {"28800149 6600151"});
    row("a finer one first",
        framed({"GPGGA,120000.00,4800.01494,N,01100.01515,E,1,8,1,5,M,,M,,",
                "GNRMC,120000.00,A,4800.0100,N,01100.0100,E,,,010125,,,A"}),
        "position", {"28800149 6600152"});
    row("half up, south and west",
        framed(position("GPGLL,4859.99995,S,01159.99994999,W,120000.00,A,A")), "position",
        {"-29400000 -7199999"});
    row("no minutes behind the point", framed(position("GPGLL,4800,N,01100,E,120000.00,A,A")),
        "position", {"28800000 6600000"});
    row("no position", framed(position("GPGLL,,,,,120000.00,V,N")), "position", {"- -"});
    row("no hemisphere", framed(position("GPGLL,4800.0,,01100.0,E,120000.00,A,A")), "position",
        {"- -"});
    row("position without a fix", framed(position("GPGLL,4800.0,N,01100.0,E,120000.00,V,N")),
        "position", {"28800000 6600000"});

    const Lines dated = {gga("235959.00"), "GPZDA,235959.00,28,02,2025,00,00"};
    row("date only in ZDA", framed(dated), "date", {"2025-02-28"});
    row("ZDA first", framed({"GPZDA,120000.00,28,02,2025,00,00", gga("120000.00")}), "date",
        {"2025-02-28"});
    row("RMC before ZDA", framed({rmc("120000.00"), "GPZDA,120000.00,28,02,2025,00,00"}), "date",
        {"2025-01-01"});
    row("carried on, over midnight",
        framed(dated + Lines{gga("000000.00"), gga("000001.00"), gga("120000.00")}), "date",
        {"2025-02-28", "2025-03-01", "2025-03-01", "2025-03-01"});
    row("told again after midnight", framed({rmc("235959.00"), rmc("000000.00")}), "date",
        {"2025-01-01", "2025-01-01"});
    row("no date", framed({gga("120000.00")}), "date", {""});
    row("no day of a month", framed({"GNRMC,120000.00,V,,,,,,,320125,,,N"}), "date", {""});

    row("status and quality", framed({gga("120000.00"), rmc("120000.00")}), "fix", {"A 1"});
    row("RMC's status, GGA's quality",
        framed({"GPGGA,120000.00,4800.0,N,01100.0,E,6,,,,M,,M,,",
                "GPRMC,120000.00,V,4800.0,N,01100.0,E,,,010125,,,E"}),
        "fix", {"V 6"});
    row("GLL's status", framed({"GPGGA,120000.00,,,,,1,,,,M,,M,,", "GPGLL,,,,,120000.00,V,N"}),
        "fix", {"V 1"});
    row("GGA's quality", framed({"GPGGA,120000.00,,,,,4,,,,M,,M,,"}), "fix", {"A 4"});
    row("GGA without", framed({"GPGGA,120000.00,,,,,0,,,,M,,M,,"}), "fix", {"V 0"});
    row("GNS's modes", framed({"GNGNS,120000.00,,,,,NDA,,,,,,"}), "fix", {"A 2"});
    row("GNS without", framed({"GNGNS,120000.00,,,,,NNN,,,,,,"}), "fix", {"V 0"});
    row("RMC's mode", framed({"GPRMC,120000.00,A,,,,,,,010125,,,F"}), "fix", {"A 5"});
    row("RMC's mode with a status behind", framed({"GPRMC,120000.00,A,,,,,,,010125,,,R,V"}), "fix",
        {"A 4"});
    row("RMC before modes", framed({"GPRMC,120000.00,A,,,,,,,010125,,"}), "fix", {"A 1"});
    row("RMC without", framed({"GPRMC,120000.00,V,,,,,,,010125,,,N"}), "fix", {"V 0"});

    const QByteArray high = "GPGGA,120000.00,,,,,1,,,500.04,M,,M,,";
    row("altitude to its last digit", framed({high}), "altitude", {"500.04"});
    row("altitude of GNS", framed({"GNGNS,120000.00,,,,,AA,,,-12.345,,,"}), "altitude",
        {"-12.345"});
    row("altitude of GGA before GNS's", framed({"GNGNS,120000.00,,,,,AA,,,7.5,,,", high}),
        "altitude", {"500.04"});
    row("no altitude", framed({rmc("120000.00")}), "altitude", {"-"});

    const auto dop = [](const QByteArray &values) {
        return withFix({"GPGSA,A,3,05,,,,,,,,,,,," + values});
    };
    row("DOP", dop("1.5,0.94,1.165"), "DOP", {"1.5 0.94 1.165"});
    row("DOP above 99.99", dop("200.1,176.0,95.2"), "DOP", {"200.1 176 95.2"});
    row("DOP empty", dop(",,"), "DOP", {"- - -"});
    row("DOP of the latest",
        framed({gga("120000.00"), "GPGSA,A,3,5,,,,,,,,,,,,2.0,1.0,3.0", rmc("120000.00"),
                rmc("120001.00")}),
        "DOP", {"2 1 3", "2 1 3"});
    row("DOP is lost",
        framed({gga("120000.00"), "GPGSA,A,3,5,,,,,,,,,,,,2.0,1.0,3.0", rmc("120000.00"),
                gga("120001.00"), "GPGSA,A,1,,,,,,,,,,,,,,,", rmc("120001.00")}),
        "DOP", {"2 1 3", "- - -"});
    row("DOP of the GSA that has it",
        withFix({"GPGSA,A,3,5,,,,,,,,,,,,2.0,1.0,3.0", "GLGSA,A,1,,,,,,,,,,,,,,,"}), "DOP",
        {"2 1 3"});
}

void TestRecordingReader::readsAFix()
{
    compare();
}

void TestRecordingReader::readsSatellites_data()
{
    columns();
    row("BeiDou above 37", withFix({"GBGSV,1,1,02,36,40,100,40,42,50,200,42,1"}), "angles",
        {"162:50/200/42 156:40/100/40"});
    row("a number with an offset", withFix({"GAGSV,1,1,01,102,30,030,33,1"}), "numbers", {"302"});
    row("GLONASS above 88", withFix({"GLGSV,1,1,01,89,20,020,31,1"}), "numbers", {"89"});
    row("talker II", withFix({"IIGSV,1,1,01,05,40,100,40"}), "numbers", {"5"});
    row("QZSS number 8", withFix({"GQGSV,1,1,01,08,40,100,40,1"}), "numbers", {"200"});
    row("no room for NavIC", withFix({"GIGSV,1,1,01,08,40,100,40,1"}), "numbers", {""});
    row("C/N0 with decimals", withFix({"GPGSV,1,1,01,05,40.9,100.9,40.5"}), "angles",
        {"5:40/100/40"});
    row("nothing known", withFix({"GPGSV,1,1,01,05,,,"}), "angles", {"5:0/0/0"});
    row("last group without C/N0", withFix({"GPGSV,1,1,02,05,40,100,40,07,41,101"}), "angles",
        {"5:40/100/40 7:41/101/0"});
    row("empty groups", withFix({"GPGSV,1,1,01,05,40,100,40,,,,,,,,,,,,"}), "angles",
        {"5:40/100/40"});
    row("the strongest signal",
        withFix(
            {"GPGSV,1,1,02,05,40,100,30,07,41,101,38,1", "GPGSV,1,1,02,05,40,100,35,07,41,101,,6"}),
        "angles", {"7:41/101/38 5:40/100/35"});
    row("angles of the signal that has them",
        withFix({"GPGSV,1,1,01,05,,,30,1", "GPGSV,1,1,01,05,40,100,20,6"}), "angles",
        {"5:40/100/30"});
    row("two sets at once",
        withFix({"GPGSV,2,1,02,05,40,100,40", "GLGSV,2,1,02,65,40,100,40",
                 "GPGSV,2,2,02,07,41,101,41", "GLGSV,2,2,02,66,41,101,41"}),
        "numbers", {"5 7 65 66"});
    row("sentence of a set repeated",
        withFix({"GPGSV,2,1,02,05,40,100,40", "GPGSV,2,1,02,05,40,100,40",
                 "GPGSV,2,2,02,07,41,101,41"}),
        "numbers", {"5 7"});
    row("set without its first",
        withFix({"GPGSV,2,2,02,07,41,101,41", "GLGSV,1,1,01,65,40,100,40"}), "numbers", {"65"});
    row("set without its last", withFix({"GPGSV,2,1,02,07,41,101,41", "GLGSV,1,1,01,65,40,100,40"}),
        "numbers", {"65"});
    row("set without its middle",
        withFix({"GPGSV,3,1,03,05,41,101,41", "GPGSV,3,3,03,08,41,101,41",
                 "GLGSV,1,1,01,65,40,100,40"}),
        "numbers", {"65"});
    row("one signal's set is broken",
        withFix({"GPGSV,2,1,02,05,41,101,41,1", "GPGSV,1,1,01,05,41,101,30,6",
                 "GLGSV,1,1,01,65,40,100,40"}),
        "numbers", {"65"});
    row("begins within a set, before an old time",
        framed({"GPGSV,2,2,02,07,41,101,41", gll("115959.00"), gga("120000.00"),
                "GPGSV,1,1,01,05,40,100,40", gll("120000.00")}),
        "numbers", {"", "5"});
    row("after the fix",
        framed({gga("120000.00"), rmc("120000.00"), "GPGSV,1,1,01,05,40,100,40", gga("120001.00"),
                rmc("120001.00"), "GPGSV,1,1,01,07,40,100,40"}),
        "numbers", {"5", "7"});
    row("before the fix",
        framed({"GPGSV,1,1,01,05,40,100,40", gga("120000.00"), rmc("120000.00"),
                "GPGSV,1,1,01,07,40,100,40", gga("120001.00"), rmc("120001.00")}),
        "numbers", {"5", "7"});
    row("within the fix, and the recording begins there",
        framed({"GPGSV,1,1,01,03,40,100,40", rmc("120000.00"), gga("120001.00"),
                "GPGSV,1,1,01,05,40,100,40", rmc("120001.00"), gga("120002.00")}),
        "numbers", {"3", "5", "5"});
    row("where the fix has lost its end",
        framed({gga("120000.00"), "GPGSV,1,1,01,03,40,100,40", rmc("120000.00"), gga("120001.00"),
                "GPGSV,1,1,01,05,40,100,40", gga("120002.00"), "GPGSV,1,1,01,07,40,100,40",
                rmc("120002.00")}),
        "numbers", {"3", "5", "7"});
    row("where the fix has lost its beginning",
        framed({gga("120000.00"), "GPGSV,1,1,01,03,40,100,40", rmc("120000.00"),
                "GPGSV,1,1,01,05,40,100,40", rmc("120001.00"), gga("120002.00"),
                "GPGSV,1,1,01,07,40,100,40", rmc("120002.00")}),
        "numbers", {"3", "5", "7"});
    row("GSA where the fix has lost its beginning",
        framed({rmc("120000.00"), "GPGSV,1,1,02,05,40,100,40,07,40,100,40", gga("120000.00"),
                "GPGSA,A,3,05,,,,,,,,,,,,,,", gll("120000.00"), "GPGSA,A,3,07,,,,,,,,,,,,,,",
                gll("120001.00")}),
        "numbers", {"5* 7", "5 7*"});
    row("another sentence with the time stands between",
        framed({"GPGSV,1,1,01,01,40,100,40", "GNZDA,120000.00,01,01,2025,,", rmc("120000.00"),
                "GPGSV,1,1,01,03,40,100,40", "GNZDA,120001.00,01,01,2025,,", rmc("120001.00"),
                "GPGSV,1,1,01,05,40,100,40"}),
        "numbers", {"3", "5"});
}

void TestRecordingReader::readsSatellites()
{
    compare();
}

void TestRecordingReader::readsThoseInUse_data()
{
    columns();
    const QByteArray gps = "GPGSV,1,1,02,05,40,100,40,10,41,101,41";
    const QByteArray galileo = "GAGSV,1,1,02,05,40,100,40,12,41,101,41";
    const auto gsa = [](const char *talker, const char *number, const char *id = "") {
        return talker + QByteArray("GSA,A,3,") + number + ",,,,,,,,,,,,1.5,0.9,1.2" + id;
    };
    row("the system id decides", withFix({gps, galileo, gsa("GP", "05", ",3")}), "numbers",
        {"5 10 305* 312"});
    row("GPS by its id", withFix({gps, galileo, gsa("GN", "05", ",1")}), "numbers",
        {"5* 10 305 312"});
    row("the talker decides", withFix({gps, galileo, gsa("GA", "05")}), "numbers",
        {"5 10 305* 312"});
    row("the others by id",
        withFix({"GLGSV,1,1,01,70,40,100,40", "GBGSV,1,1,01,19,40,100,40",
                 "GQGSV,1,1,01,03,40,100,40", gsa("GN", "70", ",2"), gsa("GN", "19", ",4"),
                 gsa("GN", "03", ",5"), gsa("GN", "03", ",6")}),
        "numbers", {"70* 139* 195*"});
    row("several of talker GP",
        withFix({"GPGSV,1,1,01,10,40,100,40", "GAGSV,1,1,01,12,40,100,40", gsa("GP", "10"),
                 gsa("GP", "12")}),
        "numbers", {"10* 312*"});
    row("several of talker GP, both fit", withFix({gps, galileo, gsa("GP", "05"), gsa("GP", "12")}),
        "numbers", {"5* 10 305 312*"});
    row("one of talker GP",
        withFix({"GPGSV,1,1,01,10,40,100,40", "GAGSV,1,1,01,12,40,100,40", gsa("GP", "12")}),
        "numbers", {"10 312"});
    row("one of talker GP, repeated",
        withFix({"GPGSV,1,1,01,10,40,100,40", "GAGSV,1,1,01,12,40,100,40", gsa("GP", "12"),
                 gsa("GP", "12")}),
        "numbers", {"10 312"});
    row("talker GN without id",
        withFix({"GPGSV,1,1,01,10,40,100,40", "GLGSV,1,1,01,70,40,100,40",
                 "QZGSV,1,1,01,193,40,100,40", gsa("GN", "10"), gsa("GN", "70"), gsa("GN", "193")}),
        "numbers", {"10* 70* 193*"});
    row("not in view", withFix({gps, gsa("GP", "06")}), "numbers", {"5 10"});
    row("without a fix", withFix({gps, "GPGSA,A,1,05,,,,,,,,,,,,,,"}), "numbers", {"5* 10"});
}

void TestRecordingReader::readsThoseInUse()
{
    compare();
}

void TestRecordingReader::followsSatellitesFromCycleToCycle_data()
{
    columns();
    // Each cycle has its sentences between GGA and RMC.
    const auto cycles = [](const QList<Lines> &all) {
        Lines lines;
        int second = 0;
        for (const Lines &cycle : all) {
            const QByteArray time = QByteArray::number(120000 + second++);
            lines << gga(time) << cycle << rmc(time);
        }
        return framed(lines);
    };
    const QByteArray both = "GPGSV,1,1,02,05,40,100,40,07,41,101,41";
    const QByteArray five = "GPGSA,A,3,05,,,,,,,,,,,,1.5,0.9,1.2";
    const QByteArray seven = "GPGSA,A,3,07,,,,,,,,,,,,1.5,0.9,1.2";
    const QByteArray gps = "GPGSV,1,1,01,05,40,100,40";
    const QByteArray galileo = "GAGSV,1,1,01,01,40,100,40";
    const QByteArray glonass = "GLGSV,1,1,01,65,40,100,40";
    row("GSA without GSV", cycles({{both, five}, {seven}}), "numbers", {"5* 7", "5 7*"});
    row("GSV without GSA", cycles({{both, five}, {both}}), "numbers", {"5* 7", "5* 7"});
    row("neither", cycles({{both, five}, {}}), "numbers", {"5* 7", "5* 7"});
    row("a GSA that has none", cycles({{both, five}, {"GPGSA,A,1,,,,,,,,,,,,,,,"}}), "numbers",
        {"5* 7", "5 7"});
    row("in turns", cycles({{gps}, {galileo}, {gps}, {galileo}}), "numbers",
        {"5", "5 301", "5 301", "5 301"});
    row("in turns, with GSA",
        cycles({{gps, five},
                {galileo, "GAGSA,A,3,01,,,,,,,,,,,,,,"},
                {gps, five},
                {galileo, "GAGSA,A,3,01,,,,,,,,,,,,,,"}}),
        "numbers", {"5*", "5* 301*", "5* 301*", "5* 301*"});
    row("one ends", cycles({{gps, glonass}, {gps, glonass}, {gps}, {gps}}), "numbers",
        {"5 65", "5 65", "5 65", "5"});
    row("one ends and comes back",
        cycles({{gps, glonass}, {gps, glonass}, {gps, glonass}, {gps}, {gps}, {gps, glonass}}),
        "numbers", {"5 65", "5 65", "5 65", "5 65", "5", "5 65"});
    row("one of those in turns ends",
        cycles({{gps}, {galileo}, {gps}, {galileo}, {gps}, {gps}, {gps}, {gps}}), "numbers",
        {"5", "5 301", "5 301", "5 301", "5 301", "5 301", "5 301", "5"});
    row("one reported now and then",
        cycles({{gps, glonass}, {gps}, {gps}, {gps, glonass}, {gps}, {gps}}), "numbers",
        {"5 65", "5 65", "5 65", "5 65", "5 65", "5 65"});
    row("all only now and then", cycles({{gps, glonass}, {}, {}, {}, {}, {}, {gps, glonass}}),
        "numbers", {"5 65", "5 65", "5 65", "5 65", "5 65", "5 65", "5 65"});
    row("a broken set leaves the one before",
        cycles({{gps, glonass}, {"GPGSV,2,1,02,07,40,100,40", glonass}}), "numbers",
        {"5 65", "5 65"});
    row("a set without its first leaves the one before",
        cycles({{gps, glonass}, {"GPGSV,2,2,02,07,40,100,40", glonass}}), "numbers",
        {"5 65", "5 65"});
    row("a set begun anew leaves the one before",
        cycles({{gps},
                {"GPGSV,2,1,02,07,40,100,40", "GPGSV,2,1,02,08,40,100,40",
                 "GPGSV,2,2,02,09,40,100,40"}}),
        "numbers", {"5", "5"});
    row("a set of parts of two leaves the one before",
        cycles({{gps}, {"GPGSV,3,1,03,07,40,100,40", "GPGSV,2,2,03,08,40,100,40"}}), "numbers",
        {"5", "5"});
    row("two talkers of one system",
        cycles({{"BDGSV,1,1,01,01,40,100,40"}, {"GBGSV,1,1,01,02,40,100,40"}}), "numbers",
        {"121", "122"});
    row("none in view any more of one system", cycles({{gps, glonass}, {gps, "GLGSV,1,1,00"}}),
        "numbers", {"5 65", "5"});
    row("none in view any more cannot be shown", cycles({{gps, five}, {"GPGSV,1,1,00", five}}),
        "numbers", {"5*", "5*"});
    row("one system is not used any more",
        cycles({{gps, glonass, five, "GLGSA,A,3,65,,,,,,,,,,,,,,"},
                {gps, glonass, five, "GLGSA,A,3,65,,,,,,,,,,,,,,"},
                {gps, glonass, five}}),
        "numbers", {"5* 65*", "5* 65*", "5* 65"});
}

void TestRecordingReader::followsSatellitesFromCycleToCycle()
{
    compare();
}

void TestRecordingReader::keepsTheBestOfTooMany()
{
    // A weak one that is in use, 28 of GPS, four of GLONASS.
    QByteArrayList all = {"01,05,100,"};
    for (int number = 2; number <= 29; ++number)
        all << QByteArray::number(number) + ",40,100,40";
    const QByteArrayList glonass = {"65,40,100,30", "66,20,100,20", "67,30,100,20", "68,20,100,20"};
    const QByteArray used = "GPGSA,A,3,01,,,,,,,,,,,,1.5,0.9,1.2";
    const auto numbers = [&used](const QByteArrayList &gps, const QByteArrayList &others) {
        const auto epochs =
            RecordingReader::read(withFix(sets("GP", gps) + sets("GL", others) + Lines{used}));
        QVector<int> kept;
        for (const tSourceSatellite &satellite : epochs.value(0).inView)
            kept << satellite.number;
        return kept;
    };
    QCOMPARE(numbers(all, glonass).size(), 32);
    QCOMPARE(numbers(all, glonass).first(), 1);                          // in use
    QCOMPARE(numbers(all, glonass).mid(29), (QVector<int>{65, 67, 66})); // strong, high, first
    QCOMPARE(numbers(all, {}).size(), 29);
    // All alike: the first to come.
    QByteArrayList alike;
    for (int number = 65; number <= 80; ++number)
        alike << QByteArray::number(number) + ",40,100,40";
    const QVector<int> kept = numbers(all, alike);
    QCOMPARE(kept.mid(28), (QVector<int>{29, 65, 66, 67}));
}

void TestRecordingReader::addsCarriageReturnsThatWereNotStored()
{
    QCOMPARE(RecordingReader::asSent("a\nb\n"), QByteArray("a\r\nb\r\n"));
    QCOMPARE(RecordingReader::asSent("a\r\nb\n"), QByteArray("a\r\nb\n"));
}

void TestRecordingReader::tellsWhereAFixEnds()
{
    const QByteArray first = framed({gga("120000.00"), rmc("120000.00")});
    const QByteArray satellites = framed({"GPGSV,1,1,01,05,40,100,40"});
    const auto epochs = RecordingReader::read(first + satellites + framed({rmc("120001.00")}));
    QCOMPARE(epochs.size(), 2);
    QCOMPARE(epochs[0].end, first.size() - 2); // before its line end
}

QTEST_GUILESS_MAIN(TestRecordingReader)
#include "TestRecordingReader.moc"
