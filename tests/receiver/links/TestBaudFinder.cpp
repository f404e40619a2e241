// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/BaudFinder.h"

#include "base/NmeaFraming.h"

#include <QtTest>

class TestBaudFinder : public QObject
{
    Q_OBJECT
private slots:
    void knowsWhatIsRight_data();
    void knowsWhatIsRight();
    void knowsItInAnyPieces();
    void countsWhatIsWrong();
};

void TestBaudFinder::knowsWhatIsRight_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("right");
    const QByteArray sentence = NmeaFraming::sentence("GPRMC,120000,V,,,,,,,010125,,");
    const QByteArray poll = QByteArray::fromHex("b5620a0400000e34");
    QTest::newRow("sentence") << sentence << true;
    QTest::newRow("sentence behind garbage") << "\x95\xff$\x01" + sentence << true;
    QTest::newRow("frame") << poll << true;
    QTest::newRow("frame between garbage") << "\x95\xb5" + poll + "\x12" << true;
    QTest::newRow("cut sentence") << sentence.left(20) << false;
    QTest::newRow("wrong checksum") << QByteArray("$GPRMC,120000,V,,,,,,,010125,,*00\r\n") << false;
    QTest::newRow("no checksum") << QByteArray("$GPRMC,120000,V,,,,,,,010125,,\r\n") << false;
    QTest::newRow("wrong frame") << QByteArray::fromHex("b5620a0400000e35") << false;
    QTest::newRow("nothing") << QByteArray() << false;
}

void TestBaudFinder::knowsWhatIsRight()
{
    QFETCH(QByteArray, bytes);
    BaudFinder finder;
    QTEST(finder.feed(bytes), "right");
}

void TestBaudFinder::knowsItInAnyPieces()
{
    const QByteArray sentence = NmeaFraming::sentence("GPRMC,120000,V,,,,,,,010125,,");
    BaudFinder finder;
    for (int i = 0; i < sentence.size(); ++i) {
        const bool whole = sentence[i] == '\r';
        QCOMPARE(finder.feed(sentence.mid(i, 1)), whole);
    }
}

void TestBaudFinder::countsWhatIsWrong()
{
    BaudFinder finder;
    finder.feed(QByteArray(100, '\x95'));
    finder.feed(QByteArray(50, 'x'));
    QCOMPARE(finder.bytesSinceRight(), 150);
    finder.feed(NmeaFraming::sentence("GPRMC,120000,V,,,,,,,010125,,"));
    QCOMPARE(finder.bytesSinceRight(), 0);
    finder.feed("xyz");
    QCOMPARE(finder.bytesSinceRight(), 3);
    finder.restart();
    QCOMPARE(finder.bytesSinceRight(), 0);
}

QTEST_GUILESS_MAIN(TestBaudFinder)
#include "TestBaudFinder.moc"
