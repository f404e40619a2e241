// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/EpochStream.h"

#include "hostd/Dialect.h"

#include <QtTest>

class TestEpochStream : public QObject
{
    Q_OBJECT
private slots:
    void givesTheSameHoweverTheBytesAreCut();
    void countsBrokenSentences();
    void endsAnEpochAtAPause();
    void beginsAnewAfterTheRest();
    void countsWhatHasNoPlace();
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
    QCOMPARE(stream.leftOutSentences(), static_cast<qint64>(1));
    QCOMPARE(stream.unnumberedSatellites(), 2);
}

QTEST_GUILESS_MAIN(TestEpochStream)
#include "TestEpochStream.moc"
