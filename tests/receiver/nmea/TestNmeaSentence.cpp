// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/nmea/NmeaSentence.h"

#include <QtTest>

class TestNmeaSentence : public QObject
{
    Q_OBJECT
private slots:
    void refusesAWrongChecksum_data();
    void refusesAWrongChecksum();
    void readsTimes_data();
    void readsTimes();
    void roundsAngles_data();
    void roundsAngles();
    void takesOnlyFiniteNumbers();
};

namespace {
constexpr int kNothing = -999999999;
} // namespace

void TestNmeaSentence::refusesAWrongChecksum_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("cut");   // right without a line end
    QTest::addColumn<bool>("whole"); // right with a line end
    const auto row = [](const char *name, const char *text, bool cut, bool whole) {
        QTest::newRow(name) << QByteArray(text) << cut << whole;
    };
    row("right", "$GPGSV,3,3,10,03,08,171,,14,06,129,*7D", true, true);
    row("wrong digit", "$GPGSV,3,3,10,03,08,171,,14,06,128,*7D", false, false);
    row("none", "$GPGSV,3,3,10,03,08,171,,14,06,129,", false, true);
    row("half", "$GPGSV,3,3,10,03,08,171,,14,06,129,*7", false, false);
    row("only the star", "$GPGSV,3,3,10,03,08,171,,14,06,129,*", false, false);
    row("no hex", "$GPGSV,3,3,10,03,08,171,,14,06,129,*GG", false, false);
    row("empty", "", false, false);
    row("only the sign", "$", false, false);
    row("nothing before the star", "$*00", false, false);
    row("no address", "$GPG", false, false);
    row("small letters", "$gpgsv,3,3,10,03", false, false);
    row("no field", "$GPGSV", false, false);
}

void TestNmeaSentence::refusesAWrongChecksum()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, cut);
    QFETCH(bool, whole);
    QCOMPARE(Nmea::parse(text, Nmea::LineEnd::Missing).has_value(), cut);
    const auto sentence = Nmea::parse(text, Nmea::LineEnd::Seen);
    QCOMPARE(sentence.has_value(), whole);
    if (whole) {
        QCOMPARE(sentence->talker, QByteArray("GP"));
        QCOMPARE(sentence->type, QByteArray("GSV"));
        QCOMPARE(sentence->field(4), QByteArray("03"));
        QCOMPARE(sentence->field(99), QByteArray());
    }
}

void TestNmeaSentence::readsTimes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("ms");
    QTest::newRow("hundredths") << QByteArray("132819.60") << 48499600;
    QTest::newRow("whole") << QByteArray("000001") << 1000;
    QTest::newRow("thousandths") << QByteArray("074150.799") << 27710799;
    QTest::newRow("rounded up") << QByteArray("000000.9996") << 1000;
    QTest::newRow("rounded down") << QByteArray("000000.99949") << 999;
    QTest::newRow("end of day") << QByteArray("235959.9999") << 86399999;
    QTest::newRow("leap second") << QByteArray("235960.00") << 86399999;
    QTest::newRow("empty") << QByteArray() << kNothing;
    QTest::newRow("short") << QByteArray("12345") << kNothing;
    QTest::newRow("hour") << QByteArray("240000.00") << kNothing;
    QTest::newRow("minute") << QByteArray("006000.00") << kNothing;
    QTest::newRow("letters") << QByteArray("12a456.00") << kNothing;
    QTest::newRow("sign") << QByteArray("-12345.00") << kNothing;
}

void TestNmeaSentence::readsTimes()
{
    QFETCH(QByteArray, text);
    QFETCH(int, ms);
    QCOMPARE(Nmea::timeMs(text).value_or(kNothing), ms);
}

void TestNmeaSentence::roundsAngles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("hemisphere");
    QTest::addColumn<qlonglong>("units");
    const auto row = [](const char *name, const char *text, const char *hemisphere, qint64 units) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(hemisphere)
                            << static_cast<qlonglong>(units);
    };
    row("four decimals", "4807.0380", "N", 48 * 600000 + 70380);
    row("three decimals", "4807.038", "S", -(48 * 600000 + 70380));
    row("exact half goes up", "08338.07785", "W", -(83 * 600000 + 380779));
    row("just below half", "08338.077849", "E", 83 * 600000 + 380778);
    row("eight decimals", "4134.49795459", "N", 41 * 600000 + 344980);
    row("carry into degrees", "4759.99995", "N", 48 * 600000);
    row("no decimals", "4807", "N", 48 * 600000 + 70000);
    row("zero", "0000.0000", "N", 0);
    row("pole", "9000.0000", "N", 90 * 600000);
    row("beyond the pole", "9000.0001", "N", kNothing);
    row("60 minutes", "4760.0000", "N", kNothing);
    row("empty", "", "N", kNothing);
    row("letters", "48o7.0380", "N", kNothing);
    row("negative", "-4807.0380", "N", kNothing);
}

void TestNmeaSentence::roundsAngles()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, hemisphere);
    QFETCH(qlonglong, units);
    QCOMPARE(static_cast<qlonglong>(Nmea::angle(text, hemisphere, 90).value_or(kNothing)), units);
}

void TestNmeaSentence::takesOnlyFiniteNumbers()
{
    QCOMPARE(Nmea::number("-33.4").value_or(0.0), -33.4);
    for (const char *text : {"", "nan", "inf", "-inf", "1e999", "1.2.3", "x"})
        QVERIFY2(!Nmea::number(text), text);
    QCOMPARE(Nmea::integer("007").value_or(0), 7);
    QVERIFY(!Nmea::integer("3.3"));
}

QTEST_GUILESS_MAIN(TestNmeaSentence)
#include "TestNmeaSentence.moc"
