// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/sources/ReplaySource.h"

#include "hostd/Dialect.h"
#include "support/LateListener.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class TestReplaySource : public QObject
{
    Q_OBJECT
private slots:
    void pausesAsTheTimesTell_data();
    void pausesAsTheTimesTell();
    void playsOnceAndEnds();
    void loopsUntilToldOtherwise();
    void leavesTheEventLoopItsTurns_data();
    void leavesTheEventLoopItsTurns();
    void keepsThePaceAfterALag();
    void findsAFirstEpochThatIsFarAway();
    void waitsWhileHeld();
    void keepsWhatIsLeftOfAPauseWhileHeld();
    void startsWhileHeld();
    void refusesARecordingWithoutEpochs();
    void beginsWhereItIsTold_data();
    void beginsWhereItIsTold();
    void beginsBehindThousandsOfEpochs();
    void saysThatTheRecordingIsTooShort();
    void obeysNothing();
    void playsATransferLogAsItWas();
    void refusesATransferLogWithoutEpochs();
    void saysWhatItLeftOut();

private:
    QString recorded(const QList<QByteArray> &times);

    QTemporaryDir folder;
};

namespace {
constexpr int kNone = -1;
} // namespace

// A recording of one RMC sentence for each time.
QString TestReplaySource::recorded(const QList<QByteArray> &times)
{
    QFile file(folder.filePath(QStringLiteral("recording.log")));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    for (const QByteArray &time : times)
        file.write(Dialect::sentence("GPRMC," + time + ",A,4807.0380,N,01131.0000,E,,,010125,,"));
    return file.fileName();
}

void TestReplaySource::pausesAsTheTimesTell_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("expected");
    constexpr int kDay = 86400000;
    QTest::newRow("a second") << 1000 << 2000 << 1000;
    QTest::newRow("a tenth") << 1000 << 1100 << 100;
    QTest::newRow("over midnight") << kDay - 1000 << 0 << 1000;
    QTest::newRow("gap") << 1000 << 3600000 << ReplaySource::kMaxPauseMs;
    QTest::newRow("backwards") << 50000 << 20000 << 777;
    QTest::newRow("backwards over midnight") << 226030 << kDay - 12000 << 777;
    QTest::newRow("the same") << 5000 << 5000 << 777;
    QTest::newRow("unknown before") << kNone << 5000 << 777;
    QTest::newRow("unknown after") << 5000 << kNone << 777;
    QTest::newRow("unknown both") << kNone << kNone << 777;
}

void TestReplaySource::pausesAsTheTimesTell()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, expected);
    const auto known = [](int ms) {
        return ms == kNone ? std::nullopt : std::optional<int>(ms);
    };
    QCOMPARE(ReplaySource::pauseMs(known(from), known(to), 777), expected);
}

void TestReplaySource::playsOnceAndEnds()
{
    // A second, a gap of an hour, back, two without a time: 1 + 10 + 1 + 1 + 1 recorded seconds.
    ReplaySource source({recorded({"120000", "120001", "130001", "110000", "", ""})}, 20.0, false);
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QString error;
    QVERIFY(source.prepare(&error));
    QElapsedTimer clock;
    clock.start();
    source.start();
    QVERIFY(finished.wait(10000));
    QVERIFY2(clock.elapsed() >= 690, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(epochs.size(), 6);
    QVERIFY(finished.at(0).at(0).toBool());
    QCOMPARE(finished.at(0).at(1).toString(), QStringLiteral("played 6 epochs"));
}

void TestReplaySource::loopsUntilToldOtherwise()
{
    ReplaySource source({recorded({"120000", "120001"})}, 100.0, true);
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QSignalSpy notices(&source, &ReceiverSource::notice);
    QString error;
    QVERIFY(source.prepare(&error));
    source.start();
    QTRY_VERIFY(epochs.size() >= 9);
    QCOMPARE(finished.size(), 0);
    QCOMPARE(notices.size(), 1);
    QCOMPARE(*epochs.at(0).at(0).value<tEpoch>().timeMs,
             *epochs.at(8).at(0).value<tEpoch>().timeMs);
    // A recording that has gone meanwhile ends the loop instead of spinning.
    QVERIFY(QFile::remove(folder.filePath(QStringLiteral("recording.log"))));
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY(!finished.at(0).at(0).toBool());
}

void TestReplaySource::leavesTheEventLoopItsTurns_data()
{
    QTest::addColumn<int>("writeUs"); // what an epoch costs whoever writes it out
    QTest::newRow("quick writer") << 0;
    QTest::newRow("slow writer") << 200;
}

// Ten microseconds between two epochs are less than any computer needs for one.
void TestReplaySource::leavesTheEventLoopItsTurns()
{
    QFETCH(int, writeUs);
    QList<QByteArray> times;
    for (int i = 0; i < 1000; ++i)
        times.append("1200" + QByteArray::number(i / 100).rightJustified(2, '0') + '.' +
                     QByteArray::number(i % 100).rightJustified(2, '0'));
    ReplaySource source({recorded(times)}, 1000.0, true);
    constexpr int kMostATurn = 1000;
    int epochs = 0;
    int inThisTurn = 0;
    int most = 0;
    connect(&source, &ReceiverSource::epochReady, &source, [&] {
        QElapsedTimer clock;
        clock.start();
        while (clock.nsecsElapsed() < writeUs * 1000LL) {
        }
        ++epochs;
        most = std::max(most, ++inThisTurn);
        if (most > kMostATurn)
            source.setHeld(true); // the way out when it never ends by itself
    });
    QTimer other;
    connect(&other, &QTimer::timeout, &source, [&inThisTurn] { inThisTurn = 0; });
    other.start(0);
    QString error;
    QVERIFY(source.prepare(&error));
    source.start();
    QTRY_VERIFY(epochs > 5000 || most > kMostATurn);
    QVERIFY2(most <= kMostATurn, qPrintable(QString::number(most)));
}

// What could not be played in time is played on from there, neither skipped nor hurried through.
void TestReplaySource::keepsThePaceAfterALag()
{
    QList<QByteArray> times;
    for (int i = 0; i < 60; ++i)
        times.append("1200" + QByteArray::number(i).rightJustified(2, '0'));
    ReplaySource source({recorded(times)}, 20.0, false); // an epoch every 50 ms
    const LateListener listener(&source);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QString error;
    QVERIFY(source.prepare(&error));
    source.start();
    QVERIFY(finished.wait(20000));
    QCOMPARE(listener.epochs(), 60);
    // The next one at once, then 53 pauses, none of them shortened.
    const qint64 elapsed = listener.sinceLagMs(59);
    QVERIFY2(elapsed >= 53 * 50 - 5, qPrintable(QString::number(elapsed)));
}

void TestReplaySource::findsAFirstEpochThatIsFarAway()
{
    QFile file(folder.filePath(QStringLiteral("far.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.seek(3 * Recording::kMostBytesALook));
    file.write(Dialect::sentence("GPRMC,120000,A,,,,,,,010125,,"));
    file.close();
    ReplaySource source({file.fileName()}, 1000.0, false);
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QString error;
    QVERIFY(source.prepare(&error));
    QVERIFY(!finished.wait(200)); // found meanwhile, but not yet started
    QCOMPARE(epochs.size(), 0);
    source.start();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(epochs.size(), 1);
    QVERIFY(finished.at(0).at(0).toBool());
}

void TestReplaySource::waitsWhileHeld()
{
    ReplaySource source({recorded({"120000", "120001", "120002"})}, 1000.0, false);
    QVERIFY(source.canWait());
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    connect(&source, &ReceiverSource::epochReady, &source, [&source] { source.setHeld(true); });
    QString error;
    QVERIFY(source.prepare(&error));
    source.start();
    for (int count = 1; count <= 3; ++count) {
        QTRY_COMPARE(epochs.size(), count);
        QVERIFY(!epochs.wait(50));
        QCOMPARE(finished.size(), count == 3 ? 1 : 0);
        source.setHeld(false);
    }
}

// However long it is held: neither at once, nor a whole pause later.
void TestReplaySource::keepsWhatIsLeftOfAPauseWhileHeld()
{
    ReplaySource source({recorded({"120000", "120001", "120002"})}, 1.0, false);
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QString error;
    QVERIFY(source.prepare(&error));
    source.start();
    QTRY_COMPARE(epochs.size(), 1);
    QElapsedTimer playing;
    playing.start();
    QVERIFY(!epochs.wait(700));
    const qint64 playedMs = playing.elapsed();
    for (int time = 0; time < 2; ++time) { // again makes no difference
        source.setHeld(true);
        QVERIFY(!epochs.wait(500));
    }
    source.setHeld(false);
    playing.start();
    QTRY_COMPARE(epochs.size(), 2);
    const qint64 pauseMs = playedMs + playing.elapsed();
    QVERIFY2(pauseMs >= 950 && pauseMs < 1500, qPrintable(QString::number(pauseMs)));
    QTRY_COMPARE(epochs.size(), 3);
    QVERIFY2(playedMs + playing.elapsed() >= 1950, qPrintable(QString::number(playing.elapsed())));
}

void TestReplaySource::startsWhileHeld()
{
    ReplaySource source({recorded({"120000", "120001"})}, 5.0, false);
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QString error;
    QVERIFY(source.prepare(&error));
    source.setHeld(true);
    source.start();
    QVERIFY(!epochs.wait(500));
    source.setHeld(false);
    QTRY_COMPARE(epochs.size(), 1);
    QElapsedTimer clock;
    clock.start();
    QTRY_COMPARE(epochs.size(), 2);
    QVERIFY2(clock.elapsed() >= 150, qPrintable(QString::number(clock.elapsed())));
}

void TestReplaySource::refusesARecordingWithoutEpochs()
{
    QFile file(folder.filePath(QStringLiteral("none.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# nothing\n$GPRMC,120000,A,,,,,,,010125,,*00\n$GPGSV,1,1,00*79\n");
    file.close();
    ReplaySource source({file.fileName()}, 1.0, true);
    QString error;
    QVERIFY(!source.prepare(&error));
    QVERIFY(error.contains(QStringLiteral("no epoch")));
}

void TestReplaySource::beginsWhereItIsTold_data()
{
    QTest::addColumn<double>("startS");
    QTest::addColumn<int>("firstMs");
    QTest::addColumn<int>("epochsAPass");
    QTest::newRow("at the first epoch") << 0.0 << 43200000 << 4;
    QTest::newRow("before the second") << 0.5 << 43201000 << 3;
    QTest::newRow("at the second") << 1.0 << 43201000 << 3;
    // The gap of an hour is played in ten seconds, but is an hour.
    QTest::newRow("in the gap") << 1800.0 << 46801000 << 2;
    QTest::newRow("after the gap") << 3602.0 << 46802000 << 1;
}

void TestReplaySource::beginsWhereItIsTold()
{
    QFETCH(double, startS);
    QFETCH(int, firstMs);
    QFETCH(int, epochsAPass);
    ReplaySource source({recorded({"120000", "120001", "130001", "130002"})}, 1000.0, true, startS);
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QString error;
    QVERIFY2(source.prepare(&error), qPrintable(error));
    source.start();
    QTRY_VERIFY(epochs.size() >= 8);
    // In every pass.
    for (const int pass : {0, 1})
        QCOMPARE(epochs.at(pass * epochsAPass).first().value<tEpoch>().timeMs.value_or(0), firstMs);
}

void TestReplaySource::beginsBehindThousandsOfEpochs()
{
    QList<QByteArray> times;
    for (int second = 0; second < 3000; ++second)
        times << QTime(12, 0).addSecs(second).toString(QStringLiteral("HHmmss")).toLatin1();
    ReplaySource source({recorded(times)}, 1000.0, false, 2500.0);
    QSignalSpy epochs(&source, &ReceiverSource::epochReady);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QString error;
    QVERIFY2(source.prepare(&error), qPrintable(error));
    source.start();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(epochs.size(), 500);
    QCOMPARE(epochs.first().first().value<tEpoch>().timeMs.value_or(0), (12 * 3600 + 2500) * 1000);
}

void TestReplaySource::saysThatTheRecordingIsTooShort()
{
    ReplaySource source({recorded({"120000", "120001"})}, 1.0, false, 2.0);
    QString error;
    QVERIFY(!source.prepare(&error));
    QCOMPARE(error, QStringLiteral("the recording is over after 1 s, before --start"));
}

void TestReplaySource::obeysNothing()
{
    ReplaySource source({recorded({"120000"})}, 1.0, false);
    const tCommandAnswer answer = source.obey({tReceiverCommand::Kind::ColdStart, 0});
    QVERIFY(!answer.obeyed);
    QVERIFY(!answer.text.isEmpty());
}

// With the times of its own clock, the commands between the epochs, and no pause shortened.
void TestReplaySource::playsATransferLogAsItWas()
{
    constexpr double kSpeed = 40.0;
    const QString name = folder.filePath(QStringLiteral("transfer"));
    QString error;
    {
        TransferLog log(name);
        QVERIFY2(log.open(QStringLiteral("test"), &error), qPrintable(error));
        log.write(TransferLog::Kind::FromReceiver,
                  Dialect::sentence("GPRMC,120000,A,,,,,,,010125,,"), 5000000);
        log.write(TransferLog::Kind::Command, "$PPLMG,3", 7000000);
        log.write(TransferLog::Kind::FromReceiver,
                  Dialect::sentence("GPRMC,120001,V,,,,,,,010125,,"), 25000000);
    }
    ReplaySource source({name}, kSpeed, false);
    QStringList order;
    QVector<qint64> timesMs;
    QElapsedTimer clock;
    connect(&source, &ReceiverSource::epochReady, this, [&](const tEpoch &epoch) {
        order << QString::number(*epoch.timeMs);
        timesMs << clock.elapsed();
    });
    connect(&source, &ReceiverSource::notice, this, [&](const QString &text) {
        order << text;
        timesMs << clock.elapsed();
    });
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QVERIFY(source.prepare(&error));
    clock.start();
    source.start();
    QVERIFY(finished.wait(10000));
    QCOMPARE(order,
             (QStringList{QStringLiteral("43200000"), QStringLiteral("recorded: command $PPLMG,3"),
                          QStringLiteral("43201000")}));
    QVERIFY2(timesMs[1] - timesMs[0] >= 40, QByteArray::number(timesMs[1] - timesMs[0]));
    QVERIFY2(timesMs[2] >= 490, QByteArray::number(timesMs[2]));
    QCOMPARE(finished.at(0).at(1).toString(), QStringLiteral("played 2 epochs"));
}

void TestReplaySource::refusesATransferLogWithoutEpochs()
{
    const QString name = folder.filePath(QStringLiteral("commands"));
    QString error;
    {
        TransferLog log(name);
        QVERIFY2(log.open(QStringLiteral("test"), &error), qPrintable(error));
        log.write(TransferLog::Kind::Command, "$PPLMG,3", 0);
    }
    ReplaySource source({name}, 1.0, true); // not in a loop for ever
    QSignalSpy notices(&source, &ReceiverSource::notice);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QVERIFY2(source.prepare(&error), qPrintable(error));
    source.start();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(notices.at(0).at(0).toString(), QStringLiteral("recorded: command $PPLMG,3"));
    QVERIFY(!finished.at(0).at(0).toBool());
    QVERIFY(finished.at(0).at(1).toString().startsWith(
        QStringLiteral("no epoch in the recording: 0 broken sentences")));
}

void TestReplaySource::saysWhatItLeftOut()
{
    QFile file(folder.filePath(QStringLiteral("odd.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(Dialect::sentence("GPRMC,120000,A,4807.0380,N,01131.0000,E,,,010125,,") +
               Dialect::sentence("PGRMC,A,220.5,100,,,,A,3,1,1,4") +
               Dialect::sentence("GBGSV,1,1,01,64,24,038,44") + "$GPGLL,*00\r\n");
    file.close();
    ReplaySource source({file.fileName()}, 1.0, false);
    QSignalSpy finished(&source, &ReceiverSource::finished);
    QString error;
    QVERIFY2(source.prepare(&error), qPrintable(error));
    source.start();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(finished.at(0).at(1).toString(),
             QStringLiteral("played 1 epochs, passed over 1 broken sentences, left out 1 sentences "
                            "that the viewer would mistake for others, left out 1 satellites that "
                            "the viewer has no number for"));
}

QTEST_GUILESS_MAIN(TestReplaySource)
#include "TestReplaySource.moc"
