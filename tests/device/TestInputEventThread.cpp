// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "device/InputEventThread.h"
#include "support/KeyDevice.h"
#include "support/MessageLog.h"
#include "support/SelfProcess.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kLongMs = 30000;
constexpr int kSynchronisation = 0;
constexpr int kKey = 1;
constexpr int kAbsoluteAxis = 3;
constexpr int kHome = 172;
constexpr int kVolumeUp = 115;
constexpr int kReleased = 0;
constexpr int kPressed = 1;
constexpr int kRepeated = 2;

const QString kStart = QStringLiteral("InputEventThread start");
const QString kWithoutDevice = QStringLiteral("without-device");

/// What a read of the key device is told before the pipe itself is asked.
struct PlayedKernel
{
    std::atomic<std::size_t> smallestRead = 0; ///< a read of less is refused
    std::atomic<int> interruptions = 0;        ///< as many reads are interrupted first
    std::atomic<int> refusals = 0;             ///< reads refused so far
};
PlayedKernel kernel;

void ignoreSignal(int) {}

bool isPipe(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

} // namespace

// The linker puts this in the place of read(): a pipe is neither interrupted at will nor does it
// refuse short reads, as the event device of a 64-bit kernel does.
extern "C" {
ssize_t __real_read(int descriptor, void *buffer, std::size_t size);

ssize_t __wrap_read(int descriptor, void *buffer, std::size_t size)
{
    if (isPipe(descriptor) && kernel.interruptions > 0) {
        --kernel.interruptions;
        errno = EINTR;
        return -1;
    }
    if (isPipe(descriptor) && size < kernel.smallestRead) {
        ++kernel.refusals;
        errno = EINVAL;
        return -1;
    }
    return __real_read(descriptor, buffer, size);
}
}

class TestInputEventThread : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void missingDeviceGivesOneLineAndEndsTheThread();
    void homeKeyPressedAndReleasedIsOneEvent_data();
    void homeKeyPressedAndReleasedIsOneEvent();
    void whatEachRecordDoes_data();
    void whatEachRecordDoes();
    void recordsInOneWriteAreAllRead();
    void shortRecordIsIgnored_data();
    void shortRecordIsIgnored();
    void kernelOf64BitIsReadInLargerRecords();
    void refusalOfBothSizesEndsTheThread();
    void interruptedReadIsRepeated();
    void signalWhileWaitingChangesNothing();
    void waitsForTheFirstWriter();
    void lastWriterGoneEndsTheThread_data();
    void lastWriterGoneEndsTheThread();
    void deviceThatCannotBeReadEndsTheThread();
    void stopWhileWaitingForAWriterComesAtOnce();
    void stopWhileReadingComesAtOnce();
    void stopBeforeStartIsNotLost();
    void stopAtAnyTimeIsNotLost();
    void deviceStaysOpenUntilTheObjectGoes();
    void destructorOfThreadNeverStarted();

private:
    void makeThread();
    void startReading();
    void press(int code, const KeyDevice::Layout &layout = KeyDevice::k32Bit);
    int lines(const QString &line) const { return log->lines().count(line); }

    std::unique_ptr<MessageLog> log;
    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<KeyDevice> device;
    std::unique_ptr<InputEventThread> thread;
    std::atomic<int> homeKeys = 0;
    std::atomic<pthread_t> worker = {};
};

void TestInputEventThread::init()
{
    log = std::make_unique<MessageLog>();
    root = std::make_unique<QTemporaryDir>();
    qputenv("TAVRIN_ROOT", QFile::encodeName(root->path()));
    device = std::make_unique<KeyDevice>(root->path());
    kernel.smallestRead = 0;
    kernel.interruptions = 0;
    kernel.refusals = 0;
    makeThread();
}

void TestInputEventThread::makeThread()
{
    homeKeys = 0;
    thread = std::make_unique<InputEventThread>();
    connect(
        thread.get(), &InputEventThread::getEvent, this,
        [this] {
            worker = pthread_self();
            ++homeKeys;
        },
        Qt::DirectConnection);
}

void TestInputEventThread::cleanup()
{
    thread.reset();
    device.reset();
    root.reset();
    qunsetenv("TAVRIN_ROOT");
    const QStringList warnings = log->warnings();
    log.reset();
    QCOMPARE(warnings, QStringList());
}

void TestInputEventThread::startReading()
{
    QVERIFY(device->make());
    thread->start();
    QTRY_VERIFY_WITH_TIMEOUT(device->openWriter(), kLongMs);
}

void TestInputEventThread::press(int code, const KeyDevice::Layout &layout)
{
    for (const int value : {kPressed, kReleased}) {
        QVERIFY(device->write(KeyDevice::record(kKey, code, value, layout)));
        QVERIFY(device->write(KeyDevice::record(kSynchronisation, 0, 0, layout)));
    }
}

void TestInputEventThread::missingDeviceGivesOneLineAndEndsTheThread()
{
    const ChildResult child = runSelf({kWithoutDevice});
    QVERIFY(child.finished);
    QCOMPARE(child.exitCode, 0);
    QCOMPARE(child.output, QByteArray("Can't open the input file\nended\n"));
    QCOMPARE(child.error, QByteArray("\"InputEventThread start\"\n"));
}

void TestInputEventThread::homeKeyPressedAndReleasedIsOneEvent_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("events");
    QTest::newRow("home key") << kHome << 1;
    QTest::newRow("another key: only the debug line") << kVolumeUp << 0;
}

void TestInputEventThread::homeKeyPressedAndReleasedIsOneEvent()
{
    QFETCH(int, code);
    QFETCH(int, events);
    startReading();
    press(code);
    const QString line = QStringLiteral("event code: %1, event value: %2");
    const QStringList expected = {kStart, line.arg(code).arg(kPressed),
                                  line.arg(code).arg(kReleased)};
    QTRY_COMPARE_WITH_TIMEOUT(log->lines(), expected, kLongMs);
    device->closeWriter();
    QVERIFY(thread->wait(kLongMs));
    QCOMPARE(log->lines(), expected);
    QCOMPARE(homeKeys.load(), events);
}

void TestInputEventThread::whatEachRecordDoes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("events");
    QTest::newRow("home key released")
        << kKey << kHome << kReleased << "event code: 172, event value: 0" << 1;
    QTest::newRow("home key pressed")
        << kKey << kHome << kPressed << "event code: 172, event value: 1" << 0;
    QTest::newRow("home key repeated")
        << kKey << kHome << kRepeated << "event code: 172, event value: 2" << 0;
    QTest::newRow("negative value")
        << kKey << kHome << -1 << "event code: 172, event value: -1" << 0;
    QTest::newRow("value beyond 16 bits")
        << kKey << kHome << 65536 << "event code: 172, event value: 65536" << 0;
    QTest::newRow("largest code") << kKey << 65535 << kReleased
                                  << "event code: 65535, event value: 0" << 0;
    QTest::newRow("neighbouring code")
        << kKey << kHome + 1 << kReleased << "event code: 173, event value: 0" << 0;
    QTest::newRow("synchronisation") << kSynchronisation << kHome << kReleased << QString() << 0;
    QTest::newRow("axis") << kAbsoluteAxis << kHome << kReleased << QString() << 0;
    QTest::newRow("type beyond 8 bits") << 257 << kHome << kReleased << QString() << 0;
}

void TestInputEventThread::whatEachRecordDoes()
{
    QFETCH(int, type);
    QFETCH(int, code);
    QFETCH(int, value);
    QFETCH(QString, line);
    QFETCH(int, events);
    for (const KeyDevice::Layout &layout : {KeyDevice::k32Bit, KeyDevice::k64Bit}) {
        kernel.smallestRead = static_cast<std::size_t>(layout.size);
        log->clear();
        startReading();
        QVERIFY(device->write(KeyDevice::record(type, code, value, layout)));
        device->closeWriter();
        QVERIFY(thread->wait(kLongMs));
        QCOMPARE(log->lines(), line.isEmpty() ? QStringList{kStart} : QStringList({kStart, line}));
        QCOMPARE(homeKeys.load(), events);
        makeThread();
        QVERIFY(QFile::remove(QFile::decodeName(device->fileName())));
    }
}

void TestInputEventThread::recordsInOneWriteAreAllRead()
{
    constexpr int kKeys = 50;
    startReading();
    QByteArray records;
    for (int i = 0; i < kKeys; ++i)
        records +=
            KeyDevice::record(kKey, kHome, kPressed) + KeyDevice::record(kKey, kHome, kReleased);
    QVERIFY(device->write(records));
    QTRY_COMPARE_WITH_TIMEOUT(homeKeys.load(), kKeys, kLongMs);
}

void TestInputEventThread::shortRecordIsIgnored_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("one byte") << 1;
    QTest::newRow("without the value") << 12;
    QTest::newRow("one byte less") << 15;
}

void TestInputEventThread::shortRecordIsIgnored()
{
    QFETCH(int, size);
    startReading();
    const QByteArray released = KeyDevice::record(kKey, kHome, kReleased);
    QVERIFY(device->write(released.left(size)));
    // Only what is read alone is short.
    int unread = -1;
    const int reader = ::open(device->fileName().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QTRY_VERIFY_WITH_TIMEOUT(::ioctl(reader, FIONREAD, &unread) == 0 && unread == 0, kLongMs);
    ::close(reader);
    QVERIFY(device->write(released));
    QTRY_COMPARE_WITH_TIMEOUT(homeKeys.load(), 1, kLongMs);
    QCOMPARE(lines("event code: 172, event value: 0"), 1);
}

void TestInputEventThread::kernelOf64BitIsReadInLargerRecords()
{
    kernel.smallestRead = static_cast<std::size_t>(KeyDevice::k64Bit.size);
    startReading();
    press(kHome, KeyDevice::k64Bit);
    press(kVolumeUp, KeyDevice::k64Bit);
    QTRY_COMPARE_WITH_TIMEOUT(lines("event code: 115, event value: 0"), 1, kLongMs);
    QCOMPARE(homeKeys.load(), 1);
    // Found out once.
    QCOMPARE(kernel.refusals.load(), 1);
}

void TestInputEventThread::refusalOfBothSizesEndsTheThread()
{
    kernel.smallestRead = 1000;
    startReading();
    QVERIFY(device->write(KeyDevice::record(kKey, kHome, kReleased)));
    QVERIFY(thread->wait(kLongMs));
    QCOMPARE(kernel.refusals.load(), 2);
    QCOMPARE(homeKeys.load(), 0);
}

void TestInputEventThread::interruptedReadIsRepeated()
{
    kernel.interruptions = 5;
    startReading();
    press(kHome);
    QTRY_COMPARE_WITH_TIMEOUT(homeKeys.load(), 1, kLongMs);
    QCOMPARE(kernel.interruptions.load(), 0);
    QVERIFY(thread->isRunning());
}

void TestInputEventThread::signalWhileWaitingChangesNothing()
{
    struct sigaction action = {};
    struct sigaction previous = {};
    action.sa_handler = ignoreSignal; // without SA_RESTART
    QCOMPARE(::sigaction(SIGUSR1, &action, &previous), 0);
    startReading();
    press(kHome);
    QTRY_COMPARE_WITH_TIMEOUT(homeKeys.load(), 1, kLongMs);
    for (int i = 0; i < 20; ++i) {
        QCOMPARE(pthread_kill(worker, SIGUSR1), 0);
        QVERIFY(!thread->wait(1));
    }
    press(kHome);
    QTRY_COMPARE_WITH_TIMEOUT(homeKeys.load(), 2, kLongMs);
    QCOMPARE(::sigaction(SIGUSR1, &previous, nullptr), 0);
}

void TestInputEventThread::waitsForTheFirstWriter()
{
    QVERIFY(device->make());
    thread->start();
    QTRY_COMPARE_WITH_TIMEOUT(lines(kStart), 1, kLongMs);
    QVERIFY(!thread->wait(200));
    QTRY_VERIFY_WITH_TIMEOUT(device->openWriter(), kLongMs);
    QVERIFY(!thread->wait(100));
    press(kHome);
    QTRY_COMPARE_WITH_TIMEOUT(homeKeys.load(), 1, kLongMs);
}

void TestInputEventThread::lastWriterGoneEndsTheThread_data()
{
    QTest::addColumn<bool>("wrote");
    QTest::newRow("after it wrote") << true;
    QTest::newRow("which wrote nothing") << false;
}

void TestInputEventThread::lastWriterGoneEndsTheThread()
{
    QFETCH(bool, wrote);
    startReading();
    if (wrote)
        press(kHome);
    device->closeWriter();
    QVERIFY(thread->wait(kLongMs));
    QCOMPARE(homeKeys.load(), wrote ? 1 : 0);
}

void TestInputEventThread::deviceThatCannotBeReadEndsTheThread()
{
    QVERIFY(QDir().mkdir(QFile::decodeName(device->fileName())));
    thread->start();
    QVERIFY(thread->wait(kLongMs));
    QCOMPARE(log->lines(), QStringList{kStart});
}

void TestInputEventThread::stopWhileWaitingForAWriterComesAtOnce()
{
    QVERIFY(device->make());
    thread->start();
    QTRY_COMPARE_WITH_TIMEOUT(lines(kStart), 1, kLongMs);
    QVERIFY(!thread->wait(50));
    thread->requestStop();
    QVERIFY(thread->wait(1000));
}

void TestInputEventThread::stopWhileReadingComesAtOnce()
{
    startReading();
    press(kHome);
    QTRY_COMPARE_WITH_TIMEOUT(homeKeys.load(), 1, kLongMs);
    QVERIFY(!thread->wait(50));
    thread->requestStop();
    QVERIFY(thread->wait(1000));
    thread->requestStop(); // once more is harmless
}

void TestInputEventThread::stopBeforeStartIsNotLost()
{
    QVERIFY(device->make());
    thread->requestStop();
    thread->start();
    QVERIFY(thread->wait(5000));
    QCOMPARE(log->lines(), QStringList{kStart});
}

void TestInputEventThread::stopAtAnyTimeIsNotLost()
{
    QVERIFY(device->make());
    for (int round = 0; round < 200; ++round) {
        makeThread();
        thread->start();
        for (int spin = 0; spin < round * 50; ++spin)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        thread->requestStop();
        QVERIFY(thread->wait(5000));
    }
}

void TestInputEventThread::deviceStaysOpenUntilTheObjectGoes()
{
    startReading();
    thread->requestStop();
    QVERIFY(thread->wait(5000));
    device->closeWriter();
    QVERIFY(device->openWriter()); // there still is a reader
    device->closeWriter();
    thread.reset();
    QVERIFY(!device->openWriter());
}

void TestInputEventThread::destructorOfThreadNeverStarted()
{
    thread.reset();
    QCOMPARE(log->lines(), QStringList());
}

namespace {

/// In a process of its own, for its standard streams.
int runWithoutDevice()
{
    const QTemporaryDir root;
    qputenv("TAVRIN_ROOT", QFile::encodeName(root.path()));
    InputEventThread thread;
    thread.start();
    const bool ended = thread.wait(kLongMs);
    // Past the buffer of the standard library: what has to be out by now is out.
    return ended && ::write(STDOUT_FILENO, "ended\n", 6) == 6 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc > 1 && kWithoutDevice == QLatin1String(argv[1]))
        return runWithoutDevice();
    QCoreApplication application(argc, argv);
    TestInputEventThread test;
    return QTest::qExec(&test, argc, argv);
}

#include "TestInputEventThread.moc"
