// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/nmea/BinaryFrame.h"

#include <QtTest>

using Maker = tBinaryFrame::Maker;

class TestBinaryFrame : public QObject
{
    Q_OBJECT
private slots:
    void buildsWhatTheMakersPrint_data();
    void buildsWhatTheMakersPrint();
    void findsFramesAmongOtherBytes();
    void passesOverBrokenFrames_data();
    void passesOverBrokenFrames();
    void holdsNoMoreThanOneFrame();
};

namespace {

const QByteArray kAcknowledgement =
    binaryFrameBytes({Maker::Ublox, 0x05, 0x01, QByteArray("\x06\x04", 2)});

QVector<tBinaryFrame> framesIn(const QByteArray &bytes, int piece)
{
    BinaryFrameCutter cutter;
    QVector<tBinaryFrame> frames;
    for (int at = 0; at < bytes.size(); at += piece)
        frames += cutter.feed(bytes.mid(at, piece));
    return frames;
}

} // namespace

void TestBinaryFrame::buildsWhatTheMakersPrint_data()
{
    QTest::addColumn<int>("maker");
    QTest::addColumn<int>("messageClass");
    QTest::addColumn<int>("messageId");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *title, Maker maker, int messageClass, int messageId,
                        const char *payload, const char *expected) {
        QTest::newRow(title) << static_cast<int>(maker) << messageClass << messageId
                             << QByteArray::fromHex(payload) << QByteArray::fromHex(expected);
    };
    row("u-blox version poll", Maker::Ublox, 0x0a, 0x04, "", "B5620A0400000E34");
    row("u-blox cold start", Maker::Ublox, 0x06, 0x04, "FFFF0200", "B56206040400FFFF02000E61");
    row("Allystar version poll", Maker::Allystar, 0x0a, 0x04, "", "F1D90A0400000E34");
    row("Allystar acknowledgement", Maker::Allystar, 0x05, 0x01, "0640", "F1D90501020006404E77");
}

void TestBinaryFrame::buildsWhatTheMakersPrint()
{
    QFETCH(int, maker);
    QFETCH(int, messageClass);
    QFETCH(int, messageId);
    QFETCH(QByteArray, payload);
    QFETCH(QByteArray, expected);
    const tBinaryFrame frame = {static_cast<Maker>(maker), static_cast<unsigned char>(messageClass),
                                static_cast<unsigned char>(messageId), payload};
    QCOMPARE(binaryFrameBytes(frame).toHex(), expected.toHex());
    const QVector<tBinaryFrame> frames = framesIn(expected, 1);
    QCOMPARE(frames.size(), 1);
    QCOMPARE(static_cast<int>(frames[0].maker), maker);
    QCOMPARE(static_cast<int>(frames[0].messageClass), messageClass);
    QCOMPARE(static_cast<int>(frames[0].messageId), messageId);
    QCOMPARE(frames[0].payload, payload);
}

void TestBinaryFrame::findsFramesAmongOtherBytes()
{
    // The start of a frame before the second one claims some of what follows.
    const QByteArray bytes = "$GPGGA,1\r\n\xb5" + kAcknowledgement + "\xb5\x62" + kAcknowledgement +
                             QByteArray(300, ' ') + "$GP\xf1";
    for (const int piece : {1, 3, 1000})
        QCOMPARE(framesIn(bytes, piece).size(), 2);
}

void TestBinaryFrame::passesOverBrokenFrames_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("wrong sum") << kAcknowledgement.chopped(1) + '\x00';
    QTest::newRow("too long to be believed") << QByteArray::fromHex("B5620501FFFF");
    QTest::newRow("cut off") << kAcknowledgement.left(5);
    QTest::newRow("the other maker's second byte") << QByteArray::fromHex("B5D90501020006040F38");
}

void TestBinaryFrame::passesOverBrokenFrames()
{
    QFETCH(QByteArray, before);
    // Enough behind it that one that claims more bytes than it has is seen through.
    const QByteArray bytes = before + kAcknowledgement + QByteArray(3000, ' ');
    for (const int piece : {1, 5, 10000})
        QCOMPARE(framesIn(bytes, piece).size(), 1);
}

// A claim of a long frame may keep only as much as a frame can have.
void TestBinaryFrame::holdsNoMoreThanOneFrame()
{
    const QByteArray claim = QByteArray::fromHex("B56205010008"); // 2048 bytes
    BinaryFrameCutter cutter;
    int frames = 0;
    for (int i = 0; i < 1000; ++i) {
        frames += cutter.feed(claim).size();
        frames += cutter.feed(kAcknowledgement).size();
    }
    QVERIFY2(frames > 600 && frames <= 1000, QByteArray::number(frames));
}

QTEST_GUILESS_MAIN(TestBinaryFrame)
#include "TestBinaryFrame.moc"
