// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/nmea/SentenceCutter.h"

#include <QtTest>

class TestSentenceCutter : public QObject
{
    Q_OBJECT
private slots:
    void cuts_data();
    void cuts();
    void keepsWhatIsNotComplete();
    void dropsWhatIsTooLong();
    void passesOverComments();
};

namespace {

// Texts of the sentences, those without a line end with a trailing tilde.
QStringList texts(const QVector<tCutSentence> &sentences)
{
    QStringList all;
    for (const tCutSentence &sentence : sentences)
        all.append(QString::fromLatin1(sentence.text) +
                   (sentence.terminated ? QString() : QStringLiteral("~")));
    return all;
}

} // namespace

void TestSentenceCutter::cuts_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("strays");
    QTest::newRow("nothing") << QByteArray() << QStringList() << 0;
    QTest::newRow("one") << QByteArray("$A,1\r\n") << QStringList{"$A,1"} << 0;
    QTest::newRow("bare LF") << QByteArray("$A,1\n") << QStringList{"$A,1"} << 0;
    QTest::newRow("several") << QByteArray("$A\r\n$B\r\n\r\n$C\r\n")
                             << QStringList{"$A", "$B", "$C"} << 0;
    QTest::newRow("garbage around") << QByteArray("xy$A\r\nz\r\n") << QStringList{"$A"} << 3;
    QTest::newRow("cut by the next") << QByteArray("$A,1$B\r\n") << QStringList{"$A,1~", "$B"} << 0;
    QTest::newRow("cut by binary")
        << QByteArray("$A\xd3\x01$B\r\n") << QStringList{"$A~", "$B"} << 2;
    QTest::newRow("cut by NUL") << QByteArray("$A\0\0 $B\r\n", 9) << QStringList{"$A~", "$B"} << 3;
    QTest::newRow("no sentence") << QByteArray("hello\n") << QStringList() << 5;
}

void TestSentenceCutter::cuts()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, expected);
    QFETCH(int, strays);
    SentenceCutter whole;
    QCOMPARE(texts(whole.feed(bytes.constData(), bytes.size())), expected);
    QCOMPARE(whole.strayBytes(), static_cast<qint64>(strays));
    SentenceCutter single;
    QVector<tCutSentence> all;
    for (const char byte : bytes)
        all += single.feed(&byte, 1);
    QCOMPARE(texts(all), expected);
    QCOMPARE(single.strayBytes(), static_cast<qint64>(strays));
}

void TestSentenceCutter::keepsWhatIsNotComplete()
{
    SentenceCutter cutter;
    QVERIFY(cutter.feed("$PPL", 4).isEmpty());
    QCOMPARE(texts(cutter.feed("MS,0\r\n$X", 8)), QStringList{"$PPLMS,0"});
    QCOMPARE(cutter.takeRest().text, QByteArray("$X"));
    QVERIFY(cutter.takeRest().text.isEmpty());
}

void TestSentenceCutter::dropsWhatIsTooLong()
{
    SentenceCutter cutter;
    const QByteArray longest = '$' + QByteArray(SentenceCutter::kMaxLength - 1, 'x');
    QCOMPARE(cutter.feed(longest.constData(), longest.size()).size(), 0);
    QCOMPARE(texts(cutter.feed("\n", 1)), QStringList{QString::fromLatin1(longest)});
    const QByteArray over = longest + "x\r\n$A\r\n";
    QCOMPARE(texts(cutter.feed(over.constData(), over.size())), QStringList{"$A"});
    QCOMPARE(cutter.strayBytes(), static_cast<qint64>(SentenceCutter::kMaxLength + 1));
}

void TestSentenceCutter::passesOverComments()
{
    SentenceCutter cutter(SentenceCutter::Comments::PassOver);
    const QByteArray bytes("# $A,1*00\r\n$B#\r\n#\t\xc3\xa9 $C\n#\x01$D\r\nx# $E\r\n");
    QCOMPARE(texts(cutter.feed(bytes.constData(), bytes.size())), (QStringList{"$B#", "$D", "$E"}));
}

QTEST_GUILESS_MAIN(TestSentenceCutter)
#include "TestSentenceCutter.moc"
