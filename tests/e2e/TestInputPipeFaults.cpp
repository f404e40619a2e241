// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/FaultRig.h"
#include "support/HostdProcess.h"
#include "support/NmeaSentences.h"
#include "support/SteadyReceiver.h"

#include <QtTest>

#include <memory>

namespace {

/// The simulated receiver sends whole seconds, and its first ones have no time yet.
constexpr int kSimulatedStartMs = 2000;

} // namespace

class TestInputPipeFaults : public FaultRig
{
    Q_OBJECT

private slots:
    void hostDaemonIsKilledAndStartedAnew_data();
    void hostDaemonIsKilledAndStartedAnew();
    void inputPipeIsAbsentForAMinute();
    void inputPathIsNoPipe_data();
    void inputPathIsNoPipe();
};

void TestInputPipeFaults::hostDaemonIsKilledAndStartedAnew_data()
{
    QTest::addColumn<bool>("newPipe");
    QTest::newRow("with the same pipe") << false;
    QTest::newRow("with a new pipe") << true;
}

void TestInputPipeFaults::hostDaemonIsKilledAndStartedAnew()
{
    QFETCH(bool, newPipe);
    // From noon on: earlier hours are shown without their zero.
    const QStringList arguments = {QStringLiteral("simulate"), QStringLiteral("--ttff"),
                                   QStringLiteral("cold=0.1"), QStringLiteral("--start-time"),
                                   QStringLiteral("2025-06-01T12:00:00Z")};
    auto hostd = std::make_unique<HostdProcess>(viewer->root());
    QVERIFY(hostd->start(arguments));
    start();
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0, kLongMs);
    for (int i = 0; i < 3; ++i) {
        hostd->kill();
        hostd = std::make_unique<HostdProcess>(viewer->root());
        if (newPipe)
            QVERIFY(QFile::remove(viewer->path(inputPath)));
        QVERIFY(hostd->start(arguments));
        verifyRecovery(kSimulatedStartMs);
    }
    verifyResponsive();
}

void TestInputPipeFaults::inputPipeIsAbsentForAMinute()
{
    start();
    QVERIFY(viewer->longestAnswerMs(60000) < kHangMs);
    QVERIFY(!viewer->waitForEnd(0));
    makePipe();
    const SteadyReceiver receiver(*pipe, kTenHertz);
    verifyRecovery();
    verifyResponsive();
}

void TestInputPipeFaults::inputPathIsNoPipe_data()
{
    QTest::addColumn<bool>("folder");
    QTest::newRow("directory") << true;
    QTest::newRow("ordinary file") << false;
}

void TestInputPipeFaults::inputPathIsNoPipe()
{
    QFETCH(bool, folder);
    QFile file(viewer->path(inputPath));
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

QTEST_GUILESS_MAIN(TestInputPipeFaults)
#include "TestInputPipeFaults.moc"
