// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/InterruptibleSleep.h"

#include "support/ShortWaits.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <thread>

namespace {

constexpr int kHour = 3600 * 1000;

} // namespace

class TestInterruptibleSleep : public QObject
{
    Q_OBJECT

private slots:
    void sleepsItsTime();
    void asksHowLongAWaitIs();
    void lengthBelowOneIsNoSleep_data();
    void lengthBelowOneIsNoSleep();
    void interruptEndsSleepUnderWay();
    void interruptEndsSleepsOfSeveralThreads();
    void interruptEndsAllLaterSleeps();
    void interruptIsNeverLost();
};

void TestInterruptibleSleep::sleepsItsTime()
{
    InterruptibleSleep sleep;
    QElapsedTimer timer;
    timer.start();
    sleep.sleep(60);
    sleep.sleep(60); // a sleep that ran out does not end the next
    QVERIFY2(timer.elapsed() >= 119, QByteArray::number(timer.elapsed()));
}

void TestInterruptibleSleep::asksHowLongAWaitIs()
{
    const ShortWaits waits(1);
    InterruptibleSleep sleep;
    sleep.sleep(kHour);
    sleep.sleep(500);
    QCOMPARE(waits.nominal(), std::vector<int>({kHour, 500}));
}

void TestInterruptibleSleep::lengthBelowOneIsNoSleep_data()
{
    QTest::addColumn<int>("length");
    QTest::newRow("zero") << 0;
    QTest::newRow("negative") << -1000;
}

void TestInterruptibleSleep::lengthBelowOneIsNoSleep()
{
    QFETCH(int, length);
    InterruptibleSleep sleep;
    sleep.sleep(length);
}

void TestInterruptibleSleep::interruptEndsSleepUnderWay()
{
    InterruptibleSleep sleep;
    std::atomic<bool> begun = false;
    std::thread sleeper([&] {
        begun = true;
        sleep.sleep(kHour);
    });
    QTRY_VERIFY(begun);
    sleep.interrupt();
    sleeper.join();
}

void TestInterruptibleSleep::interruptEndsSleepsOfSeveralThreads()
{
    InterruptibleSleep sleep;
    std::vector<std::thread> sleepers;
    for (int i = 0; i < 4; ++i)
        sleepers.emplace_back([&sleep] { sleep.sleep(kHour); });
    sleep.interrupt();
    for (std::thread &sleeper : sleepers)
        sleeper.join();
}

void TestInterruptibleSleep::interruptEndsAllLaterSleeps()
{
    InterruptibleSleep sleep;
    sleep.interrupt();
    sleep.interrupt();
    for (int i = 0; i < 1000; ++i)
        sleep.sleep(kHour);
}

// In whatever moment it comes; a lost one would sleep for an hour.
void TestInterruptibleSleep::interruptIsNeverLost()
{
    for (int round = 0; round < 500; ++round) {
        InterruptibleSleep sleep;
        std::thread sleeper([&sleep] { sleep.sleep(kHour); });
        for (int spin = 0; spin < round * 20; ++spin)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        sleep.interrupt();
        sleeper.join();
    }
}

QTEST_GUILESS_MAIN(TestInterruptibleSleep)
#include "TestInterruptibleSleep.moc"
