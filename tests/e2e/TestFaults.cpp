// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/FaultRig.h"
#include "support/CommandPipeReader.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/SettingsFile.h"
#include "support/SteadyReceiver.h"

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

QByteArray noise(int size)
{
    std::mt19937 generator(4711);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

} // namespace

class TestFaults : public FaultRig
{
    Q_OBJECT

private slots:
    void binaryNoise();
    void tenHertz();
    void commandReaderLeavesBetweenOpenAndWrite();
    void badSettingsFile_data();
    void badSettingsFile();
    void terminationKeepsWhatWasLogged();
};

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
    const QByteArray path = QFile::encodeName(viewer->path(outputPath));
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

    const CommandPipeReader reader(path);
    QVERIFY(viewer->press(Pages::kControl, QStringLiteral("pushButton_GpsReset")));
    QTRY_VERIFY_WITH_TIMEOUT(reader.count() > 0, kRecoveryMs);
    QVERIFY(reader.sentences().last().startsWith("$PPLMG,"));
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

QTEST_GUILESS_MAIN(TestFaults)
#include "TestFaults.moc"
