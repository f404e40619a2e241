// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "device/MsgThread.h"
#include "support/BusMonitor.h"
#include "support/MessageLog.h"
#include "support/SelfProcess.h"
#include "support/ShortWaits.h"
#include "support/SystemBus.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>

#include <unistd.h>

namespace {

constexpr int kLongMs = 30000;
const QString kResume = QStringLiteral("brel.app.Ostrel.interface.resume");
const QString kOtherMember = QStringLiteral("brel.app.Ostrel.interface.pause");
const QByteArray kManagerInterface = "brel.activity.manager.interface";
const QByteArray kMinimize =
    "/brel/activity/Ostrel brel.activity.manager.interface minimize (null destination)";

const QString kReceived = QStringLiteral("TavrinDemo ---- received resume message\r\n");
const QString kUnknown = QStringLiteral("warning unknown message.ignore..\r\n");
const QString kSent = QStringLiteral("TavrinDemo sent minimize to launch\r\n");
const QString kNoConnection = QStringLiteral("error: TavrinDemo dbus connection is null\r\n");
const QString kLost = QStringLiteral("E> MsgThread: the system bus went away");
const QString kBack = QStringLiteral("d> MsgThread: the system bus is back");

const QString kWithoutBus = QStringLiteral("without-bus");
const QString kWithBus = QStringLiteral("with-bus");

/// How often the thread went to sleep.
int sleeps()
{
    return static_cast<int>(ShortWaits::nominal().size());
}

/// A thread's whole life in a process of its own, whose standard streams the test reads. What it
/// notes there itself shows what had been written by then.
int runThread(bool stop)
{
    const auto note = [](int stream, const QByteArray &text) {
        return ::write(stream, text.constData(), static_cast<std::size_t>(text.size())) ==
               text.size();
    };
    MsgThread thread;
    thread.onAppPaused();
    if (!note(STDERR_FILENO, "paused\n"))
        return EXIT_FAILURE;
    thread.start();
    if (stop)
        thread.requestStop();
    const bool ended = thread.wait(kLongMs) && note(STDOUT_FILENO, "ended\n");
    return ended ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

class TestMsgThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void noSystemBusIsReportedAndEndsTheThread();
    void standardOutputWithABus();
    void minimizeIsASignalToTheManager();
    void sendsAnyMember();
    void nameThatIsNoneIsNotSent_data();
    void nameThatIsNoneIsNotSent();
    void resumeIsReported();
    void twoQueuedResumesAreHandledBackToBack();
    void otherMessagesAreUnknown_data();
    void otherMessagesAreUnknown();
    void pollsOnceASecond();
    void busComesBack();
    void busRestartedBeforeTheThreadStarted();
    void sendingWhileTheBusIsAway();
    void busDiesWhileSending();
    void sendingAndReceivingAtTheSameTime();
    void busThatHangsDoesNotHoldUpTheSender();
    void stopEndsTheSleepAtOnce();
    void stopBeforeStartIsNotLost();
    void stopWhileTheBusIsAwayComesAtOnce();
    void destructorOfThreadNeverStarted();

private:
    void makeThread();
    void startLinked();
    void expectLinkWorks();
    int lines(const QString &line) const { return log->lines().count(line); }

    SystemBus bus;
    std::unique_ptr<MessageLog> log;
    std::unique_ptr<ShortWaits> waits;
    std::unique_ptr<MsgThread> thread;
    std::atomic<int> resumes = 0;
};

void TestMsgThread::initTestCase()
{
    QVERIFY(bus.start());
}

void TestMsgThread::init()
{
    QVERIFY(bus.start());
    log = std::make_unique<MessageLog>();
    waits = std::make_unique<ShortWaits>(5);
    makeThread();
}

void TestMsgThread::makeThread()
{
    thread = std::make_unique<MsgThread>();
    resumes = 0;
    connect(
        thread.get(), &MsgThread::appResume, this, [this] { ++resumes; }, Qt::DirectConnection);
}

void TestMsgThread::cleanup()
{
    thread.reset();
    waits.reset();
    const QStringList warnings = log->warnings();
    if (QTest::currentTestFailed())
        qInfo("%s", qPrintable(log->lines().join('\n')));
    log.reset();
    QCOMPARE(warnings, QStringList());
}

/// Starts the thread and waits until the manager's signals reach it and nothing else is on its way.
void TestMsgThread::startLinked()
{
    thread->start();
    QTRY_VERIFY_WITH_TIMEOUT(sleeps() >= 2, kLongMs);
    log->clear();
}

/// Both directions, with other programs at the other end.
void TestMsgThread::expectLinkWorks()
{
    BusMonitor monitor;
    QVERIFY(monitor.start());
    const int before = resumes;
    QVERIFY(bus.emitSignal(kResume));
    QTRY_COMPARE_WITH_TIMEOUT(resumes.load(), before + 1, kLongMs);
    thread->onAppPaused();
    QTRY_COMPARE_WITH_TIMEOUT(monitor.signalsOf(kManagerInterface), QByteArrayList{kMinimize},
                              kLongMs);
}

void TestMsgThread::noSystemBusIsReportedAndEndsTheThread()
{
    const ChildResult result = runSelf({kWithoutBus});
    QVERIFY(result.finished);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output,
             QByteArray("TavrinDemo dbus get error\nRadio recv dbus deamon exit ended\n"));
    const QByteArray line = "error: TavrinDemo dbus connection is null\r\n\n";
    QCOMPARE(result.error, line + "paused\n" + line);
}

void TestMsgThread::standardOutputWithABus()
{
    const ChildResult result = runSelf({kWithBus});
    QVERIFY(result.finished);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output, QByteArray("Radio recv dbus deamon exit ended\n"));
}

void TestMsgThread::minimizeIsASignalToTheManager()
{
    BusMonitor monitor;
    QVERIFY(monitor.start());
    log->clear();
    thread->onAppPaused(); // also before the thread runs
    QTRY_COMPARE_WITH_TIMEOUT(monitor.signalsOf(kManagerInterface), QByteArrayList{kMinimize},
                              kLongMs);
    QCOMPARE(log->lines(), QStringList{kSent});
}

void TestMsgThread::sendsAnyMember()
{
    BusMonitor monitor;
    QVERIFY(monitor.start());
    thread->sendMsg("other_1");
    QTRY_COMPARE_WITH_TIMEOUT(monitor.signalsOf(kManagerInterface).size(), 1, kLongMs);
    QVERIFY(monitor.signalsOf(kManagerInterface).first().contains(" other_1 "));
    QCOMPARE(log->lines(), QStringList{"TavrinDemo sent other_1 to launch\r\n"});
}

void TestMsgThread::nameThatIsNoneIsNotSent_data()
{
    QTest::addColumn<QByteArray>("member");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("blank") << QByteArray("mini mize");
    QTest::newRow("digit in front") << QByteArray("1minimize");
    QTest::newRow("too long") << QByteArray(256, 'm');
}

void TestMsgThread::nameThatIsNoneIsNotSent()
{
    QFETCH(QByteArray, member);
    thread->sendMsg(member.constData());
    QCOMPARE(log->lines(), QStringList{"warning : msg is null for radio send " +
                                       QString::fromLatin1(member) + " to manager \r\n"});
}

void TestMsgThread::resumeIsReported()
{
    startLinked();
    QVERIFY(bus.emitSignal(kResume));
    QTRY_COMPARE_WITH_TIMEOUT(resumes.load(), 1, kLongMs);
    const int before = sleeps();
    QTRY_VERIFY_WITH_TIMEOUT(sleeps() > before + 2, kLongMs);
    QCOMPARE(resumes.load(), 1);
    QCOMPARE(log->lines(), QStringList{kReceived});
}

void TestMsgThread::twoQueuedResumesAreHandledBackToBack()
{
    QSemaphore queued;
    QList<int> sleepsBefore;
    connect(
        thread.get(), &MsgThread::appResume, this,
        [&] {
            sleepsBefore << sleeps();
            if (sleepsBefore.size() == 1)
                queued.tryAcquire(1, kLongMs);
        },
        Qt::DirectConnection);
    startLinked();
    BusMonitor monitor;
    QVERIFY(monitor.start());
    // The first one holds up the thread until the other two wait for it.
    for (int i = 0; i < 3; ++i)
        QVERIFY(bus.emitSignal(kResume));
    QTRY_COMPARE_WITH_TIMEOUT(monitor.signalsOf("brel.app.Ostrel.interface").size(), 3, kLongMs);
    queued.release();
    QTRY_COMPARE_WITH_TIMEOUT(resumes.load(), 3, kLongMs);
    thread.reset();
    QCOMPARE(sleepsBefore.at(1), sleepsBefore.at(0));
    QCOMPARE(sleepsBefore.at(2), sleepsBefore.at(0));
    QCOMPARE(lines(kReceived), 3);
}

void TestMsgThread::otherMessagesAreUnknown_data()
{
    QTest::addColumn<QString>("signal");
    QTest::newRow("another member of the matched interface") << kOtherMember;
    QTest::newRow("the bus's own notice") << QString();
}

void TestMsgThread::otherMessagesAreUnknown()
{
    QFETCH(QString, signal);
    if (signal.isEmpty()) {
        // A bus that is back gives the new connection its name, and says so.
        startLinked();
        bus.stop();
        QTRY_COMPARE_WITH_TIMEOUT(lines(kLost), 1, kLongMs);
        log->clear();
        QVERIFY(bus.start());
    } else {
        startLinked();
        QVERIFY(bus.emitSignal(signal));
    }
    QTRY_COMPARE_WITH_TIMEOUT(lines(kUnknown), 1, kLongMs);
    const int before = sleeps();
    QTRY_VERIFY_WITH_TIMEOUT(sleeps() > before + 2, kLongMs);
    QCOMPARE(lines(kUnknown), 1);
    QCOMPARE(resumes.load(), 0);
}

void TestMsgThread::pollsOnceASecond()
{
    startLinked();
    const std::vector<int> asked = ShortWaits::nominal();
    QCOMPARE(asked, std::vector<int>(asked.size(), 1000));

    waits.reset(); // the real time
    QVERIFY(bus.emitSignal(kResume));
    QElapsedTimer timer;
    timer.start();
    QTRY_COMPARE_WITH_TIMEOUT(resumes.load(), 1, kLongMs);
    QVERIFY2(timer.elapsed() < 3000, QByteArray::number(timer.elapsed()));
}

void TestMsgThread::busComesBack()
{
    waits.reset(); // the real time
    thread->start();
    QTRY_VERIFY_WITH_TIMEOUT(thread->isRunning(), kLongMs);
    for (int round = 1; round <= 2; ++round) {
        expectLinkWorks();
        bus.stop();
        QTRY_COMPARE_WITH_TIMEOUT(lines(kLost), round, kLongMs);
        QVERIFY(thread->isRunning());
        QVERIFY(bus.start());
        QElapsedTimer timer;
        timer.start();
        QTRY_COMPARE_WITH_TIMEOUT(lines(kBack), round, kLongMs);
        QVERIFY2(timer.elapsed() < 5000, QByteArray::number(timer.elapsed()));
    }
    expectLinkWorks();
}

void TestMsgThread::busRestartedBeforeTheThreadStarted()
{
    // The library has no chance to notice it before the match rule is due.
    bus.stop();
    QVERIFY(bus.start());
    thread->start();
    QTRY_COMPARE_WITH_TIMEOUT(lines(kBack), 1, kLongMs);
    expectLinkWorks();
}

void TestMsgThread::sendingWhileTheBusIsAway()
{
    startLinked();
    bus.stop();
    QTRY_COMPARE_WITH_TIMEOUT(lines(kLost), 1, kLongMs);
    log->clear();
    waits->setLength(3600 * 1000);
    QTRY_COMPARE(sleeps(), 1);
    const int before = lines(kNoConnection);
    thread->onAppPaused();
    QCOMPARE(lines(kNoConnection), before + 1);
    QCOMPARE(lines(kSent), 0);
}

void TestMsgThread::busDiesWhileSending()
{
    for (int round = 1; round <= 3; ++round) {
        startLinked();
        for (int i = 0; i < 200; ++i) {
            if (i == 100)
                bus.stop();
            thread->onAppPaused();
        }
        QVERIFY(bus.start());
        QTRY_COMPARE_WITH_TIMEOUT(lines(kBack), 1, kLongMs);
        expectLinkWorks();
        makeThread();
    }
}

void TestMsgThread::sendingAndReceivingAtTheSameTime()
{
    constexpr int kResumes = 20;
    waits->setLength(0);
    startLinked();
    BusMonitor monitor;
    QVERIFY(monitor.start());
    int sent = 0;
    for (int i = 0; i < kResumes; ++i) {
        for (int k = 0; k < 20; ++k, ++sent)
            thread->onAppPaused();
        QVERIFY(bus.emitSignal(kResume));
    }
    QTRY_COMPARE_WITH_TIMEOUT(resumes.load(), kResumes, kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(monitor.signalsOf(kManagerInterface).count(kMinimize), sent, kLongMs);
    QCOMPARE(lines(kSent), sent);
}

void TestMsgThread::busThatHangsDoesNotHoldUpTheSender()
{
    constexpr int kSlowMs = 100;
    constexpr int kTooSlowMs = 1000;
    startLinked();
    BusMonitor monitor;
    QVERIFY(monitor.start());
    QVERIFY(bus.hang());
    // Until the bus takes nothing more, and then some.
    int sent = 0;
    qint64 longest = 0;
    for (int slow = 0; slow < 3 && sent < 20000; ++sent) {
        QElapsedTimer timer;
        timer.start();
        thread->onAppPaused();
        slow += timer.elapsed() > kSlowMs ? 1 : 0;
        longest = std::max(longest, timer.elapsed());
    }
    QVERIFY2(longest > kSlowMs && longest < kTooSlowMs, QByteArray::number(longest));
    QCOMPARE(lines(kSent), sent);

    // Nothing is lost once it goes on.
    QVERIFY(bus.goOn());
    QTRY_COMPARE_WITH_TIMEOUT(monitor.signalsOf(kManagerInterface).count(kMinimize), sent, kLongMs);
}

void TestMsgThread::stopEndsTheSleepAtOnce()
{
    startLinked();
    waits->setLength(3600 * 1000);
    QTRY_COMPARE(sleeps(), 1);
    thread->requestStop();
    QVERIFY(thread->wait(5000));
    thread->requestStop(); // once more is harmless
}

void TestMsgThread::stopBeforeStartIsNotLost()
{
    thread->requestStop();
    thread->start();
    QVERIFY(thread->wait(5000));
    QCOMPARE(sleeps(), 0);
}

void TestMsgThread::stopWhileTheBusIsAwayComesAtOnce()
{
    startLinked();
    bus.stop();
    QTRY_COMPARE_WITH_TIMEOUT(lines(kLost), 1, kLongMs);
    waits->setLength(3600 * 1000);
    QTRY_COMPARE(sleeps(), 1);
    thread->requestStop();
    QVERIFY(thread->wait(5000));
}

void TestMsgThread::destructorOfThreadNeverStarted()
{
    thread.reset();
    QCOMPARE(log->lines(), QStringList());
}

int main(int argc, char *argv[])
{
    if (argc > 1 && kWithoutBus == QLatin1String(argv[1])) {
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        return runThread(false);
    }
    if (argc > 1 && kWithBus == QLatin1String(argv[1]))
        return runThread(true);
    QCoreApplication application(argc, argv);
    TestMsgThread test;
    return QTest::qExec(&test, argc, argv);
}

#include "TestMsgThread.moc"
