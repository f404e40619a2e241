// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/ReceiverCommand.h"

#include <QtTest>

class TestReceiverCommand : public QObject
{
    Q_OBJECT
private slots:
    void knowsTheEightCommands_data();
    void knowsTheEightCommands();
    void readsAllMasks();
    void refusesEverythingElse_data();
    void refusesEverythingElse();
};

using Kind = tReceiverCommand::Kind;

void TestReceiverCommand::knowsTheEightCommands_data()
{
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<int>("kind");
    QTest::addColumn<unsigned>("mask");
    const auto row = [](const char *name, const char *sentence, Kind kind, unsigned mask = 0) {
        QTest::newRow(name) << QByteArray(sentence) << static_cast<int>(kind) << mask;
    };
    row("start", "$PPLMS,0", Kind::Start);
    row("stop", "$PPLMS,1", Kind::Stop);
    row("hot", "$PPLMG,1", Kind::HotStart);
    row("warm", "$PPLMG,2", Kind::WarmStart);
    row("cold", "$PPLMG,3", Kind::ColdStart);
    row("factory", "$PPLMG,7", Kind::FactoryStart);
    row("store", "$PPLMT,0", Kind::StoreNvm);
    row("mask", "$PPLMB,70,33", Kind::SelectConstellations, 0x33);
    row("mask in upper case", "$PPLMB,70,3F", Kind::SelectConstellations, 0x3f);
    row("mask with unknown bits", "$PPLMB,70,ffffff41", Kind::SelectConstellations, 0x01);
    row("right checksum", "$PPLMS,0*24", Kind::Start);
    row("right checksum in lower case", "$PPLMB,70,3f*1f", Kind::SelectConstellations, 0x3f);
}

void TestReceiverCommand::knowsTheEightCommands()
{
    QFETCH(QByteArray, sentence);
    QFETCH(int, kind);
    QFETCH(unsigned, mask);
    const int star = sentence.indexOf('*');
    if (star > 0) {
        int sum = 0;
        for (int i = 1; i < star; ++i)
            sum ^= sentence[i];
        sentence = sentence.left(star + 1) + QByteArray::number(sum, 16).rightJustified(2, '0');
    }
    const auto command = parseReceiverCommand(sentence);
    QVERIFY2(command, sentence.constData());
    QCOMPARE(static_cast<int>(command->kind), kind);
    QCOMPARE(command->mask, mask);
}

void TestReceiverCommand::readsAllMasks()
{
    for (unsigned mask = 0; mask < 64; ++mask) {
        const auto command = parseReceiverCommand("$PPLMB,70," + QByteArray::number(mask, 16));
        QVERIFY(command);
        QVERIFY(command->kind == Kind::SelectConstellations);
        QCOMPARE(command->mask, mask);
    }
}

void TestReceiverCommand::refusesEverythingElse_data()
{
    QTest::addColumn<QByteArray>("sentence");
    const QList<QByteArray> sentences = {"",
                                         "$",
                                         "PPLMS,0",
                                         "$PPLMS",
                                         "$PPLMS,2",
                                         "$PPLMS,0,",
                                         "$PPLMS,00",
                                         "$PPLMS,0 ",
                                         "$pplms,0",
                                         "$PPLMG,4",
                                         "$PPLMG,0",
                                         "$PPLMT,1",
                                         "$PPLMB,70,",
                                         "$PPLMB,71,3",
                                         "$PPLMB,70,g",
                                         "$PPLMB,70",
                                         "$PPLMB,70,-1",
                                         "$PPLMB,70,0x3",
                                         "$PPLMB,70,123456789",
                                         "$PPLMS,0*",
                                         "$PPLMS,0*0",
                                         "$PPLMS,0*00",
                                         "$PPLMS,0*zz",
                                         "$PPLMS,0*000",
                                         "$GPGGA,,,,"};
    for (const QByteArray &sentence : sentences)
        QTest::newRow(sentence.isEmpty() ? "nothing" : sentence.constData()) << sentence;
}

void TestReceiverCommand::refusesEverythingElse()
{
    QFETCH(QByteArray, sentence);
    QVERIFY(!parseReceiverCommand(sentence));
}

QTEST_GUILESS_MAIN(TestReceiverCommand)
#include "TestReceiverCommand.moc"
