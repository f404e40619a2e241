// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/NmeaReader.h"

#include "base/SystemError.h"
#include "support/InputPipe.h"
#include "support/MallocCount.h"
#include "support/MessageLog.h"
#include "support/NmeaSentences.h"
#include "support/PlainDecoder.h"
#include "support/Publications.h"
#include "support/ShortWaits.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTextCodec>
#include <QtTest>

#include <cerrno>
#include <cstring>
#include <memory>

using NmeaSentences::epochOf31Satellites;
using NmeaSentences::sentence;

namespace {

const QByteArray kGga = sentence("GPGGA,123519.000,4807.0380,N,01131.0000,E,1,08,0.9,545.4,M");
const QByteArray kRmc = sentence("GPRMC,123519.000,A,4807.0380,N,01131.0000,E,0,0,230326,,,A");

/// An RMC sentence of `length` characters up to its carriage return, which follows.
QByteArray longRmc(int length)
{
    const QByteArray head = "$GPRMC,123519.000,A,";
    return head + QByteArray(length - head.size(), 'x') + '\r';
}

QString readError(int error)
{
    return QStringLiteral("read error ") + QString::fromLocal8Bit(strerror(error));
}

int openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::System | QDir::Files | QDir::Dirs)
        .size();
}

} // namespace

class TestNmeaReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void openErrorIsTraced();
    void opensPipe();
    void openedAgainClosesTheFirst();
    void closingTwiceIsHarmless();
    void neverOpenedReaderClosesNothing();
    void destructorClosesThePipe();
    void readsWhatArrived();
    void idlePipeGivesReadErrorEveryPass();
    void zeroLengthReadReturns0After500msWithNoMessage();
    void zeroLengthReadAsksForHalfASecond();
    void writerThatComesBackIsReadOn();
    void pipeReplacedByAnotherIsOpened();
    void pipeReplacedByWhatCannotBeOpenedIsReported();
    void pipeReplacedWhileItsWriterStaysIsReadOn();
    void folderReplacedByAPipeIsGivenUp();
    void pipeRemovedStaysOpenUntilAnotherIsMade();
    void samePipeIsNotOpenedAgain();
    void interruptEndsTheSleep();

    void decodesTwoSentencesOfOneRead();
    void completesSentenceWithNextRead_data();
    void completesSentenceWithNextRead();
    void dropsFragmentOf2000BytesWithoutCarriageReturn();
    void keepsIncompleteSentenceUpTo1024Bytes_data();
    void keepsIncompleteSentenceUpTo1024Bytes();
    void decodesOverlongSentenceOfOneRead();
    void acceptsAnyTwoLetterTalker_data();
    void acceptsAnyTwoLetterTalker();
    void ignoresOtherSentences_data();
    void ignoresOtherSentences();
    void dropsDataWithoutDollar();
    void takesMergedSentencesAsOne();
    void endsNoSentenceAtLineFeed();
    void searchEndsAtTheDatasEnd();
    void nulByteEndsNeitherSearchNorReading_data();
    void nulByteEndsNeitherSearchNorReading();
    void movesOverlappingTail();
    void bufferAlwaysHasRoom();
    void clearBufKeepsBytesReceived();
    void feedOfNothingIsNoRead();

    void keepsTextInEveryReadSize_data();
    void keepsTextInEveryReadSize();
    void publishesTheSameInEveryReadSize_data();
    void publishesTheSameInEveryReadSize();
    void tracesReadLength();
    void decodingAllocatesNothing();

private:
    void feed(const QByteArray &bytes)
    {
        reader->feed({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    }
    int published() const { return int(publications->all().size()); }
    /// Lines since the last call.
    QStringList newLines()
    {
        const QStringList lines = log->lines();
        const QStringList fresh = lines.mid(linesSeen);
        linesSeen = lines.size();
        return fresh;
    }

    GnssInfo *model = GnssInfo::instance();
    int linesSeen = 0;
    std::unique_ptr<MessageLog> log;
    std::unique_ptr<ShortWaits> waits;
    std::unique_ptr<InputPipe> pipe;
    std::unique_ptr<Publications> publications;
    std::unique_ptr<NmeaReader> reader;
};

void TestNmeaReader::initTestCase()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

void TestNmeaReader::init()
{
    linesSeen = 0;
    log = std::make_unique<MessageLog>();
    waits = std::make_unique<ShortWaits>();
    pipe = std::make_unique<InputPipe>();
    publications = std::make_unique<Publications>();
    reader = std::make_unique<NmeaReader>();
}

void TestNmeaReader::cleanup()
{
    reader.reset();
    publications.reset();
    pipe.reset();
    waits.reset();
    const QStringList warnings = log ? log->warnings() : QStringList();
    log.reset();
    QCOMPARE(warnings, QStringList());
}

void TestNmeaReader::openErrorIsTraced()
{
    QVERIFY(!reader->notifier_start());
    QCOMPARE(log->lines(), QStringList({"d> NmeaReader: notifier_start",
                                        "open error " + QString::fromLocal8Bit(strerror(ENOENT))}));
    QCOMPARE(reader->notifier_process(0), -1);
}

void TestNmeaReader::opensPipe()
{
    QVERIFY(pipe->make());
    QVERIFY(reader->notifier_start()); // at once, although nobody writes
    QCOMPARE(log->lines(), QStringList("d> NmeaReader: notifier_start"));
}

void TestNmeaReader::openedAgainClosesTheFirst()
{
    QVERIFY(pipe->make());
    QVERIFY(reader->notifier_start());
    const int before = openDescriptors();
    QVERIFY(reader->notifier_start());
    QCOMPARE(openDescriptors(), before);
    // A failure keeps what is open.
    QVERIFY(pipe->openWriter());
    QVERIFY(pipe->remove());
    QVERIFY(!reader->notifier_start());
    QVERIFY(pipe->write(kRmc));
    QCOMPARE(reader->notifier_process(0), qlonglong(kRmc.size()));
}

void TestNmeaReader::closingTwiceIsHarmless()
{
    QVERIFY(pipe->make());
    const int before = openDescriptors();
    QVERIFY(reader->notifier_start());
    reader->notifier_delete();
    reader->notifier_delete();
    QCOMPARE(openDescriptors(), before);
    newLines();
    QCOMPARE(reader->notifier_process(0), -1);
    QCOMPARE(newLines(), QStringList(readError(EBADF)));
    QVERIFY(reader->notifier_start());
}

void TestNmeaReader::neverOpenedReaderClosesNothing()
{
    const int before = openDescriptors();
    reader.reset();
    NmeaReader().notifier_delete();
    QCOMPARE(openDescriptors(), before);
}

void TestNmeaReader::destructorClosesThePipe()
{
    QVERIFY(pipe->make());
    const int before = openDescriptors();
    QVERIFY(reader->notifier_start());
    QCOMPARE(openDescriptors(), before + 1);
    reader.reset();
    QCOMPARE(openDescriptors(), before);
}

void TestNmeaReader::readsWhatArrived()
{
    QVERIFY(pipe->make() && reader->notifier_start() && pipe->openWriter());
    const QSignalSpy arrived(model, &GnssInfo::dataReceived);
    QVERIFY(pipe->write(kGga + kRmc));
    newLines();
    QCOMPARE(reader->notifier_process(0), qlonglong(kGga.size() + kRmc.size()));
    QVERIFY(model->isDataReceived());
    QCOMPARE(arrived.size(), 1);
    QCOMPARE(model->getNmeaData().toLatin1(), kGga + kRmc);
    QCOMPARE(newLines().first(), QStringLiteral("read len %1").arg(kGga.size() + kRmc.size()));
    QCOMPARE(published(), 1);
    QVERIFY(waits->nominal().empty());
}

void TestNmeaReader::idlePipeGivesReadErrorEveryPass()
{
    QVERIFY(pipe->make() && reader->notifier_start() && pipe->openWriter());
    newLines();
    for (int pass = 1; pass <= 3; ++pass) {
        QCOMPARE(reader->notifier_process(0), -1);
        QCOMPARE(newLines(), QStringList(readError(EAGAIN)));
        QCOMPARE(waits->nominal(), std::vector<int>(std::size_t(pass), 500));
    }
    QVERIFY(!model->isDataReceived());
}

void TestNmeaReader::zeroLengthReadReturns0After500msWithNoMessage()
{
    waits.reset(); // the real time
    QVERIFY(pipe->make() && reader->notifier_start());
    newLines();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(reader->notifier_process(0), 0);
    QVERIFY2(timer.elapsed() >= 499, QByteArray::number(timer.elapsed()));
    QCOMPARE(newLines(), QStringList());
    QVERIFY(!model->isDataReceived());
}

void TestNmeaReader::zeroLengthReadAsksForHalfASecond()
{
    QVERIFY(pipe->make() && reader->notifier_start());
    QCOMPARE(reader->notifier_process(0), 0);
    QCOMPARE(waits->nominal(), std::vector<int>({500}));
}

void TestNmeaReader::writerThatComesBackIsReadOn()
{
    QVERIFY(pipe->make() && reader->notifier_start() && pipe->openWriter());
    QVERIFY(pipe->write(kRmc.left(30)));
    QCOMPARE(reader->notifier_process(0), 30);
    pipe->closeWriter();
    QCOMPARE(reader->notifier_process(0), 0);
    QCOMPARE(reader->notifier_process(0), 0);
    QVERIFY(pipe->openWriter());
    QVERIFY(pipe->write(kRmc.mid(30)));
    QCOMPARE(reader->notifier_process(0), qlonglong(kRmc.size() - 30));
    QCOMPARE(published(), 1); // the same pipe: the sentence goes on
}

// The host daemon was restarted and has made a new pipe.
void TestNmeaReader::pipeReplacedByAnotherIsOpened()
{
    QVERIFY(pipe->make() && reader->notifier_start() && pipe->openWriter());
    QVERIFY(pipe->write(kRmc.left(30)));
    QCOMPARE(reader->notifier_process(0), 30);
    const int before = openDescriptors();
    pipe->closeWriter();
    QVERIFY(pipe->remove() && pipe->make());
    QVERIFY(!pipe->openWriter()); // nobody reads it yet
    QCOMPARE(reader->notifier_process(0), 0);
    QVERIFY(pipe->openWriter());
    QCOMPARE(openDescriptors(), before);
    // The end of another sentence does not complete the old pipe's half.
    QVERIFY(pipe->write(kRmc.mid(30) + kGga + kRmc));
    QVERIFY(reader->notifier_process(0) > 0);
    QCOMPARE(published(), 1);
    QCOMPARE(publications->all().front().location.fix, 1);
}

void TestNmeaReader::pipeReplacedByWhatCannotBeOpenedIsReported()
{
    QVERIFY(pipe->make() && reader->notifier_start() && pipe->remove());
    // A socket: it cannot be opened, not even by the superuser.
    QCOMPARE(::mknod(pipe->path().constData(), S_IFSOCK | 0600, 0), 0);
    newLines();
    QCOMPARE(reader->notifier_process(0), 0);
    QCOMPARE(newLines(), QStringList("open error " + systemErrorText(ENXIO)));
    QVERIFY(pipe->remove() && pipe->make());
    QCOMPARE(reader->notifier_process(0), 0);
    QVERIFY(pipe->openWriter() && pipe->write(kRmc));
    QCOMPARE(reader->notifier_process(0), qlonglong(kRmc.size()));
}

// Only a read of nothing makes the reader look: while it is served, the old pipe is the right one.
void TestNmeaReader::folderReplacedByAPipeIsGivenUp()
{
    QVERIFY(QDir().mkdir(QFile::decodeName(pipe->path())) && reader->notifier_start());
    newLines();
    QCOMPARE(reader->notifier_process(0), -1);
    QCOMPARE(newLines(), QStringList("read error " + systemErrorText(EISDIR)));
    QVERIFY(QDir().rmdir(QFile::decodeName(pipe->path())) && pipe->make());
    QCOMPARE(reader->notifier_process(0), -1);
    QVERIFY(pipe->openWriter() && pipe->write(kRmc));
    QCOMPARE(reader->notifier_process(0), qlonglong(kRmc.size()));
}

void TestNmeaReader::pipeReplacedWhileItsWriterStaysIsReadOn()
{
    QVERIFY(pipe->make() && reader->notifier_start() && pipe->openWriter());
    QVERIFY(pipe->remove() && pipe->make());
    QCOMPARE(reader->notifier_process(0), -1);
    QVERIFY(pipe->write(kRmc));
    QCOMPARE(reader->notifier_process(0), qlonglong(kRmc.size()));
    QCOMPARE(published(), 1);
}

void TestNmeaReader::pipeRemovedStaysOpenUntilAnotherIsMade()
{
    QVERIFY(pipe->make() && reader->notifier_start());
    QVERIFY(pipe->remove());
    newLines();
    QCOMPARE(reader->notifier_process(0), 0);
    QCOMPARE(reader->notifier_process(0), 0);
    QCOMPARE(newLines(), QStringList());
    QVERIFY(pipe->make());
    QCOMPARE(reader->notifier_process(0), 0);
    QVERIFY(pipe->openWriter() && pipe->write(kRmc));
    QCOMPARE(reader->notifier_process(0), qlonglong(kRmc.size()));
}

void TestNmeaReader::samePipeIsNotOpenedAgain()
{
    QVERIFY(pipe->make() && reader->notifier_start() && pipe->openWriter());
    QVERIFY(pipe->write(kRmc.left(30)));
    QCOMPARE(reader->notifier_process(0), 30);
    pipe->closeWriter();
    for (int pass = 0; pass < 3; ++pass)
        QCOMPARE(reader->notifier_process(0), 0);
    QVERIFY(pipe->openWriter() && pipe->write(kRmc.mid(30)));
    QVERIFY(reader->notifier_process(0) > 0);
    QCOMPARE(published(), 1); // opening it again would have dropped the first half
}

void TestNmeaReader::interruptEndsTheSleep()
{
    waits.reset();
    QVERIFY(pipe->make() && reader->notifier_start());
    reader->interrupt();
    QElapsedTimer timer;
    timer.start();
    for (int pass = 0; pass < 100; ++pass)
        QCOMPARE(reader->notifier_process(0), 0);
    QVERIFY(timer.elapsed() < 10000);
}

void TestNmeaReader::decodesTwoSentencesOfOneRead()
{
    feed(kGga + kRmc);
    QCOMPARE(published(), 1);
    QCOMPARE(model->getLocation().fix, 1);
    QCOMPARE(model->getLocation().fixTime, 123519.0);
}

void TestNmeaReader::completesSentenceWithNextRead_data()
{
    QTest::addColumn<int>("cut");
    QTest::newRow("carriage return not yet arrived") << kRmc.indexOf('\r');
    QTest::newRow("line feed not yet arrived") << kRmc.indexOf('\n');
    QTest::newRow("dollar only") << 1;
    QTest::newRow("cut in two in the address") << 4;
    QTest::newRow("cut in two in a field") << 20;
}

void TestNmeaReader::completesSentenceWithNextRead()
{
    QFETCH(int, cut);
    feed(kGga + kRmc.left(cut));
    QCOMPARE(published(), cut > kRmc.indexOf('\r') ? 1 : 0);
    feed(kRmc.mid(cut));
    QCOMPARE(published(), 1);
    QCOMPARE(model->getLocation().fixTime, 123519.0);
    feed(kRmc);
    QCOMPARE(published(), 2);
}

void TestNmeaReader::dropsFragmentOf2000BytesWithoutCarriageReturn()
{
    feed(longRmc(2000).left(2000));
    feed("\r\n");
    QCOMPARE(published(), 0);
    feed(kRmc);
    QCOMPARE(published(), 1);
    QVERIFY(log->lines().filter("error").isEmpty());
}

void TestNmeaReader::keepsIncompleteSentenceUpTo1024Bytes_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<bool>("kept");
    QTest::newRow("1023") << 1023 << QByteArray() << true;
    QTest::newRow("1024") << 1024 << QByteArray() << true;
    QTest::newRow("1025") << 1025 << QByteArray() << false;
    QTest::newRow("1024 behind other data") << 1024 << QByteArray(3000, 'x') << true;
    QTest::newRow("1025 behind other data") << 1025 << QByteArray(3000, 'x') << false;
}

void TestNmeaReader::keepsIncompleteSentenceUpTo1024Bytes()
{
    QFETCH(int, length);
    QFETCH(QByteArray, before);
    feed(before + longRmc(length).left(length));
    feed("\r");
    QTEST(published() == 1, "kept");
}

void TestNmeaReader::decodesOverlongSentenceOfOneRead()
{
    feed(longRmc(50000));
    QCOMPARE(published(), 1);
}

void TestNmeaReader::acceptsAnyTwoLetterTalker_data()
{
    QTest::addColumn<QByteArray>("talker");
    for (const char *talker : {"GP", "GN", "BD", "XX", "  ", "1,"})
        QTest::newRow(talker) << QByteArray(talker);
}

void TestNmeaReader::acceptsAnyTwoLetterTalker()
{
    QFETCH(QByteArray, talker);
    feed("$BDGSV,1,1,01,131,45,120,38*00\r\n$" + talker +
         "GSA,A,3,131,,,,,,,,,,,,1.5,0.9,1.2*00\r\n" + kRmc);
    QCOMPARE(model->getSvStatus().numSvs, 1);
    // A comma in the talker's place shifts the elements by one, and still it is a GSA.
    QVERIFY(model->getSvStatus().svList[0].usedInFix);
}

void TestNmeaReader::ignoresOtherSentences_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("proprietary PPLM") << QByteArray("$PPLMG,3\r\n");
    QTest::newRow("other type") << QByteArray("$GPVTG,251.34,T,,M,0.58,N,1.07,K,A*37\r\n");
    QTest::newRow("lower case") << QByteArray("$GPrmc,123519.000,A\r\n");
    QTest::newRow("type at another place") << QByteArray("$GRMC,123519.000,A\r\n");
    QTest::newRow("dollar and carriage return only") << QByteArray("$\r$\r");
    QTest::newRow("cut in two and ended") << QByteArray("$GPRM\r\n");
    QTest::newRow("no dollar") << QByteArray("GPRMC,123519.000,A\r\n");
}

void TestNmeaReader::ignoresOtherSentences()
{
    QFETCH(QByteArray, bytes);
    feed(bytes);
    QCOMPARE(published(), 0);
    QCOMPARE(newLines(), QStringList(QStringLiteral("read len %1").arg(bytes.size())));
    feed(kRmc);
    QCOMPARE(published(), 1);
}

void TestNmeaReader::dropsDataWithoutDollar()
{
    feed(QByteArray(50000, 'x'));
    QCOMPARE(reader->freeSpace(), std::size_t(102400));
    QCOMPARE(newLines(), QStringList("read len 50000"));
    QCOMPARE(model->getNmeaData().size(), 50000);
}

// A sentence reaches to the next carriage return, whatever stands in between.
void TestNmeaReader::takesMergedSentencesAsOne()
{
    feed("$GPGGA,123519.000,48" + kRmc + kRmc);
    QCOMPARE(published(), 1);
}

void TestNmeaReader::endsNoSentenceAtLineFeed()
{
    feed(kRmc.left(kRmc.indexOf('\r')) + '\n');
    QCOMPARE(published(), 0);
    feed("\r");
    QCOMPARE(published(), 1);
}

// What earlier reads left in the buffer ends with a carriage return; a search going on into it
// would end the half sentence there.
void TestNmeaReader::searchEndsAtTheDatasEnd()
{
    feed(kRmc.repeated(20));
    QCOMPARE(published(), 20);
    feed(kRmc.left(30));
    QCOMPARE(published(), 20);
    feed("no dollar here, but behind the data old ones are left");
    QCOMPARE(published(), 20);
    feed("\r");
    QCOMPARE(published(), 21);
    feed(QByteArray("x"));
    QCOMPARE(published(), 21);
}

void TestNmeaReader::nulByteEndsNeitherSearchNorReading_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("sentences");
    const QByteArray nul(1, '\0');
    QTest::newRow("before a sentence") << nul + kRmc << 1;
    QTest::newRow("many before a sentence") << nul.repeated(3000) + kRmc << 1;
    QTest::newRow("between sentences") << kRmc + nul + kRmc << 2;
    QTest::newRow("inside a sentence") << kRmc.left(30) + nul + kRmc.mid(30) + kRmc << 2;
    QTest::newRow("in the address of one") << "$GP" + nul + kRmc.mid(4) + kRmc << 1;
    QTest::newRow("behind the dollar") << "$" + nul + "\r" + kRmc << 1;
    QTest::newRow("in place of the carriage return")
        << kRmc.left(kRmc.indexOf('\r')) + nul + kRmc + kRmc << 2;
}

void TestNmeaReader::nulByteEndsNeitherSearchNorReading()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, sentences);
    feed(bytes);
    QCOMPARE(published(), sentences);
    QCOMPARE(model->getNmeaData().size(), bytes.size());
}

void TestNmeaReader::movesOverlappingTail()
{
    // The tail is longer than the way it moves, so that its places overlap.
    for (const int way : {1, 3, 8, 15, 64, 500}) {
        const QByteArray head = "$GPGGA,";
        QByteArray time = QByteArray(900, '0') + "123519.000";
        const QByteArray whole = head + time + ",4807.0380,N,01131.0000,E,7,08,0.9,545.4";
        feed(QByteArray(way, 'x') + whole);
        feed("\r" + kRmc);
        QCOMPARE(model->getLocation().latitude, 48.1173);
        QCOMPARE(model->getLocation().fix, 7);
        QCOMPARE(model->getLocation().altitude, 545.4);
        feed(kGga);
    }
}

void TestNmeaReader::bufferAlwaysHasRoom()
{
    QCOMPARE(reader->freeSpace(), std::size_t(102400));
    QRandomGenerator random(20260104);
    for (int i = 0; i < 300; ++i) {
        QByteArray bytes(random.bounded(1, 3000), 'x');
        bytes[random.bounded(bytes.size())] = '$';
        feed(bytes);
        QVERIFY(reader->freeSpace() >= 102400 - 1024);
    }
    // A read can fill the buffer to its last byte.
    feed(QByteArray(int(reader->freeSpace()), '$'));
    QVERIFY(reader->freeSpace() >= 102400 - 1024);
    feed("\r\n" + kRmc);
    QCOMPARE(published(), 1);
}

void TestNmeaReader::clearBufKeepsBytesReceived()
{
    feed(kRmc.left(30));
    reader->clearBuf();
    feed(kRmc.mid(30));
    QCOMPARE(published(), 1);
}

void TestNmeaReader::feedOfNothingIsNoRead()
{
    const QSignalSpy arrived(model, &GnssInfo::dataReceived);
    reader->feed({});
    QCOMPARE(arrived.size(), 0);
    QCOMPARE(newLines(), QStringList());
}

void TestNmeaReader::keepsTextInEveryReadSize_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray utf8 = "$GPGGA \xc3\xa9 \xe2\x82\xac \xf0\x9f\x9b\xb0 \r\n";
    const QByteArray marks = "\xef\xbb\xbf$GP\xef\xbb\xbfGGA\xef\xbb\xbf\xef\xbb\xbf\r\n";
    QByteArray garbage;
    for (int i = 0; i < 2000; ++i)
        garbage += char(i * 37 + i / 256);
    garbage += "\r\n"; // an open end would wait for its rest
    for (const char *codec : {"UTF-8", "ISO-8859-1", "ISO-8859-15"}) {
        QTest::addRow("%s, characters of several bytes", codec) << QByteArray(codec) << utf8;
        QTest::addRow("%s, byte order marks", codec) << QByteArray(codec) << marks;
        QTest::addRow("%s, damaged", codec) << QByteArray(codec) << garbage;
        QTest::addRow("%s, sentences", codec) << QByteArray(codec) << kGga + kRmc;
        QTest::addRow("%s, NUL bytes", codec) << QByteArray(codec) << QByteArray(30, '\0') + kRmc;
    }
}

void TestNmeaReader::keepsTextInEveryReadSize()
{
    QFETCH(QByteArray, codec);
    QFETCH(QByteArray, bytes);
    QTextCodec *const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
    // Qt would take a byte order mark off the front.
    const QByteArray behindLetter = 'x' + bytes;
    const QString whole =
        QString::fromLocal8Bit(behindLetter.constData(), behindLetter.size()).mid(1);
    QStringList texts;
    for (const int size : {1, 2, 3, 5, 7, 1000, 65536}) {
        NmeaReader fresh;
        model->clearNmeaData();
        for (int at = 0; at < bytes.size(); at += size)
            fresh.feed({bytes.constData() + at, std::size_t(std::min(size, bytes.size() - at))});
        texts << model->getNmeaData();
    }
    QTextCodec::setCodecForLocale(before);
    for (const QString &text : texts)
        QCOMPARE(text, whole);
}

void TestNmeaReader::publishesTheSameInEveryReadSize_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 2, 3, 7, 8, 9, 63, 100, 1000, 1024, 65536})
        QTest::addRow("%d bytes", size) << size;
}

void TestNmeaReader::publishesTheSameInEveryReadSize()
{
    QFETCH(int, size);
    log.reset();
    QLoggingCategory::setFilterRules("default.debug=false");
    QByteArray stream;
    for (int second = 0; second < 100; ++second)
        stream += epochOf31Satellites(second);
    PlainDecoder plain;
    for (int at = 0; at < stream.size(); at += size) {
        feed(stream.mid(at, size));
        plain.read(stream.mid(at, size));
    }
    QLoggingCategory::setFilterRules(QString());
    QCOMPARE(published(), 100);
    QCOMPARE(model->getSvStatus().numSvs, 31);
    QCOMPARE(firstDifference(publications->all(), plain.all()), QString());
    QCOMPARE(model->getNmeaData().toLatin1(), stream);
}

void TestNmeaReader::tracesReadLength()
{
    feed("x");
    feed("xyz");
    QCOMPARE(log->lines(), QStringList({"read len 1", "read len 3"}));
}

// Beyond the text, which is the model's. Compared with a read of the same length in which no
// sentence begins, so that both append the same text.
void TestNmeaReader::decodingAllocatesNothing()
{
    if (!MallocCount::kCounts)
        QSKIP("a sanitizer has replaced malloc");
    log.reset();
    publications.reset(); // its records are on the heap
    QLoggingCategory::setFilterRules("default.debug=false");
    const QByteArray broken = sentence("GPGGA,1,,,,,0,00,,,M") + sentence("GNGNS,1,,,,,NNNN") +
                              sentence("GPGSV,3,1,11,1,2.5,x,4") +
                              sentence("GPGGA,1,,,,,-1,00,,-17.25,M") + sentence("GPRMC,1,V") +
                              sentence("GPGSA,A,1") + sentence("PPLMG,3");
    QByteArray stream = broken;
    for (int second = 0; second < 20; ++second)
        stream += epochOf31Satellites(second);
    const QByteArray silent = QByteArray(stream).replace('$', '#');

    const auto allocationsOf = [this](const QByteArray &bytes) {
        model->clearNmeaData();
        MallocCount::start();
        feed(bytes);
        return MallocCount::stop();
    };
    allocationsOf(stream); // the first fix and its signals
    const int baseline = allocationsOf(silent);
    const int decoding = allocationsOf(stream);
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(baseline > 0); // it does count
    QCOMPARE(decoding, baseline);
}

QTEST_GUILESS_MAIN(TestNmeaReader)
#include "TestNmeaReader.moc"
