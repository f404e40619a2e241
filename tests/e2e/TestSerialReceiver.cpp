// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/TtffRig.h"
#include "support/ScriptedReceiver.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <vector>

namespace {

constexpr int kLongMs = 80000;
constexpr int kLoops = 3;
constexpr int kEpochsToFix = 4;

/// A run of cold starts, whose first fix is followed by the wait of 36 s for the memory's store:
/// all of them go on side by side.
struct tRun
{
    QByteArray name;
    QByteArray family;
    int vanishMs; ///< how long the receiver is gone when it starts anew
};

const tRun kRuns[] = {{"sentences", "casic", 0},
                      {"binary frames", "ubx", 0},
                      {"vanishes with each start", "pqtm", 1500}};

/// A receiver, and the programs at it.
struct tBench
{
    QTemporaryDir folder;
    std::unique_ptr<ScriptedReceiver> receiver;
    TtffRig rig;
};

} // namespace

/// The real viewer and the real daemon with receivers at serial devices.
class TestSerialReceiver : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void coldStartsFromTheTtffPage_data();
    void coldStartsFromTheTtffPage();

private:
    std::vector<std::unique_ptr<tBench>> benches; ///< one for each run
};

void TestSerialReceiver::initTestCase()
{
    for (const tRun &run : kRuns) {
        benches.push_back(std::make_unique<tBench>());
        tBench &bench = *benches.back();
        const QString device = bench.folder.filePath(QStringLiteral("ttyUSB0"));
        bench.receiver = std::make_unique<ScriptedReceiver>(ScriptedReceiver::script(run.family));
        bench.receiver->setEpochsToFix(kEpochsToFix);
        bench.receiver->setVanishMs(run.vanishMs);
        QVERIFY(bench.receiver->plugIn(device));
        QVERIFY(bench.rig.startWith({QStringLiteral("serial"), device, QStringLiteral("--family"),
                                     QString::fromLatin1(run.family)}));
        QTRY_VERIFY_WITH_TIMEOUT(bench.rig.traced(QStringLiteral("RMC received A")) > 0, kLongMs);
        QVERIFY(bench.rig.choose({QStringLiteral("Cold"), kLoops, 2}));
        QVERIFY(bench.rig.pressTest());
    }
}

void TestSerialReceiver::coldStartsFromTheTtffPage_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const tRun &run : kRuns)
        QTest::newRow(run.name.constData()) << index++;
}

void TestSerialReceiver::coldStartsFromTheTtffPage()
{
    QFETCH(int, index);
    tBench &bench = *benches.at(static_cast<size_t>(index));
    const QString done = QStringLiteral("TTFF Test Done.");
    QTRY_VERIFY2_WITH_TIMEOUT(bench.rig.shown().constLast() == done, qPrintable(bench.rig.traces()),
                              kLongMs);

    QStringList shown(QStringLiteral("TTFF Total Loop 3, Testing..."));
    QStringList restarts;
    for (int loop = 1; loop <= kLoops; ++loop) {
        shown << QStringLiteral("Loop: %1 TTFF Result: %2 Seconds").arg(loop).arg(kEpochsToFix + 1);
        restarts << QStringLiteral("cold");
    }
    QCOMPARE(bench.rig.shown(), shown << done);
    QCOMPARE(bench.receiver->restarts(), restarts);
    const QByteArray &cold = ScriptedReceiver::script(kRuns[index].family).cold;
    QCOMPARE(bench.receiver->received().count(cold), kLoops);
}

QTEST_GUILESS_MAIN(TestSerialReceiver)
#include "TestSerialReceiver.moc"
