// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// The short brother of bench/hostd-day: no epoch of a fast stream is lost or reordered.

#include "support/DayRun.h"

#include <QtTest>

class TestHostdDay : public QObject
{
    Q_OBJECT

private slots:
    void bringsEveryEpochOfASimulation();
    void bringsEveryEpochOfARecording();

private:
    QTemporaryDir root;
};

void TestHostdDay::bringsEveryEpochOfASimulation()
{
    constexpr int kEpochs = 3000;
    QVERIFY(QDir(root.path()).mkpath(QStringLiteral("tmp")));
    QFile copy(root.filePath(QStringLiteral("copy.log")));
    QVERIFY(copy.open(QIODevice::WriteOnly));
    // Begins shortly before midnight. Faster, a sanitized daemon on a busy machine falls behind by
    // the two seconds after which it does not make up for them.
    const tDayRun run =
        DayRun::watch(root.path(),
                      {QStringLiteral("simulate"), QStringLiteral("--time-scale"),
                       QStringLiteral("200"), QStringLiteral("--seed"), QStringLiteral("1"),
                       QStringLiteral("--start-time"), QStringLiteral("2025-06-01T23:40:00Z")},
                      kEpochs, &copy);
    QVERIFY2(run.fault.isEmpty(), qPrintable(run.text()));
    QCOMPARE(run.epochs >= kEpochs, true);
}

void TestHostdDay::bringsEveryEpochOfARecording()
{
    constexpr int kEpochs = 2990; // the last ones of the copy may be cut off
    const tDayRun run =
        DayRun::watch(root.path(),
                      {QStringLiteral("replay"), QStringLiteral("--speed"), QStringLiteral("1000"),
                       root.filePath(QStringLiteral("copy.log"))},
                      kEpochs);
    QVERIFY2(run.fault.isEmpty(), qPrintable(run.text()));
}

QTEST_GUILESS_MAIN(TestHostdDay)
#include "TestHostdDay.moc"
