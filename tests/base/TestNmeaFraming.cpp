// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/NmeaFraming.h"

#include <QtTest>

class TestNmeaFraming : public QObject
{
    Q_OBJECT
private slots:
    void framesABody_data();
    void framesABody();
    void takesTheFrameOff_data();
    void takesTheFrameOff();
};

void TestNmeaFraming::framesABody_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("sentence");
    QTest::newRow("command") << QByteArray("PMTK103") << QByteArray("$PMTK103*30\r\n");
    QTest::newRow("letters in the sum") << QByteArray("PAIR006") << QByteArray("$PAIR006*3C\r\n");
    QTest::newRow("sum below 16") << QByteArray("PQTMGNSSSTOP")
                                  << QByteArray("$PQTMGNSSSTOP*09\r\n");
    QTest::newRow("nothing") << QByteArray() << QByteArray("$*00\r\n");
    QTest::newRow("byte above 127") << QByteArray("\xe9") << QByteArray("$\xe9*E9\r\n");
}

void TestNmeaFraming::framesABody()
{
    QFETCH(QByteArray, body);
    QTEST(NmeaFraming::sentence(body), "sentence");
}

void TestNmeaFraming::takesTheFrameOff_data()
{
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<bool>("right");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("hasChecksum");
    QTest::addColumn<QByteArray>("behind");
    const QByteArray body("PAIR006");
    const QByteArray none;
    QTest::newRow("right") << QByteArray("$PAIR006*3C") << true << body << true << none;
    QTest::newRow("small letters") << QByteArray("$PAIR006*3c") << true << body << true << none;
    QTest::newRow("something behind")
        << QByteArray("$PAIR006*3C,1") << true << body << true << QByteArray(",1");
    QTest::newRow("no checksum") << QByteArray("$PAIR006") << true << body << false << none;
    QTest::newRow("only the dollar") << QByteArray("$") << true << none << false << none;
    QTest::newRow("wrong") << QByteArray("$PAIR006*3D") << false << none << false << none;
    QTest::newRow("one digit") << QByteArray("$PAIR006*3") << false << none << false << none;
    QTest::newRow("star only") << QByteArray("$PAIR006*") << false << none << false << none;
    QTest::newRow("no digits") << QByteArray("$PAIR006*XY") << false << none << false << none;
    QTest::newRow("blank digit") << QByteArray("$\x01* 1") << false << none << false << none;
    QTest::newRow("no dollar") << QByteArray("PAIR006*3C") << false << none << false << none;
    QTest::newRow("empty") << none << false << none << false << none;
}

void TestNmeaFraming::takesTheFrameOff()
{
    QFETCH(QByteArray, sentence);
    const std::optional<NmeaFraming::tFramed> framed = NmeaFraming::unframed(sentence);
    QTEST(framed.has_value(), "right");
    if (!framed)
        return;
    QTEST(framed->body, "body");
    QTEST(framed->hasChecksum, "hasChecksum");
    QTEST(framed->behind, "behind");
}

QTEST_GUILESS_MAIN(TestNmeaFraming)
#include "TestNmeaFraming.moc"
