// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemHooks.h"
#include "control/EventWait.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <ctime>
#include <memory>

namespace {

/// Far beyond what any test takes: a wait of this length that is over was ended early.
constexpr int kLongMs = 60000;
constexpr int kSoonMs = 10000;

const auto never = [] {
    return false;
};

/// Processor time of this thread in milliseconds: other threads and programs do not count.
double cpuMs()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

} // namespace

class TestEventWait : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void lastsAtLeastItsLength_data();
    void lastsAtLeastItsLength();
    void takesItsLengthFromTheHook();
    void processesEventsMeanwhile();
    void doesNotStartWhenTheStopConditionHolds();
    void endsWhenATimerHandlerStopsIt();
    void endsWhenAPostedEventStopsIt();
    void endsWhenAnEventFromAnotherThreadStopsIt();
    void nestedWaitRunsToItsEndFirst();
    void endsThoughItsTimerRangInsideANestedLoop();
    void quitEndsItAndTheApplicationReturnsZero();
    void quitEndsNestedWaits();
    void quitUnderWayWhenItBeginsIsNotLost();
    void nothingIsWaitedForAfterQuit();
    void costsNextToNoProcessorTime();
    void outerWaitThatIsOverDoesNotSpinInsideANestedLoop();
    void pendingDeferredDeleteDoesNotSpin();
};

void TestEventWait::cleanup()
{
    SystemHooks::setWaitLength(nullptr);
}

void TestEventWait::lastsAtLeastItsLength_data()
{
    QTest::addColumn<int>("length");
    QTest::newRow("nothing") << 0;
    QTest::newRow("a millisecond") << 1;
    QTest::newRow("ten") << 10;
    QTest::newRow("a second: more than 999 ms") << 1000;
}

void TestEventWait::lastsAtLeastItsLength()
{
    QFETCH(int, length);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(waitProcessingEvents(length, never));
    QVERIFY(clock.elapsed() >= length);
}

void TestEventWait::takesItsLengthFromTheHook()
{
    static int asked = 0;
    asked = 0;
    SystemHooks::setWaitLength([](int nominalMs) {
        asked = nominalMs;
        return 5;
    });
    QElapsedTimer clock;
    clock.start();
    QVERIFY(waitProcessingEvents(kLongMs, never));
    QCOMPARE(asked, kLongMs);
    QVERIFY(clock.elapsed() >= 5);
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::processesEventsMeanwhile()
{
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&ticks] { ++ticks; });
    timer.start(1);
    QVERIFY(waitProcessingEvents(kLongMs, [&ticks] { return ticks == 5; }));
    QCOMPARE(ticks, 5);
}

void TestEventWait::doesNotStartWhenTheStopConditionHolds()
{
    bool delivered = false;
    QMetaObject::invokeMethod(
        this, [&delivered] { delivered = true; }, Qt::QueuedConnection);
    QVERIFY(waitProcessingEvents(kLongMs, [] { return true; }));
    QVERIFY(!delivered);
    QTRY_VERIFY(delivered);
}

void TestEventWait::endsWhenATimerHandlerStopsIt()
{
    bool stop = false;
    QElapsedTimer clock;
    clock.start();
    QTimer::singleShot(20, this, [&stop] { stop = true; });
    QVERIFY(waitProcessingEvents(kLongMs, [&stop] { return stop; }));
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::endsWhenAPostedEventStopsIt()
{
    bool stop = false;
    QElapsedTimer clock;
    clock.start();
    QMetaObject::invokeMethod(
        this,
        [this, &stop] {
            QMetaObject::invokeMethod(
                this, [&stop] { stop = true; }, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    QVERIFY(waitProcessingEvents(kLongMs, [&stop] { return stop; }));
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::endsWhenAnEventFromAnotherThreadStopsIt()
{
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 200; ++i) {
        bool stop = false;
        const std::unique_ptr<QThread> other(QThread::create([this, &stop, i] {
            QThread::usleep(static_cast<unsigned long>(i)); // meets every moment of falling asleep
            QMetaObject::invokeMethod(
                this, [&stop] { stop = true; }, Qt::QueuedConnection);
        }));
        other->start();
        QVERIFY(waitProcessingEvents(kLongMs, [&stop] { return stop; }));
        QVERIFY(other->wait(kSoonMs));
    }
    QVERIFY(clock.elapsed() < kLongMs);
}

void TestEventWait::nestedWaitRunsToItsEndFirst()
{
    QStringList ends;
    bool stopOuter = false;
    QTimer::singleShot(0, this, [&ends, &stopOuter] {
        stopOuter = true;
        waitProcessingEvents(50, never);
        ends << "inner";
    });
    QElapsedTimer clock;
    clock.start();
    QVERIFY(waitProcessingEvents(kLongMs, [&stopOuter] { return stopOuter; }));
    ends << "outer";
    QCOMPARE(ends, QStringList({"inner", "outer"}));
    QVERIFY(clock.elapsed() >= 50);
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::endsThoughItsTimerRangInsideANestedLoop()
{
    // The nested loop begins in a posted event, after which a dispatcher may go straight to sleep.
    QMetaObject::invokeMethod(
        this, [] { waitProcessingEvents(100, never); }, Qt::QueuedConnection);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(waitProcessingEvents(20, never));
    QVERIFY(clock.elapsed() >= 100);
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::quitEndsItAndTheApplicationReturnsZero()
{
    bool finished = true;
    bool unwound = false;
    QTimer::singleShot(0, this, [this, &finished, &unwound] {
        QTimer::singleShot(10, this, [] { QCoreApplication::quit(); });
        finished = waitProcessingEvents(kLongMs, never);
        unwound = true;
    });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(unwound);
    QVERIFY(!finished);
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::quitEndsNestedWaits()
{
    int unwound = 0;
    QTimer::singleShot(0, this, [this, &unwound] {
        QTimer::singleShot(0, this, [this, &unwound] {
            QTimer::singleShot(10, this, [] { QCoreApplication::quit(); });
            unwound += waitProcessingEvents(kLongMs, never) ? 0 : 1;
        });
        unwound += waitProcessingEvents(kLongMs, never) ? 0 : 1;
    });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(unwound, 2);
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::quitUnderWayWhenItBeginsIsNotLost()
{
    bool finished = true;
    QTimer::singleShot(0, this, [&finished] {
        // What the last window's closing posts.
        QCoreApplication::postEvent(QCoreApplication::instance(), new QEvent(QEvent::Quit));
        finished = waitProcessingEvents(kLongMs, never);
    });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(!finished);
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::nothingIsWaitedForAfterQuit()
{
    bool first = true;
    bool second = true;
    QTimer::singleShot(0, this, [&first, &second] {
        QCoreApplication::quit();
        first = waitProcessingEvents(kLongMs, never);
        second = waitProcessingEvents(kLongMs, never);
    });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(!first);
    QVERIFY(!second);
    QVERIFY(clock.elapsed() < kSoonMs);
}

void TestEventWait::costsNextToNoProcessorTime()
{
    const double before = cpuMs();
    QVERIFY(waitProcessingEvents(1000, never));
    QVERIFY2(cpuMs() - before < 20, "a wait must stay under 2 % of a core");
}

void TestEventWait::outerWaitThatIsOverDoesNotSpinInsideANestedLoop()
{
    bool stopOuter = false;
    double spent = 0;
    QTimer::singleShot(0, this, [&stopOuter, &spent] {
        stopOuter = true;
        QEventLoop loop; // as a dialog has it
        QTimer::singleShot(500, &loop, &QEventLoop::quit);
        const double before = cpuMs();
        loop.exec();
        spent = cpuMs() - before;
    });
    QVERIFY(waitProcessingEvents(10, [&stopOuter] { return stopOuter; }));
    QVERIFY2(spent < 20, qPrintable(QString("%1 ms of 500").arg(spent)));
}

void TestEventWait::pendingDeferredDeleteDoesNotSpin()
{
    auto *const object = new QObject;
    double spent = 1e6;
    QTimer::singleShot(0, this, [this, object, &spent] {
        object->deleteLater(); // stays pending: it belongs to the loop outside
        const double before = cpuMs();
        QTimer::singleShot(0, this, [] {});
        waitProcessingEvents(500, never);
        spent = cpuMs() - before;
        QCoreApplication::quit();
    });
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY2(spent < 20, qPrintable(QString("%1 ms of 500").arg(spent)));
}

QTEST_GUILESS_MAIN(TestEventWait)
#include "TestEventWait.moc"
