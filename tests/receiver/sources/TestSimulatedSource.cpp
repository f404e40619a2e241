// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/sources/SimulatedSource.h"

#include "support/LateListener.h"

#include <QSignalSpy>
#include <QtTest>

class TestSimulatedSource : public QObject
{
    Q_OBJECT
private slots:
    void runsAsFastAsAsked();
    void startsAtTheGivenTime();
    void startsNowWithoutATime();
    void keepsThePaceAfterALag();
    void keepsSilentForAMomentAfterAReset_data();
    void keepsSilentForAMomentAfterAReset();
};

namespace {

tSimulationSettings settingsAtNoon()
{
    tSimulationSettings settings;
    settings.startTime = QDateTime(QDate(2025, 6, 1), QTime(12, 0), Qt::UTC);
    return settings;
}

tEpoch epochOf(const QSignalSpy &spy, int index)
{
    return spy.at(index).at(0).value<tEpoch>();
}

} // namespace

void TestSimulatedSource::runsAsFastAsAsked()
{
    tSimulationSettings settings = settingsAtNoon();
    settings.rateHz = 2.0;
    SimulatedSource source(settings, 25.0); // 50 epochs a second
    QSignalSpy spy(&source, &ReceiverSource::epochReady);
    QElapsedTimer clock;
    clock.start();
    source.start();
    QTRY_VERIFY_WITH_TIMEOUT(spy.size() >= 41, 10000);
    const qint64 elapsed = clock.elapsed();
    QVERIFY2(elapsed >= 790, qPrintable(QString::number(elapsed)));
    QVERIFY2(elapsed < 4000, qPrintable(QString::number(elapsed)));
    QCOMPARE(*epochOf(spy, 40).timeMs - *epochOf(spy, 0).timeMs, 20000);
}

void TestSimulatedSource::startsAtTheGivenTime()
{
    SimulatedSource source(settingsAtNoon(), 1.0);
    QSignalSpy spy(&source, &ReceiverSource::epochReady);
    source.start();
    QVERIFY(spy.wait(2000));
    QCOMPARE(*epochOf(spy, 0).timeMs, 12 * 3600000);
    QCOMPARE(epochOf(spy, 0).date, QDate(2025, 6, 1));
}

void TestSimulatedSource::keepsThePaceAfterALag()
{
    tSimulationSettings settings = settingsAtNoon();
    settings.rateHz = 20.0;
    SimulatedSource source(settings, 1.0);
    const LateListener listener(&source);
    source.start();
    QTRY_VERIFY_WITH_TIMEOUT(listener.epochs() >= 30, 20000);
    // The next one at once, then 23 pauses, none of them shortened.
    const qint64 elapsed = listener.sinceLagMs(29);
    QVERIFY2(elapsed >= 23 * 50 - 5, qPrintable(QString::number(elapsed)));
}

void TestSimulatedSource::startsNowWithoutATime()
{
    SimulatedSource source(tSimulationSettings(), 1.0);
    QSignalSpy spy(&source, &ReceiverSource::epochReady);
    const QDateTime before = QDateTime::currentDateTimeUtc();
    source.start();
    QVERIFY(spy.wait(5000));
    const tEpoch epoch = epochOf(spy, 0);
    QCOMPARE(*epoch.timeMs % 1000, 0);
    const QDateTime said(epoch.date, QTime::fromMSecsSinceStartOfDay(*epoch.timeMs), Qt::UTC);
    QVERIFY(before.msecsTo(said) >= 0 && before.msecsTo(said) <= 1000);
}

void TestSimulatedSource::keepsSilentForAMomentAfterAReset_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("hot start") << static_cast<int>(tReceiverCommand::Kind::HotStart);
    QTest::newRow("constellations")
        << static_cast<int>(tReceiverCommand::Kind::SelectConstellations);
}

void TestSimulatedSource::keepsSilentForAMomentAfterAReset()
{
    QFETCH(int, kind);
    tSimulationSettings settings = settingsAtNoon();
    settings.rateHz = 10.0; // a period of 100 ms
    SimulatedSource source(settings, 1.0);
    QSignalSpy spy(&source, &ReceiverSource::epochReady);
    source.start();
    for (int pause = 0; pause < 100; pause += 9) {
        QVERIFY(spy.wait(2000));
        QTest::qWait(pause);
        QElapsedTimer clock;
        clock.start();
        const int before = spy.size();
        QVERIFY(source.obey({static_cast<tReceiverCommand::Kind>(kind), 0x0f}).obeyed);
        QTRY_VERIFY(spy.size() > before);
        QVERIFY2(clock.elapsed() >= 48, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!epochOf(spy, before).valid);
    }
}

QTEST_GUILESS_MAIN(TestSimulatedSource)
#include "TestSimulatedSource.moc"
