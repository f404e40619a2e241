// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemError.h"
#include "receiver/recordings/TransferLog.h"
#include "receiver/recordings/TransferLogReader.h"
#include "support/NotRoot.h"

#include <QtTest>

#include <cerrno>

#include <sys/resource.h>
#include <sys/stat.h>

using Kind = TransferLog::Kind;

class TestTransferLog : public QObject
{
    Q_OBJECT
private slots:
    void givesBackEveryByte_data();
    void givesBackEveryByte();
    void splitsWhatIsTooLongForARecord();
    void takesTheTimeOfAMonotonicClock();
    void beginsAnotherFileAtTheLimit();
    void keepsAnEarlierRecording();
    void leavesOtherFilesAlone_data();
    void leavesOtherFilesAlone();
    void leavesFilesNamedLikeItsPartsAlone_data();
    void leavesFilesNamedLikeItsPartsAlone();
    void endsWithOneLineWhenThereIsNoRoom();
    void leavesNothingBehindWhenItCannotBegin();
    void saysThatEarlierPartsCannotBeMoved();
    void passesOverATailThatIsCutOff();
    void stopsAtWhatIsNoRecord_data();
    void stopsAtWhatIsNoRecord();
    void takesNoEndlessHead();
    void tellsALogFromOtherFiles();
};

namespace {

QByteArray contents(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QVector<tTransferRecord> recordsOf(const QByteArray &bytes, int piece = 1000)
{
    TransferLogReader reader;
    QVector<tTransferRecord> records;
    for (int at = 0; at < bytes.size(); at += piece)
        records += reader.feed(bytes.mid(at, piece));
    return records;
}

QByteArray signatureLine()
{
    return TransferLog::signature() + '\n';
}

} // namespace

void TestTransferLog::givesBackEveryByte_data()
{
    QTest::addColumn<int>("piece");
    for (const int piece : {1, 2, 3, 17, 4096})
        QTest::newRow(qPrintable(QStringLiteral("pieces of %1").arg(piece))) << piece;
}

void TestTransferLog::givesBackEveryByte()
{
    QFETCH(int, piece);
    QByteArray everything;
    for (int byte = 0; byte < 256; ++byte)
        everything.append(static_cast<char>(byte));
    const QByteArray trap = "\n< 1.000000 3\nabc\n#tavrin-hostd transfer log 1\n";

    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    TransferLog log(name);
    QString error;
    QVERIFY2(log.open(QStringLiteral("a test\nof two lines"), &error), qPrintable(error));
    log.write(Kind::FromReceiver, everything, 0);
    log.write(Kind::FromReceiver, trap, 1);
    log.write(Kind::ToReceiver, "$PMTK101*32\r\n", 999999);
    log.write(Kind::Command, "$PPLMG,1", 1000000);
    log.write(Kind::Remark, QByteArray(), 86400000000LL);

    const QVector<tTransferRecord> records = recordsOf(contents(name), piece);
    QCOMPARE(records.size(), 5);
    QCOMPARE(records[0].bytes, everything);
    QCOMPARE(records[1].bytes, trap);
    QCOMPARE(records[2].bytes, QByteArray("$PMTK101*32\r\n"));
    QCOMPARE(records[3].bytes, QByteArray("$PPLMG,1"));
    QCOMPARE(records[4].bytes, QByteArray());
    QCOMPARE(records[0].kind, Kind::FromReceiver);
    QCOMPARE(records[2].kind, Kind::ToReceiver);
    QCOMPARE(records[3].kind, Kind::Command);
    QCOMPARE(records[4].kind, Kind::Remark);
    QCOMPARE(records[1].timeUs, 1);
    QCOMPARE(records[2].timeUs, 999999);
    QCOMPARE(records[4].timeUs, 86400000000LL);
}

void TestTransferLog::splitsWhatIsTooLongForARecord()
{
    constexpr int kMost = TransferLogReader::kMaxRecord;
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    const QByteArray bytes = QByteArray(kMost, 'a') + QByteArray(kMost, 'b') + 'c';
    TransferLog log(name);
    QString error;
    QVERIFY(log.open(QString(), &error));
    log.write(Kind::FromReceiver, bytes, 5);
    const QVector<tTransferRecord> records = recordsOf(contents(name));
    QCOMPARE(records.size(), 3);
    QCOMPARE(records[0].bytes + records[1].bytes + records[2].bytes, bytes);
}

void TestTransferLog::takesTheTimeOfAMonotonicClock()
{
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    TransferLog log(name);
    QString error;
    QVERIFY(log.open(QString(), &error));
    QElapsedTimer timer;
    timer.start();
    log.write(Kind::FromReceiver, "one");
    QTest::qWait(20);
    log.write(Kind::FromReceiver, "two");
    const qint64 most = timer.nsecsElapsed() / 1000 + 1;
    const QVector<tTransferRecord> records = recordsOf(contents(name));
    QCOMPARE(records.size(), 2);
    const qint64 between = records[1].timeUs - records[0].timeUs;
    QVERIFY2(between >= 19000 && between <= most, QByteArray::number(between));
}

void TestTransferLog::beginsAnotherFileAtTheLimit()
{
    constexpr qint64 kLimit = 400;
    constexpr int kRecords = 30;
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    TransferLog log(name, kLimit);
    QString error;
    QVERIFY(log.open(QStringLiteral("test"), &error));
    for (int i = 0; i < kRecords; ++i)
        log.write(Kind::FromReceiver, "record " + QByteArray::number(i), i * 1000);
    QVERIFY(log.isRecording());

    const int files = QDir(folder.path()).entryList(QDir::Files).size();
    QVERIFY(files >= 3 && files <= TransferLog::kKeptParts + 1);
    QByteArray all;
    for (int part = files - 1; part >= 0; --part) {
        const QString file = part == 0 ? name : name + '.' + QString::number(part);
        QVERIFY2(QFileInfo(file).size() <= kLimit, qPrintable(file));
        for (const tTransferRecord &record : recordsOf(contents(file)))
            all += record.bytes + ';';
    }
    QByteArray expected;
    for (int i = 0; i < kRecords; ++i)
        expected += "record " + QByteArray::number(i) + ';';
    QCOMPARE(all, expected);

    // Many more: the oldest go.
    for (int i = 0; i < 20 * kRecords; ++i)
        log.write(Kind::FromReceiver, "later record", 1000000 + i);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), TransferLog::kKeptParts + 1);
    QVERIFY(log.takeTrouble().isEmpty());
}

void TestTransferLog::keepsAnEarlierRecording()
{
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    QString error;
    for (const char *text : {"first", "second"}) {
        TransferLog log(name);
        QVERIFY(log.open(QString(), &error));
        log.write(Kind::FromReceiver, text, 0);
    }
    QCOMPARE(recordsOf(contents(name)).at(0).bytes, QByteArray("second"));
    QCOMPARE(recordsOf(contents(name + ".1")).at(0).bytes, QByteArray("first"));
}

void TestTransferLog::leavesOtherFilesAlone_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("a text") << QByteArray("my thesis\n");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("half a signature") << TransferLog::signature().left(10);
    QTest::newRow("a later version") << QByteArray("#tavrin-hostd transfer log 12\n");
}

void TestTransferLog::leavesOtherFilesAlone()
{
    QFETCH(QByteArray, before);
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(before) == before.size());
    file.close();
    TransferLog log(name);
    QString error;
    QVERIFY(!log.open(QString(), &error));
    QVERIFY2(error.contains(name) && error.contains(QStringLiteral("no recording")),
             qPrintable(error));
    QVERIFY(!log.isRecording());
    log.write(Kind::FromReceiver, "nothing");
    QCOMPARE(contents(name), before);

    TransferLog nowhere(folder.filePath(QStringLiteral("no/such/folder")));
    QVERIFY(!nowhere.open(QString(), &error));
    QVERIFY(error.contains(systemErrorText(ENOENT)));
    const QString link = folder.filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(QStringLiteral("nothing at all"), link));
    TransferLog linked(link);
    QVERIFY(!linked.open(QString(), &error));
}

void TestTransferLog::leavesFilesNamedLikeItsPartsAlone_data()
{
    QTest::addColumn<int>("part");
    QTest::addColumn<bool>("afterARecording");
    QTest::newRow("first part") << 1 << true;
    QTest::newRow("last part") << TransferLog::kKeptParts << true;
    QTest::newRow("first part of a new recording") << 1 << false;
}

void TestTransferLog::leavesFilesNamedLikeItsPartsAlone()
{
    QFETCH(int, part);
    QFETCH(bool, afterARecording);
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    QString error;
    QVERIFY(!afterARecording || TransferLog(name).open(QString(), &error));
    const QString foreign = name + QLatin1Char('.') + QString::number(part);
    QFile file(foreign);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("my thesis\n") > 0);
    file.close();
    TransferLog log(name);
    QVERIFY(!log.open(QString(), &error));
    QVERIFY2(error.contains(foreign), qPrintable(error));
    QCOMPARE(contents(foreign), QByteArray("my thesis\n"));
    QCOMPARE(QFile::exists(name), afterARecording);
}

void TestTransferLog::endsWithOneLineWhenThereIsNoRoom()
{
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    TransferLog log(name);
    QString error;
    QVERIFY(log.open(QString(), &error));

    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit tight = before;
    tight.rlim_cur = 300;
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    for (int i = 0; i < 20; ++i)
        log.write(Kind::FromReceiver, QByteArray(50, 'x'), i);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);

    QVERIFY(!log.isRecording());
    const QString trouble = log.takeTrouble();
    QVERIFY2(trouble.startsWith(QStringLiteral("recording into %1 has ended: ").arg(name)),
             qPrintable(trouble));
    QCOMPARE(trouble.count('\n'), 0);
    QVERIFY(log.takeTrouble().isEmpty());
    log.write(Kind::FromReceiver, "more");
    QVERIFY(log.takeTrouble().isEmpty());

    TransferLogReader reader;
    const QVector<tTransferRecord> records = reader.feed(contents(name));
    QVERIFY(!reader.isBroken());
    QVERIFY(!records.isEmpty());
    for (const tTransferRecord &record : records)
        QCOMPARE(record.bytes, QByteArray(50, 'x'));
    QVERIFY2(contents(name).endsWith("x\n"), "half a record is left");
}

// An empty file would be no recording, and keep the next one off.
void TestTransferLog::leavesNothingBehindWhenItCannotBegin()
{
    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("log"));
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit none = {10, before.rlim_max};
    TransferLog log(name);
    QString error;
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &none), 0);
    const bool begun = log.open(QString(), &error);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);
    QVERIFY(!begun);
    QVERIFY(!log.isRecording());
    QCOMPARE(error,
             QStringLiteral("recording into %1 has ended: %2").arg(name, systemErrorText(EFBIG)));
    QVERIFY(log.takeTrouble().isEmpty()); // it is in the error
    QVERIFY(!QFile::exists(name));
    QVERIFY2(log.open(QString(), &error), qPrintable(error));
}

void TestTransferLog::saysThatEarlierPartsCannotBeMoved()
{
    QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.path());
    const QString name = folder.filePath(QStringLiteral("log"));
    TransferLog log(name, 400);
    QString error;
    QVERIFY(log.open(QString(), &error));
    QCOMPARE(::chmod(path.constData(), 0555), 0);
    {
        const NotRoot user;
        for (int i = 0; i < 20; ++i)
            log.write(Kind::FromReceiver, QByteArray(50, 'x'), i);
        TransferLog second(name);
        QVERIFY(!second.open(QString(), &error));
    }
    QCOMPARE(::chmod(path.constData(), 0755), 0);
    const QString reason =
        QStringLiteral("cannot record into %1: %2").arg(name, systemErrorText(EACCES));
    QCOMPARE(error, reason);
    QVERIFY(!log.isRecording());
    QCOMPARE(log.takeTrouble(), QStringLiteral("recording has ended: ") + reason);
    QVERIFY(recordsOf(contents(name)).size() > 1); // what was recorded is kept
}

void TestTransferLog::passesOverATailThatIsCutOff()
{
    const QByteArray whole = signatureLine() + "# head\n< 0.000001 3\nabc\n> 0.000002 2\nde\n";
    for (int size = 0; size <= whole.size(); ++size) {
        TransferLogReader reader;
        const QVector<tTransferRecord> records = reader.feed(whole.left(size));
        QVERIFY2(!reader.isBroken(), QByteArray::number(size));
        const int expected = size == whole.size() ? 2 : size >= whole.indexOf('>') ? 1 : 0;
        QCOMPARE(records.size(), expected);
    }
}

void TestTransferLog::stopsAtWhatIsNoRecord_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("another kind") << QByteArray("? 0.000001 1\na\n");
    QTest::newRow("no time") << QByteArray("< 1\na\n");
    QTest::newRow("five decimals") << QByteArray("< 0.00001 1\na\n");
    QTest::newRow("negative size") << QByteArray("< 0.000001 -1\na\n");
    QTest::newRow("huge size") << QByteArray("< 0.000001 99999999999\na\n");
    QTest::newRow("size too small") << QByteArray("< 0.000001 1\nab\n");
    QTest::newRow("no size") << QByteArray("< 0.000001 \na\n");
    QTest::newRow("no number as size") << QByteArray("< 0.000001 1x\na\n");
    QTest::newRow("no number as time") << QByteArray("< a.000001 1\na\n");
    QTest::newRow("no number as fraction") << QByteArray("< 0.00000a 1\na\n");
    QTest::newRow("more seconds than can be") << QByteArray("< 1000000000000.000001 1\na\n");
    QTest::newRow("two letters as kind") << QByteArray("<< 0.000001 1\na\n");
    QTest::newRow("a field too many") << QByteArray("< 0.000001 1 1\na\n");
    QTest::newRow("overlong line") << "< 0.000001 1" + QByteArray(64, ' ') + "\na\n";
    QTest::newRow("endless line") << QByteArray(200, '<');
    QTest::newRow("sentences") << QByteArray("$GPRMC,1\r\n");
}

void TestTransferLog::stopsAtWhatIsNoRecord()
{
    QFETCH(QByteArray, bytes);
    const QByteArray good = "< 0.000001 1\nx\n";
    TransferLogReader reader;
    const QVector<tTransferRecord> records = reader.feed(signatureLine() + good + bytes + good);
    QCOMPARE(records.size(), 1);
    QVERIFY(reader.isBroken());
    QVERIFY(reader.feed(good).isEmpty());
}

void TestTransferLog::takesNoEndlessHead()
{
    const QByteArray record = "< 0.000001 1\nx\n";
    TransferLogReader whole;
    QCOMPARE(whole.feed(signatureLine() + '#' + QByteArray(4000, 'x') + '\n' + record).size(), 1);
    TransferLogReader endless;
    endless.feed(signatureLine() + '#' + QByteArray(4000, 'x'));
    QVERIFY(!endless.isBroken());
    endless.feed(QByteArray(200, 'x'));
    QVERIFY(endless.isBroken());
}

void TestTransferLog::tellsALogFromOtherFiles()
{
    QVERIFY(TransferLogReader::isLog(signatureLine()));
    QVERIFY(TransferLogReader::isLog(signatureLine() + "anything"));
    QVERIFY(!TransferLogReader::isLog(TransferLog::signature()));
    QVERIFY(!TransferLogReader::isLog("$GPGGA,1\r\n"));
    QVERIFY(!TransferLogReader::isLog("# comment\n"));
}

QTEST_GUILESS_MAIN(TestTransferLog)
#include "TestTransferLog.moc"
