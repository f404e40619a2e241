// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/NmeaFields.h"

#include <QRandomGenerator>
#include <QtTest>

#include <cmath>
#include <limits>
#include <string>

namespace {

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

QByteArray bytes(std::string_view text)
{
    return {text.data(), static_cast<int>(text.size())};
}

/// What Qt reads, with the one rule of our own: what is not finite is 0.
double qtDouble(const QString &text)
{
    const double value = text.toDouble();
    return std::isfinite(value) ? value : 0.0;
}

bool sameDouble(double a, double b)
{
    return a == b && std::signbit(a) == std::signbit(b);
}

/// Compares both readings of one text with Qt's; the text in the message is escaped.
bool readsAsQtDoes(const QByteArray &latin1)
{
    const QString text = QString::fromLatin1(latin1.constData(), latin1.size());
    if (NmeaText::toInt(view(latin1)) == text.toInt() &&
        sameDouble(NmeaText::toDouble(view(latin1)), qtDouble(text)))
        return true;
    qWarning() << "text" << latin1 << "int" << NmeaText::toInt(view(latin1)) << text.toInt()
               << "double" << NmeaText::toDouble(view(latin1)) << qtDouble(text);
    return false;
}

QByteArray randomText(QRandomGenerator &random, const QByteArray &alphabet, int length)
{
    QByteArray text;
    for (int i = 0; i < length; ++i)
        text += alphabet.at(random.bounded(alphabet.size()));
    return text;
}

} // namespace

class TestNmeaFields : public QObject
{
    Q_OBJECT

private slots:
    void splitsAtCommas_data();
    void splitsAtCommas();
    void splitsAsNaiveSplitterDoes();
    void splitsWithinBoundsAtEveryLength();
    void readsMissingElementAsEmptyText();
    void cutsOnlyTheLastFieldAtTheAsterisk_data();
    void cutsOnlyTheLastFieldAtTheAsterisk();
    void keepsAsteriskInRawField();
    void tellsAsciiFromOtherBytes();

    void readsNumbersByQtRules_data();
    void readsNumbersByQtRules();
    void readsEveryShortTextAsQtDoes();
    void readsRandomTextsAsQtDoes();
    void readsPlainDecimalsAsQtDoes();
    void readsFloats_data();
    void readsFloats();

    void cutsLeftAndRight();
    void tellsAsciiAddress();
    void takesTypeAfterTwoLetterTalker_data();
    void takesTypeAfterTwoLetterTalker();
    void convertsCoordinates_data();
    void convertsCoordinates();
    void neverGivesCoordinateThatIsNotFinite();
    void readsUtc_data();
    void readsUtc();
    void readingUtcLeavesValidAlone();
};

void TestNmeaFields::splitsAtCommas_data()
{
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<QList<QByteArray>>("fields");
    using List = QList<QByteArray>;
    QTest::newRow("normal") << QByteArray("$GPGSA,A,3,04*33") << List{"$GPGSA", "A", "3", "04*33"};
    QTest::newRow("keeps empty fields") << QByteArray("$GPGSA,,,x") << List{"$GPGSA", "", "", "x"};
    QTest::newRow("nothing but commas") << QByteArray(",,,") << List{"", "", "", ""};
    QTest::newRow("comma at the end") << QByteArray("$GPGSA,1,") << List{"$GPGSA", "1", ""};
    QTest::newRow("address only") << QByteArray("$GPGSA") << List{"$GPGSA"};
    QTest::newRow("empty") << QByteArray("") << List{""};
    QTest::newRow("comma as last of eight bytes")
        << QByteArray("1234567,9") << List{"1234567", "9"};
    QTest::newRow("comma as first of the next eight")
        << QByteArray("12345678,") << List{"12345678", ""};
    QTest::newRow("byte that is a comma but for its high bit") << QByteArray("12\xac"
                                                                             "45678,\xac")
                                                               << List{"12\xac"
                                                                       "45678",
                                                                       "\xac"};
    QTest::newRow("overlong") << QByteArray(5000, ',')
                              << List::fromVector(QVector<QByteArray>(5001, QByteArray("")));
}

void TestNmeaFields::splitsAtCommas()
{
    QFETCH(QByteArray, sentence);
    QFETCH(QList<QByteArray>, fields);
    const NmeaFields split(view(sentence));
    QCOMPARE(split.count(), fields.size());
    for (int n = 0; n < fields.size(); ++n)
        QCOMPARE(bytes(split.raw(n)), fields.at(n));
}

// Eight bytes at a time must find what one byte at a time finds, wherever the sentence stands.
void TestNmeaFields::splitsAsNaiveSplitterDoes()
{
    QRandomGenerator random(20260101);
    // The comma, its neighbours in value, and both with the high bit set.
    const QByteArray alphabets[] = {",", ",0", QByteArray(",+-\xac\xab\xad\0\x01\x7f\x80\xff", 11),
                                    "0123456789.,,$GPSV*"};
    for (int round = 0; round < 20000; ++round) {
        const QByteArray &alphabet = alphabets[random.bounded(4)];
        const int offset = random.bounded(9);
        const QByteArray storage = randomText(random, alphabet, offset + random.bounded(200));
        const QByteArray sentence = storage.mid(offset);
        const NmeaFields split(view(storage).substr(static_cast<std::size_t>(offset)));

        const QList<QByteArray> naive = sentence.split(',');
        QCOMPARE(split.count(), naive.size());
        for (int n = 0; n < naive.size(); ++n)
            QCOMPARE(bytes(split.raw(n)), naive.at(n));
        QCOMPARE(split.isAscii(),
                 std::none_of(sentence.begin(), sentence.end(), [](char c) { return c & '\x80'; }));
    }
}

// The bytes behind a sentence are another sentence: none of its commas may be seen.
void TestNmeaFields::splitsWithinBoundsAtEveryLength()
{
    for (std::size_t length = 0; length < 64; ++length) {
        const std::string exact(length, 'x');
        QCOMPARE(NmeaFields(exact).count(), 1);
        const std::string followed = exact + ",,,,,,,,";
        QCOMPARE(NmeaFields(std::string_view(followed).substr(0, length)).count(), 1);
    }
}

void TestNmeaFields::readsMissingElementAsEmptyText()
{
    const NmeaFields fields("$GPGGA,1,2*00");
    QCOMPARE(bytes(fields[1]), QByteArray("1"));
    QCOMPARE(bytes(fields[2]), QByteArray("2"));
    QVERIFY(fields[3].empty());
    QVERIFY(fields[17].empty());
    QVERIFY(fields[1000000].empty());
}

void TestNmeaFields::cutsOnlyTheLastFieldAtTheAsterisk_data()
{
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<int>("field");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("last field") << QByteArray("$GPGSA,1,0.99*00") << 2 << QByteArray("0.99");
    QTest::newRow("last field without asterisk")
        << QByteArray("$GPGSA,1,0.99") << 2 << QByteArray("0.99");
    QTest::newRow("last field, asterisk only") << QByteArray("$GPGSA,1,*00") << 2 << QByteArray();
    QTest::newRow("last field, two asterisks")
        << QByteArray("$GPGSA,1,2*3*4") << 2 << QByteArray("2");
    QTest::newRow("last field, cut in two")
        << QByteArray("$GPGSA,1,0.9*") << 2 << QByteArray("0.9");
    QTest::newRow("inner field") << QByteArray("$GPGSA,1*2,3*00") << 1 << QByteArray("1*2");
    QTest::newRow("address as last field") << QByteArray("$GPGSA*00") << 0 << QByteArray("$GPGSA");
}

void TestNmeaFields::cutsOnlyTheLastFieldAtTheAsterisk()
{
    QFETCH(QByteArray, sentence);
    QFETCH(int, field);
    QFETCH(QByteArray, text);
    QCOMPARE(bytes(NmeaFields(view(sentence))[field]), text);
}

void TestNmeaFields::keepsAsteriskInRawField()
{
    QCOMPARE(bytes(NmeaFields("$GPGSV,1,2*7F").raw(2)), QByteArray("2*7F"));
}

void TestNmeaFields::tellsAsciiFromOtherBytes()
{
    for (int at = 0; at < 24; ++at) {
        QByteArray sentence(24, '\x7f');
        QVERIFY(NmeaFields(view(sentence)).isAscii());
        sentence[at] = '\x80';
        QVERIFY2(!NmeaFields(view(sentence)).isAscii(), QByteArray::number(at));
    }
}

void TestNmeaFields::readsNumbersByQtRules_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("integer");
    QTest::addColumn<double>("real");
    const auto row = [](const char *name, const QByteArray &text, int integer, double real) {
        QTest::newRow(name) << text << integer << real;
    };
    row("empty", "", 0, 0.0);
    row("one digit", "7", 7, 7.0);
    row("three digits", "359", 359, 359.0);
    row("leading zeros", "0009", 9, 9.0);
    row("decimals", "47.25", 0, 47.25);
    row("point at the front", ".5", 0, 0.5);
    row("point at the end", "5.", 0, 5.0);
    row("point only", ".", 0, 0.0);
    row("two points", "1.2.3", 0, 0.0);
    row("trailing garbage", "12x", 0, 0.0);
    row("leading garbage", "x12", 0, 0.0);
    row("non-numeric", "NNNN", 0, 0.0);
    row("asterisk", "4*", 0, 0.0);
    row("blank in front", " 12", 12, 12.0);
    row("blank behind", "12 ", 12, 12.0);
    row("tabulator and line feed around", "\t12\n", 12, 12.0);
    row("no-break space in front",
        "\xa0"
        "12",
        12, 12.0);
    row("blank inside", "1 2", 0, 0.0);
    row("blank only", " ", 0, 0.0);
    row("plus sign", "+12", 12, 12.0);
    row("minus sign", "-12", -12, -12.0);
    row("sign only", "-", 0, 0.0);
    row("two signs", "+-1", 0, 0.0);
    row("sign inside", "1-2", 0, 0.0);
    row("exponent", "1e2", 0, 100.0);
    row("exponent, capital", "1E2", 0, 100.0);
    row("exponent with sign", "25e-1", 0, 2.5);
    row("exponent cut in two", "1e", 0, 0.0);
    row("inf", "inf", 0, 0.0);
    row("minus inf", "-inf", 0, 0.0);
    row("nan", "nan", 0, 0.0);
    row("infinity", "infinity", 0, 0.0);
    row("group separator", "1,000", 0, 0.0);
    row("hexadecimal", "0x10", 0, 0.0);
    row("largest int", "2147483647", 2147483647, 2147483647.0);
    row("int overflow", "2147483648", 0, 2147483648.0);
    row("smallest int", "-2147483648", std::numeric_limits<int>::min(), -2147483648.0);
    row("int underflow", "-2147483649", 0, -2147483649.0);
    row("beyond 64 bits", "99999999999999999999", 0, 1e20);
    row("15 digits", "123456789012345", 0, 123456789012345.0);
    row("16 digits", "9007199254740993", 0, 9007199254740992.0);
    row("16 digits with point", "9.007199254740993", 0, 9.007199254740993);
    row("double overflow", "1e400", 0, 0.0);
    row("double underflow", "1e-400", 0, 0.0);
    row("largest double", "1.7976931348623157e308", 0, std::numeric_limits<double>::max());
    row("overlong", QByteArray(5000, '1'), 0, 0.0);
    row("overlong zeros", QByteArray(5000, '0') + '7', 7, 7.0);
}

void TestNmeaFields::readsNumbersByQtRules()
{
    QFETCH(QByteArray, text);
    QFETCH(int, integer);
    QFETCH(double, real);
    QCOMPARE(NmeaText::toInt(view(text)), integer);
    QVERIFY2(NmeaText::toDouble(view(text)) == real,
             QByteArray::number(NmeaText::toDouble(view(text)), 'g', 17));
    QVERIFY(readsAsQtDoes(text));
}

void TestNmeaFields::readsEveryShortTextAsQtDoes()
{
    QVERIFY(readsAsQtDoes(QByteArray()));
    for (int a = 0; a < 256; ++a) {
        QVERIFY(readsAsQtDoes(QByteArray(1, char(a))));
        for (int b = 0; b < 256; ++b)
            QVERIFY(readsAsQtDoes(QByteArray(1, char(a)) + char(b)));
    }
    const QByteArray alphabet = "0159.+-eE nai*x\t";
    for (const char a : alphabet) {
        for (const char b : alphabet) {
            for (const char c : alphabet) {
                for (const char d : alphabet)
                    QVERIFY(readsAsQtDoes(QByteArray(1, a) + b + c + d));
                QVERIFY(readsAsQtDoes(QByteArray(1, a) + b + c));
            }
        }
    }
}

void TestNmeaFields::readsRandomTextsAsQtDoes()
{
    QRandomGenerator random(20260102);
    const QByteArray alphabets[] = {"0123456789", "0123456789.", "0123456789.+-eE",
                                    QByteArray("0123456789.+-eE infatyx,*\t\0\xa0\xb2", 29)};
    for (int round = 0; round < 200000; ++round) {
        const QByteArray &alphabet = alphabets[random.bounded(4)];
        QVERIFY(readsAsQtDoes(randomText(random, alphabet, random.bounded(1, 25))));
    }
}

// The short cut for plain decimals has to round as Qt does in the last bit.
void TestNmeaFields::readsPlainDecimalsAsQtDoes()
{
    QRandomGenerator random(20260103);
    for (int round = 0; round < 200000; ++round) {
        QByteArray text = randomText(random, "0123456789", random.bounded(1, 18));
        if (random.bounded(4) != 0)
            text.insert(random.bounded(text.size() + 1), '.');
        QVERIFY(readsAsQtDoes(text));
    }
}

void TestNmeaFields::readsFloats_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<float>("value");
    QTest::newRow("normal") << QByteArray("0.99") << 0.99F;
    QTest::newRow("empty") << QByteArray() << 0.0F;
    QTest::newRow("non-numeric") << QByteArray("x") << 0.0F;
    QTest::newRow("largest float")
        << QByteArray("3.4028234663852886e38") << std::numeric_limits<float>::max();
    QTest::newRow("too large for a float") << QByteArray("1e39") << 0.0F;
    QTest::newRow("too large for a float, negative") << QByteArray("-1e39") << 0.0F;
    QTest::newRow("too large for a double") << QByteArray("1e309") << 0.0F;
    QTest::newRow("too small for a float") << QByteArray("1e-60") << 0.0F;
}

void TestNmeaFields::readsFloats()
{
    QFETCH(QByteArray, text);
    QFETCH(float, value);
    QVERIFY(NmeaText::toFloat(view(text)) == value);
}

void TestNmeaFields::cutsLeftAndRight()
{
    QCOMPARE(bytes(NmeaText::right("abcdef", 2)), QByteArray("ef"));
    QCOMPARE(bytes(NmeaText::right("ab", 2)), QByteArray("ab"));
    QCOMPARE(bytes(NmeaText::right("a", 2)), QByteArray("a"));
    QVERIFY(NmeaText::right("", 2).empty());
    QCOMPARE(bytes(NmeaText::left("abcdef", 2)), QByteArray("ab"));
    QCOMPARE(bytes(NmeaText::left("a", 2)), QByteArray("a"));
    QVERIFY(NmeaText::left("", 2).empty());
}

void TestNmeaFields::tellsAsciiAddress()
{
    for (int length = 0; length < 12; ++length) {
        QVERIFY(NmeaText::hasAsciiAddress(view(QByteArray(length, '\x7f'))));
        for (int at = 0; at < length; ++at) {
            QByteArray sentence(length, '\x7f');
            sentence[at] = '\x80';
            QCOMPARE(NmeaText::hasAsciiAddress(view(sentence)), at >= 6);
        }
    }
}

void TestNmeaFields::takesTypeAfterTwoLetterTalker_data()
{
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<QByteArray>("type");
    QTest::newRow("normal") << QByteArray("$GPGGA,1") << QByteArray("GGA");
    QTest::newRow("any talker") << QByteArray("$ZZRMC,1") << QByteArray("RMC");
    QTest::newRow("proprietary") << QByteArray("$PPLMG,3") << QByteArray("LMG");
    QTest::newRow("without talker") << QByteArray("$GGA") << QByteArray("GGA");
    QTest::newRow("cut in two") << QByteArray("$GPG") << QByteArray("GPG");
    QTest::newRow("dollar only") << QByteArray("$") << QByteArray("$");
}

void TestNmeaFields::takesTypeAfterTwoLetterTalker()
{
    QFETCH(QByteArray, sentence);
    QTEST(bytes(NmeaText::sentenceType(view(sentence))), "type");
}

void TestNmeaFields::convertsCoordinates_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<double>("degrees");
    QTest::newRow("latitude 4807.0380") << QByteArray("4807.0380") << 7.0380 / 60.0 + 48.0;
    QTest::newRow("longitude 01131.0000") << QByteArray("01131.0000") << 31.0 / 60.0 + 11.0;
    QTest::newRow("three decimals are cut at the wrong place")
        << QByteArray("4807.038") << 807.038 / 60.0 + 4.0;
    QTest::newRow("five decimals are cut at the wrong place")
        << QByteArray("4807.03801") << 7.03801 / 60.0 + 480.0;
    QTest::newRow("empty") << QByteArray() << 0.0;
    QTest::newRow("seven characters: no degrees") << QByteArray("07.0380") << 7.0380 / 60.0;
    QTest::newRow("shorter than seven characters: degrees 0")
        << QByteArray("7.0380") << 7.0380 / 60.0;
    QTest::newRow("one character") << QByteArray("6") << 0.1;
    QTest::newRow("non-numeric") << QByteArray("abcdefghijk") << 0.0;
    QTest::newRow("non-numeric degrees") << QByteArray("xx07.0380") << 7.0380 / 60.0;
    QTest::newRow("non-numeric minutes") << QByteArray("48xx.xxxx") << 48.0;
    QTest::newRow("negative") << QByteArray("-4807.0380") << 7.0380 / 60.0 - 48.0;
    QTest::newRow("overlong") << QByteArray("0000000000004807.0380") << 7.0380 / 60.0 + 48.0;
}

void TestNmeaFields::convertsCoordinates()
{
    QFETCH(QByteArray, text);
    QFETCH(double, degrees);
    QVERIFY2(NmeaText::toDegrees(view(text)) == degrees,
             QByteArray::number(NmeaText::toDegrees(view(text)), 'g', 17));
}

// Both parts can be finite and their sum not.
void TestNmeaFields::neverGivesCoordinateThatIsNotFinite()
{
    QCOMPARE(NmeaText::toDegrees("1.7976931348623157e3089.9e307"), 0.0);
    QCOMPARE(NmeaText::toDegrees("1.7e30809.e307"), 1.7e308 + 9.e307 / 60.0);
}

void TestNmeaFields::readsUtc_data()
{
    QTest::addColumn<QByteArray>("time");
    QTest::addColumn<QByteArray>("date");
    QTest::addColumn<QList<int>>("dateAndTime"); // year, month, day, hour, minute
    QTest::addColumn<double>("second");
    using Parts = QList<int>;
    QTest::newRow("normal") << QByteArray("123519.250") << QByteArray("230394")
                            << Parts{2094, 3, 23, 12, 35} << 19.25;
    QTest::newRow("empty") << QByteArray() << QByteArray() << Parts{2000, 0, 0, 0, 0} << 0.0;
    QTest::newRow("two decimals shift every cut")
        << QByteArray("123519.00") << QByteArray("230326") << Parts{2026, 3, 23, 12, 23} << 519.0;
    QTest::newRow("short time: no fraction")
        << QByteArray("123519") << QByteArray("230326") << Parts{2026, 3, 23, 12, 12} << 123519.0;
    QTest::newRow("short time: one digit")
        << QByteArray("7") << QByteArray("230326") << Parts{2026, 3, 23, 7, 7} << 7.0;
    QTest::newRow("overlong time counts from its end")
        << QByteArray("99123519.250") << QByteArray("230326") << Parts{2026, 3, 23, 12, 35}
        << 19.25;
    QTest::newRow("short date: day and month")
        << QByteArray("123519.250") << QByteArray("2303") << Parts{2003, 3, 23, 12, 35} << 19.25;
    QTest::newRow("short date: three digits")
        << QByteArray("123519.250") << QByteArray("230") << Parts{2030, 30, 23, 12, 35} << 19.25;
    QTest::newRow("short date: one digit")
        << QByteArray("123519.250") << QByteArray("5") << Parts{2005, 5, 5, 12, 35} << 19.25;
    QTest::newRow("overlong date") << QByteArray("123519.250") << QByteArray("23032026")
                                   << Parts{2026, 3, 23, 12, 35} << 19.25;
    QTest::newRow("non-numeric") << QByteArray("hhmmss.sss") << QByteArray("ddmmyy")
                                 << Parts{2000, 0, 0, 0, 0} << 0.0;
    QTest::newRow("negative") << QByteArray("-1-2-3.000") << QByteArray("-4-5-6")
                              << Parts{1994, -5, -4, -1, -2} << -3.0;
}

void TestNmeaFields::readsUtc()
{
    QFETCH(QByteArray, time);
    QFETCH(QByteArray, date);
    QFETCH(QList<int>, dateAndTime);
    tUTCTime utc;
    NmeaText::readUtc(view(time), view(date), utc);
    const QList<int> read = {utc.year, utc.month, utc.day, utc.hour, utc.minute};
    QCOMPARE(read, dateAndTime);
    QTEST(utc.second, "second");
}

void TestNmeaFields::readingUtcLeavesValidAlone()
{
    tUTCTime utc;
    NmeaText::readUtc("123519.250", "230326", utc);
    QVERIFY(!utc.valid);
    utc.valid = true;
    NmeaText::readUtc("", "", utc);
    QVERIFY(utc.valid);
}

QTEST_APPLESS_MAIN(TestNmeaFields)
#include "TestNmeaFields.moc"
