// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/epoch/EpochStream.h"

#include "hostd/Dialect.h"

#include <QtTest>

#include <algorithm>

class TestEpochStream : public QObject
{
    Q_OBJECT
private slots:
    void givesTheSameHoweverTheBytesAreCut();
    void countsBrokenSentences();
    void endsAnEpochAtAPause();
    void beginsAnewAfterTheRest();
    void countsWhatHasNoPlace();
    void showsWhatTheBytesTell_data();
    void showsWhatTheBytesTell();
    void forgetsSatellitesWhenTold();
    void takesAnotherSourceWithoutChecksums();
};

namespace {

QByteArray rmc(int second)
{
    return Dialect::sentence("GPRMC,1200" + QByteArray::number(100 + second).mid(1) +
                             ",A,4807.0380,N,01131.0000,E,,,010125,,");
}

QByteArray spoken(const QVector<tEpoch> &epochs)
{
    QByteArray bytes;
    for (const tEpoch &epoch : epochs) {
        for (const QByteArray &sentence : Dialect::sentences(epoch))
            bytes += sentence;
    }
    return bytes;
}

QByteArray framed(const QList<QByteArray> &bodies)
{
    QByteArray bytes;
    for (const QByteArray &body : bodies)
        bytes += Dialect::sentence(body);
    return bytes;
}

// A cycle's GGA and RMC with a fix, at that second after noon.
QList<QByteArray> fixAt(int second)
{
    const QByteArray time = "1200" + QByteArray::number(100 + second).mid(1) + ".00";
    return {"GNGGA," + time + ",4800.0000,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,",
            "GNRMC," + time + ",A,4800.0000,N,01100.0000,E,0.00,,010125,,,A"};
}

// The fields of the first sentence of that type, the address first.
QList<QByteArray> firstOf(const QVector<QByteArray> &sentences, const char *type)
{
    for (const QByteArray &sentence : sentences) {
        if (sentence.mid(3, 3) == type)
            return sentence.left(sentence.indexOf('*')).split(',');
    }
    return {};
}

QByteArray numbersOf(const QVector<QByteArray> &sentences, const char *type, int first, int step,
                     int end)
{
    QList<QByteArray> numbers;
    for (const QByteArray &sentence : sentences) {
        if (sentence.mid(3, 3) != type)
            continue;
        const QList<QByteArray> fields = sentence.left(sentence.indexOf('*')).split(',');
        for (int n = first; n < std::min(end, fields.size()); n += step) {
            if (!fields[n].isEmpty())
                numbers << QByteArray::number(fields[n].toInt());
        }
    }
    return numbers.join(' ');
}

// What an epoch looks like to the viewer, one word for each thing.
using Look = QByteArray (*)(const QVector<QByteArray> &);

QByteArray inView(const QVector<QByteArray> &sentences)
{
    return numbersOf(sentences, "GSV", 4, 4, 1000);
}

QByteArray inUse(const QVector<QByteArray> &sentences)
{
    return numbersOf(sentences, "GSA", 3, 1, 15);
}

QByteArray viewAndUse(const QVector<QByteArray> &sentences)
{
    return inView(sentences) + '/' + inUse(sentences);
}

QByteArray strengths(const QVector<QByteArray> &sentences)
{
    return numbersOf(sentences, "GSV", 7, 4, 1000);
}

QByteArray timeOf(const QVector<QByteArray> &sentences)
{
    return firstOf(sentences, "RMC").value(1);
}

QByteArray dateOf(const QVector<QByteArray> &sentences)
{
    return firstOf(sentences, "RMC").value(9);
}

QByteArray statusOf(const QVector<QByteArray> &sentences)
{
    return firstOf(sentences, "RMC").value(2);
}

QByteArray modesOf(const QVector<QByteArray> &sentences)
{
    return firstOf(sentences, "GNS").value(6);
}

QByteArray timeAndView(const QVector<QByteArray> &sentences)
{
    return timeOf(sentences) + ' ' + inView(sentences);
}

QByteArray latitudeOf(const QVector<QByteArray> &sentences)
{
    return firstOf(sentences, "GGA").value(2) + ' ' + firstOf(sentences, "RMC").value(3);
}

QByteArray altitudeOf(const QVector<QByteArray> &sentences)
{
    return firstOf(sentences, "GGA").value(9);
}

QByteArray dopsOf(const QVector<QByteArray> &sentences)
{
    return firstOf(sentences, "GGA").value(8) + ' ' + firstOf(sentences, "GSA").mid(15).join(' ');
}

} // namespace

void TestEpochStream::givesTheSameHoweverTheBytesAreCut()
{
    QByteArray bytes = "half,a,sentence*00\r\n";
    for (int second = 0; second < 5; ++second)
        bytes += rmc(second) + Dialect::sentence("GPGSV,1,1,01,05,10,100,30") +
                 Dialect::sentence("GPVTG,,T,,M,,N,,K") + QByteArray("\xd3\x00\x01$\x02", 5);
    QByteArray expected;
    for (const int piece : {10000, 1, 2, 13}) {
        EpochStream stream;
        QVector<tEpoch> epochs;
        for (int at = 0; at < bytes.size(); at += piece)
            epochs += stream.feed(bytes.mid(at, piece));
        epochs += stream.takeRest();
        QCOMPARE(epochs.size(), 5);
        QCOMPARE(stream.brokenSentences(), static_cast<qint64>(0));
        if (expected.isEmpty())
            expected = spoken(epochs);
        QCOMPARE(spoken(epochs), expected);
    }
}

void TestEpochStream::countsBrokenSentences()
{
    EpochStream stream;
    QByteArray wrong = rmc(1);
    wrong[12] = '9';
    stream.feed(rmc(0) + wrong + "$GPGSV,1,1,0" + rmc(2) + "$1,2*00\r\n");
    QCOMPARE(stream.brokenSentences(), static_cast<qint64>(2));
}

void TestEpochStream::endsAnEpochAtAPause()
{
    EpochStream stream;
    QVERIFY(stream.feed(rmc(0)).isEmpty());
    QVERIFY(stream.isOpen());
    const auto epoch = stream.pause();
    QVERIFY(epoch);
    QCOMPARE(*epoch->timeMs, 43200000);
    QVERIFY(!stream.isOpen());
    // Half a sentence is kept over a pause.
    stream.feed(rmc(1).left(20));
    QVERIFY(!stream.pause());
    stream.feed(rmc(1).mid(20));
    QVERIFY(stream.pause());
}

void TestEpochStream::beginsAnewAfterTheRest()
{
    EpochStream stream;
    stream.feed(rmc(0) + rmc(1).left(20));
    QCOMPARE(stream.takeRest().size(), 1);
    QVERIFY(!stream.isOpen());
    stream.feed(rmc(0));
    QCOMPARE(stream.takeRest().size(), 1);
}

void TestEpochStream::countsWhatHasNoPlace()
{
    EpochStream stream;
    stream.feed(Dialect::sentence("PGRMC,A,220.5") +
                Dialect::sentence("GIGSV,1,1,02,03,10,100,30,05,10,100,30"));
    stream.takeRest();
    QCOMPARE(stream.leftOutSentences(), static_cast<qint64>(1));
    QCOMPARE(stream.unnumberedSatellites(), 2);
}

void TestEpochStream::showsWhatTheBytesTell_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<void *>("look");
    QTest::addColumn<QList<QByteArray>>("expected"); // of each epoch
    const auto raw = [](const char *title, const QByteArray &bytes, Look look,
                        const QList<QByteArray> &expected) {
        QTest::newRow(title) << bytes << reinterpret_cast<void *>(look) << expected;
    };
    const auto row = [&raw](const char *title, const QList<QByteArray> &bodies, Look look,
                            const QList<QByteArray> &expected) {
        raw(title, framed(bodies), look, expected);
    };
    const QList<QByteArray> fix = fixAt(0);
    const QByteArray gga = fix[0];
    const QByteArray rmc = fix[1];
    const QByteArray gp5 = "GPGSV,1,1,01,05,40,100,40";
    const QByteArray gp7 = "GPGSV,1,1,01,07,40,100,40";
    const QByteArray ga1 = "GAGSV,1,1,01,01,30,030,33";
    const QByteArray use5 = "GPGSA,A,3,05,,,,,,,,,,,,2.0,1.0,1.7";

    // Whose a satellite is.
    const QList<QByteArray> both5 = {gga, gp5, "GAGSV,1,1,01,05,30,030,33"};
    row("the system of a GSA stands above its talker",
        both5 + QList<QByteArray>{"GPGSA,A,3,05,,,,,,,,,,,,2.0,1.0,1.7,3", rmc}, inUse, {"305"});
    row("the talker of a GSA without a system counts",
        both5 + QList<QByteArray>{"GAGSA,A,3,05,,,,,,,,,,,,2.0,1.0,1.7", rmc}, inUse, {"305"});
    row("BeiDou above 37", {gga, "GBGSV,1,1,02,36,40,100,40,42,50,200,42,1", rmc}, inView,
        {"156 162"});
    row("BeiDou up to 63", {gga, "GBGSV,1,1,02,63,40,100,40,64,50,200,42,1", rmc}, inView, {"183"});
    row("Galileo from 101", {gga, "GAGSV,1,1,01,102,30,030,33,1", rmc}, inView, {"302"});
    row("BeiDou from 201 up to 263", {gga, "GBGSV,1,1,02,201,40,100,40,263,50,200,42", rmc}, inView,
        {"121 183"});
    row("BeiDou from 401 among the others", {gga, "GPGSV,1,1,02,402,40,100,40,05,50,200,42", rmc},
        inView, {"5 122"});
    row("GLONASS above 88", {gga, "GLGSV,1,1,02,89,20,020,31,96,20,020,31,1", rmc}, inView,
        {"89 96"});
    row("SBAS among GLONASS", {gga, "GLGSV,1,1,02,38,20,020,31,70,20,020,31", rmc}, inView,
        {"38 70"});
    row("QZSS by number in its system", {gga, "GQGSV,1,1,02,08,20,020,31,10,20,020,31", rmc},
        inView, {"200 202"});
    row("an integrated instrument", {gga, "IIGSV,1,1,01,05,40,100,40", rmc}, inView, {"5"});
    row("an integrated instrument's GSA", {gga, gp5, "INGSA,A,3,05,,,,,,,,,,,,2.0,1.0,1.7", rmc},
        inUse, {"5"});
    const QList<QByteArray> gp10ga12 = {gga, "GPGSV,1,1,01,10,40,100,40",
                                        "GAGSV,1,1,01,12,30,030,33"};
    row("of several plain GSAs, what is in view decides",
        gp10ga12 + QList<QByteArray>{"GPGSA,A,3,10,,,,,,,,,,,,2.0,1.0,1.7",
                                     "GPGSA,A,3,12,,,,,,,,,,,,2.0,1.0,1.7", rmc},
        inUse, {"10 312"});
    row("a GSA for all systems without one",
        gp10ga12 + QList<QByteArray>{"GNGSA,A,3,10,12,,,,,,,,,,,2.0,1.0,1.7", rmc}, inUse,
        {"10 312"});
    row("the second GSA of satellites that both systems have is the second system's",
        {gga, "GPGSV,1,1,03,10,40,100,40,12,40,100,40,15,40,100,40",
         "GAGSV,1,1,02,10,30,030,33,12,30,030,33", "GNGSA,A,3,10,12,15,,,,,,,,,,2.0,1.0,1.7",
         "GNGSA,A,3,10,12,,,,,,,,,,,2.0,1.0,1.7", rmc},
        inUse, {"10 12 15 310 312"});
    row("behind a full GSA comes another of the same system",
        {gga, "GPGSV,4,1,14,01,40,100,40,02,40,100,40,03,40,100,40,04,40,100,40",
         "GPGSV,4,2,14,05,40,100,40,06,40,100,40,07,40,100,40,08,40,100,40",
         "GPGSV,4,3,14,09,40,100,40,10,40,100,40,11,40,100,40,12,40,100,40",
         "GPGSV,4,4,14,13,40,100,40,14,40,100,40", "GAGSV,1,1,02,13,30,030,33,14,30,030,33",
         "GPGSA,A,3,01,02,03,04,05,06,07,08,09,10,11,12,2.0,1.0,1.7",
         "GPGSA,A,3,13,14,,,,,,,,,,,2.0,1.0,1.7", rmc},
        inUse, {"1 2 3 4 5 6 7 8 9 10 11 12 13 14"});
    row("a single plain GSA is that of GPS", {gga, ga1, "GPGSA,A,3,01,,,,,,,,,,,,2.0,1.0,1.7", rmc},
        inUse, {"1"});
    row("a GSA with more than twelve places",
        {gga, gp5, "GPGSA,A,3,27,23,13,07,25,,,,,,,,,,,,,,,,,,,,,,7.9,6.0,5.2", rmc}, dopsOf,
        {"1.00 7.90 6.00 5.20"});

    // What belongs to which epoch.
    row("a GSA alone refers to the latest sets",
        QList<QByteArray>{gga, "GPGSV,1,1,02,05,40,100,40,07,40,100,40", use5, rmc} + fixAt(1) +
            QList<QByteArray>{"GPGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7"},
        viewAndUse, {"5 7/5", "5 7/7"});
    row("systems in turns",
        QList<QByteArray>{rmc, gp5, use5} + fixAt(1) +
            QList<QByteArray>{ga1, "GAGSA,A,3,01,,,,,,,,,,,,2.0,1.0,1.7"} + fixAt(2) +
            QList<QByteArray>{gp7, "GPGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7"} + fixAt(3) +
            QList<QByteArray>{ga1, "GAGSA,A,3,01,,,,,,,,,,,,2.0,1.0,1.7"},
        viewAndUse, {"5/5", "5 301/5 301", "7 301/7 301", "7 301/7 301"});
    row("a turn that does not come again",
        QList<QByteArray>{rmc, gp5} + fixAt(1) + QList<QByteArray>{ga1} + fixAt(2) +
            QList<QByteArray>{ga1} + fixAt(3) + QList<QByteArray>{ga1},
        inView, {"5", "5 301", "301", "301"});
    row("a round that loses a system",
        QList<QByteArray>{rmc, gp5} + fixAt(1) + QList<QByteArray>{ga1} + fixAt(2) +
            QList<QByteArray>{gp5} + fixAt(3) + QList<QByteArray>{ga1} + fixAt(4) +
            QList<QByteArray>{gp5} + fixAt(5) + QList<QByteArray>{gp5} + fixAt(6) +
            QList<QByteArray>{gp5} + fixAt(7) + QList<QByteArray>{gp5} + fixAt(8) +
            QList<QByteArray>{gp5},
        inView, {"5", "5 301", "5 301", "5 301", "5 301", "5 301", "5 301", "5 301", "5"});
    row("a system that others go on without",
        QList<QByteArray>{rmc, gp5, ga1} + fixAt(1) + QList<QByteArray>{gp5}, inView,
        {"5 301", "5"});
    row("a system that comes every third cycle",
        QList<QByteArray>{rmc, gp5, ga1} + fixAt(1) + QList<QByteArray>{gp5} + fixAt(2) +
            QList<QByteArray>{gp5} + fixAt(3) + QList<QByteArray>{gp5, ga1} + fixAt(4) +
            QList<QByteArray>{gp5} + fixAt(5) + QList<QByteArray>{gp5},
        inView, {"5 301", "5", "5", "5 301", "5 301", "5 301"});
    row("a system that is missing once and then ends",
        QList<QByteArray>{rmc, gp5, ga1} + fixAt(1) + QList<QByteArray>{gp5, ga1} + fixAt(2) +
            QList<QByteArray>{gp5} + fixAt(3) + QList<QByteArray>{gp5, ga1} + fixAt(4) +
            QList<QByteArray>{gp5},
        inView, {"5 301", "5 301", "5", "5 301", "5"});
    QList<QByteArray> seldom = {rmc, gp5, ga1};
    QList<QByteArray> seldomInView = {"5 301"};
    for (int second = 1; second < 16; ++second) {
        seldom += fixAt(second) + QList<QByteArray>{gp5};
        seldom += second == 13 ? QList<QByteArray>{ga1} : QList<QByteArray>();
        seldomInView += second == 13 ? "5 301" : "5";
    }
    row("a system that comes again after a long time", seldom, inView, seldomInView);
    row("a last group without C/N0", {gga, "GPGSV,1,1,02,05,40,100,40,07,41,101", rmc}, inView,
        {"5 7"});
    row("a cut-off set leaves what was known",
        QList<QByteArray>{gga, "GPGSV,2,1,05,05,40,100,40,06,40,100,40,07,40,100,40,08,40,100,40",
                          "GPGSV,2,2,05,09,40,100,40", ga1, rmc} +
            fixAt(1) +
            QList<QByteArray>{"GPGSV,2,1,05,15,40,100,40,16,40,100,40,17,40,100,40,18,40,100,40",
                              ga1},
        inView, {"5 6 7 8 9 301", "5 6 7 8 9 301"});
    row("a cut-off set of one signal leaves what was known of both",
        QList<QByteArray>{gga, "GPGSV,1,1,02,05,40,100,40,07,40,100,40,1",
                          "GPGSV,1,1,01,05,40,100,30,6", rmc} +
            fixAt(1) +
            QList<QByteArray>{"GPGSV,2,1,05,05,40,100,40,06,40,100,40,07,40,100,40,08,40,100,40,1",
                              "GPGSV,1,1,01,06,40,100,30,6", ga1},
        inView, {"5 7", "5 7 301"});
    row("sets from before the beginning are not handed on",
        QList<QByteArray>{"GPGSV,2,2,05,09,40,100,40", ga1,
                          "GNGLL,4800.0000,N,01100.0000,E,115959.00,A,A", gga, gp5, rmc},
        timeAndView, {"115959.000 ", "120000.000 5"});
    row("the whole sets of that cycle are",
        QList<QByteArray>{"GPGSV,2,2,05,09,40,100,40", ga1, rmc} + fixAt(1) +
            QList<QByteArray>{gp5, ga1},
        timeAndView, {"120000.000 301", "120001.000 5 301"});
    row("sets whose first time is missing",
        {gga, gp5, rmc, gp7, fixAt(1)[1], fixAt(2)[0], gp5, fixAt(2)[1]}, timeAndView,
        {"120000.000 5", "120001.000 7", "120002.000 5"});
    row("GSAs whose first time is missing",
        {gga, "GPGSV,1,1,02,05,40,100,40,07,40,100,40", use5, rmc,
         "GPGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7", fixAt(1)[1]},
        inUse, {"5", "7"});
    row("two rounds behind the same time",
        {gga, use5, gp5, "GPGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7", gp7,
         "GNGLL,4800.0000,N,01100.0000,E,120002.00,A,A"},
        viewAndUse, {"5/5", "7/7"});
    row("two rounds that begin with the sets",
        {gga, gp5, use5, gp7, "GPGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7",
         "GNGLL,4800.0000,N,01100.0000,E,120002.00,A,A"},
        viewAndUse, {"5/5", "7/7"});
    row("a second signal without a number",
        {gga, gp5, "GPGSV,1,1,01,05,40,100,45", use5, rmc, fixAt(1)[0]}, viewAndUse, {"5/5", "/"});
    row("but no whole set of a cycle of which only a GLL is left",
        QList<QByteArray>{gp7, "GNGLL,4800.0000,N,01100.0000,E,115959.00,A,A", gga, gp5, rmc},
        timeAndView, {"115959.000 ", "120000.000 5"});
    row("sets before the time", QList<QByteArray>{gp5} + fix + QList<QByteArray>{gp7} + fixAt(1),
        timeAndView, {"120000.000 5", "120001.000 7"});
    row("sets and GSAs before the time",
        QList<QByteArray>{use5, gp5} + fix +
            QList<QByteArray>{"GPGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7", gp7} + fixAt(1) +
            QList<QByteArray>{use5, gp5},
        viewAndUse, {"5/5", "7/7"});
    row("sets before the time now and then",
        QList<QByteArray>{gp5} + fix + fixAt(1) + QList<QByteArray>{gp7} + fixAt(2) + fixAt(3),
        timeAndView, {"120000.000 5", "120001.000 ", "120002.000 7", "120003.000 "});
    row("sets of several systems before the time, one of which is lost once",
        QList<QByteArray>{gp5, ga1} + fix + QList<QByteArray>{gp7, ga1} + fixAt(1) +
            QList<QByteArray>{ga1} + fixAt(2) + QList<QByteArray>{gp5, ga1} + fixAt(3),
        timeAndView,
        {"120000.000 5 301", "120001.000 7 301", "120002.000 301", "120003.000 5 301"});
    row("GSAs and sets before the time, a GSA of which is lost once",
        QList<QByteArray>{use5, gp5} + fix + QList<QByteArray>{gp5} + fixAt(1) +
            QList<QByteArray>{"GPGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7", gp7} + fixAt(2) +
            QList<QByteArray>{use5, gp5} + fixAt(3),
        viewAndUse, {"5/5", "5/5", "7/7", "5/5"});
    row("a beginning among the GSAs",
        QList<QByteArray>{"GNGSA,A,3,01,,,,,,,,,,,,2.0,1.0,1.7,3", gp5, ga1} + fix +
            QList<QByteArray>{"GNGSA,A,3,07,,,,,,,,,,,,2.0,1.0,1.7,1",
                              "GNGSA,A,3,01,,,,,,,,,,,,2.0,1.0,1.7,3", gp7, ga1} +
            fixAt(1),
        timeAndView, {"120000.000 7 301", "120001.000 "});
    row("a second signal without a number before the time",
        {gp5, "GPGSV,1,1,01,07,40,100,40", gga, rmc}, inView, {"5 7"});
    row("numbers of messages with two digits",
        {"GPGSV,01,01,01,05,40,100,40", gga, rmc, "GPGSV,01,01,01,07,40,100,40", fixAt(1)[0],
         fixAt(1)[1]},
        inView, {"5", "7"});
    row("sets between the times",
        QList<QByteArray>{gp7, gga, gp5, rmc, fixAt(1)[0], gp7, fixAt(1)[1]}, timeAndView,
        {"120000.000 5", "120001.000 7"});
    row("sets between the times, of which one is missing",
        QList<QByteArray>{gp5} + fix +
            QList<QByteArray>{fixAt(1)[0], gp7, fixAt(1)[1], fixAt(2)[0], gp5} + fixAt(3),
        timeAndView, {"120000.000 5", "120001.000 7", "120002.000 5", "120003.000 "});
    row("the messages of a set in another order",
        {gga, "GPGSV,3,1,09,05,40,100,40", "GPGSV,3,3,09,07,40,100,40", "GPGSV,3,2,09,06,40,100,40",
         rmc},
        inView, {""});
    row("the last sets of a cycle before the beginning",
        QList<QByteArray>{ga1} + fix + QList<QByteArray>{gp5, ga1} + fixAt(1) +
            QList<QByteArray>{gp7, ga1},
        timeAndView, {"120000.000 5 301", "120001.000 7 301"});
    row("word for word again", QList<QByteArray>{gga, rmc, gga} + fixAt(1), timeOf,
        {"120000.000", "120001.000"});
    row("a whole cycle again", fix + fix + fixAt(1), timeOf, {"120000.000", "120001.000"});
    row("every line doubled", {gga, gga, gp5, gp5, rmc, rmc, fixAt(1)[0], fixAt(1)[0]}, timeAndView,
        {"120000.000 5", "120001.000 "});
    const QByteArray noGga0 = "GNGGA,120000.00,,,,,0,00,,,M,,M,,";
    const QByteArray noRmc0 = "GNRMC,120000.00,V,,,,,,,010125,,,N";
    const QByteArray noGga1 = "GNGGA,120001.00,,,,,0,00,,,M,,M,,";
    row("again without a fix", {noGga0, noRmc0, noGga0, noGga1}, timeOf,
        {"120000.000", "120001.000"});
    row("a clock that stands still without a fix", {noGga0, noRmc0, noGga0, noRmc0, noGga0, noRmc0},
        timeOf, {"120000.000", "120000.000", "120000.000"});
    row("a generator whose clock stands still", fix + fix + fix + fix + fix, timeOf,
        {"120000.000", "120000.000", "120000.000"});
    row("a GLL at a time of its own",
        {rmc, "GNGLL,4800.0000,N,01100.0000,E,120001.00,A,A",
         "GNRMC,120002.00,A,4800.0000,N,01100.0000,E,0.00,,010125,,,A"},
        timeOf, {"120000.000", "120001.000", "120002.000"});
    row("one time with more and with fewer digits",
        {"GPGLL,4800.0000,N,01100.0000,E,120000.076,A,A",
         "GPGLL,4800.00001,N,01100.00000,E,120000.076,A,A",
         "GNGGA,120000.08,4800.0000,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,",
         "GNRMC,120000.08,A,4800.0000,N,01100.0000,E,0.00,,010125,,,A"},
        timeOf, {"120000.080"});
    row("a position twice at a whole second",
        QList<QByteArray>{"GPGLL,4800.0000,N,01100.0000,E,120000.00,A,A"} + fix +
            QList<QByteArray>{"GPGLL,4800.0000,N,01100.0000,E,120001.00,A,A",
                              "GPGLL,4800.00001,N,01100.00000,E,120001.00,A,A"} +
            fixAt(1),
        timeOf, {"120000.000", "120001.000"});
    row("whole seconds beside tenths",
        {"GNGGA,120000.40,4800.0000,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,",
         "GNRMC,120000,A,4800.0000,N,01100.0000,E,0.00,,010125,,,A",
         "GNGGA,120000.60,4800.0000,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,"},
        timeOf, {"120000.000", "120000.600"});
    row("whole seconds that are cut off",
        {"GNGGA,120000.60,4800.0000,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,",
         "GNRMC,120000,A,4800.0000,N,01100.0000,E,0.00,,010125,,,A"},
        timeOf, {"120000.000"});
    row("hundredths that are another fix",
        {"GNGLL,4800.0000,N,01100.0000,E,120000.070,A,A",
         "GNRMC,120000.08,A,4800.0000,N,01100.0000,E,0.00,,010125,,,A"},
        timeOf, {"120000.070", "120000.080"});

    row("a fix that is lost without a GSA",
        {gga, gp5, use5, rmc, noGga1, gp5, "GNRMC,120001.00,V,,,,,,,010125,,,N"}, viewAndUse,
        {"5/5", "5/"});

    // Values.
    row("a date that only ZDA has", {gga, "GNZDA,120000.00,05,08,2026,00,00"}, dateOf, {"050826"});
    row("ZDA before its epoch", {"GNZDA,120000.00,05,08,2026,00,00", gga}, dateOf, {"050826"});
    row("ZDA of the next epoch",
        {gga, "GNZDA,120000.00,31,12,2025,00,00", "GNZDA,120001.00,01,01,2026,00,00", fixAt(1)[0]},
        dateOf, {"311225", "010126"});
    row("a ZDA of another time", {gga, "GNZDA,115000.00,05,08,2026,00,00"}, dateOf, {""});
    row("midnight without a date",
        {"GNZDA,235959.00,31,12,2025,00,00",
         "GNGGA,235959.00,4800.0000,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,",
         "GNGGA,000000.00,4800.0000,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,"},
        dateOf, {"311225", "010126"});
    row("ZDA before each epoch",
        {"GNZDA,120000.00,05,08,2026,00,00", gga, "GNZDA,120001.00,05,08,2026,00,00", fixAt(1)[0],
         "GNZDA,120002.00,05,08,2026,00,00", fixAt(2)[0]},
        dateOf, {"050826", "050826", "050826"});
    row("RMC's date before ZDA's", {rmc, "GNZDA,120000.00,05,08,2026,00,00"}, dateOf, {"010125"});
    row("GLL without time and status", {"GPGLL,4800.00,N,01100.00,E", gga}, statusOf, {"A"});
    row("GNS of all systems and of each",
        {"GNGNS,120000.00,4800.0000,N,01100.0000,E,DA,14,0.9,500.0,46.9,,",
         "GPGNS,120000.00,,,,,,7,,,,,", "GLGNS,120000.00,,,,,,7,,,,,"},
        modesOf, {"DA"});
    row("a coarser position first",
        {"GPGLL,4800.01,N,01100.00,E,120000.00,A,A",
         "GPRMC,120000.00,A,4800.0149,N,01100.0000,E,0.00,,010125,,,A"},
        latitudeOf, {"4800.0149 4800.0149"});
    row("of equally fine positions that of GGA",
        {"GNGGA,120000.00,4800.0002,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,",
         "GNRMC,120000.00,A,4800.0003,N,01100.0000,E,0.00,,010125,,,A"},
        latitudeOf, {"4800.0002 4800.0002"});
    row("of equally fine positions that of GGA, which comes last",
        {"GNRMC,120000.00,A,4800.0003,N,01100.0000,E,0.00,,010125,,,A",
         "GNGGA,120000.00,4800.0002,N,01100.0000,E,1,08,1.0,500.0,M,46.9,M,,"},
        latitudeOf, {"4800.0002 4800.0002"});
    row("a finer position first",
        {"GPGLL,4800.01494,N,01100.00000,E,120000.00,A,A",
         "GPRMC,120000.00,A,4800.015,N,01100.000,E,0.00,,010125,,,A"},
        latitudeOf, {"4800.0149 4800.0149"});
    raw("a last sentence without its end",
        framed(fix) + "$GNRMC,120001.00,A,4800.0000,N,01100.0000,E,0.\r\n", timeOf, {"120000.000"});
    raw("a last sentence without its checksum",
        framed(fix) + "$GNRMC,120001.00,A,4800.0000,N,01100.0000,E,0.00,,010125,,,A\r\n", timeOf,
        {"120000.000"});
    raw("a last sentence of a new type without its end",
        framed({rmc}) + "$GNGGA,120001.00,4800.0000,N,01100.0000,E,1,0\r\n", timeOf,
        {"120000.000"});
    raw("a type that never has a checksum",
        framed({rmc}) + '$' + gga + "\r\n" + framed({fixAt(1)[1]}) + '$' + fixAt(1)[0] + "\r\n",
        altitudeOf, {"500.0", "500.0"});
    raw("no checksums at all", '$' + gga + "\r\n$" + rmc + "\r\n", timeOf, {"120000.000"});
    row("DOPs beyond 99.99",
        {"GNGGA,120000.00,4800.0000,N,01100.0000,E,1,08,176.0,500.0,M,46.9,M,,",
         "GPGSA,A,3,05,,,,,,,,,,,,500.5,176.0,468.531", rmc},
        dopsOf, {"176.00 500.50 176.00 468.531"});
    row("altitude as it was sent",
        {"GNGGA,120000.00,4800.0000,N,01100.0000,E,1,08,1.0,500.04,M,46.9,M,,", rmc}, altitudeOf,
        {"500.04"});
    row("altitude without decimals, below the sea",
        {"GNGGA,120000.00,4800.0000,N,01100.0000,E,1,08,1.0,-3,M,46.9,M,,", rmc}, altitudeOf,
        {"-3.0"});
    row("C/N0 with decimals", {gga, "GPGSV,1,1,02,05,40.7,100.2,40.5,07,40,100,9.99", rmc},
        strengths, {"40 9"});
}

void TestEpochStream::showsWhatTheBytesTell()
{
    QFETCH(QByteArray, bytes);
    QFETCH(void *, look);
    QFETCH(QList<QByteArray>, expected);
    EpochStream stream;
    QVector<tEpoch> epochs = stream.feed(bytes);
    epochs += stream.takeRest();
    QList<QByteArray> seen;
    for (const tEpoch &epoch : qAsConst(epochs)) {
        if (!epoch.withoutFix)
            seen << reinterpret_cast<Look>(look)(Dialect::sentences(epoch));
    }
    QCOMPARE(seen, expected);
}

void TestEpochStream::forgetsSatellitesWhenTold()
{
    EpochStream stream;
    stream.feed(framed(
        fixAt(0) +
        QList<QByteArray>{"GPGSV,1,1,01,05,40,100,40", "GPGSA,A,3,05,,,,,,,,,,,,2.0,1.0,1.7"} +
        fixAt(1)));
    stream.forgetSatellites();
    QVector<tEpoch> epochs = stream.feed(framed({"GPGSA,A,1,,,,,,,,,,,,,,,"}));
    epochs += stream.takeRest();
    QCOMPARE(epochs.size(), 1);
    QCOMPARE(viewAndUse(Dialect::sentences(epochs[0])), QByteArray("/"));
}

void TestEpochStream::takesAnotherSourceWithoutChecksums()
{
    EpochStream stream;
    stream.feed(framed(fixAt(0)));
    QCOMPARE(stream.takeRest().size(), 1);
    stream.feed('$' + fixAt(1)[0] + "\r\n$" + fixAt(1)[1] + "\r\n");
    QCOMPARE(stream.takeRest().size(), 1);
    QCOMPARE(stream.brokenSentences(), static_cast<qint64>(0));
}

QTEST_GUILESS_MAIN(TestEpochStream)
#include "TestEpochStream.moc"
