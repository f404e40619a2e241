// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/DialectChecker.h"
#include "hostd/HostdRig.h"
#include "support/Gpsd.h"
#include "support/NmeaSentences.h"
#include "support/ScriptedReceiver.h"

#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

/// The real program at serial devices, TCP servers and a real gpsd.
class TestLiveHostd : public HostdRig
{
    Q_OBJECT
private slots:
    void cleanup();
    void bridgesASerialReceiver_data();
    void bridgesASerialReceiver();
    void returnsWithTheSerialDevice();
    void saysWhoHasTheDevice();
    void saysWhoElseReadsTheDevice();
    void saysWhichGroupToJoin();
    void passesBytesThroughUntouched();
    void holdsBackUntilAStart_data();
    void holdsBackUntilAStart();
    void holdsRawBytesBackBetweenTwoSentences();
    void holdsBackWhatComesAfterAnOutage();
    void holdsBackAlsoFromTheNextReader();
    void servesAViewerThatComesLate();
    void recordsUntilTheDiskIsFull();
    void showsItsStateOnATerminal();
    void showsOnATerminalThatItHoldsBack();
    void cutsItsStateToTheTerminal();
    void saysEverythingWhenAsked();
    void servesATcpReceiver_data();
    void servesATcpReceiver();
    void servesTheReceiverOfAGpsd();
    void commandsThroughAGpsd();
    void returnsWithTheGpsd();
    void saysThatSomethingIsNoGpsd();

private:
    QStringList serial(const QStringList &options = {}) const;
    void plugIn(const QByteArray &family, int periodMs);
    bool startOnTerminal(int columns);
    bool startGpsd(quint16 port);
    QVector<tReadCycle> cyclesRead(int count);
    bool staysSilent(int reader, int ms);

    std::unique_ptr<ScriptedReceiver> receiver;
    std::unique_ptr<Gpsd> gpsd;
};

namespace {

// The source's own place, in the digits of the dialect.
bool isAtThePlace(const tReadCycle &cycle)
{
    return cycle.valid && cycle.latitude == QStringLiteral("4807.0381") &&
           cycle.longitude == QStringLiteral("01131.0006") && cycle.inView.size() == 5 &&
           cycle.used == QList<int>({1, 2, 3, 4, 5});
}

} // namespace

void TestLiveHostd::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s%s", qPrintable(report), daemon->readAllStandardError().constData());
    HostdRig::cleanup();
    gpsd.reset();
    receiver.reset();
}

QStringList TestLiveHostd::serial(const QStringList &options) const
{
    return QStringList{QStringLiteral("serial"), root->filePath(QStringLiteral("ttyUSB0"))} +
           options;
}

void TestLiveHostd::plugIn(const QByteArray &family, int periodMs)
{
    receiver = std::make_unique<ScriptedReceiver>(ScriptedReceiver::script(family));
    receiver->setPeriodMs(periodMs);
    QVERIFY(receiver->plugIn(root->filePath(QStringLiteral("ttyUSB0"))));
}

// The daemon on a terminal of its own, whatever standard output and error of this one are; 0
// columns for one that does not know its width.
bool TestLiveHostd::startOnTerminal(int columns)
{
    const QString command =
        QStringLiteral("stty cols %1; exec %2 %3 --baud 9600 --family casic")
            .arg(QString::number(columns), QStringLiteral(HOSTD_PROGRAM), serial().join(' '));
    return startProgram(QStringLiteral("script"), {"-qfec", command, "/dev/null"});
}

// The cycles that a reader gets, without cut ones.
QVector<tReadCycle> TestLiveHostd::cyclesRead(int count)
{
    const int reader = openReader();
    const QByteArray all = wholeCycles(readFor(
        reader, [count](const QByteArray &bytes) { return bytes.count("$GNRMC") > count; }));
    ::close(reader);
    DialectChecker checker;
    checker.read(all);
    if (!checker.error().isEmpty())
        qWarning("%s", qPrintable(checker.error()));
    return checker.error().isEmpty() ? checker.cycles() : QVector<tReadCycle>();
}

void TestLiveHostd::bridgesASerialReceiver_data()
{
    QTest::addColumn<int>("pieces");
    QTest::addColumn<int>("periodMs");
    QTest::newRow("whole epochs") << 0 << 100;
    QTest::newRow("64 bytes") << 64 << 200;
    QTest::newRow("5 bytes") << 5 << 1000;
}

void TestLiveHostd::bridgesASerialReceiver()
{
    QFETCH(int, pieces);
    QFETCH(int, periodMs);
    plugIn("casic", periodMs);
    receiver->setPieces(pieces);
    QVERIFY(start(serial({"--family", "casic"})));
    const QVector<tReadCycle> cycles = cyclesRead(4);
    QVERIFY(cycles.size() >= 4);
    for (const tReadCycle &cycle : cycles)
        QVERIFY(isAtThePlace(cycle));
    send("$PPLMG,3\r\n");
    QVERIFY(reported(QStringLiteral("obeyed $PPLMG,3: sent $PCAS10,2*1E")));
    QTRY_COMPARE_WITH_TIMEOUT(receiver->received(), QByteArray("$PCAS10,2*1E\r\n"), kLongMs);
    send("$PPLMB,70,4\r\n");
    QVERIFY(reported(
        QStringLiteral("not obeyed $PPLMB,70,4: casic: constellation Galileo is not supported")));
    QCOMPARE(end(), 0);
}

void TestLiveHostd::returnsWithTheSerialDevice()
{
    QVERIFY(start(serial({"--family", "none", "--baud", "9600"})));
    QVERIFY(reported(QStringLiteral("there is no such device; is it plugged in?; trying again")));
    for (int round = 0; round < 2; ++round) {
        report.clear();
        plugIn("ubx", 50);
        QVERIFY(reported(QStringLiteral("is open at 9600 baud")));
        QVERIFY(cyclesRead(3).size() >= 3);
        receiver->unplug();
        QVERIFY(reported(QStringLiteral("the device is gone; trying again")));
    }
    QCOMPARE(end(), 0);
}

void TestLiveHostd::saysWhoHasTheDevice()
{
    plugIn("ubx", 50);
    QVERIFY(start(serial({"--family", "none", "--baud", "9600"})));
    QVERIFY(reported(QStringLiteral("is open at 9600 baud")));

    QTemporaryDir otherRoot;
    BoundProcess second;
    QProcessEnvironment environment = daemon->processEnvironment();
    environment.insert(QStringLiteral("TAVRIN_ROOT"), otherRoot.path());
    second.setProcessEnvironment(environment);
    second.start(QStringLiteral(HOSTD_PROGRAM), serial({"--baud", "9600"}));
    QVERIFY(second.waitForStarted());
    QByteArray said;
    const QByteArray holder =
        "the device is busy: tavrin-hostd (" + QByteArray::number(daemon->processId()) + ") has it";
    QTRY_VERIFY2_WITH_TIMEOUT((said += second.readAllStandardError()).contains(holder),
                              said.constData(), kLongMs);
    QCOMPARE(end(), 0);
    // The second one gets it now.
    QTRY_VERIFY2_WITH_TIMEOUT((said += second.readAllStandardError()).contains("is open at 9600"),
                              said.constData(), kLongMs);
    second.terminate();
    QVERIFY(second.waitForFinished(kLongMs));
}

void TestLiveHostd::saysWhoElseReadsTheDevice()
{
    plugIn("ubx", 50);
    BoundProcess other;
    other.setStandardInputFile(root->filePath(QStringLiteral("ttyUSB0")));
    other.start(QStringLiteral("sleep"), {"60"});
    QVERIFY(other.waitForStarted());
    QVERIFY(start(serial({"--family", "none", "--baud", "9600"})));
    QVERIFY(reported(
        QStringLiteral("is also open in sleep (%1): each will miss bytes").arg(other.processId())));
    QVERIFY(cyclesRead(3).size() >= 3);
    QCOMPARE(end(), 0);
    other.kill();
    QVERIFY(other.waitForFinished(kLongMs));
}

void TestLiveHostd::saysWhichGroupToJoin()
{
    const QString setpriv = QStandardPaths::findExecutable(QStringLiteral("setpriv"));
    const group *const dialout = ::getgrnam("dialout");
    if (::geteuid() != 0 || setpriv.isEmpty() || dialout == nullptr)
        QSKIP("only root can become a user without permission");
    plugIn("ubx", 50);
    const QByteArray device = QFile::encodeName(serial().last());
    QCOMPARE(::chown(device.constData(), 0, dialout->gr_gid), 0);
    QCOMPARE(::chmod(device.constData(), 0660), 0);
    QCOMPARE(::chmod(QFile::encodeName(root->path()).constData(), 0777), 0);
    QVERIFY(startProgram(
        setpriv,
        QStringList{"--reuid=65534", "--regid=65534", "--clear-groups", HOSTD_PROGRAM} + serial()));
    QVERIFY2(
        reported(QStringLiteral("its group is dialout: join it with 'sudo adduser $USER dialout'")),
        qPrintable(report));
    QCOMPARE(::chmod(device.constData(), 0666), 0);
    QVERIFY(reported(QStringLiteral("is open at")));
    QCOMPARE(end(), 0);
}

void TestLiveHostd::passesBytesThroughUntouched()
{
    plugIn("ubx", 50);
    QVERIFY(start(serial({"--baud", "9600", "--family", "none", "--raw"})));
    const int reader = openReader();
    const QByteArray all =
        readFor(reader, [](const QByteArray &bytes) { return bytes.size() > 5000; });
    ::close(reader);
    QVERIFY(all.size() > 5000);
    QVERIFY2(receiver->sent().contains(all), all.left(200).constData());
    QCOMPARE(end(), 0);
}

// Takes what is on its way; whether nothing follows it.
bool TestLiveHostd::staysSilent(int reader, int ms)
{
    readFor(
        reader, [](const QByteArray &) { return false; }, 50);
    const QByteArray more = readFor(
        reader, [](const QByteArray &bytes) { return !bytes.isEmpty(); }, ms);
    if (!more.isEmpty())
        qWarning("%s", more.constData());
    return more.isEmpty();
}

void TestLiveHostd::holdsBackUntilAStart_data()
{
    QTest::addColumn<QByteArray>("family");
    QTest::addColumn<QString>("why");
    QTest::addColumn<QByteArray>("command"); // that starts again
    QTest::newRow("no stop") << QByteArray("casic")
                             << "casic: stop is not supported: its standby cannot be ended"
                             << QByteArray("$PPLMS,0");
    QTest::newRow("no stop, hot start")
        << QByteArray("sirf") << "sirf: stop is not supported" << QByteArray("$PPLMG,1");
    QTest::newRow("no commands") << QByteArray("none")
                                 << "--family none: the receiver takes no commands"
                                 << QByteArray("$PPLMS,0");
    QTest::newRow("no commands, cold start")
        << QByteArray("none") << "--family none: the receiver takes no commands"
        << QByteArray("$PPLMG,3");
    QTest::newRow("family not known yet")
        << QByteArray("auto") << "no family known; --family names one" << QByteArray("$PPLMS,0");
}

// Everything else goes on; what was sent meanwhile is not handed on as if it were new.
void TestLiveHostd::holdsBackUntilAStart()
{
    QFETCH(QByteArray, family);
    QFETCH(QString, why);
    QFETCH(QByteArray, command);
    const QString file = root->filePath(QStringLiteral("drive.tlog"));
    plugIn("casic", 100);
    QVERIFY(start(
        serial({"--baud", "9600", "--family", QString::fromLatin1(family), "--record", file})));
    const int reader = openReader();
    QByteArray before =
        readFor(reader, [](const QByteArray &bytes) { return bytes.count("$GNRMC") >= 3; });
    send("$PPLMS,1\r\n");
    QVERIFY2(reported(QStringLiteral("obeyed $PPLMS,1: the receiver's data is held back until a "
                                     "start (%1)")
                          .arg(why)),
             qPrintable(report));
    before += readFor(
        reader, [](const QByteArray &) { return false; }, 50);
    const qint64 recordedBefore = QFileInfo(file).size();
    QVERIFY(staysSilent(reader, 600));
    QVERIFY(QFileInfo(file).size() > recordedBefore + 1000);
    const int sent = receiver->epochs();
    send(command + "\r\n");
    const QByteArray after =
        readFor(reader, [](const QByteArray &bytes) { return bytes.count("$GNRMC") >= 3; });
    QVERIFY2(reported(QStringLiteral("the receiver's data is handed on again")),
             qPrintable(report));
    DialectChecker checker;
    checker.read(before + after); // whole cycles before and after
    QCOMPARE(checker.error(), QString());
    const int cyclesBefore = before.count("$GNRMC");
    QVERIFY(checker.cycles().size() > cyclesBefore);
    const QTime first =
        QTime::fromString(checker.cycles().at(cyclesBefore).time.left(6), QStringLiteral("hhmmss"));
    // Each epoch is a second after the one before, the first at one past noon.
    QVERIFY2(QTime(12, 0).secsTo(first) >= sent, qPrintable(first.toString()));
    ::close(reader);
    QCOMPARE(end(), 0);
}

void TestLiveHostd::holdsRawBytesBackBetweenTwoSentences()
{
    plugIn("ubx", 700); // with pauses between the epochs
    receiver->setPieces(33);
    QVERIFY(start(serial({"--baud", "9600", "--family", "none", "--raw"})));
    const int reader = openReader();
    for (int round = 0; round < 3; ++round) {
        QByteArray all =
            readFor(reader, [](const QByteArray &bytes) { return bytes.contains("$GPGSA"); });
        if (round > 0) {
            // From an epoch on that began after the start.
            QVERIFY2(all.startsWith("$GNRMC"), all.left(80).constData());
            QVERIFY2(receiver->sent().contains(all), all.constData());
        }
        report.clear();
        send("$PPLMS,1\r\n");
        QVERIFY(reported(QStringLiteral("held back until a start")));
        all += readFor(
            reader, [](const QByteArray &) { return false; }, 50);
        QVERIFY2(all.endsWith("\r\n"), all.right(80).constData());
        QVERIFY(staysSilent(reader, 1000));
        send("$PPLMS,0\r\n");
    }
    ::close(reader);
    QCOMPARE(end(), 0);
}

// The receiver is away at the stop, and sends again when it returns.
void TestLiveHostd::holdsBackWhatComesAfterAnOutage()
{
    plugIn("ubx", 50);
    QVERIFY(start(serial({"--baud", "9600", "--family", "ubx"})));
    const int reader = openReader();
    QVERIFY(!readFor(reader, [](const QByteArray &bytes) { return !bytes.isEmpty(); }).isEmpty());
    receiver->unplug();
    QVERIFY(reported(QStringLiteral("the device is gone; trying again")));
    send("$PPLMS,1\r\n");
    QVERIFY2(reported(QStringLiteral("obeyed $PPLMS,1: the receiver's data is held back until a "
                                     "start (the receiver is not there)")),
             qPrintable(report));
    report.clear();
    plugIn("ubx", 50);
    QVERIFY(reported(QStringLiteral("is open at 9600 baud")));
    QTRY_VERIFY_WITH_TIMEOUT(receiver->epochs() > 5, kLongMs);
    QVERIFY(staysSilent(reader, 200));
    // The receiver itself takes a start.
    send("$PPLMS,0\r\n");
    QVERIFY2(reported(QStringLiteral("obeyed $PPLMS,0: sent b5 62 06 04 04 00 00 00 09 00 17 76; "
                                     "the receiver's data is handed on again")),
             qPrintable(report));
    QVERIFY(readFor(reader, [](const QByteArray &bytes) {
                return bytes.contains("$GNRMC");
            }).startsWith("$GNGGA"));
    ::close(reader);
    QCOMPARE(end(), 0);
}

// As a stopped receiver would.
void TestLiveHostd::holdsBackAlsoFromTheNextReader()
{
    plugIn("casic", 50);
    QVERIFY(start(serial({"--baud", "9600", "--family", "none"})));
    QVERIFY(cyclesRead(2).size() >= 2);
    send("$PPLMS,1\r\n");
    QVERIFY2(reported(QStringLiteral("held back until a start")), qPrintable(report));
    report.clear();
    const int reader = openReader();
    QVERIFY(reported(QStringLiteral("a reader has opened")));
    QVERIFY(staysSilent(reader, 300));
    send("$PPLMB,70,1\r\n"); // no start
    QVERIFY(reported(QStringLiteral("not obeyed $PPLMB,70,1")));
    QVERIFY(staysSilent(reader, 300));
    ::close(reader);
    send("$PPLMS,0\r\n");
    QVERIFY(cyclesRead(2).size() >= 2);
    QCOMPARE(end(), 0);
}

// What nobody reads is gone, not kept.
void TestLiveHostd::servesAViewerThatComesLate()
{
    plugIn("ubx", 20);
    QVERIFY(start(serial({"--baud", "9600", "--family", "none"})));
    QTRY_VERIFY_WITH_TIMEOUT(receiver->epochs() > 200, kLongMs);
    const int before = receiver->epochs();
    const QVector<tReadCycle> cycles = cyclesRead(2);
    QVERIFY(!cycles.isEmpty());
    const QTime first = QTime::fromString(cycles.first().time.left(6), QStringLiteral("hhmmss"));
    // Each epoch is a second after the one before, the first at one past noon. A busy machine has
    // some of them on their way.
    QVERIFY2(QTime(12, 0).secsTo(first) >= before - 100, qPrintable(cycles.first().time));
    QCOMPARE(end(), 0);
}

// The limit of a file's size stands for a full disk.
void TestLiveHostd::recordsUntilTheDiskIsFull()
{
    plugIn("ubx", 20);
    const QString file = root->filePath(QStringLiteral("drive.tlog"));
    // The counts of a coverage build go elsewhere: cut by the limit they would spoil everybody's.
    const QString script =
        QStringLiteral("trap '' XFSZ; ulimit -f 16; GCOV_PREFIX='%1' exec \"$0\" \"$@\"");
    QVERIFY(startProgram(QStringLiteral("/bin/sh"),
                         QStringList{"-c", script.arg(root->path()), HOSTD_PROGRAM} +
                             serial({"--baud", "9600", "--family", "none", "--record", file})));
    QVERIFY2(reported(file), qPrintable(report));
    QVERIFY(cyclesRead(5).size() >= 5);
    QCOMPARE(end(), 0);
    QCOMPARE(report.count(file), 1);
    // The limit counts blocks of 512 bytes; the record that did not fit, which holds up to as much
    // as a terminal keeps, is not there in part.
    QVERIFY(QFileInfo(file).size() <= 8192);
    QVERIFY(QFileInfo(file).size() > 3500);
}

void TestLiveHostd::showsItsStateOnATerminal()
{
    plugIn("casic", 100);
    QVERIFY(startOnTerminal(0));
    QByteArray shown;
    const auto shows = [this, &shown](const QByteArray &text) {
        shown += daemon->readAllStandardOutput();
        return shown.contains(text);
    };
    QTRY_VERIFY2_WITH_TIMEOUT(shows(" epochs, 0 checksum errors, 5/5 satellites, 3D fix"),
                              shown.constData(), kLongMs);
    send("$PPLMG,3\r\n");
    QTRY_VERIFY2_WITH_TIMEOUT(shows(", last $PPLMG,3"), shown.constData(), kLongMs);
    QTRY_VERIFY2_WITH_TIMEOUT(shows("\r\x1b[K10.0 Hz, ") || shows("\r\x1b[K9.9 Hz, ") ||
                                  shows("\r\x1b[K10.1 Hz, "),
                              shown.constData(), kLongMs);
    end(SIGTERM);
}

void TestLiveHostd::showsOnATerminalThatItHoldsBack()
{
    plugIn("casic", 100);
    QVERIFY(startOnTerminal(0));
    QByteArray shown;
    const auto shows = [this, &shown](const QByteArray &text) {
        shown += daemon->readAllStandardOutput();
        return shown.contains(text);
    };
    QTRY_VERIFY2_WITH_TIMEOUT(shows("3D fix"), shown.constData(), kLongMs);
    send("$PPLMS,1\r\n");
    QTRY_VERIFY2_WITH_TIMEOUT(shows("\r\x1b[Kheld back until a start, "), shown.constData(),
                              kLongMs);
    shown.clear();
    // It goes on counting.
    QTRY_VERIFY2_WITH_TIMEOUT(shows("held back until a start, 10.0 Hz, ") ||
                                  shows("held back until a start, 9.9 Hz, ") ||
                                  shows("held back until a start, 10.1 Hz, "),
                              shown.constData(), kLongMs);
    send("$PPLMS,0\r\n");
    QTRY_VERIFY_WITH_TIMEOUT(shows("handed on again"), kLongMs);
    shown.clear();
    QTRY_VERIFY2_WITH_TIMEOUT(shows(", last $PPLMS,0"), shown.constData(), kLongMs);
    QVERIFY2(!shown.contains("held back"), shown.constData());
    end(SIGTERM);
}

void TestLiveHostd::cutsItsStateToTheTerminal()
{
    plugIn("casic", 100);
    QVERIFY(startOnTerminal(40));
    static const QRegularExpression pattern(QStringLiteral("\r\x1b\\[K([0-9.]+ Hz, [^\r\n]*)\r"));
    QString shown;
    QRegularExpressionMatch state;
    const auto showsState = [&] {
        shown += QString::fromLatin1(daemon->readAllStandardOutput());
        state = pattern.match(shown);
        return state.hasMatch();
    };
    QTRY_VERIFY2_WITH_TIMEOUT(showsState(), qPrintable(shown), kLongMs);
    QCOMPARE(state.captured(1).size(), 39);
    end(SIGTERM);
}

void TestLiveHostd::saysEverythingWhenAsked()
{
    plugIn("ubx", 100);
    QVERIFY(start(serial({"--baud", "9600", "--family", "ubx", "--verbose"})));
    QVERIFY(reported(QStringLiteral("is open at 9600 baud")));
    send("$PPLMG,1\r\n");
    QVERIFY(reported(QStringLiteral("sent b5 62 06 04 04 00 00 00 02 00 10 68")));
    QVERIFY(reported(QStringLiteral("bytes, ")));
    QVERIFY2(report.contains(QStringLiteral("0 checksum errors")), qPrintable(report));
    receiver->unplug();
    QVERIFY(reported(QStringLiteral("next try in 1 s")));
    QVERIFY(reported(QStringLiteral("next try in 2 s")));
    QCOMPARE(end(), 0);
}

void TestLiveHostd::servesATcpReceiver_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("argument");
    QTest::newRow("IPv4") << "127.0.0.1"
                          << "127.0.0.1:%1";
    QTest::newRow("IPv6") << "::1"
                          << "[::1]:%1";
    QTest::newRow("name") << "127.0.0.1"
                          << "localhost:%1";
}

void TestLiveHostd::servesATcpReceiver()
{
    QFETCH(QString, address);
    QFETCH(QString, argument);
    QTcpServer server;
    if (!server.listen(QHostAddress(address)))
        QSKIP("this machine has no such address");
    const quint16 port = server.serverPort();
    QVERIFY(start({"tcp", argument.arg(port), "--family", "pair"}));
    int second = 0;
    for (int round = 0; round < 2; ++round) {
        QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), kLongMs);
        const std::unique_ptr<QTcpSocket> socket(server.nextPendingConnection());
        QTimer feed;
        connect(&feed, &QTimer::timeout, socket.get(), [&socket, &second] {
            socket->write(NmeaSentences::epochOf31Satellites(++second));
        });
        feed.start(50);
        QVERIFY(cyclesRead(3).size() >= 3);
        send("$PPLMG,7\r\n");
        QByteArray told;
        QTRY_COMPARE_WITH_TIMEOUT(told += socket->readAll(), QByteArray("$PAIR007*3D\r\n"),
                                  kLongMs);
        // The server restarts.
        report.clear();
        feed.stop();
        socket->abort();
        server.close();
        QVERIFY(reported(QStringLiteral("trying again")));
        QVERIFY(server.listen(QHostAddress(address), port));
    }
    QCOMPARE(end(), 0);
    QVERIFY2(report.count(QStringLiteral("trying again")) <= 2, qPrintable(report));
}

bool TestLiveHostd::startGpsd(quint16 port)
{
    gpsd = std::make_unique<Gpsd>();
    return gpsd->start(port, {serial().last()});
}

// Commands of a gpsd that looks for the receiver come first.
void TestLiveHostd::servesTheReceiverOfAGpsd()
{
    plugIn("pmtk", 200);
    const quint16 port = Gpsd::freePort();
    if (!startGpsd(port))
        QSKIP("there is no gpsd");
    QVERIFY(start({"gpsd", QStringLiteral("localhost:%1").arg(port), "--family", "none"}));
    QVERIFY(reported(QStringLiteral("is open release ")));
    QVERIFY(reported(QStringLiteral("receiver at ") + serial().last()));
    const QVector<tReadCycle> cycles = cyclesRead(5);
    QVERIFY(cycles.size() >= 5);
    for (const tReadCycle &cycle : cycles)
        QVERIFY(isAtThePlace(cycle));
    QCOMPARE(end(), 0);
    QVERIFY(gpsd->stop());
}

void TestLiveHostd::commandsThroughAGpsd()
{
    plugIn("ubx", 200);
    const quint16 port = Gpsd::freePort();
    if (!startGpsd(port))
        QSKIP("there is no gpsd");
    QVERIFY(start({"gpsd", QStringLiteral("localhost:%1:%2").arg(port).arg(serial().last()),
                   "--family", "ubx"}));
    QVERIFY(reported(QStringLiteral("receiver at ") + serial().last()));
    // gpsd takes no commands for a receiver that it has not recognised.
    QVERIFY(!cyclesRead(1).isEmpty());
    const tReceiverScript &script = ScriptedReceiver::script("ubx");
    receiver->forgetReceived();
    send("$PPLMG,3\r\n");
    QTRY_VERIFY2_WITH_TIMEOUT(receiver->received().contains(script.cold),
                              receiver->received().toHex(' ').constData(), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(!cyclesRead(1).isEmpty(), kLongMs);
    receiver->forgetReceived();
    send("$PPLMG,7\r\n");
    QTRY_VERIFY_WITH_TIMEOUT(receiver->received().contains(script.factory.left(21)), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(receiver->received().contains(script.factory.mid(21)), kLongMs);
    QCOMPARE(end(), 0);
    QVERIFY(gpsd->stop());
}

void TestLiveHostd::returnsWithTheGpsd()
{
    plugIn("pmtk", 200);
    const quint16 port = Gpsd::freePort();
    QVERIFY(start({"gpsd", QStringLiteral("localhost:%1").arg(port), "--family", "none"}));
    QVERIFY(reported(QStringLiteral("trying again")));
    for (int round = 0; round < 2; ++round) {
        if (!startGpsd(port))
            QSKIP("there is no gpsd");
        report.clear();
        QVERIFY(cyclesRead(3).size() >= 3);
        QVERIFY(gpsd->stop());
        QVERIFY(reported(QStringLiteral("trying again")));
    }
    QCOMPARE(end(), 0);
}

void TestLiveHostd::saysThatSomethingIsNoGpsd()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QVERIFY(start({"gpsd", QStringLiteral("127.0.0.1:%1").arg(server.serverPort())}));
    QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), kLongMs);
    QTcpSocket *const socket = server.nextPendingConnection();
    socket->write("SSH-2.0-OpenSSH_9.2\r\n");
    QVERIFY(reported(QStringLiteral("this is no gpsd; trying again")));
    QCOMPARE(end(), 0);
}

QTEST_GUILESS_MAIN(TestLiveHostd)
#include "TestLiveHostd.moc"
