// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/NmeaFraming.h"
#include "gnss/NmeaReader.h"
#include "hostd/DialectChecker.h"
#include "hostd/HostdRig.h"
#include "support/EpochComparison.h"
#include "support/RecordingReader.h"
#include "support/Recordings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

/// Drives the real program through real pipes.
class TestHostd : public HostdRig
{
    Q_OBJECT
private slots:
    void makesThePipesAndRemovesThem();
    void leavesPipesThatWereThere();
    void endsCleanlyOnSignals_data();
    void endsCleanlyOnSignals();
    void outlivesTheTerminalWhenTold();
    void obeysCommandsThroughTheRealPipe();
    void startsAnewWithTheConstellations();
    void measuresTheGivenTimeToFirstFix_data();
    void measuresTheGivenTimeToFirstFix();
    void reportsUnknownSentences();
    void survivesReadersThatComeAndGo();
    void survivesAFullPipe();
    void keepsNothingWithoutAReader();
    void refusesASecondDaemon();
    void replacesAnOrdinaryCommandFile();
    void failsWhereNoPipeCanBe();
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void pointsToTheHelpOfTheCommand_data();
    void pointsToTheHelpOfTheCommand();
    void helps();
    void failsWhereItsHelpCannotBeWritten();
    void replaysEveryRecordingWhole_data();
    void replaysEveryRecordingWhole();
    void endsAReplayThatNobodyReads();
    void waitsWithTheLastEpochForTheReader();
    void endsADenseReplayOnASignal();
    void refusesToReplayAPipe();
    void endsWhileItLooksForAnEpoch();
    void saysThatNothingIsToBePlayed();
    void replaysWithoutChecksums();
    void saysThatThePathsAreTaken();
    void reportsCommandsDuringAReplay();
    void pausesARecordingUntilAStart_data();
    void pausesARecordingUntilAStart();
    void waitsForAStartWithTheLastEpoch();
    void repeatsItselfBySeed();

private:
    void replayThreeEpochsIntoASmallPipe(int *reader);
    int measuredAfter(int reader, const QByteArray &command);
    QString recorded(int epochs);
};

void TestHostd::makesThePipesAndRemovesThem()
{
    QVERIFY(start({"simulate"}));
    QVERIFY(isPipe(path("agiin")));
    QVERIFY(isPipe(path("agiout")));
    QCOMPARE(end(), 0);
    QVERIFY(!QFile::exists(path("agiin")));
    QVERIFY(!QFile::exists(path("agiout")));
}

void TestHostd::leavesPipesThatWereThere()
{
    QVERIFY(QDir(root->path()).mkdir(QStringLiteral("tmp")));
    QCOMPARE(::mkfifo(QFile::encodeName(path("agiin")).constData(), 0600), 0);
    QCOMPARE(::mkfifo(QFile::encodeName(path("agiout")).constData(), 0600), 0);
    QVERIFY(start({"simulate"}));
    QVERIFY(reported(QStringLiteral("power-up")));
    QCOMPARE(end(), 0);
    QVERIFY(isPipe(path("agiin")));
    QVERIFY(isPipe(path("agiout")));
}

void TestHostd::endsCleanlyOnSignals_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("withReader");
    QTest::newRow("SIGTERM") << SIGTERM << false;
    QTest::newRow("SIGINT") << SIGINT << false;
    QTest::newRow("SIGHUP") << SIGHUP << false;
    QTest::newRow("SIGTERM, reader there") << SIGTERM << true;
    QTest::newRow("SIGINT, reader there") << SIGINT << true;
    QTest::newRow("SIGHUP, reader there") << SIGHUP << true;
}

void TestHostd::endsCleanlyOnSignals()
{
    QFETCH(int, signal);
    QFETCH(bool, withReader);
    QVERIFY(start({"simulate", "--time-scale", "100"}));
    QVERIFY(reported(QStringLiteral("power-up")));
    const int reader = withReader ? openReader() : -1;
    if (withReader)
        QVERIFY(!readFor(reader, [](const QByteArray &all) { return !all.isEmpty(); }).isEmpty());
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(end(signal), 0);
    QVERIFY(clock.elapsed() < 2000);
    if (withReader)
        ::close(reader);
}

// As nohup starts a program.
void TestHostd::outlivesTheTerminalWhenTold()
{
    QVERIFY(startProgram(QStringLiteral("/bin/sh"),
                         {"-c", "trap '' HUP; exec \"$0\" simulate", HOSTD_PROGRAM}));
    QVERIFY(reported(QStringLiteral("power-up")));
    ::kill(static_cast<pid_t>(daemon->processId()), SIGHUP);
    send("$PPLMS,1\r\n");
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,1")));
    QCOMPARE(daemon->state(), QProcess::Running);
    QCOMPARE(end(), 0);
}

void TestHostd::obeysCommandsThroughTheRealPipe()
{
    QVERIFY(start({"simulate", "--ttff", "hot=2,warm=3,cold=4,factory=5", "--time-scale", "20"}));
    const int reader = openReader();
    const auto hasFix = [](const QByteArray &all) {
        return all.contains(",A,") && wholeCycles(all).count("$GNRMC") > 8;
    };
    DialectChecker cold;
    cold.read(wholeCycles(readFor(reader, hasFix)));
    QCOMPARE(cold.error(), QString());

    struct tStep
    {
        const char *command;
        const char *said;
    };
    const QList<tStep> steps = {{"$PPLMG,1\r\n", "obeyed $PPLMG,1: hot start"},
                                {"$PPLMG,2\r\n", "obeyed $PPLMG,2: warm start"},
                                {"$PPLMG,3\r\n", "obeyed $PPLMG,3: cold start"},
                                {"$PPLMG,7\r\n", "obeyed $PPLMG,7: factory start"},
                                {"$PPLMT,0\r\n", "obeyed $PPLMT,0: stored"},
                                {"$PPLMB,70,1\r\n", "obeyed $PPLMB,70,1: constellations: GPS"},
                                {"$PPLMS,1\r\n", "obeyed $PPLMS,1: stop"}};
    for (const tStep &step : steps) {
        send(step.command);
        QVERIFY2(reported(QString::fromLatin1(step.said)), qPrintable(report));
    }
    // Stopped: what was still in the pipe, then silence.
    readFor(
        reader, [](const QByteArray &) { return false; }, 200);
    QVERIFY(readFor(
                reader, [](const QByteArray &) { return false; }, 500)
                .isEmpty());
    send("$PPLMS,0\r\n");
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,0: start")));
    DialectChecker started;
    started.read(wholeCycles(
        readFor(reader, [](const QByteArray &all) { return all.count("$GNRMC") > 20; })));
    QCOMPARE(started.error(), QString());
    QVERIFY(!started.cycles().first().valid);
    QVERIFY(started.cycles().last().valid);
    for (const tReadCycle &cycle : started.cycles()) {
        for (auto it = cycle.inView.cbegin(); it != cycle.inView.cend(); ++it)
            QCOMPARE(it->talker, QStringLiteral("GP")); // the mask outlived stop and start
    }
    ::close(reader);
    QCOMPARE(end(), 0);
}

void TestHostd::measuresTheGivenTimeToFirstFix_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<int>("seconds");
    QTest::newRow("hot") << QByteArray("$PPLMG,1\r\n") << 1;
    QTest::newRow("warm") << QByteArray("$PPLMG,2\r\n") << 5;
    QTest::newRow("cold") << QByteArray("$PPLMG,3\r\n") << 8;
    QTest::newRow("factory") << QByteArray("$PPLMG,7\r\n") << 12;
    QTest::newRow("constellations") << QByteArray("$PPLMB,70,f\r\n") << 1;
}

void TestHostd::measuresTheGivenTimeToFirstFix()
{
    QFETCH(QByteArray, command);
    QFETCH(int, seconds);
    QVERIFY(start({"simulate", "--ttff", "hot=1,warm=5,cold=8,factory=12", "--time-scale", "20"}));
    const int reader = openReader();
    readFor(reader, [](const QByteArray &all) { return all.contains(",A,A*"); });
    for (int loop = 0; loop < 5; ++loop) {
        QCOMPARE(measuredAfter(reader, command), seconds);
        QTest::qWait(13 * loop); // commands come at any time between two epochs
    }
    ::close(reader);
}

// Commands as the viewer does, forgets what was before and reads on until there is a time to first
// fix; 0 when none comes.
int TestHostd::measuredAfter(int reader, const QByteArray &command)
{
    GnssInfo *const model = GnssInfo::instance();
    NmeaReader decoder;
    const auto decode = [&decoder](const QByteArray &bytes) {
        decoder.feed({bytes.constData(), static_cast<size_t>(bytes.size())});
    };
    decode(readFor(reader, [](const QByteArray &all) { return all.contains("$GNRMC"); }));
    send(command);
    decoder.clearBuf();
    model->clearGnssInfo();
    QElapsedTimer clock;
    clock.start();
    while (!model->isTtffSet() && clock.elapsed() < kLongMs)
        decode(readFor(
            reader, [](const QByteArray &all) { return !all.isEmpty(); }, 100));
    return static_cast<int>(model->getTtff());
}

// The viewer forgets the fix and has the memory stored once more after it.
void TestHostd::startsAnewWithTheConstellations()
{
    QVERIFY(start({"simulate", "--ttff", "hot=3,cold=2", "--time-scale", "20"}));
    const int reader = openReader();
    readFor(reader, [](const QByteArray &all) { return all.contains(",A,A*"); });
    QCOMPARE(measuredAfter(reader, "$PPLMB,70,3\r\n"), 3);
    QVERIFY(
        reported(QStringLiteral("obeyed $PPLMB,70,3: constellations: GPS, GLONASS; hot start")));
    QCOMPARE(measuredAfter(reader, "$PPLMB,70,3\r\n"), 3);
    ::close(reader);
    QCOMPARE(end(), 0);
}

void TestHostd::reportsUnknownSentences()
{
    QVERIFY(start({"simulate"}));
    send("$PPLMG,4\r\n");
    QVERIFY(reported(QStringLiteral("unknown sentence $PPLMG,4")));
    send("$PPLMS");
    send(",1\r\n"); // one sentence in two writes
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,1")));
    send("rubbish\n");
    QVERIFY(reported(QStringLiteral("7 bytes on the command pipe are no sentence")));
    QCOMPARE(end(), 0);
}

void TestHostd::survivesReadersThatComeAndGo()
{
    QVERIFY(start({"simulate", "--time-scale", "50"}));
    for (int i = 0; i < 20; ++i) {
        const int reader = openReader();
        QVERIFY(reader >= 0);
        const QByteArray all =
            readFor(reader, [](const QByteArray &bytes) { return bytes.count("$GNRMC") >= 2; });
        QVERIFY2(all.startsWith("$GNGGA"), all.left(80).constData()); // starts with a whole cycle
        DialectChecker checker;
        checker.read(wholeCycles(all));
        QCOMPARE(checker.error(), QString());
        ::close(reader);
    }
    QCOMPARE(daemon->state(), QProcess::Running);
    QCOMPARE(end(), 0);
}

void TestHostd::survivesAFullPipe()
{
    QVERIFY(start({"simulate", "--time-scale", "500"}));
    const int reader = openReader(); // reads nothing for now
    QVERIFY(reported(QStringLiteral("the reader is slow and the pipe is full")));
    send("$PPLMS,1\r\n");
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,1"))); // commands still work
    send("$PPLMS,0\r\n");
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,0")));
    const QByteArray all =
        readFor(reader, [](const QByteArray &bytes) { return bytes.size() > 200000; });
    DialectChecker checker;
    checker.read(wholeCycles(all));
    QCOMPARE(checker.error(), QString()); // only whole cycles are missing
    ::close(reader);
    QVERIFY(reported(QStringLiteral("cycles were dropped for a slow reader")));
    QCOMPARE(report.count(QStringLiteral("the pipe is full")), 1);
    QCOMPARE(end(), 0);
}

void TestHostd::keepsNothingWithoutAReader()
{
    QVERIFY(start({"simulate", "--time-scale", "100", "--start-time", "2025-06-01T12:00:00Z"}));
    QVERIFY(reported(QStringLiteral("power-up")));
    QTest::qWait(1500); // many simulated seconds that nobody reads, far fewer when busy
    const int reader = openReader();
    const QByteArray all =
        readFor(reader, [](const QByteArray &bytes) { return bytes.contains("$GNRMC"); });
    const QByteArray time = all.mid(all.indexOf(',') + 1, 6);
    QVERIFY2(time >= "120005", time.constData());
    ::close(reader);
    QCOMPARE(end(), 0);
}

void TestHostd::refusesASecondDaemon()
{
    QVERIFY(start({"simulate"}));
    QVERIFY(reported(QStringLiteral("power-up")));
    BoundProcess second;
    second.setProcessEnvironment(daemon->processEnvironment());
    second.start(QStringLiteral(HOSTD_PROGRAM), {"simulate"});
    QVERIFY(second.waitForFinished(kLongMs));
    QCOMPARE(second.exitCode(), 1);
    QVERIFY(second.readAllStandardError().contains("another tavrin-hostd serves"));
    QVERIFY(isPipe(path("agiin")));
    QVERIFY(isPipe(path("agiout")));
    send("$PPLMS,1\r\n"); // the first is not disturbed
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,1")));
    QCOMPARE(end(), 0);
}

void TestHostd::replacesAnOrdinaryCommandFile()
{
    QVERIFY(QDir(root->path()).mkdir(QStringLiteral("tmp")));
    QFile file(path("agiout"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("$PPLMG,3\r\n");
    file.close();
    QVERIFY(start({"simulate"}));
    QVERIFY(reported(QStringLiteral("replaced the ordinary file")));
    send("$PPLMS,1\r\n");
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,1")));
    QVERIFY(!report.contains(QStringLiteral("PPLMG")));
    QCOMPARE(end(), 0);
}

void TestHostd::failsWhereNoPipeCanBe()
{
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("tmp/agiin")));
    daemon->start(QStringLiteral(HOSTD_PROGRAM), {"simulate"});
    QVERIFY(daemon->waitForFinished(kLongMs));
    QCOMPARE(daemon->exitStatus(), QProcess::NormalExit);
    QCOMPARE(daemon->exitCode(), 1);
    QVERIFY(daemon->readAllStandardError().contains("is there and is no named pipe"));
    QVERIFY(!QFile::exists(path("agiout"))); // made and taken back

    QFile ordinary(path("agiin"));
    QVERIFY(QDir().rmdir(path("agiin")));
    QVERIFY(ordinary.open(QIODevice::WriteOnly));
    daemon->start(QStringLiteral(HOSTD_PROGRAM), {"simulate"});
    QVERIFY(daemon->waitForFinished(kLongMs));
    QCOMPARE(daemon->exitCode(), 1);
    QVERIFY(ordinary.exists());
}

void TestHostd::refusesWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("unknown command") << QStringList{"emulate"};
    QTest::newRow("unknown option") << QStringList{"simulate", "--colour"};
    QTest::newRow("value missing") << QStringList{"simulate", "--rate"};
    QTest::newRow("position") << QStringList{"simulate", "--position", "91,0,0"};
    QTest::newRow("rate") << QStringList{"simulate", "--rate", "0"};
    QTest::newRow("ttff") << QStringList{"simulate", "--ttff", "icy=3"};
    QTest::newRow("no file") << QStringList{"replay"};
    QTest::newRow("absent file") << QStringList{"replay", "/absent.log"};
    QTest::newRow("speed") << QStringList{"replay", "--speed", "0", "/dev/null"};
    QTest::newRow("endless device") << QStringList{"replay", "/dev/zero"};
}

void TestHostd::refusesWrongUsage()
{
    QFETCH(QStringList, arguments);
    daemon->start(QStringLiteral(HOSTD_PROGRAM), arguments);
    QVERIFY(daemon->waitForFinished(kLongMs));
    QCOMPARE(daemon->exitStatus(), QProcess::NormalExit);
    QCOMPARE(daemon->exitCode(), 2);
    QVERIFY(daemon->readAllStandardError().startsWith("tavrin-hostd: "));
    QVERIFY(daemon->readAllStandardOutput().isEmpty());
    QVERIFY(!QFile::exists(path("agiin")));
}

void TestHostd::pointsToTheHelpOfTheCommand_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QByteArray>("help");
    QTest::newRow("unknown command") << "emulate" << QByteArray("tavrin-hostd --help");
    QTest::newRow("serial") << "serial" << QByteArray("tavrin-hostd serial --help");
    QTest::newRow("replay") << "replay" << QByteArray("tavrin-hostd replay --help");
}

void TestHostd::pointsToTheHelpOfTheCommand()
{
    QFETCH(QString, command);
    QFETCH(QByteArray, help);
    daemon->start(QStringLiteral(HOSTD_PROGRAM), {command, QStringLiteral("--colour")});
    QVERIFY(daemon->waitForFinished(kLongMs));
    const QByteArray said = daemon->readAllStandardError();
    QVERIFY2(said.endsWith("\ntavrin-hostd: see " + help + '\n'), said.constData());
}

void TestHostd::helps()
{
    for (const QStringList &arguments :
         {QStringList{"--help"}, QStringList{"simulate", "--help"}, QStringList{"replay", "--help"},
          QStringList{"--version"}}) {
        daemon->start(QStringLiteral(HOSTD_PROGRAM), arguments);
        QVERIFY(daemon->waitForFinished(kLongMs));
        QCOMPARE(daemon->exitCode(), 0);
        QVERIFY(daemon->readAllStandardOutput().contains("tavrin-hostd"));
        QVERIFY(daemon->readAllStandardError().isEmpty());
    }
}

void TestHostd::failsWhereItsHelpCannotBeWritten()
{
    QFile::link(QStringLiteral("/dev/full"), root->filePath(QStringLiteral("full")));
    daemon->setStandardOutputFile(root->filePath(QStringLiteral("full")));
    daemon->start(QStringLiteral(HOSTD_PROGRAM), {"--help"});
    QVERIFY(daemon->waitForFinished(5000));
    QCOMPARE(daemon->exitCode(), 1);
}

void TestHostd::replaysEveryRecordingWhole_data()
{
    QTest::addColumn<QString>("file");
    const QString folder = Recordings::folder();
    const QStringList files = QDir(folder).entryList({QStringLiteral("*.log")});
    if (folder.isEmpty())
        QTest::newRow("none") << QString();
    for (const QString &file : files) {
        if (!folder.isEmpty())
            QTest::newRow(qPrintable(file)) << folder + QLatin1Char('/') + file;
    }
}

void TestHostd::replaysEveryRecordingWhole()
{
    QFETCH(QString, file);
    if (file.isEmpty())
        QSKIP(Recordings::kAbsent);
    QVERIFY(start({"replay", "--speed", "1000", file}));
    const int reader = openReader();
    QByteArray all = readFor(
        reader, [this](const QByteArray &) { return daemon->state() == QProcess::NotRunning; });
    QCOMPARE(daemon->state(), QProcess::NotRunning);
    QCOMPARE(daemon->exitStatus(), QProcess::NormalExit);
    QCOMPARE(daemon->exitCode(), 0);
    all += readFor(
        reader, [](const QByteArray &) { return false; }, 50);
    ::close(reader);
    DialectChecker checker;
    checker.read(all); // from the very first byte to the last
    QCOMPARE(checker.error(), QString());
    QFile stored(file);
    QVERIFY(stored.open(QIODevice::ReadOnly));
    const auto verdict =
        EpochComparison::ofCycles(RecordingReader::read(stored.readAll()), checker.cycles());
    QVERIFY2(verdict.faults.isEmpty(), qPrintable(verdict.faults.join('\n')));
    report += QString::fromLocal8Bit(daemon->readAllStandardError());
    QVERIFY2(report.contains(QStringLiteral("played %1 epochs").arg(checker.cycles().size())),
             qPrintable(report));
}

void TestHostd::endsAReplayThatNobodyReads()
{
    QFile file(root->filePath(QStringLiteral("many.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < 3000; ++i)
        file.write(NmeaFraming::sentence("GPRMC," + QByteArray::number(100000 + i % 60) +
                                         ",A,4807.0380,N,01131.0000,E,,,010125,,"));
    file.close();
    QVERIFY(start({"replay", "--speed", "1000", file.fileName()}));
    QVERIFY(!reported(QStringLiteral("played"), 200)); // waits for its first reader
    const int reader = openReader();                   // which then reads nothing
    QVERIFY(daemon->waitForFinished(kLongMs));
    QCOMPARE(daemon->exitStatus(), QProcess::NormalExit);
    QCOMPARE(daemon->exitCode(), 0);
    QVERIFY(daemon->readAllStandardError().contains("the pipe is full"));
    ::close(reader);
}

// Three epochs into a pipe with room for two, whose reader is there from the start and reads
// nothing.
void TestHostd::replayThreeEpochsIntoASmallPipe(int *reader)
{
    QFile file(root->filePath(QStringLiteral("three.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < 3; ++i) {
        file.write(NmeaFraming::sentence("GPRMC," + QByteArray::number(100000 + i) +
                                         ",A,4807.0380,N,01131.0000,E,,,010125,,"));
        for (int other = 0; other < 20; ++other)
            file.write(NmeaFraming::sentence("PTEST," + QByteArray(60, 'x')));
    }
    file.close();
    QVERIFY(QDir(root->path()).mkdir(QStringLiteral("tmp")));
    QCOMPARE(::mkfifo(QFile::encodeName(path("agiin")).constData(), 0600), 0);
    *reader = openReader();
    QCOMPARE(::fcntl(*reader, F_SETPIPE_SZ, 4096), 4096);
    QVERIFY(start({"replay", "--speed", "1000", file.fileName()}));
    int waiting = 0;
    QTRY_VERIFY_WITH_TIMEOUT(::ioctl(*reader, FIONREAD, &waiting) == 0 && waiting > 2048, kLongMs);
}

void TestHostd::waitsWithTheLastEpochForTheReader()
{
    int reader = -1;
    replayThreeEpochsIntoASmallPipe(&reader);
    if (QTest::currentTestFailed())
        return;
    QTest::qWait(100);
    QCOMPARE(daemon->state(), QProcess::Running);
    const QByteArray all =
        readFor(reader, [](const QByteArray &bytes) { return bytes.count("$PTEST") == 60; });
    QCOMPARE(all.count("$GNRMC"), 3);
    QTRY_COMPARE_WITH_TIMEOUT(daemon->state(), QProcess::NotRunning, kLongMs);
    QCOMPARE(daemon->exitCode(), 0);
    QVERIFY(reported(QStringLiteral("played 3 epochs")));
    QVERIFY(!report.contains(QStringLiteral("dropped")));
    ::close(reader);
}

// More epochs a second than any computer plays.
void TestHostd::endsADenseReplayOnASignal()
{
    QFile file(root->filePath(QStringLiteral("dense.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < 1000; ++i)
        file.write(NmeaFraming::sentence("GPRMC,1200" +
                                         QByteArray::number(i / 100).rightJustified(2, '0') + '.' +
                                         QByteArray::number(i % 100).rightJustified(2, '0') +
                                         ",A,4807.0380,N,01131.0000,E,,,010125,,"));
    file.close();
    QVERIFY(start({"replay", "--loop", "--speed", "1000", file.fileName()}));
    const int reader = openReader();
    readFor(reader, [](const QByteArray &all) { return all.size() > 100000; });
    ::close(reader);
    QVERIFY(reported(QStringLiteral("has left")));
    send("$PPLMS,1\r\n");
    QVERIFY(reported(QStringLiteral("obeyed $PPLMS,1: the recording pauses")));
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(end(), 0);
    QVERIFY(clock.elapsed() < 2000);
}

void TestHostd::refusesToReplayAPipe()
{
    const QString pipe = root->filePath(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    daemon->start(QStringLiteral(HOSTD_PROGRAM), {"replay", pipe});
    QVERIFY(daemon->waitForFinished(kLongMs));
    QCOMPARE(daemon->exitStatus(), QProcess::NormalExit);
    QCOMPARE(daemon->exitCode(), 2);
    QVERIFY(daemon->readAllStandardError().contains("is no ordinary file"));
}

void TestHostd::endsWhileItLooksForAnEpoch()
{
    QFile file(root->filePath(QStringLiteral("huge.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(1LL << 40)); // takes no room: nothing is ever written
    file.close();
    QVERIFY(start({"replay", file.fileName()}));
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(end(), 0);
    QVERIFY(clock.elapsed() < 2000);
    QVERIFY(!QFile::exists(path("agiin")));
}

void TestHostd::saysThatNothingIsToBePlayed()
{
    QFile file(root->filePath(QStringLiteral("none.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(20 * 1024 * 1024));
    file.close();
    daemon->start(QStringLiteral(HOSTD_PROGRAM), {"replay", "--loop", file.fileName()});
    QVERIFY(daemon->waitForFinished(kLongMs)); // nobody needs to read for that
    QCOMPARE(daemon->exitStatus(), QProcess::NormalExit);
    QCOMPARE(daemon->exitCode(), 1);
    QVERIFY(daemon->readAllStandardError().contains("no epoch in the recording"));
}

void TestHostd::replaysWithoutChecksums()
{
    QFile file(root->filePath(QStringLiteral("plain.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("$GPRMC,120000,A,4807.0380,N,01131.0000,E,,,010125,,\r\n"
               "$GPRMC,120001,A,4807.0380,N,01131.0000,E,,,010125,,\n");
    file.close();
    QVERIFY(start({"replay", "--speed", "100", file.fileName()}));
    const int reader = openReader();
    const QByteArray all =
        readFor(reader, [](const QByteArray &bytes) { return bytes.count("$GNRMC") >= 2; });
    DialectChecker checker;
    checker.read(wholeCycles(all));
    QCOMPARE(checker.error(), QString()); // with checksums
    QCOMPARE(checker.cycles().size(), 2);
    ::close(reader);
}

void TestHostd::saysThatThePathsAreTaken()
{
    QVERIFY(start({"simulate", "--time-scale", "10"}));
    QVERIFY(reported(QStringLiteral("power-up")));
    for (const char *name : {"agiin", "agiout"}) {
        QVERIFY(QFile::remove(path(name)));
        QVERIFY(QDir().mkdir(path(name)));
    }
    QVERIFY(reported(path("agiin")));
    QVERIFY(reported(path("agiout")));
    QTest::qWait(2500); // it looks once a second
    QCOMPARE(end(), 0);
    QCOMPARE(report.count(path("agiin")), 1);
    QCOMPARE(report.count(path("agiout")), 1);
    QVERIFY(QFileInfo(path("agiin")).isDir());
    QVERIFY(QFileInfo(path("agiout")).isDir());
}

void TestHostd::reportsCommandsDuringAReplay()
{
    QFile file(root->filePath(QStringLiteral("one.log")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("$GPRMC,,V,,,,,,,,,,N*53\n");
    file.close();
    QVERIFY(start({"replay", "--loop", "--speed", "10", file.fileName()}));
    const int reader = openReader();
    QVERIFY(readFor(reader, [](const QByteArray &all) {
                return all.count("$GNRMC") > 3;
            }).count("$GNRMC") > 3);
    send("$PPLMG,3\r\n");
    QVERIFY(reported(QStringLiteral("not obeyed $PPLMG,3: a recording takes no commands")));
    ::close(reader);
    QCOMPARE(end(), 0);
}

// A recording with an epoch a second, from noon on.
QString TestHostd::recorded(int epochs)
{
    QFile file(root->filePath(QStringLiteral("seconds.log")));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    for (int i = 0; i < epochs; ++i)
        file.write(NmeaFraming::sentence("GPRMC," + QByteArray::number(120000 + i) +
                                         ",A,4807.0380,N,01131.0000,E,,,010125,,"));
    return file.fileName();
}

void TestHostd::pausesARecordingUntilAStart_data()
{
    QTest::addColumn<int>("epochs");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("firstSecond");
    QTest::newRow("from its beginning") << 60 << QStringList() << 0;
    QTest::newRow("from a place in it") << 60 << QStringList{"--start", "20"} << 20;
    QTest::newRow("over and over") << 4 << QStringList{"--loop"} << 0;
}

// The recording goes on where it stood: without a jump, and without catching up.
void TestHostd::pausesARecordingUntilAStart()
{
    QFETCH(int, epochs);
    QFETCH(QStringList, options);
    QFETCH(int, firstSecond);
    constexpr int kPeriodMs = 200;
    QVERIFY(start(QStringList{"replay", "--speed", "5"} + options + QStringList{recorded(epochs)}));
    const int reader = openReader();
    QByteArray all =
        readFor(reader, [](const QByteArray &bytes) { return bytes.count("$GNRMC") >= 3; });
    send("$PPLMS,1\r\n");
    QVERIFY2(reported(QStringLiteral("obeyed $PPLMS,1: the recording pauses until a start")),
             qPrintable(report));
    all += readFor(
        reader, [](const QByteArray &) { return false; }, 50);
    QVERIFY2(all.endsWith("\r\n"), all.right(80).constData());
    QCOMPARE(readFor(
                 reader, [](const QByteArray &bytes) { return !bytes.isEmpty(); }, 5 * kPeriodMs),
             QByteArray());
    send("$PPLMS,0\r\n");
    QVERIFY2(reported(QStringLiteral("obeyed $PPLMS,0: the recording goes on")),
             qPrintable(report));
    QElapsedTimer clock;
    clock.start();
    all += readFor(reader, [](const QByteArray &bytes) { return bytes.count("$GNRMC") >= 5; });
    const qint64 elapsed = clock.elapsed();
    QVERIFY2(elapsed > 7 * kPeriodMs / 2, qPrintable(QString::number(elapsed)));
    DialectChecker checker;
    checker.read(all);
    QCOMPARE(checker.error(), QString());
    int expected = firstSecond;
    for (const tReadCycle &cycle : checker.cycles()) {
        QCOMPARE(cycle.time, QStringLiteral("1200%1.000").arg(expected, 2, 10, QLatin1Char('0')));
        expected = (expected + 1) % epochs;
    }
    ::close(reader);
    QCOMPARE(end(), 0);
}

// The last epoch finds the pipe full when the stop comes.
void TestHostd::waitsForAStartWithTheLastEpoch()
{
    int reader = -1;
    replayThreeEpochsIntoASmallPipe(&reader);
    if (QTest::currentTestFailed())
        return;
    send("$PPLMS,1\r\n");
    QVERIFY2(reported(QStringLiteral("obeyed $PPLMS,1")), qPrintable(report));
    QByteArray all = readFor(
        reader, [](const QByteArray &) { return false; }, 500);
    QCOMPARE(all.count("$GNRMC"), 2);
    QCOMPARE(daemon->state(), QProcess::Running);
    send("$PPLMS,0\r\n");
    all += readFor(reader, [](const QByteArray &bytes) { return bytes.count("$PTEST") == 20; });
    QCOMPARE(all.count("$GNRMC"), 3);
    QTRY_COMPARE_WITH_TIMEOUT(daemon->state(), QProcess::NotRunning, kLongMs);
    QCOMPARE(daemon->exitCode(), 0);
    QVERIFY(reported(QStringLiteral("played 3 epochs")));
    QVERIFY(!report.contains(QStringLiteral("dropped")));
    ::close(reader);
}

void TestHostd::repeatsItselfBySeed()
{
    const auto run = [this] {
        QByteArray all;
        if (start({"simulate", "--seed", "7", "--start-time", "2025-06-01T12:00:00Z",
                   "--time-scale", "50"})) {
            const int reader = openReader();
            all = wholeCycles(readFor(
                reader, [](const QByteArray &bytes) { return bytes.count("$GNRMC") > 60; }));
            ::close(reader);
        }
        return end() == 0 ? all : QByteArray();
    };
    const QByteArray first = run();
    const QByteArray second = run();
    // The readers may have come at different epochs; from the later start on all is the same.
    const QByteArray head = second.left(second.indexOf('\n'));
    const QByteArray otherHead = first.left(first.indexOf('\n'));
    const int inFirst = first.indexOf(head);
    const int inSecond = second.indexOf(otherHead);
    QVERIFY(!first.isEmpty() && !second.isEmpty() && (inFirst >= 0 || inSecond >= 0));
    const QByteArray a = first.mid(std::max(inFirst, 0));
    const QByteArray b = inFirst >= 0 ? second : second.mid(inSecond);
    const int common = std::min(a.size(), b.size());
    QVERIFY(common > 20000);
    QCOMPARE(a.left(common), b.left(common));
}

QTEST_GUILESS_MAIN(TestHostd)
#include "TestHostd.moc"
