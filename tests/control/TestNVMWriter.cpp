// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemError.h"
#include "base/SystemHooks.h"
#include "control/NVMWriter.h"
#include "gnss/GnssInfo.h"
#include "support/CommandPipeReader.h"
#include "support/MessageLog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <cerrno>
#include <memory>

namespace {

constexpr int kLongMs = 60000;
constexpr int kSoonMs = 10000;
const QByteArray kStore = "$PPLMT,0\r\n";
const QString kRunLine = "d> nvmStoreToFlash: nvmStoreToFlash run!";
const QString kSentLine = "d> NVM Store: NVM Store now: $PPLMT,0\r\n";

int waitMs = 0;
int lastNominalMs = 0;

} // namespace

class TestNVMWriter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void oneUpdateSendsExactlyOneCommandAfterTheDelay();
    void delayIsThirtySixSeconds();
    void updateFromAnotherThreadArrivesQueued();
    void stopDuringTheWaitSendsAsSoonAsTheHandlerReturned();
    void afterAStopEveryUpdateSendsAtOnce();
    void updateDuringTheWaitRunsItsOwnWaitInnermostFirst();
    void stopUnwindsNestedWaits();
    void quitOfTheApplicationSendsWhatIsDue();
    void unwritablePipeGivesTheErrorLine();
    void hearsNothingOnceDestroyed();

private:
    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<MessageLog> trace;
    std::unique_ptr<CommandPipeReader> reader;
    std::unique_ptr<NVMWriter> writer;
};

void TestNVMWriter::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(root->path()).mkdir("tmp"));
    qputenv("TAVRIN_ROOT", QFile::encodeName(root->path()));
    reader = std::make_unique<CommandPipeReader>(QFile::encodeName(root->filePath("tmp/agiout")));
    waitMs = 20;
    lastNominalMs = 0;
    SystemHooks::setWaitLength([](int nominalMs) {
        lastNominalMs = nominalMs;
        return waitMs;
    });
    trace = std::make_unique<MessageLog>();
    writer = std::make_unique<NVMWriter>();
}

void TestNVMWriter::cleanup()
{
    writer.reset();
    reader.reset();
    SystemHooks::setWaitLength(nullptr);
    const QStringList warnings = trace->warnings();
    trace.reset();
    QCOMPARE(warnings, QStringList());
}

void TestNVMWriter::oneUpdateSendsExactlyOneCommandAfterTheDelay()
{
    waitMs = 100;
    QTimer::singleShot(50, this, [this] { trace->note("half the delay"); });
    QElapsedTimer clock;
    clock.start();
    emit GnssInfo::instance()->nvmUpdate();
    QVERIFY(clock.elapsed() >= 100);
    QTRY_COMPARE(reader->sentences(), QByteArrayList({kStore}));
    QCOMPARE(reader->writerCloses(), 1);
    QCOMPARE(trace->lines(), QStringList({kRunLine, "half the delay", kSentLine}));
}

void TestNVMWriter::delayIsThirtySixSeconds()
{
    emit GnssInfo::instance()->nvmUpdate();
    QCOMPARE(lastNominalMs, 36000);
}

void TestNVMWriter::updateFromAnotherThreadArrivesQueued()
{
    const std::unique_ptr<QThread> readingThread(
        QThread::create([] { emit GnssInfo::instance()->nvmUpdate(); }));
    readingThread->start();
    QVERIFY(readingThread->wait(kSoonMs));
    QCOMPARE(trace->lines(), QStringList());
    QTRY_COMPARE(reader->sentences(), QByteArrayList({kStore}));
}

void TestNVMWriter::stopDuringTheWaitSendsAsSoonAsTheHandlerReturned()
{
    waitMs = kLongMs;
    QTimer::singleShot(10, this, [this] {
        writer->requestStop();
        trace->note("handler returns");
    });
    QElapsedTimer clock;
    clock.start();
    emit GnssInfo::instance()->nvmUpdate();
    QVERIFY(clock.elapsed() < kSoonMs);
    QTRY_COMPARE(reader->sentences(), QByteArrayList({kStore}));
    QCOMPARE(trace->lines(), QStringList({kRunLine, "handler returns", kSentLine}));
}

void TestNVMWriter::afterAStopEveryUpdateSendsAtOnce()
{
    waitMs = kLongMs;
    writer->requestStop();
    QElapsedTimer clock;
    clock.start();
    emit GnssInfo::instance()->nvmUpdate();
    emit GnssInfo::instance()->nvmUpdate();
    QVERIFY(clock.elapsed() < kSoonMs);
    QTRY_COMPARE(reader->sentences().join(), kStore + kStore);
    QCOMPARE(reader->writerCloses(), 2);
}

void TestNVMWriter::updateDuringTheWaitRunsItsOwnWaitInnermostFirst()
{
    waitMs = 100;
    QElapsedTimer innermost;
    QTimer::singleShot(20, this, [this, &innermost] {
        innermost.start();
        emit GnssInfo::instance()->nvmUpdate();
        trace->note("inner done");
        QVERIFY(innermost.elapsed() >= 100);
    });
    emit GnssInfo::instance()->nvmUpdate();
    trace->note("outer done");
    QTRY_COMPARE(reader->sentences().join(), kStore + kStore);
    QCOMPARE(reader->writerCloses(), 2);
    QCOMPARE(trace->lines(),
             QStringList({kRunLine, kRunLine, kSentLine, "inner done", kSentLine, "outer done"}));
}

void TestNVMWriter::stopUnwindsNestedWaits()
{
    waitMs = kLongMs;
    QTimer::singleShot(10, this, [] { emit GnssInfo::instance()->nvmUpdate(); });
    QTimer::singleShot(30, this, [this] { writer->requestStop(); });
    QElapsedTimer clock;
    clock.start();
    emit GnssInfo::instance()->nvmUpdate();
    QVERIFY(clock.elapsed() < kSoonMs);
    QTRY_COMPARE(reader->sentences().join(), kStore + kStore);
}

void TestNVMWriter::quitOfTheApplicationSendsWhatIsDue()
{
    waitMs = kLongMs;
    QTimer::singleShot(0, this, [] { emit GnssInfo::instance()->nvmUpdate(); });
    QTimer::singleShot(20, this, [] { QCoreApplication::quit(); });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(clock.elapsed() < kSoonMs);
    QTRY_COMPARE(reader->sentences(), QByteArrayList({kStore}));
}

void TestNVMWriter::unwritablePipeGivesTheErrorLine()
{
    reader.reset();
    const QString path = root->filePath("tmp/agiout");
    QVERIFY(QFile::remove(path));
    QVERIFY(QDir().mkdir(path));
    emit GnssInfo::instance()->nvmUpdate();
    QCOMPARE(
        trace->lines(),
        QStringList(
            {kRunLine, QString("E> NVM Store: File (%1): %2").arg(path, systemErrorText(EISDIR))}));
}

void TestNVMWriter::hearsNothingOnceDestroyed()
{
    writer.reset();
    emit GnssInfo::instance()->nvmUpdate();
    QCOMPARE(trace->lines(), QStringList());
}

QTEST_GUILESS_MAIN(TestNVMWriter)
#include "TestNVMWriter.moc"
