// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/SentenceGate.h"

#include <QtTest>

class TestSentenceGate : public QObject
{
    Q_OBJECT
private slots:
    void changesBetweenTwoSentences_data();
    void changesBetweenTwoSentences();
};

void TestSentenceGate::changesBetweenTwoSentences_data()
{
    QTest::addColumn<QByteArray>("before"); // passes all
    QTest::addColumn<QByteArray>("closed");
    QTest::addColumn<QByteArray>("ended"); // what still passes of it
    QTest::addColumn<QByteArray>("open");
    QTest::addColumn<QByteArray>("after"); // what passes of it
    const auto row = [](const char *name, const QByteArray &before, const QByteArray &closed,
                        const QByteArray &ended, const QByteArray &open, const QByteArray &after) {
        QTest::newRow(name) << before << closed << ended << open << after;
    };
    row("between", "$A\r\n", "$B\r\n$C\r\n", "", "$D\r\n", "$D\r\n");
    row("within", "$A\r\n$B,1", ",2\r\n$C,1", ",2\r\n", ",2\r\n$D\r\n", "$D\r\n");
    row("within, nothing meanwhile", "$B,1", "", "", ",2\r\n$D\r\n", ",2\r\n$D\r\n");
    row("within the line end", "$A\r", "\n$B\r\n", "\n", "$C\r\n", "$C\r\n");
    row("cut off by the next", "$A\r\n$B,1", "$C\r\n", "", "$D\r\n", "$D\r\n");
    row("binary", "\xb5\x62\x01", "\x02\x03", "", "\x04$D\r\n", "\x04$D\r\n");
    row("dollar in binary", "\xb5$b", "\x01$C\r\n", "", "\x02$D\r\n", "\x02$D\r\n");
    row("without an end", "$" + QByteArray(1000, 'x'), QByteArray(200, 'x'), QByteArray(24, 'x'),
        "$D\r\n", "$D\r\n");
    row("no sentence", "abc", "def", "", "ghi", "ghi");
}

void TestSentenceGate::changesBetweenTwoSentences()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, closed);
    QFETCH(QByteArray, open);
    SentenceGate gate;
    QCOMPARE(gate.passed(before), before);
    gate.setOpen(false);
    QTEST(gate.passed(closed), "ended");
    gate.setOpen(true);
    QTEST(gate.passed(open), "after");
}

QTEST_GUILESS_MAIN(TestSentenceGate)
#include "TestSentenceGate.moc"
