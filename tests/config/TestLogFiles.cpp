// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigFile.h"
#include "config/LogFiles.h"
#include "support/MessageLog.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <ctime>
#include <memory>

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll()
                                          : QByteArray("no such file: ") + path.toUtf8();
}

QString second(const QDateTime &time)
{
    return time.toString("dd-MM-yyyy_HHmmss");
}

/// Returns when a new second has just begun, so that what follows falls into one.
void waitForNewSecond()
{
    const QTime start = QTime::currentTime();
    QTRY_VERIFY(QTime::currentTime().second() != start.second());
}

/// Puts the process into another time zone while it lives.
class TimeZone
{
public:
    explicit TimeZone(const char *zone) { set(zone); }
    ~TimeZone()
    {
        if (hadZone)
            set(previous.constData());
        else
            qunsetenv("TZ");
        ::tzset();
    }
    Q_DISABLE_COPY(TimeZone)

private:
    static void set(const char *zone)
    {
        qputenv("TZ", zone);
        ::tzset();
    }

    bool hadZone = qEnvironmentVariableIsSet("TZ");
    QByteArray previous = qgetenv("TZ");
};

} // namespace

class TestLogFiles : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void instanceIsOneObject();
    void namesCarryDirectorySubdirectoryAndTime();
    void namesAndStampsAreInLocalTime();
    void namesHaveADoubleSlashBeforeTheDirectoryIsPrepared();
    void namesFollowTheConfiguredDirectoryAtOnce();
    void emptyDirectoryGivesNamesFromTheRoot();
    void preparingMakesTheSubdirectoryOncePerRun();
    void preparingInAMissingDirectoryFailsSilently();
    void ttffLineIsStampedOnlyWhenDisplayTimeIsSet_data();
    void ttffLineIsStampedOnlyWhenDisplayTimeIsSet();
    void ttffLinesAreFlushedOneByOne();
    void ttffWritersSucceedWithoutAFile();
    void twoTtffStartsInTheSameSecondCutTheFile();
    void laterTtffLogIsAnotherFileAndTheFirstStaysOpen();
    void nmeaTextIsNeverStampedAndGetsNoLineEnd();
    void repeatedOpenKeepsTheNmeaLog();
    void nmeaLoggingOffAndOnAgainMakesASecondFileAndClosesTheFirst();
    void nmeaWritersFailWithoutAFile();
    void nmeaLogThatFailedToOpenIsTriedAgainUnderItsName();
    void closingAClosedNmeaLogIsHarmless();
    void newDirectoryGetsNoSubdirectorySoItsFilesFailSilently();
    void newDirectoryThatHasTheSubdirectoryIsUsed();
    void nothingOpensNavAndSll();
    void ospIsCutAtTheFirstWriteAndTakesBytesUnchanged();
    void ospThatCannotBeOpenedIsSilent();
    void binaryWriterNeedsANameForItsFirstWrite();
    void textIsLatin1();

private:
    void setDirectory(const QString &path)
    {
        ConfigFile::instance()->setDirectory(path.toLocal8Bit().constData());
    }
    QStringList logNames(const QString &under) const
    {
        return QDir(under + "/GNSS").entryList(QDir::Files, QDir::Name);
    }
    /// How many descriptors of this process are open on files under the log directory.
    int openFiles() const;

    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<LogFiles> logs;
    std::unique_ptr<MessageLog> trace;
};

void TestLogFiles::init()
{
    directory = std::make_unique<QTemporaryDir>();
    setDirectory(directory->path());
    ConfigFile::instance()->setDisplayTime(false);
    logs = std::make_unique<LogFiles>();
    trace = std::make_unique<MessageLog>();
}

void TestLogFiles::cleanup()
{
    logs.reset();
    const QStringList lines = trace->lines();
    trace.reset();
    QCOMPARE(lines, QStringList()); // whatever fails, fails without a word
}

int TestLogFiles::openFiles() const
{
    int count = 0;
    for (const QFileInfo &entry : QDir("/proc/self/fd").entryInfoList(QDir::Files | QDir::System))
        count += entry.symLinkTarget().startsWith(directory->path()) ? 1 : 0;
    return count;
}

void TestLogFiles::instanceIsOneObject()
{
    QVERIFY(LogFiles::instance());
    QCOMPARE(LogFiles::instance(), LogFiles::instance());
}

void TestLogFiles::namesCarryDirectorySubdirectoryAndTime()
{
    logs->prepareDirectory();
    const QString base = directory->path() + "/GNSS/";
    const QDateTime before = QDateTime::currentDateTime();
    const QString nmea = logs->nmeaFileName();
    const QString ttff = logs->ttffFileName();
    const QDateTime after = QDateTime::currentDateTime();
    QVERIFY(nmea == base + second(before) + "_nmea.log" ||
            nmea == base + second(after) + "_nmea.log");
    QVERIFY(ttff == base + second(before) + "_ttff.log" ||
            ttff == base + second(after) + "_ttff.log");
    QVERIFY(
        QRegularExpression("/GNSS/\\d\\d-\\d\\d-\\d{4}_\\d{6}_nmea\\.log$").match(nmea).hasMatch());
    QCOMPARE(logs->ospFileName(), base + "osp.bin");
    QCOMPARE(logs->navFileName(), base + "nav.log");
    QCOMPARE(logs->sllFileName(), base + "sll.log");
}

void TestLogFiles::namesAndStampsAreInLocalTime()
{
    // Five and a half hours ahead of UTC, by a form that needs no list of zones.
    const TimeZone zone("IST-5:30");
    const auto localTime = [] {
        return QDateTime::currentDateTimeUtc().addSecs(5 * 3600 + 1800);
    };
    logs->prepareDirectory();
    ConfigFile::instance()->setDisplayTime(true);
    const QDateTime before = localTime();
    const QString nmea = logs->nmeaFileName();
    const QString ttff = logs->ttffFileName();
    logs->openTtffLog();
    logs->writeTtff("x");
    const QDateTime after = localTime();

    const QString base = directory->path() + "/GNSS/";
    for (const QString &name : {nmea, ttff}) {
        const QString time = name.mid(base.size(), 17);
        QVERIFY2(time == second(before) || time == second(after), qPrintable(name));
    }
    const QByteArray text = contents(base + logNames(directory->path()).constFirst());
    const QTime stamp = QTime::fromString(QString::fromLatin1(text.mid(1, 12)), "hh:mm:ss.zzz");
    const int sinceBefore = before.time().msecsTo(stamp);
    QVERIFY2((sinceBefore + 86400000) % 86400000 <= before.msecsTo(after), text.constData());
}

void TestLogFiles::namesHaveADoubleSlashBeforeTheDirectoryIsPrepared()
{
    QCOMPARE(logs->ospFileName(), directory->path() + "//osp.bin");
    QVERIFY(logs->nmeaFileName().startsWith(directory->path() + "//"));
    QVERIFY(logs->ttffFileName().startsWith(directory->path() + "//"));
}

void TestLogFiles::namesFollowTheConfiguredDirectoryAtOnce()
{
    logs->prepareDirectory();
    setDirectory("/elsewhere");
    QCOMPARE(logs->navFileName(), QString("/elsewhere/GNSS/nav.log"));
}

void TestLogFiles::emptyDirectoryGivesNamesFromTheRoot()
{
    logs->prepareDirectory();
    setDirectory(QString());
    QCOMPARE(logs->navFileName(), QString("/GNSS/nav.log"));
}

void TestLogFiles::preparingMakesTheSubdirectoryOncePerRun()
{
    logs->prepareDirectory();
    QVERIFY(QDir(directory->filePath("GNSS")).exists());
    QVERIFY(QDir(directory->path()).rmdir("GNSS"));
    logs->prepareDirectory();
    QVERIFY(!QDir(directory->filePath("GNSS")).exists());
}

void TestLogFiles::preparingInAMissingDirectoryFailsSilently()
{
    setDirectory(directory->filePath("absent"));
    logs->prepareDirectory();
    logs->openTtffLog();
    QVERIFY(logs->writeTtff("x"));
    QVERIFY(!QDir(directory->filePath("absent")).exists());
    QCOMPARE(logs->navFileName(), directory->filePath("absent/GNSS/nav.log"));
}

void TestLogFiles::ttffLineIsStampedOnlyWhenDisplayTimeIsSet_data()
{
    QTest::addColumn<bool>("displayTime");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("displayTime false") << false << "^x\\n$";
    QTest::newRow("displayTime true") << true << "^\\[(\\d\\d:\\d\\d:\\d\\d\\.\\d{3})\\] x\\n$";
}

void TestLogFiles::ttffLineIsStampedOnlyWhenDisplayTimeIsSet()
{
    QFETCH(bool, displayTime);
    QFETCH(QString, pattern);
    ConfigFile::instance()->setDisplayTime(displayTime);
    logs->prepareDirectory();
    logs->openTtffLog();
    const QTime before = QTime::currentTime();
    QVERIFY(logs->writeTtff("x"));
    const QTime after = QTime::currentTime();

    const QStringList names = logNames(directory->path());
    QCOMPARE(names.size(), 1);
    QVERIFY(names.constFirst().endsWith("_ttff.log"));
    const QString text = contents(directory->filePath("GNSS/" + names.constFirst()));
    const auto match =
        QRegularExpression(pattern, QRegularExpression::DontCaptureOption).match(text);
    QVERIFY2(match.hasMatch(), qPrintable(text));
    if (displayTime && before <= after) { // not across midnight
        const QTime stamp = QTime::fromString(text.mid(1, 12), "hh:mm:ss.zzz");
        QVERIFY(before <= stamp && stamp <= after);
    }
}

void TestLogFiles::ttffLinesAreFlushedOneByOne()
{
    logs->prepareDirectory();
    logs->openTtffLog();
    const QString path = directory->filePath("GNSS/" + logNames(directory->path()).constFirst());
    logs->writeTtff("a");
    QCOMPARE(contents(path), QByteArray("a\n"));
    logs->writeTtff("");
    QCOMPARE(contents(path), QByteArray("a\n\n"));
}

void TestLogFiles::ttffWritersSucceedWithoutAFile()
{
    QVERIFY(logs->writeTtff("x"));
    QVERIFY(logs->writeSll("x"));
    QVERIFY(!logs->writeLine(LogFiles::File::Ttff, "x", false));
}

void TestLogFiles::twoTtffStartsInTheSameSecondCutTheFile()
{
    logs->prepareDirectory();
    QStringList names;
    // Should the machine stall between the two starts, they fall into different seconds: again
    // then.
    for (int attempt = 0; attempt < 3 && names.size() != 1; ++attempt) {
        for (const QString &name : names)
            QVERIFY(QFile::remove(directory->filePath("GNSS/" + name)));
        waitForNewSecond();
        logs->openTtffLog();
        logs->writeTtff("first");
        logs->openTtffLog();
        names = logNames(directory->path());
    }
    QCOMPARE(names.size(), 1);
    logs->writeTtff("second");
    QCOMPARE(contents(directory->filePath("GNSS/" + names.constFirst())), QByteArray("second\n"));
}

void TestLogFiles::laterTtffLogIsAnotherFileAndTheFirstStaysOpen()
{
    logs->prepareDirectory();
    logs->openTtffLog();
    logs->writeTtff("first");
    waitForNewSecond();
    logs->openTtffLog();
    logs->writeTtff("second");
    QStringList texts;
    for (const QString &name : logNames(directory->path()))
        texts << contents(directory->filePath("GNSS/" + name));
    texts.sort();
    QCOMPARE(texts, QStringList({"first\n", "second\n"}));
    QCOMPARE(openFiles(), 2);
}

void TestLogFiles::nmeaTextIsNeverStampedAndGetsNoLineEnd()
{
    ConfigFile::instance()->setDisplayTime(true);
    logs->prepareDirectory();
    logs->openNmeaLog();
    QVERIFY(logs->writeNmea("$GPGLL,\r\n$GP"));
    QVERIFY(logs->writeNmea("RMC"));
    const QStringList names = logNames(directory->path());
    QCOMPARE(names.size(), 1);
    QVERIFY(names.constFirst().endsWith("_nmea.log"));
    QCOMPARE(contents(directory->filePath("GNSS/" + names.constFirst())),
             QByteArray("$GPGLL,\r\n$GPRMC"));
}

void TestLogFiles::repeatedOpenKeepsTheNmeaLog()
{
    logs->prepareDirectory();
    logs->openNmeaLog();
    logs->writeNmea("a");
    waitForNewSecond();
    logs->openNmeaLog();
    logs->writeNmea("b");
    const QStringList names = logNames(directory->path());
    QCOMPARE(names.size(), 1);
    QCOMPARE(contents(directory->filePath("GNSS/" + names.constFirst())), QByteArray("ab"));
}

void TestLogFiles::nmeaLoggingOffAndOnAgainMakesASecondFileAndClosesTheFirst()
{
    logs->prepareDirectory();
    logs->openNmeaLog();
    logs->writeNmea("first");
    const QString firstName = logNames(directory->path()).constFirst();
    QCOMPARE(openFiles(), 1);
    logs->closeNmeaLog();
    QCOMPARE(openFiles(), 0);
    waitForNewSecond();
    logs->openNmeaLog();
    logs->writeNmea("second");
    QCOMPARE(openFiles(), 1);
    const QStringList names = logNames(directory->path());
    QCOMPARE(names.size(), 2);
    QCOMPARE(contents(directory->filePath("GNSS/" + firstName)), QByteArray("first"));
    const QString secondName = names[names[0] == firstName ? 1 : 0];
    const auto stamp = [](const QString &name) {
        return QDateTime::fromString(name.left(17), "dd-MM-yyyy_HHmmss");
    };
    QVERIFY(stamp(secondName) > stamp(firstName));
    QCOMPARE(contents(directory->filePath("GNSS/" + secondName)), QByteArray("second"));
}

void TestLogFiles::nmeaWritersFailWithoutAFile()
{
    QVERIFY(!logs->writeNmea("x"));
    QVERIFY(!logs->writeLine(LogFiles::File::Nmea, "x", true));
}

void TestLogFiles::nmeaLogThatFailedToOpenIsTriedAgainUnderItsName()
{
    setDirectory(directory->filePath("late"));
    logs->prepareDirectory();
    logs->openNmeaLog();
    QVERIFY(logs->writeNmea("lost"));
    QVERIFY(QDir(directory->path()).mkpath("late/GNSS"));
    logs->openNmeaLog();
    QVERIFY(logs->writeNmea("kept"));
    const QStringList names = logNames(directory->filePath("late"));
    QCOMPARE(names.size(), 1);
    QCOMPARE(contents(directory->filePath("late/GNSS/" + names.constFirst())), QByteArray("kept"));
}

void TestLogFiles::closingAClosedNmeaLogIsHarmless()
{
    logs->closeNmeaLog();
    logs->prepareDirectory();
    logs->openNmeaLog();
    logs->closeNmeaLog();
    logs->closeNmeaLog();
    QVERIFY(!logs->writeNmea("x"));
}

void TestLogFiles::newDirectoryGetsNoSubdirectorySoItsFilesFailSilently()
{
    logs->prepareDirectory();
    logs->openTtffLog();
    QVERIFY(QDir(directory->path()).mkdir("new"));
    setDirectory(directory->filePath("new"));
    logs->prepareDirectory();
    logs->openTtffLog();
    logs->openNmeaLog();
    QVERIFY(logs->writeTtff("x"));
    QVERIFY(logs->writeNmea("x"));
    QVERIFY(QDir(directory->filePath("new")).isEmpty());
}

void TestLogFiles::newDirectoryThatHasTheSubdirectoryIsUsed()
{
    logs->prepareDirectory();
    QVERIFY(QDir(directory->path()).mkpath("new/GNSS"));
    setDirectory(directory->filePath("new"));
    logs->openTtffLog();
    logs->writeTtff("x");
    const QStringList names = logNames(directory->filePath("new"));
    QCOMPARE(names.size(), 1);
    QCOMPARE(contents(directory->filePath("new/GNSS/" + names.constFirst())), QByteArray("x\n"));
}

void TestLogFiles::nothingOpensNavAndSll()
{
    logs->prepareDirectory();
    QVERIFY(!logs->writeNav("x"));
    QVERIFY(logs->writeSll("x"));
    QCOMPARE(logNames(directory->path()), QStringList());
}

void TestLogFiles::ospIsCutAtTheFirstWriteAndTakesBytesUnchanged()
{
    logs->prepareDirectory();
    const QString path = directory->filePath("GNSS/osp.bin");
    {
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("what an earlier run left behind");
    }
    const QByteArray bytes("\xa0\xa2\x00\n\r\n\xff", 7);
    QVERIFY(logs->writeOsp(bytes.constData(), bytes.size()));
    QCOMPARE(contents(path), bytes);
    QVERIFY(logs->writeOsp("more", 2));
    QCOMPARE(contents(path), bytes + "mo");
}

void TestLogFiles::ospThatCannotBeOpenedIsSilent()
{
    setDirectory(directory->filePath("absent"));
    logs->prepareDirectory();
    QVERIFY(logs->writeOsp("x", 1));
    QVERIFY(logs->writeOsp("x", 1));
}

void TestLogFiles::binaryWriterNeedsANameForItsFirstWrite()
{
    const QString path = directory->filePath("any.bin");
    QVERIFY(!logs->writeBinary(LogFiles::File::Nav, QString(), "x", 1));
    QVERIFY(logs->writeBinary(LogFiles::File::Nav, path, "a", 1));
    QVERIFY(logs->writeBinary(LogFiles::File::Nav, QString(), "b", 1));
    QCOMPARE(contents(path), QByteArray("ab"));

    ConfigFile::instance()->setDisplayTime(true);
    QVERIFY(logs->writeNav("c"));
    const QString text = contents(path);
    QVERIFY2(QRegularExpression("^ab\\[\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\] c$").match(text).hasMatch(),
             qPrintable(text));
}

void TestLogFiles::textIsLatin1()
{
    logs->prepareDirectory();
    logs->openTtffLog();
    logs->writeTtff("gr\xfc\xdf");
    const QString path = directory->filePath("GNSS/" + logNames(directory->path()).constFirst());
    QCOMPARE(contents(path), QString::fromLatin1("gr\xfc\xdf\n").toLocal8Bit());
}

QTEST_GUILESS_MAIN(TestLogFiles)
#include "TestLogFiles.moc"
