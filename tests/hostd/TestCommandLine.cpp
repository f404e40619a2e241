// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/CommandLine.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QtTest>

#include <sys/stat.h>

class TestCommandLine : public QObject
{
    Q_OBJECT
private slots:
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void readsTheOptionsOfSimulate();
    void readsTheOptionsOfReplay();
    void readsTheOptionsOfARealReceiver();
    void readsDevicesAndAddresses_data();
    void readsDevicesAndAddresses();
    void readsOffsets_data();
    void readsOffsets();
    void replaysOrdinaryFilesOnly();
    void readsStartTimes_data();
    void readsStartTimes();
    void helps_data();
    void helps();
};

using Action = tCommandLine::Action;

namespace {

tCommandLine parsed(const QString &arguments)
{
    const QStringList list = arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return parseCommandLine(QStringList{QStringLiteral("tavrin-hostd")} + list);
}

} // namespace

void TestCommandLine::refusesWrongUsage_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("said"); // what the message must name
    const auto row = [](const char *arguments, const char *said) {
        QTest::newRow(*arguments ? arguments : "nothing")
            << QString::fromLatin1(arguments) << QString::fromLatin1(said);
    };
    row("", "simulate, serial, gpsd, tcp or replay");
    row("play", "play");
    row("--speed 2 replay x", "--speed");
    row("simulate now", "now");
    row("simulate --unknown", "unknown");
    row("simulate --loop", "loop");
    row("simulate --position", "position");
    row("simulate --position 48,11", "LAT,LON,ALT");
    row("simulate --position 48,11,500,1", "LAT,LON,ALT");
    row("simulate --position north,11,500", "LAT,LON,ALT");
    row("simulate --position nan,11,500", "LAT,LON,ALT");
    row("simulate --position 48,inf,500", "LAT,LON,ALT");
    row("simulate --position 48,east,500", "LAT,LON,ALT");
    row("simulate --position 48,11,high", "LAT,LON,ALT");
    row("simulate --position 90.1,11,500", "latitude");
    row("simulate --position 48,-180.5,500", "longitude");
    row("simulate --position 48,11,99999", "altitude");
    row("simulate --position 48,11,-1001", "altitude");
    row("simulate --rate 0", "--rate");
    row("simulate --rate -1", "--rate");
    row("simulate --rate 101", "--rate");
    row("simulate --rate fast", "--rate");
    row("simulate --rate nan", "--rate");
    row("simulate --time-scale 0", "--time-scale");
    row("simulate --time-scale inf", "--time-scale");
    row("simulate --time-scale 1e9", "--time-scale");
    row("simulate --rate 100 --time-scale 1000", "epochs a second");
    row("simulate --seed -1", "--seed");
    row("simulate --seed 1.5", "--seed");
    row("simulate --seed +5", "--seed");
    row("simulate --seed 18446744073709551616", "--seed");
    row("simulate --ttff 5", "--ttff");
    row("simulate --ttff lukewarm=5", "lukewarm");
    row("simulate --ttff hot=", "hot=");
    row("simulate --ttff hot=0", "hot=0");
    row("simulate --ttff hot=-1", "hot=-1");
    row("simulate --ttff hot=86401", "86400");
    row("simulate --ttff hot=nan", "hot=nan");
    row("simulate --ttff hot=1,hot=2", "twice");
    row("simulate --ttff hot=1,", "--ttff");
    row("simulate --start-time yesterday", "yesterday");
    row("simulate --start-time 1999-12-31T23:59:59Z", "1999");
    row("simulate --start-time 2099-01-01T00:00:00Z", "2098");
    row("simulate --start-time 2025-02-30T00:00:00Z", "--start-time");
    row("replay", "FILE");
    row("replay /absent/recording.log", "/absent/recording.log");
    row("replay /", "folder");
    row("replay /dev/zero", "no ordinary file");
    row("replay --speed 0 x", "--speed");
    row("replay --speed -2 x", "--speed");
    row("replay --rate 2 x", "rate");
    row("replay --start -1 x", "--start");
    row("replay --start soon x", "--start");
    row("replay --start 1:60 x", "--start");
    row("replay --start 1:2:3:4 x", "--start");
    row("replay --start 1.5:00 x", "--start");
    row("replay --start 1000000001 x", "--start");
    row("serial", "DEVICE");
    row("serial /", "folder");
    row("serial .", "folder");
    row("serial /dev/ttyUSB0 /dev/ttyUSB1", "/dev/ttyUSB1");
    row("serial /etc/passwd", "replay");
    row("serial ttyUSB0 --baud 0", "--baud");
    row("serial ttyUSB0 --baud 12.5", "--baud");
    row("serial ttyUSB0 --baud fast", "--baud");
    row("serial ttyUSB0 --baud 5000000", "--baud");
    row("serial ttyUSB0 --family gps", "auto, pmtk, pair, pqtm, ubx");
    row("serial ttyUSB0 --record=", "--record");
    row("serial ttyUSB0 --speed 2", "speed");
    row("tcp", "HOST:PORT");
    row("tcp :10110", "HOST:PORT");
    row("tcp host:port", "HOST:PORT");
    row("tcp host:1:/dev/ttyUSB0", "HOST:PORT");
    row("tcp host --baud 9600", "baud");
    row("gpsd localhost:x", "HOST:PORT:DEVICE");
    row("gpsd a b", "not also 'b'");
}

void TestCommandLine::refusesWrongUsage()
{
    QFETCH(QString, arguments);
    QFETCH(QString, said);
    const tCommandLine line = parsed(arguments);
    QVERIFY(line.action == Action::Fail);
    QVERIFY2(line.text.contains(said), qPrintable(line.text));
    const QString command = arguments.section(QLatin1Char(' '), 0, 0);
    const bool isKnown = parsed(command + QStringLiteral(" --help")).action == Action::ShowText;
    QCOMPARE(line.helpCommand, isKnown ? command : QString());
}

void TestCommandLine::readsTheOptionsOfSimulate()
{
    const tCommandLine line =
        parsed(QStringLiteral("simulate --position -33.8568,151.2153,40 --rate 5 --seed "
                              "18446744073709551615 --ttff hot=1,factory=12.5 --time-scale=10 "
                              "--start-time 2025-06-01T12:00:00Z"));
    QVERIFY2(line.action == Action::Simulate, qPrintable(line.text));
    QCOMPARE(line.simulation.place.latitudeDeg, -33.8568);
    QCOMPARE(line.simulation.place.longitudeDeg, 151.2153);
    QCOMPARE(line.simulation.place.altitudeM, 40.0);
    QCOMPARE(line.simulation.rateHz, 5.0);
    QCOMPARE(line.simulation.seed, std::numeric_limits<quint64>::max());
    QCOMPARE(line.simulation.ttffS[0].value_or(0), 1.0);
    QVERIFY(!line.simulation.ttffS[1]);
    QVERIFY(!line.simulation.ttffS[2]);
    QCOMPARE(line.simulation.ttffS[3].value_or(0), 12.5);
    QCOMPARE(line.timeScale, 10.0);
    QVERIFY(line.simulation.startTime.isValid());
    const tCommandLine plain = parsed(QStringLiteral("simulate"));
    QVERIFY(plain.action == Action::Simulate);
    QVERIFY(!plain.simulation.startTime.isValid());
    QCOMPARE(plain.simulation.rateHz, 1.0);
    QCOMPARE(plain.timeScale, 1.0);
}

void TestCommandLine::readsTheOptionsOfReplay()
{
    QTemporaryFile first;
    QTemporaryFile second;
    QVERIFY(first.open() && second.open());
    const tCommandLine line = parsed(
        QStringLiteral("replay --loop %1 --speed 2.5 %2").arg(first.fileName(), second.fileName()));
    QVERIFY2(line.action == Action::Replay, qPrintable(line.text));
    QCOMPARE(line.files, (QStringList{first.fileName(), second.fileName()}));
    QCOMPARE(line.speed, 2.5);
    QVERIFY(line.loop);
    const tCommandLine plain = parsed(QStringLiteral("replay ") + first.fileName());
    QVERIFY(!plain.loop);
    QCOMPARE(plain.speed, 1.0);
}

// Reading from anything else may never end, or never begin.
void TestCommandLine::readsTheOptionsOfARealReceiver()
{
    const tCommandLine usual = parsed(QStringLiteral("serial /dev/ttyUSB0"));
    QVERIFY2(usual.action == Action::Live, qPrintable(usual.text));
    QVERIFY(!usual.live.baud);
    QVERIFY(!usual.live.family);
    QVERIFY(!usual.raw && !usual.verbose && usual.live.recordFile.isEmpty());
    const tCommandLine same =
        parsed(QStringLiteral("serial /dev/ttyUSB0 --baud auto --family auto"));
    QVERIFY(!same.live.baud);
    QVERIFY(!same.live.family);
    const tCommandLine all = parsed(
        QStringLiteral("serial --baud 460800 --family casic --raw --record drive.tlog --verbose "
                       "/dev/ttyUSB0"));
    QVERIFY2(all.action == Action::Live, qPrintable(all.text));
    QCOMPARE(all.live.baud.value_or(0), 460800);
    QVERIFY(all.live.family == ReceiverFamily::Family::Casic);
    QVERIFY(all.raw && all.verbose);
    QCOMPARE(all.live.recordFile, QStringLiteral("drive.tlog"));
}

void TestCommandLine::readsDevicesAndAddresses_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("place");
    QTest::newRow("device") << "serial /dev/ttyACM0"
                            << "/dev/ttyACM0";
    QTest::newRow("its short name") << "serial ttyACM0"
                                    << "/dev/ttyACM0";
    QTest::newRow("path that is not straight") << "serial /dev/../dev/ttyACM0"
                                               << "/dev/ttyACM0";
    QTest::newRow("tcp") << "tcp 192.168.4.1"
                         << "192.168.4.1:10110";
    QTest::newRow("tcp, IPv6") << "tcp [::1]:2000"
                               << "[::1]:2000";
    QTest::newRow("gpsd") << "gpsd"
                          << "localhost:2947";
    QTest::newRow("gpsd elsewhere") << "gpsd raspberrypi.local"
                                    << "raspberrypi.local:2947";
    QTest::newRow("gpsd, IPv6") << "gpsd ::1"
                                << "[::1]:2947";
    QTest::newRow("gpsd's device") << "gpsd localhost:2948:/dev/ttyS0"
                                   << "localhost:2948 /dev/ttyS0";
}

void TestCommandLine::readsDevicesAndAddresses()
{
    QFETCH(QString, arguments);
    const tCommandLine line = parsed(arguments);
    QVERIFY2(line.action == Action::Live, qPrintable(line.text));
    const tLiveSettings &live = line.live;
    const QString place =
        live.kind == tLiveSettings::Kind::Serial
            ? live.device
            : (live.address.text() + QLatin1Char(' ') + live.address.rest).trimmed();
    QTEST(place, "place");
}

void TestCommandLine::readsOffsets_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("seconds");
    QTest::newRow("seconds") << "90" << 90.0;
    QTest::newRow("decimals") << "0.25" << 0.25;
    QTest::newRow("minutes") << "01:30" << 90.0;
    QTest::newRow("many minutes") << "90:00.5" << 5400.5;
    QTest::newRow("hours") << "1:30:00" << 5400.0;
    QTest::newRow("a day") << "24:00:00" << 86400.0;
}

void TestCommandLine::readsOffsets()
{
    QFETCH(QString, text);
    QTemporaryFile file;
    QVERIFY(file.open());
    const tCommandLine line =
        parsed(QStringLiteral("replay --start %1 %2").arg(text, file.fileName()));
    QVERIFY2(line.action == Action::Replay, qPrintable(line.text));
    QTEST(line.startS, "seconds");
}

void TestCommandLine::replaysOrdinaryFilesOnly()
{
    QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY(parsed(QStringLiteral("replay ") + pipe).text.contains(QStringLiteral("ordinary")));
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.link(folder.filePath(QStringLiteral("link"))));
    QVERIFY(parsed(QStringLiteral("replay ") + folder.filePath(QStringLiteral("link"))).action ==
            Action::Replay);
}

void TestCommandLine::readsStartTimes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("utc");
    QTest::newRow("UTC") << "2025-06-01T12:00:00Z"
                         << "2025-06-01T12:00:00.000Z";
    QTest::newRow("no zone") << "2025-06-01T12:00:00"
                             << "2025-06-01T12:00:00.000Z";
    QTest::newRow("offset") << "2025-06-01T12:00:00+02:00"
                            << "2025-06-01T10:00:00.000Z";
    QTest::newRow("fraction") << "2025-06-01T12:00:00.250Z"
                              << "2025-06-01T12:00:00.250Z";
}

void TestCommandLine::readsStartTimes()
{
    QFETCH(QString, text);
    QFETCH(QString, utc);
    const tCommandLine line = parsed(QStringLiteral("simulate --start-time ") + text);
    QVERIFY2(line.action == Action::Simulate, qPrintable(line.text));
    QCOMPARE(line.simulation.startTime.toString(Qt::ISODateWithMs), utc);
}

void TestCommandLine::helps_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("main") << "--help"
                          << QStringList{"simulate", "replay", "TAVRIN_ROOT", "Example"};
    QTest::newRow("main, short") << "-h" << QStringList{"simulate", "replay"};
    QTest::newRow("simulate") << "simulate --help"
                              << QStringList{"--position",   "--rate",       "--seed",  "--ttff",
                                             "--time-scale", "--start-time", "Examples"};
    QTest::newRow("replay") << "replay -h"
                            << QStringList{"--speed", "--loop", "--start", "FILE", "Examples"};
    QTest::newRow("serial") << "serial -h"
                            << QStringList{"DEVICE",   "--baud",    "--family", "--raw",
                                           "--record", "--verbose", "casic",    "Examples"};
    QTest::newRow("gpsd") << "gpsd --help" << QStringList{"HOST", "DEVICE", "--family", "Examples"};
    QTest::newRow("tcp") << "tcp --help" << QStringList{"HOST", "10110", "--family", "Examples"};
}

void TestCommandLine::helps()
{
    QFETCH(QString, arguments);
    QFETCH(QStringList, names);
    const tCommandLine line = parsed(arguments);
    QVERIFY(line.action == Action::ShowText);
    for (const QString &name : qAsConst(names))
        QVERIFY2(line.text.contains(name), qPrintable(name));
    QVERIFY(line.text.startsWith(QStringLiteral("Usage: tavrin-hostd ")));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "TestCommandLine.moc"
