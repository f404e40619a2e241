// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/ReadNMEAThread.h"

#include "gnss/GnssInfo.h"
#include "support/InputPipe.h"
#include "support/MessageLog.h"
#include "support/NmeaSentences.h"
#include "support/Publications.h"
#include "support/ShortWaits.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>

using NmeaSentences::sentence;

namespace {

const QByteArray kRmc = sentence("GPRMC,123519.000,A,4807.0380,N,01131.0000,E,0,0,230326,,,A");
const QString kTryLine = QStringLiteral("d> ReadNMEAThread: ReadNMEAThread try to start");
const QString kStopLine = QStringLiteral("d> ReadNMEAThread: ReadNMEAThread stopReading");

QByteArray gga(int quality)
{
    return sentence("GPGGA,123519.000,4807.0380,N,01131.0000,E," + QByteArray::number(quality) +
                    ",08,0.9,545.4,M");
}

int waitsOf(int nominalMs)
{
    const std::vector<int> asked = ShortWaits::nominal();
    return static_cast<int>(std::count(asked.begin(), asked.end(), nominalMs));
}

} // namespace

class TestReadNMEAThread : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void withoutPipeTriesOnceASecondForever();
    void firstAttemptComesASecondAfterTheStart();
    void opensPipeThatIsMadeLater();
    void idlePipeEmitsNoTrue_data();
    void idlePipeEmitsNoTrue();
    void idlePipeGivesReadErrorEveryPass();
    void eachReadWithDataEmitsOneTrue();
    void decodesOnTheThreadItself();

    void stopEndsWithOneFinalFalse_data();
    void stopEndsWithOneFinalFalse();
    void stopBeforeStartIsNotLost();
    void stopRightAfterStartIsNotLost();
    void stopWhileWaitingForThePipeComesAtOnce();
    void stopWhileThePipeIsIdleComesAtOnce();
    void stopTwiceIsHarmless();
    void stopReadingLeavesTheEventLoopRunning();
    void stopReadingThenExitEndsTheThread();
    void exitAskedForWhileReadingIsKept();
    void destructorStopsAndWaits_data();
    void destructorStopsAndWaits();
    void destructorOfThreadNeverStarted();

    void clearBufferBeforeTheReaderExists();
    void clearBufferReachesTheReader();
    void clearBufferWhileDataFlows();

    void writerClosesAndComesBack();
    void pipeReplacedByAnother();
    void pipeRemovedAndMadeAgain();

private:
    void makeThread();
    void startReading();
    int lines(const QString &line) const { return log->lines().count(line); }

    GnssInfo *model = GnssInfo::instance();
    std::unique_ptr<MessageLog> log;
    std::unique_ptr<ShortWaits> waits;
    std::unique_ptr<InputPipe> pipe;
    std::unique_ptr<ReadNMEAThread> thread;
    QList<bool> levels; // of tryStart
    int doneSignals = 0;
};

void TestReadNMEAThread::init()
{
    log = std::make_unique<MessageLog>();
    waits = std::make_unique<ShortWaits>(1);
    pipe = std::make_unique<InputPipe>();
    Publications::resetModel();
    makeThread();
}

void TestReadNMEAThread::makeThread()
{
    levels.clear();
    thread = std::make_unique<ReadNMEAThread>();
    connect(thread.get(), &ReadNMEAThread::tryStart, this,
            [this](bool gotData) { levels << gotData; });
    connect(thread.get(), &ReadNMEAThread::done, this, [this] { ++doneSignals; });
}

void TestReadNMEAThread::cleanup()
{
    thread.reset();
    pipe.reset();
    waits.reset();
    const QStringList warnings = log->warnings();
    log.reset();
    QCoreApplication::processEvents();
    QCOMPARE(warnings, QStringList());
    QCOMPARE(doneSignals, 0); // never emitted
}

/// Lets the thread open the pipe and find it without data.
void TestReadNMEAThread::startReading()
{
    QVERIFY(pipe->make());
    thread->start();
    QTRY_VERIFY(waitsOf(500) > 0);
    QTRY_COMPARE(levels, QList<bool>({false}));
    QVERIFY(pipe->openWriter());
}

void TestReadNMEAThread::withoutPipeTriesOnceASecondForever()
{
    thread->start();
    QTRY_VERIFY(levels.size() >= 50);
    thread->requestStop();
    QVERIFY(thread->wait(5000));
    QCoreApplication::processEvents();

    QCOMPARE(levels.count(true), 0);
    const std::vector<int> asked = ShortWaits::nominal();
    QCOMPARE(asked, std::vector<int>(asked.size(), 1000));
    // One line before each wait, one signal and one attempt behind it; the last wait may have been
    // cut short by the stop.
    const int attempts = lines("d> NmeaReader: notifier_start");
    QCOMPARE(lines(kTryLine), int(asked.size()));
    QVERIFY(attempts == int(asked.size()) || attempts == int(asked.size()) - 1);
    QCOMPARE(levels.size(), attempts + 1);
    const QString openError = "open error " + QString::fromLocal8Bit(strerror(ENOENT));
    QStringList expected = {"d> ReadNMEAThread: ReadNMEAThread run"};
    for (int i = 0; i < 3; ++i)
        expected << kTryLine << "d> NmeaReader: notifier_start" << openError;
    QCOMPARE(log->lines().mid(0, expected.size()), expected);
}

void TestReadNMEAThread::firstAttemptComesASecondAfterTheStart()
{
    waits.reset(); // the real time
    QVERIFY(pipe->make());
    QElapsedTimer timer;
    timer.start();
    thread->start();
    QTRY_VERIFY(!levels.isEmpty());
    QVERIFY2(timer.elapsed() >= 999, QByteArray::number(timer.elapsed()));
    QTRY_VERIFY(pipe->openWriter());
}

void TestReadNMEAThread::opensPipeThatIsMadeLater()
{
    thread->start();
    QTRY_VERIFY(levels.size() >= 3);
    QVERIFY(pipe->make());
    QTRY_VERIFY(pipe->openWriter());
    QVERIFY(pipe->write(kRmc));
    QTRY_COMPARE(levels.count(true), 1);
}

void TestReadNMEAThread::idlePipeEmitsNoTrue_data()
{
    QTest::addColumn<bool>("withWriter");
    QTest::newRow("nobody writes") << false;
    QTest::newRow("a silent writer") << true;
}

void TestReadNMEAThread::idlePipeEmitsNoTrue()
{
    QFETCH(bool, withWriter);
    startReading();
    if (!withWriter)
        pipe->closeWriter();
    const int before = waitsOf(500);
    QTRY_VERIFY(waitsOf(500) >= before + 20);
    QCoreApplication::processEvents();
    QCOMPARE(levels, QList<bool>({false}));
    QVERIFY(!thread->isReading());
    QVERIFY(!model->isDataReceived());
}

void TestReadNMEAThread::idlePipeGivesReadErrorEveryPass()
{
    startReading();
    const QString line = "read error " + QString::fromLocal8Bit(strerror(EAGAIN));
    QTRY_VERIFY(lines(line) >= 10);
    pipe->closeWriter();
    QTRY_VERIFY(waitsOf(500) - lines(line) >= 10); // and none while nobody writes
}

void TestReadNMEAThread::eachReadWithDataEmitsOneTrue()
{
    startReading();
    for (int reads = 1; reads <= 5; ++reads) {
        QVERIFY(pipe->write(kRmc));
        QTRY_COMPARE(levels.size(), 1 + reads);
        QCOMPARE(levels.count(true), reads);
        QVERIFY(thread->isReading());
        // Passes without data emit nothing.
        const int before = waitsOf(500);
        QTRY_VERIFY(waitsOf(500) >= before + 3);
        QCOMPARE(levels.size(), 1 + reads);
    }
}

void TestReadNMEAThread::decodesOnTheThreadItself()
{
    startReading();
    std::atomic<QThread *> decoder = nullptr;
    QThread *receiver = nullptr;
    QObject context;
    connect(
        model, &GnssInfo::locationUpdate, &context, [&] { decoder = QThread::currentThread(); },
        Qt::DirectConnection);
    connect(model, &GnssInfo::locationUpdate, &context,
            [&] { receiver = QThread::currentThread(); });
    QVERIFY(pipe->write(gga(1) + kRmc));
    QTRY_VERIFY(receiver != nullptr);
    QCOMPARE(receiver, QThread::currentThread());
    QCOMPARE(decoder.load(), static_cast<QThread *>(thread.get()));
    QCOMPARE(model->getLocation().fix, 1);
    thread.reset();
}

void TestReadNMEAThread::stopEndsWithOneFinalFalse_data()
{
    QTest::addColumn<bool>("withData");
    QTest::newRow("after data") << true;
    QTest::newRow("before any data") << false;
}

void TestReadNMEAThread::stopEndsWithOneFinalFalse()
{
    QFETCH(bool, withData);
    startReading();
    QList<bool> expected = {false};
    if (withData) {
        QVERIFY(pipe->write(kRmc));
        expected << true;
        QTRY_COMPARE(levels, expected);
    }
    thread->requestStop();
    QVERIFY(thread->wait(5000));
    QCoreApplication::processEvents();
    expected << false;
    QCOMPARE(levels, expected);
    QVERIFY(!thread->isReading());
    QCOMPARE(lines(kStopLine), 1);
    QCOMPARE(log->lines().last(), kStopLine);
}

void TestReadNMEAThread::stopBeforeStartIsNotLost()
{
    thread->requestStop();
    thread->start();
    QVERIFY(thread->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(levels, QList<bool>({false}));
    QCOMPARE(log->lines(), QStringList({"d> ReadNMEAThread: ReadNMEAThread run", kStopLine}));
}

void TestReadNMEAThread::stopRightAfterStartIsNotLost()
{
    for (int round = 0; round < 200; ++round) {
        makeThread();
        thread->start();
        for (int spin = 0; spin < round * 50; ++spin)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        thread->requestStop();
        QVERIFY(thread->wait(5000));
        QCoreApplication::processEvents();
        QVERIFY(levels.size() >= 1);
        QCOMPARE(levels.count(true), 0);
        QCOMPARE(lines(kStopLine), round + 1);
    }
}

void TestReadNMEAThread::stopWhileWaitingForThePipeComesAtOnce()
{
    waits->setLength(3600 * 1000);
    thread->start();
    QTRY_COMPARE(waitsOf(1000), 1);
    thread->requestStop();
    QVERIFY(thread->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(levels, QList<bool>({false})); // the final one, there was no attempt
    QCOMPARE(lines("d> NmeaReader: notifier_start"), 0);
}

void TestReadNMEAThread::stopWhileThePipeIsIdleComesAtOnce()
{
    startReading();
    waits->setLength(3600 * 1000);
    QTRY_COMPARE(waitsOf(500), 1);
    thread->requestStop();
    QVERIFY(thread->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(levels, QList<bool>({false, false}));
}

void TestReadNMEAThread::stopTwiceIsHarmless()
{
    startReading();
    thread->requestStop();
    thread->requestStop();
    QVERIFY(thread->wait(5000));
    thread->requestStop();
    QCoreApplication::processEvents();
    QCOMPARE(levels, QList<bool>({false, false}));
}

void TestReadNMEAThread::stopReadingLeavesTheEventLoopRunning()
{
    startReading();
    thread->stopReading();
    QTRY_COMPARE(levels, QList<bool>({false, false}));
    QVERIFY(!thread->wait(50));
    // Work for its event loop is done there.
    QObject worker;
    worker.moveToThread(thread.get());
    std::atomic<bool> worked = false;
    QMetaObject::invokeMethod(&worker, [&] {
        worked = true;
        worker.moveToThread(qApp->thread());
    });
    QTRY_VERIFY(worked);
    thread->exit(0);
    QVERIFY(thread->wait(5000));
}

void TestReadNMEAThread::stopReadingThenExitEndsTheThread()
{
    startReading();
    thread->stopReading();
    thread->exit(0);
    QVERIFY(thread->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(levels, QList<bool>({false, false}));
}

void TestReadNMEAThread::exitAskedForWhileReadingIsKept()
{
    startReading();
    thread->exit(0);
    QVERIFY(!thread->wait(50)); // reading goes on until its own flag
    QVERIFY(pipe->write(kRmc));
    QTRY_COMPARE(levels.count(true), 1);
    thread->stopReading();
    QVERIFY(thread->wait(5000));
}

void TestReadNMEAThread::destructorStopsAndWaits_data()
{
    QTest::addColumn<bool>("reading");
    QTest::newRow("waiting for the pipe") << false;
    QTest::newRow("reading") << true;
}

void TestReadNMEAThread::destructorStopsAndWaits()
{
    QFETCH(bool, reading);
    if (reading)
        startReading();
    waits->setLength(3600 * 1000);
    thread->start();
    QTRY_VERIFY(!ShortWaits::nominal().empty());
    thread.reset();
    QCOMPARE(lines(kStopLine), 1);
}

void TestReadNMEAThread::destructorOfThreadNeverStarted()
{
    thread.reset();
    QCOMPARE(log->lines(), QStringList());
}

void TestReadNMEAThread::clearBufferBeforeTheReaderExists()
{
    thread->clearBuffer();
    QVERIFY(!thread->isReading());
    QCOMPARE(log->lines(), QStringList());
}

void TestReadNMEAThread::clearBufferReachesTheReader()
{
    startReading();
    QVERIFY(pipe->write(gga(4) + kRmc));
    QTRY_COMPARE(levels.count(true), 1);
    QCOMPARE(model->getLocation().fix, 4);
    thread->clearBuffer();
    QCOMPARE(lines("d> NmeaReader: NmeaReader clearBuf"), 1);
    QVERIFY(!model->isDataReceived());
    QVERIFY(pipe->write(kRmc));
    QTRY_COMPARE(levels.count(true), 2);
    QCOMPARE(model->getLocation().fix, 0);

    thread->requestStop();
    QVERIFY(thread->wait(5000));
    thread->clearBuffer(); // the reader outlives its thread
    QCOMPARE(lines("d> NmeaReader: NmeaReader clearBuf"), 2);
}

// No lock is taken; whatever a clear meets, the next cycle is whole again.
void TestReadNMEAThread::clearBufferWhileDataFlows()
{
    startReading();
    for (int second = 0; second < 40; ++second) {
        const int reads = levels.count(true);
        QVERIFY(pipe->write(NmeaSentences::epochOf31Satellites(second)));
        thread->clearBuffer();
        QTRY_VERIFY(levels.count(true) > reads);
    }
    for (int second = 40; second < 42; ++second) {
        QVERIFY(pipe->write(NmeaSentences::epochOf31Satellites(second)));
        QTRY_COMPARE(model->getUtcTime().minute * 60 + int(model->getUtcTime().second), second);
    }
    QTRY_COMPARE(model->getLocation().fixTime, 41.0);
    QCOMPARE(model->getSvStatus().numSvs, 31);
    QCOMPARE(model->getLocation().latitude, 48.1173);
}

void TestReadNMEAThread::writerClosesAndComesBack()
{
    startReading();
    for (int round = 1; round <= 3; ++round) {
        QVERIFY(pipe->openWriter());
        QVERIFY(pipe->write(gga(round) + kRmc));
        QTRY_COMPARE(levels.count(true), round);
        QCOMPARE(model->getLocation().fix, round);
        pipe->closeWriter();
        const int before = waitsOf(500);
        QTRY_VERIFY(waitsOf(500) >= before + 3);
    }
    QCOMPARE(levels.count(false), 1);
}

void TestReadNMEAThread::pipeReplacedByAnother()
{
    startReading();
    for (int round = 1; round <= 3; ++round) {
        QVERIFY(pipe->write(gga(round) + kRmc));
        QTRY_COMPARE(levels.count(true), round);
        QCOMPARE(model->getLocation().fix, round);
        pipe->closeWriter();
        QVERIFY(pipe->remove() && pipe->make());
        QTRY_VERIFY(pipe->openWriter()); // as soon as the reader has opened the new one
    }
    QCOMPARE(lines("d> NmeaReader: notifier_start"), 1);
}

void TestReadNMEAThread::pipeRemovedAndMadeAgain()
{
    startReading();
    pipe->closeWriter();
    QVERIFY(pipe->remove());
    const int before = waitsOf(500);
    QTRY_VERIFY(waitsOf(500) >= before + 5);
    QVERIFY(pipe->make());
    QTRY_VERIFY(pipe->openWriter());
    QVERIFY(pipe->write(kRmc));
    QTRY_COMPARE(levels.count(true), 1);
    QCOMPARE(levels.count(false), 1); // reading never ended
}

QTEST_GUILESS_MAIN(TestReadNMEAThread)
#include "TestReadNMEAThread.moc"
