// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/recordings/Recording.h"

#include "base/SystemError.h"
#include "hostd/Dialect.h"
#include "hostd/DialectChecker.h"
#include "support/Recordings.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

#include <sys/stat.h>

class TestRecording : public QObject
{
    Q_OBJECT
private slots:
    void convertsEveryRecording_data();
    void convertsEveryRecording();
    void keepsSparseSatellites();
    void joinsSecondSignals();
    void passesOverWhatIsNoSentence();
    void takesSentencesWithoutChecksum();
    void goesOnAfterALongWayWithoutAnEpoch();
    void readsOrdinaryFilesOnly();
    void readsFilesInOrderAndAgain();
    void saysWhyItCannotRead();
    void readsATransferLogWithItsTimes();
    void readsThePartsOfATransferLogAsOne();
    void saysWhereATransferLogIsBroken();
};

namespace {

DialectChecker checkerOf(Recording &recording)
{
    DialectChecker checker;
    while (const auto epoch = recording.next()) {
        QByteArray bytes;
        for (const QByteArray &sentence : Dialect::sentences(epoch->epoch))
            bytes += sentence;
        checker.read(bytes);
    }
    return checker;
}

QString write(const QTemporaryDir &folder, const char *name, const QByteArray &bytes)
{
    QFile file(folder.filePath(QString::fromLatin1(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return file.fileName();
}

int mostInView(const DialectChecker &checker)
{
    int most = 0;
    for (const tReadCycle &cycle : checker.cycles())
        most = std::max(most, cycle.inView.size());
    return most;
}

} // namespace

void TestRecording::convertsEveryRecording_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("epochs");
    QTest::addColumn<int>("view");         // most satellites in one cycle
    QTest::addColumn<int>("valid");        // cycles with a fix
    QTest::addColumn<QString>("position"); // of the last fix
    const auto row = [](const char *file, int epochs, int view, int valid, const char *position) {
        QTest::newRow(file) << QString::fromLatin1(file) << epochs << view << valid
                            << QString::fromLatin1(position);
    };
    // Epochs and fixes as the RMC sentences count; one more where the recording begins or ends
    // with a GGA or GLL whose RMC is missing, four more where RMC sentences are broken.
    row("gpsd-beidou-bd.log", 10, 32, 5, "3114.8943N12135.2444E");
    row("gpsd-furuno_gl_ga.log", 16, 18, 16, "5957.0062N01100.6429E");
    row("gpsd-garmin-10x.log", 14, 10, 9, "4143.6110N08338.0882W");
    row("gpsd-gp-320fw-2019-04-07-coldboot.log", 20, 12, 2, "4808.9993N01135.0798E");
    row("gpsd-nmea-rtk.log", 122, 0, 122, "4134.5018N09345.0359W");
    row("gpsd-quectel-l76k-nmea.log", 151, 26, 151, "4739.7187N12219.5835W");
    row("gpsd-rx210.log", 62, 18, 40, "5000.1418N00838.6375E");
    row("gpsd-sl869.log", 15, 19, 8, "3340.8139S15117.4712E");
    row("gpsd-telit-he910.log", 224, 7, 187, "5050.4126N00420.8228E");
    row("gpsd-ublox-neo-m9n-nmea.log", 61, 32, 61, "3806.6301N12237.6154W");
    row("gpsd-ublox-zed-f9p-nmea.log", 29, 32, 29, "4552.6539S17030.0067E");
    row("pygnssutils-rtcm3.log", 158, 32, 158, "3203.9500N03446.4291E");
    row("signalk-gps.log", 1202, 13, 1202, "5222.3142N00454.5845E");
}

void TestRecording::convertsEveryRecording()
{
    const QString folder = Recordings::folder();
    if (folder.isEmpty())
        QSKIP(Recordings::kAbsent);
    QFETCH(QString, file);
    QFETCH(int, epochs);
    QFETCH(int, view);
    QFETCH(int, valid);
    QFETCH(QString, position);
    Recording recording({folder + QLatin1Char('/') + file});
    const DialectChecker checker = checkerOf(recording);
    QCOMPARE(checker.error(), QString());
    QCOMPARE(recording.error(), QString());
    QCOMPARE(checker.cycles().size(), epochs);
    QCOMPARE(mostInView(checker), view);
    int fixes = 0;
    QString last;
    for (const tReadCycle &cycle : checker.cycles()) {
        fixes += cycle.valid ? 1 : 0;
        if (cycle.valid)
            last = cycle.latitude + cycle.northSouth + cycle.longitude + cycle.eastWest;
    }
    QCOMPARE(fixes, valid);
    QCOMPARE(last, position);
}

void TestRecording::keepsSparseSatellites()
{
    const QString folder = Recordings::folder();
    if (folder.isEmpty())
        QSKIP(Recordings::kAbsent);
    Recording recording({folder + QStringLiteral("/signalk-gps.log")});
    const DialectChecker checker = checkerOf(recording);
    int withSatellites = 0;
    for (const tReadCycle &cycle : checker.cycles()) {
        if (cycle.inView.isEmpty())
            continue;
        ++withSatellites;
        QVERIFY(cycle.inView.size() >= 9);
        QVERIFY(!cycle.used.isEmpty());
    }
    QVERIFY(withSatellites >= 230);
}

void TestRecording::joinsSecondSignals()
{
    const QString folder = Recordings::folder();
    if (folder.isEmpty())
        QSKIP(Recordings::kAbsent);
    Recording recording({folder + QStringLiteral("/gpsd-ublox-zed-f9p-nmea.log")});
    const auto played = recording.next();
    QVERIFY(played);
    QCOMPARE(played->epoch.inView.size(), 41);
    QCOMPARE(played->epoch.used.size(), 20);
    const DialectChecker checker = checkerOf(recording);
    for (const tReadCycle &cycle : checker.cycles()) {
        for (const int number : cycle.used)
            QVERIFY(cycle.inView.contains(number)); // those in use are kept first
    }
}

void TestRecording::passesOverWhatIsNoSentence()
{
    QTemporaryDir folder;
    const QByteArray rmc = Dialect::sentence("GPRMC,120000,A,4807.0380,N,01131.0000,E,,,010125,,");
    const QByteArray next = Dialect::sentence("GPRMC,120001,V,,,,,,,010125,,");
    QByteArray wrong = Dialect::sentence("GPRMC,120005,A,,,,,,,010125,,");
    wrong[10] = '9';
    const QString name =
        write(folder, "mixed.log",
              "# comment $GPRMC,110000,A,,,,,,,010125,,*77\n\xd3\x00\x13$\x01\x02" + rmc.trimmed() +
                  "\n" + wrong + "$GPTXT,no checksum, cut$GPTXT,no checksum\n" +
                  QByteArray(5000, '\x07') + "\n\n" + next.trimmed());
    Recording recording({name});
    const DialectChecker checker = checkerOf(recording);
    QCOMPARE(checker.error(), QString());
    QCOMPARE(checker.cycles().size(), 2);
    QCOMPARE(checker.cycles()[0].time, QStringLiteral("120000.000"));
    QCOMPARE(checker.cycles()[1].time, QStringLiteral("120001.000")); // the last without a line end
    QCOMPARE(recording.brokenSentences(), static_cast<qint64>(2));
}

void TestRecording::takesSentencesWithoutChecksum()
{
    QTemporaryDir folder;
    const QString name =
        write(folder, "plain.log",
              "$GPRMC,120000,A,4807.0380,N,01131.0000,E,,,010125,,\r\n"
              "$GPGSV,1,1,01,03,08,171,30\r\n"
              "$GPRMC,120001,A,4807.0380,N,0113$GPRMC,120002,A,4807.0380,N,01131.0000,E,,,010125,,"
              "\n$GPRMC,120003,A,4807.0380,N,01131.0");
    Recording recording({name});
    const DialectChecker checker = checkerOf(recording);
    QCOMPARE(checker.error(), QString());
    QCOMPARE(checker.cycles().size(), 2);
    QVERIFY(checker.cycles()[0].inView.contains(3));
    QCOMPARE(checker.cycles()[1].time, QStringLiteral("120002.000"));
    QCOMPARE(recording.brokenSentences(), static_cast<qint64>(2)); // cut by the next and by the end
}

void TestRecording::goesOnAfterALongWayWithoutAnEpoch()
{
    QTemporaryDir folder;
    const QByteArray nothing(static_cast<int>(3 * Recording::kMostBytesALook), '\n');
    const QByteArray rmc = Dialect::sentence("GPRMC,120000,A,,,,,,,010125,,");
    Recording recording({write(folder, "long.log", nothing + rmc + nothing)});
    int looks = 0;
    int epochs = 0;
    while (!recording.atEnd() && ++looks < 100)
        epochs += recording.next() ? 1 : 0;
    QVERIFY(recording.atEnd());
    QCOMPARE(epochs, 1);
    QVERIFY2(looks >= 6 && looks <= 8, qPrintable(QString::number(looks)));
}

// Another file may have come to the name since it was looked at; none may keep the daemon waiting.
void TestRecording::readsOrdinaryFilesOnly()
{
    QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString &name : {pipe, QStringLiteral("/dev/zero"), folder.path()}) {
        Recording recording({name});
        QVERIFY(!recording.next());
        QVERIFY(recording.atEnd());
        QVERIFY2(recording.error().contains(QStringLiteral("is no ordinary file")),
                 qPrintable(recording.error()));
    }
}

void TestRecording::readsFilesInOrderAndAgain()
{
    QTemporaryDir folder;
    const QString first =
        write(folder, "1.log", Dialect::sentence("GPRMC,120000,A,,,,,,,010125,,"));
    const QString empty = write(folder, "2.log", "");
    const QString last = write(folder, "3.log", Dialect::sentence("GPRMC,090000,A,,,,,,,020125,,"));
    Recording recording({first, empty, last});
    for (int pass = 0; pass < 3; ++pass) {
        QCOMPARE(recording.next()->epoch.date, QDate(2025, 1, 1));
        QCOMPARE(recording.next()->epoch.date, QDate(2025, 1, 2));
        QVERIFY(!recording.next());
        QVERIFY(!recording.next());
        recording.rewind();
    }
}

void TestRecording::saysWhyItCannotRead()
{
    QTemporaryDir folder;
    Recording recording({folder.filePath(QStringLiteral("absent.log"))});
    QVERIFY(!recording.next());
    QVERIFY(recording.error().contains(QStringLiteral("absent.log")));
    // An ordinary file that can be opened; there is nothing to read at its beginning.
    Recording unreadable({QStringLiteral("/proc/self/mem")});
    QVERIFY(!unreadable.next());
    QCOMPARE(unreadable.error(),
             QStringLiteral("cannot read /proc/self/mem: ") + systemErrorText(EIO));
    QVERIFY(unreadable.atEnd());
}

void TestRecording::readsATransferLogWithItsTimes()
{
    using Kind = TransferLog::Kind;
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("recorded"));
    QString error;
    TransferLog log(name);
    QVERIFY2(log.open(QStringLiteral("test"), &error), qPrintable(error));
    const QByteArray first = Dialect::sentence("GPRMC,120000,A,,,,,,,010125,,");
    const QByteArray second = Dialect::sentence("GPRMC,120001,A,,,,,,,010125,,");
    log.write(Kind::FromReceiver, first.left(10), 1000000);
    log.write(Kind::FromReceiver, first.mid(10), 1010000);
    log.write(Kind::Command, "$PPLMG,3", 1500000);
    log.write(Kind::ToReceiver, QByteArray::fromHex("b56206040400ffff02000e61"), 1500001);
    log.write(Kind::FromReceiver, second, 30000000);
    log.write(Kind::Remark, "link lost", 30000005);

    Recording recording({name});
    QVector<tPlayed> played;
    while (const auto next = recording.next())
        played.append(*next);
    QCOMPARE(recording.error(), QString());
    QCOMPARE(played.size(), 5);
    // The pause ended it, not the bytes after it.
    QVERIFY(played[0].event.isEmpty());
    QCOMPARE(*played[0].epoch.timeMs, 43200000);
    QCOMPARE(*played[0].timeUs, 1010000 + Recording::kPauseUs);
    QCOMPARE(played[1].event, QStringLiteral("recorded: command $PPLMG,3"));
    QCOMPARE(*played[1].timeUs, static_cast<qint64>(1500000));
    QCOMPARE(played[2].event, QStringLiteral("recorded: sent b5 62 06 04 04 00 ff ff 02 00 0e 61"));
    QCOMPARE(played[3].event, QStringLiteral("recorded: link lost"));
    QCOMPARE(*played[4].epoch.timeMs, 43201000);
}

void TestRecording::readsThePartsOfATransferLogAsOne()
{
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("recorded"));
    QString error;
    {
        TransferLog log(name, 3000);
        QVERIFY(log.open(QStringLiteral("test"), &error));
        QByteArray bytes;
        for (int second = 0; second < 60; ++second)
            bytes += Dialect::sentence("GPRMC,1200" + QByteArray::number(100 + second).mid(1) +
                                       ",A,4807.0380,N,01131.0000,E,,,010125,,");
        for (int at = 0; at < bytes.size(); at += 37)
            log.write(TransferLog::Kind::FromReceiver, bytes.mid(at, 37), at * 1000);
    }
    QStringList parts;
    for (int part = 9; part > 0; --part) {
        const QString file = QStringLiteral("%1.%2").arg(name).arg(part);
        if (QFile::exists(file))
            parts << file;
    }
    QVERIFY(parts.size() >= 1);
    Recording recording(parts + QStringList{name});
    int second = 0;
    while (const auto next = recording.next()) {
        QCOMPARE(*next->epoch.timeMs, 43200000 + 1000 * second);
        ++second;
    }
    QCOMPARE(second, 60);
    QCOMPARE(recording.brokenSentences(), static_cast<qint64>(0));
}

void TestRecording::saysWhereATransferLogIsBroken()
{
    QTemporaryDir folder;
    const QByteArray rmc = Dialect::sentence("GPRMC,120000,A,,,,,,,010125,,");
    const QByteArray record = "< 1.000000 " + QByteArray::number(rmc.size()) + '\n' + rmc + '\n';
    const QString cut =
        write(folder, "cut", TransferLog::signature() + '\n' + record + record.left(20));
    Recording recording({cut});
    QVERIFY(recording.next());
    QVERIFY(!recording.next());
    QCOMPARE(recording.error(), QString());

    const QString broken =
        write(folder, "broken", TransferLog::signature() + '\n' + record + "junk\n" + record);
    Recording other({broken});
    QVERIFY(!other.next());
    QVERIFY2(other.error().contains(QStringLiteral("no record of a transfer log")),
             qPrintable(other.error()));
}

QTEST_GUILESS_MAIN(TestRecording)
#include "TestRecording.moc"
