// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/StopHold.h"

#include <QtTest>

using Kind = tReceiverCommand::Kind;
using Way = StopHold::Way;

class TestStopHold : public QObject
{
    Q_OBJECT
private slots:
    void holdsWhatIsNotObeyed_data();
    void holdsWhatIsNotObeyed();
    void endsWithAnyStart_data();
    void endsWithAnyStart();
    void leavesAReceiverThatObeysAlone();
    void leavesCommandsWithoutAStopAlone();
    void passesOverTheEpochThatIsOpenAtTheStart();
    void endsWhenTheReceiverStopsAfterAll();
};

namespace {

const tCommandAnswer kRefused{false, QStringLiteral("no such command")};
const tCommandAnswer kSent{true, QStringLiteral("sent it")};

StopHold stopped(Way way = Way::HoldBack)
{
    StopHold hold(way);
    hold.take(Kind::Stop, kRefused, false);
    return hold;
}

} // namespace

void TestStopHold::holdsWhatIsNotObeyed_data()
{
    QTest::addColumn<int>("way");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("state");
    QTest::newRow("a receiver")
        << static_cast<int>(Way::HoldBack)
        << "the receiver's data is held back until a start (no such command)"
        << "held back until a start";
    QTest::newRow("a recording") << static_cast<int>(Way::Pause)
                                 << "the recording pauses until a start"
                                 << "paused until a start";
}

void TestStopHold::holdsWhatIsNotObeyed()
{
    QFETCH(int, way);
    StopHold hold(static_cast<Way>(way));
    QVERIFY(hold.isOpen());
    QCOMPARE(hold.stateText(), QString());
    for (int time = 0; time < 2; ++time) { // again, too
        const tCommandAnswer answer = hold.take(Kind::Stop, kRefused, true);
        QVERIFY(answer.obeyed);
        QTEST(answer.text, "answer");
        QVERIFY(hold.isHeld());
        QVERIFY(!hold.isOpen());
        QVERIFY(!hold.passesEpoch());
        QVERIFY(!hold.passesEpoch());
        QTEST(hold.stateText(), "state");
    }
}

void TestStopHold::endsWithAnyStart_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("ends");
    QTest::addColumn<bool>("sent");
    QTest::addColumn<int>("way");
    QTest::addColumn<bool>("obeyed");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, Kind kind, bool ends, bool sent, Way way, bool obeyed,
                        const char *text) {
        QTest::newRow(name) << static_cast<int>(kind) << ends << sent << static_cast<int>(way)
                            << obeyed << QString::fromLatin1(text);
    };
    row("start", Kind::Start, true, false, Way::HoldBack, true,
        "the receiver's data is handed on again (no such command)");
    row("start that is sent", Kind::Start, true, true, Way::HoldBack, true,
        "sent it; the receiver's data is handed on again");
    row("start of a recording", Kind::Start, true, false, Way::Pause, true,
        "the recording goes on");
    row("hot start", Kind::HotStart, true, true, Way::HoldBack, true,
        "sent it; the receiver's data is handed on again");
    row("warm start", Kind::WarmStart, true, false, Way::HoldBack, false,
        "no such command; the receiver's data is handed on again");
    row("cold start of a recording", Kind::ColdStart, true, false, Way::Pause, false,
        "no such command; the recording goes on");
    row("factory start", Kind::FactoryStart, true, true, Way::HoldBack, true,
        "sent it; the receiver's data is handed on again");
    row("constellations", Kind::SelectConstellations, false, true, Way::HoldBack, true, "sent it");
    row("store", Kind::StoreNvm, false, false, Way::Pause, false, "no such command");
}

void TestStopHold::endsWithAnyStart()
{
    QFETCH(int, kind);
    QFETCH(bool, ends);
    QFETCH(bool, sent);
    QFETCH(int, way);
    StopHold hold = stopped(static_cast<Way>(way));
    const tCommandAnswer answer =
        hold.take(static_cast<Kind>(kind), sent ? kSent : kRefused, false);
    QTEST(answer.obeyed, "obeyed");
    QTEST(answer.text, "text");
    QCOMPARE(hold.isHeld(), !ends);
    QCOMPARE(hold.isOpen(), ends);
    QCOMPARE(hold.passesEpoch(), ends);
    QCOMPARE(hold.stateText().isEmpty(), ends);
}

void TestStopHold::leavesAReceiverThatObeysAlone()
{
    StopHold hold(Way::HoldBack);
    for (const Kind kind : {Kind::Stop, Kind::Start}) {
        const tCommandAnswer answer = hold.take(kind, kSent, true);
        QVERIFY(answer.obeyed);
        QCOMPARE(answer.text, kSent.text);
        QVERIFY(hold.isOpen());
        QVERIFY(hold.passesEpoch());
    }
}

void TestStopHold::leavesCommandsWithoutAStopAlone()
{
    StopHold hold(Way::HoldBack);
    for (const Kind kind : {Kind::Start, Kind::ColdStart, Kind::StoreNvm}) {
        const tCommandAnswer answer = hold.take(kind, kRefused, true);
        QVERIFY(!answer.obeyed);
        QCOMPARE(answer.text, kRefused.text);
        QVERIFY(hold.passesEpoch());
    }
}

// It began before the start: its values are old.
void TestStopHold::passesOverTheEpochThatIsOpenAtTheStart()
{
    StopHold hold = stopped();
    hold.take(Kind::Start, kRefused, true);
    QVERIFY(!hold.isHeld());
    QVERIFY(!hold.isOpen());
    QVERIFY(!hold.passesEpoch());
    QVERIFY(hold.isOpen());
    QVERIFY(hold.passesEpoch());
}

// The family or the link was missing at the first stop only.
void TestStopHold::endsWhenTheReceiverStopsAfterAll()
{
    StopHold hold = stopped();
    const tCommandAnswer answer = hold.take(Kind::Stop, kSent, true);
    QCOMPARE(answer.text, kSent.text);
    QVERIFY(!hold.isHeld());
    QVERIFY(!hold.passesEpoch()); // the one that is still open
    QVERIFY(hold.passesEpoch());
}

QTEST_GUILESS_MAIN(TestStopHold)
#include "TestStopHold.moc"
