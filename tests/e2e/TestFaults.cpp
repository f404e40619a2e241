// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/CommandPipeReader.h"
#include "support/HostdProcess.h"
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/SettingsFile.h"
#include "support/SteadyReceiver.h"
#include "support/ViewerProcess.h"

#include <QtTest>

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kLongMs = 60000;
/// The screen never stands still for longer.
constexpr int kHangMs = HANG_MS;
/// What the receiver sends is on the screen again so soon after the cause of a fault has gone.
constexpr int kRecoveryMs = RECOVERY_MS;
constexpr int kExitMs = EXIT_MS;
/// The simulated receiver sends whole seconds, and its first ones have no time yet.
constexpr int kSimulatedStartMs = 2000;
constexpr QSize kScreen(800, 480);
constexpr std::chrono::milliseconds kTenHertz(100);

const QString kInput = QStringLiteral("/tmp/agiin");
const QString kOutput = QStringLiteral("/tmp/agiout");

QByteArray noise(int size)
{
    std::mt19937 generator(4711);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void hostDaemonIsKilledAndStartedAnew_data();
    void hostDaemonIsKilledAndStartedAnew();
    void inputPipeIsAbsentForAMinute();
    void inputPathIsNoPipe_data();
    void inputPathIsNoPipe();
    void binaryNoise();
    void tenHertz();
    void commandReaderLeavesBetweenOpenAndWrite();
    void badSettingsFile_data();
    void badSettingsFile();
    void terminationKeepsWhatWasLogged();
    void exitOnEveryPageFiftyTimes();

private:
    /// What the viewer is in the middle of.
    enum class Wait { None, ForFix, BeforeStore, BeforeStoreWithoutReader };

    void enter(Wait wait);
    void start()
    {
        QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
        viewer->longestAnswerMs();
    }
    void makePipe() { pipe = std::make_unique<NmeaPipe>(viewer->path(kInput)); }
    /// Second of the day that the satellite page shows, -1 while it shows none.
    int shownSecond() const
    {
        const QString text = viewer->text(Pages::kSatellite, QStringLiteral("label_utc"));
        const QTime time = QTime::fromString(text, QStringLiteral("hhmmss.zzz"));
        return time.isValid() ? QTime(0, 0).secsTo(time) : -1;
    }
    /// Waits for another time than the one shown now; says how long that took. `startMs`: what the
    /// receiver itself takes until it tells a time.
    void verifyRecovery(int startMs = 0);
    void verifyResponsive() { QVERIFY(viewer->longestAnswerMs() < kHangMs); }

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<NmeaPipe> pipe;
    std::unique_ptr<CommandPipeReader> reader;
};

void TestFaults::init()
{
    root = std::make_unique<QTemporaryDir>();
    viewer = std::make_unique<ViewerProcess>(kScreen, root->path());
}

void TestFaults::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(3000)));
    viewer.reset();
    pipe.reset();
    reader.reset();
}

void TestFaults::verifyRecovery(int startMs)
{
    QElapsedTimer timer;
    timer.start();
    const int before = shownSecond();
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0 && shownSecond() != before, kLongMs);
    qInfo("shown again after %lld ms", static_cast<long long>(timer.elapsed()));
    QVERIFY(timer.elapsed() < kRecoveryMs + startMs);
}

void TestFaults::hostDaemonIsKilledAndStartedAnew_data()
{
    QTest::addColumn<bool>("newPipe");
    QTest::newRow("with the same pipe") << false;
    QTest::newRow("with a new pipe") << true;
}

void TestFaults::hostDaemonIsKilledAndStartedAnew()
{
    QFETCH(bool, newPipe);
    const QStringList arguments = {QStringLiteral("simulate"), QStringLiteral("--ttff"),
                                   QStringLiteral("cold=0.1")};
    auto hostd = std::make_unique<HostdProcess>(viewer->root());
    QVERIFY(hostd->start(arguments));
    start();
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0, kLongMs);
    for (int i = 0; i < 3; ++i) {
        hostd->kill();
        hostd = std::make_unique<HostdProcess>(viewer->root());
        if (newPipe)
            QVERIFY(QFile::remove(viewer->path(kInput)));
        QVERIFY(hostd->start(arguments));
        verifyRecovery(kSimulatedStartMs);
    }
    verifyResponsive();
}

void TestFaults::inputPipeIsAbsentForAMinute()
{
    start();
    QVERIFY(viewer->longestAnswerMs(60000) < kHangMs);
    QVERIFY(!viewer->waitForEnd(0));
    makePipe();
    const SteadyReceiver receiver(*pipe, kTenHertz);
    verifyRecovery();
    verifyResponsive();
}

void TestFaults::inputPathIsNoPipe_data()
{
    QTest::addColumn<bool>("folder");
    QTest::newRow("directory") << true;
    QTest::newRow("ordinary file") << false;
}

void TestFaults::inputPathIsNoPipe()
{
    QFETCH(bool, folder);
    QFile file(viewer->path(kInput));
    if (folder) {
        QVERIFY(QDir().mkdir(file.fileName()));
    } else {
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.write(NmeaSentences::epochOf31Satellites(60)) > 0);
        file.close();
    }
    start();
    QVERIFY(viewer->longestAnswerMs(5000) < kHangMs);
    QVERIFY(folder ? QDir().rmdir(file.fileName()) : file.remove());
    makePipe();
    const SteadyReceiver receiver(*pipe, kTenHertz);
    verifyRecovery();
    verifyResponsive();
}

void TestFaults::binaryNoise()
{
    makePipe();
    start();
    const QByteArray bytes = noise(500000);
    for (int at = 0; at < bytes.size();) {
        if (pipe->write(bytes.mid(at, 1000)))
            at += 1000;
        else
            QTest::qSleep(1);
    }
    const SteadyReceiver receiver(*pipe, kTenHertz);
    verifyRecovery();
    QVERIFY(viewer->longestAnswerMs(2000) < kHangMs);
}

void TestFaults::tenHertz()
{
    makePipe();
    start();
    const SteadyReceiver receiver(*pipe, kTenHertz);
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0, kLongMs);
    QVERIFY(viewer->longestAnswerMs(10000) < kHangMs);
    // One tick behind what is sent, not more: nothing piles up.
    const int sent = receiver.latestSecond();
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() >= sent, kRecoveryMs);
    QVERIFY(receiver.latestSecond() - shownSecond() < 10 * kRecoveryMs / 1000);
}

// An open for writing that waits is let go by the reader's open; its write then finds no reader.
void TestFaults::commandReaderLeavesBetweenOpenAndWrite()
{
    const QByteArray path = QFile::encodeName(viewer->path(kOutput));
    QCOMPARE(::mkfifo(path.constData(), 0600), 0);
    start();
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
    std::atomic<bool> stop = false;
    std::thread leaving([&] {
        while (!stop) {
            ::close(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    });
    const auto answers = [this](int presses) {
        for (int i = 0; i < presses; ++i) {
            if (!viewer->press(Pages::kControl, QStringLiteral("pushButton_GpsReset")) ||
                viewer->longestAnswerMs() >= kHangMs)
                return false;
        }
        return true;
    };
    const bool answered = answers(30);
    stop = true;
    leaving.join();
    QVERIFY(answered);
    QVERIFY(!viewer->waitForEnd(0));

    reader = std::make_unique<CommandPipeReader>(path);
    QVERIFY(viewer->press(Pages::kControl, QStringLiteral("pushButton_GpsReset")));
    QTRY_VERIFY_WITH_TIMEOUT(reader->count() > 0, kRecoveryMs);
    QVERIFY(reader->sentences().last().startsWith("$PPLMG,"));
    verifyResponsive();
}

void TestFaults::badSettingsFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("error");
    const QString unreadable = QStringLiteral("Error: cannot read file ");
    QTest::newRow("unreadable for everybody") << "folder" << unreadable;
    QTest::newRow("truncated") << "truncated"
                               << "Error : parse error at line ";
    QTest::newRow("huge") << "huge" << unreadable;
}

void TestFaults::badSettingsFile()
{
    QFETCH(QString, kind);
    QFETCH(QString, error);
    const QByteArray half = settingsFile("/data/log").left(200);
    QFile file(viewer->path(QStringLiteral("/etc/config.xml")));
    if (kind == QStringLiteral("folder"))
        QVERIFY(QDir().mkdir(file.fileName()));
    else
        QVERIFY(writeSettings(root->path(), half));
    if (kind == QStringLiteral("huge"))
        QVERIFY(file.resize(qint64(4) << 30)); // takes no room: nothing is written
    const qint64 size = QFileInfo(file).size();

    makePipe();
    const SteadyReceiver receiver(*pipe, kTenHertz);
    start();
    QVERIFY2(viewer->standardError().contains(error), qPrintable(viewer->standardError()));
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0, kLongMs);
    verifyResponsive();
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
    // Whoever set the device up may still mend it.
    QCOMPARE(QFileInfo(file).size(), size);
    if (kind != QStringLiteral("folder")) {
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.read(half.size()), half);
    }
}

void TestFaults::terminationKeepsWhatWasLogged()
{
    QVERIFY(writeLogSettings(root->path()));
    makePipe();
    start();
    QVERIFY(viewer->showPage(Pages::kLogButton, Pages::kLog));
    QVERIFY(viewer->press(Pages::kLog, QStringLiteral("checkBox")));
    const QByteArray epoch = NmeaSentences::epochOf31Satellites(3600);
    QVERIFY(pipe->write(epoch));
    const QDir logs(viewer->path(QStringLiteral("/log/GNSS")));
    const auto logged = [&logs] {
        QFile log(logs.filePath(logs.entryList(QDir::Files).value(0)));
        return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    };
    QTRY_COMPARE_WITH_TIMEOUT(logged(), epoch, kLongMs);
    viewer->process().terminate();
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(logged(), epoch);
}

void TestFaults::enter(Wait wait)
{
    const QByteArray outputPath = QFile::encodeName(viewer->path(kOutput));
    if (wait == Wait::BeforeStoreWithoutReader)
        reader.reset(); // the pipe stays
    else if (!reader)
        reader = std::make_unique<CommandPipeReader>(outputPath);
    if (wait == Wait::None)
        return;
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0, kLongMs);
    if (wait == Wait::ForFix) {
        const int before = reader->count();
        QVERIFY(viewer->showPage(Pages::kTtffButton, Pages::kTtff));
        QVERIFY(viewer->press(Pages::kTtff, QStringLiteral("pushButton_Test")));
        QTRY_VERIFY_WITH_TIMEOUT(reader->count() > before, kLongMs);
        return;
    }
    // A second without a fix makes the next one a first fix.
    QTRY_VERIFY_WITH_TIMEOUT(
        pipe->write(NmeaSentences::sentence("GNRMC,115959.000,V,,,,,,,050321,,,N")), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(
        viewer->standardError().contains(QStringLiteral("nvmStoreToFlash run!")), kLongMs);
}

void TestFaults::exitOnEveryPageFiftyTimes()
{
    const QList<QPair<QString, QString>> pages = {
        {Pages::kSatelliteButton, Pages::kSatellite}, {Pages::kControlButton, Pages::kControl},
        {Pages::kTtffButton, Pages::kTtff},           {Pages::kLogButton, Pages::kLog},
        {Pages::kConfigButton, Pages::kConfig},
    };
    const QList<Wait> waits = {Wait::None, Wait::ForFix, Wait::BeforeStore,
                               Wait::BeforeStoreWithoutReader};
    makePipe();
    const SteadyReceiver receiver(*pipe, kTenHertz);
    for (int i = 0; i < 50; ++i) {
        // Five pages and four waits: each page meets each wait within twenty rounds.
        const auto &[button, page] = pages[i % pages.size()];
        const Wait wait = waits[i % waits.size()];
        start();
        enter(wait);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(viewer->showPage(button, page));
        verifyResponsive();
        const int commands = reader ? reader->count() : 0;
        QVERIFY(viewer->pressMain(Pages::kExitButton));
        QVERIFY2(viewer->waitForEnd(kExitMs), qPrintable(page));
        QCOMPARE(viewer->exitCode(), 0);
        if (wait == Wait::BeforeStore) {
            QTRY_COMPARE_WITH_TIMEOUT(reader->count(), commands + 1, kLongMs);
            QCOMPARE(reader->sentences().last(), QByteArray("$PPLMT,0\r\n"));
        }
        viewer = std::make_unique<ViewerProcess>(kScreen, root->path());
    }
}

QTEST_GUILESS_MAIN(TestFaults)
#include "TestFaults.moc"
