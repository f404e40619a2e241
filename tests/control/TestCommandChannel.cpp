// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemError.h"
#include "control/CommandChannel.h"
#include "support/CommandPipeReader.h"
#include "support/MessageLog.h"
#include "support/SelfProcess.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// Called with every file descriptor before it is written to, while set.
std::function<void(int)> beforeWrite;

void onSignal(int) {}

constexpr auto kWaitAtEnd = "--wait-at-end";
constexpr uid_t kNobody = 65534;

/// Waits for a reader of a pipe that it must not read itself: the superuser may read everything.
int waitAtEnd()
{
    if (::geteuid() == 0 && ::setresuid(kNobody, kNobody, kNobody) != 0)
        return EXIT_FAILURE;
    limitCommandWaits();
    sendCommand(QStringLiteral("$PPLMT,0\r\n"), QStringLiteral("NVM Store"),
                QStringLiteral("NVM Store now: %1"));
    return EXIT_FAILURE;
}

} // namespace

/// Stands in front of the C library's function, for the library that writes the pipe as well.
extern "C" ssize_t write(int fd, const void *buffer, size_t length)
{
    if (beforeWrite)
        beforeWrite(fd);
    return syscall(SYS_write, fd, buffer, length);
}

class TestCommandChannel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void writesEachCommandInOneOpenByteForByte_data();
    void writesEachCommandInOneOpenByteForByte();
    void writesEachOfManyCommandsInAnOpenOfItsOwn();
    void emptyCommandStillOpensAndClosesThePipe();
    void writesOnlyUpToTheTerminatingZero();
    void debugTextIsSafeForAnyCommand_data();
    void debugTextIsSafeForAnyCommand();
    void waitsForAReaderAndGoesOnWhenOneComes();
    void signalsDoNotBreakTheWaitForAReader();
    void atTheEndOfTheProgramNoCommandWaitsForAReader();
    void atTheEndOfTheProgramAReaderStillGetsTheCommand();
    void atTheEndOfTheProgramAPipeThatMayOnlyBeWrittenIsNotWaitedFor();
    void readerThatLeavesBetweenOpenAndWriteEndsNothing();
    void absentPathBecomesAnOrdinaryFileThatEveryCommandRewrites();
    void unwritablePathGivesAnErrorLineAndNoDebugLine_data();
    void unwritablePathGivesAnErrorLineAndNoDebugLine();

private:
    QByteArray pipePath() const { return QFile::encodeName(root->filePath("tmp/agiout")); }

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<MessageLog> trace;
};

void TestCommandChannel::initTestCase()
{
    std::signal(SIGPIPE, SIG_IGN); // as the program has it
}

void TestCommandChannel::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(root->path()).mkdir("tmp"));
    qputenv("TAVRIN_ROOT", QFile::encodeName(root->path()));
    trace = std::make_unique<MessageLog>();
}

void TestCommandChannel::cleanup()
{
    beforeWrite = nullptr;
    const QStringList warnings = trace->warnings();
    trace.reset();
    QCOMPARE(warnings, QStringList());
}

void TestCommandChannel::writesEachCommandInOneOpenByteForByte_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QString>("debugText");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("line");

    const auto row = [](const char *name, const char *sentence, const char *tag, const char *text) {
        const QByteArray bytes = QByteArray(sentence) + "\r\n";
        QTest::newRow(name) << QString::fromLatin1(bytes) << QString(tag) << QString(text) + ": %1"
                            << bytes << QString("d> %1: %2: ").arg(tag, text) + QString(bytes);
    };
    row("start", "$PPLMS,0", "GnssStatus", "start GNSS");
    row("stop", "$PPLMS,1", "GnssStatus", "stop GNSS");
    row("hot start", "$PPLMG,1", "GnssReset", "Reset GNSS");
    row("warm start", "$PPLMG,2", "GnssReset", "Reset GNSS");
    row("cold start", "$PPLMG,3", "GnssReset", "Reset GNSS");
    row("factory start", "$PPLMG,7", "GnssReset", "Reset GNSS");
    row("constellations", "$PPLMB,70,3f", "LocTechSet", "restart GNSS");
    row("NVM store", "$PPLMT,0", "NVM Store", "NVM Store now");
}

void TestCommandChannel::writesEachCommandInOneOpenByteForByte()
{
    QFETCH(QString, command);
    QFETCH(QString, tag);
    QFETCH(QString, debugText);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, line);
    CommandPipeReader reader(pipePath());

    sendCommand(command, tag, debugText);

    QTRY_COMPARE(reader.count(), 1);
    QCOMPARE(reader.sentences().constFirst(), bytes);
    QCOMPARE(reader.writerCloses(), 1);
    QCOMPARE(trace->lines(), QStringList(line));
}

void TestCommandChannel::writesEachOfManyCommandsInAnOpenOfItsOwn()
{
    CommandPipeReader reader(pipePath());
    QByteArray all;
    for (int i = 0; i < 50; ++i) {
        const QByteArray sentence = "$PPLMS," + QByteArray::number(i) + "\r\n";
        sendCommand(QString::fromLatin1(sentence), "GnssStatus", "%1");
        all += sentence;
    }
    QTRY_COMPARE(reader.sentences().join(), all);
    QCOMPARE(reader.writerCloses(), 50);
}

void TestCommandChannel::emptyCommandStillOpensAndClosesThePipe()
{
    CommandPipeReader reader(pipePath());

    sendCommand(QString(), "GnssReset", "Reset GNSS: %1");

    QTRY_COMPARE(reader.count(), 1);
    QCOMPARE(reader.sentences().constFirst(), QByteArray());
    QCOMPARE(reader.writerCloses(), 1);
    QCOMPARE(trace->lines(), QStringList("d> GnssReset: Reset GNSS: "));
}

void TestCommandChannel::writesOnlyUpToTheTerminatingZero()
{
    CommandPipeReader reader(pipePath());
    sendCommand(QString("$PPLM") + QChar(0) + "X", "t", "%1");
    QTRY_COMPARE(reader.sentences(), QByteArrayList({"$PPLM"}));
}

void TestCommandChannel::debugTextIsSafeForAnyCommand_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("debugText");
    QTest::addColumn<QString>("line");
    QTest::newRow("place markers in the command") << "%1%2%L9"
                                                  << "a %1 b"
                                                  << "d> t: a %1%2%L9 b";
    QTest::newRow("no place marker in the text") << "c"
                                                 << "a"
                                                 << "d> t: a";
    QTest::newRow("other place markers in the text") << "c"
                                                     << "%2 %1 %0"
                                                     << "d> t: %2 c %0";
    QTest::newRow("percent signs alone") << "50%"
                                         << "100% %1 %"
                                         << "d> t: 100% 50% %";
    QTest::newRow("letters beyond ASCII")
        << QString::fromUtf8("\u00e4") << "%1" << QString::fromUtf8("d> t: \u00e4");
}

void TestCommandChannel::debugTextIsSafeForAnyCommand()
{
    QFETCH(QString, command);
    QFETCH(QString, debugText);
    QFETCH(QString, line);
    CommandPipeReader reader(pipePath());

    sendCommand(command, "t", debugText);

    QTRY_COMPARE(reader.sentences(), QByteArrayList({command.toUtf8()}));
    QCOMPARE(trace->lines(), QStringList(line));
}

void TestCommandChannel::waitsForAReaderAndGoesOnWhenOneComes()
{
    QCOMPARE(mkfifo(pipePath().constData(), 0600), 0);
    const std::unique_ptr<QThread> sender(
        QThread::create([] { sendCommand("$PPLMS,0\r\n", "GnssStatus", "start GNSS: %1"); }));
    sender->start();
    QVERIFY2(!sender->wait(200), "the open must wait for a reader");
    QCOMPARE(trace->lines(), QStringList());

    CommandPipeReader reader(pipePath());
    QVERIFY(sender->wait(10000));
    QTRY_COMPARE(reader.sentences(), QByteArrayList({"$PPLMS,0\r\n"}));
    QCOMPARE(trace->lines(), QStringList("d> GnssStatus: start GNSS: $PPLMS,0\r\n"));
}

void TestCommandChannel::atTheEndOfTheProgramNoCommandWaitsForAReader()
{
    const QByteArray path = pipePath();
    QCOMPARE(::mkfifo(path.constData(), 0600), 0);

    limitCommandWaits();
    // Returning at all is the point: without a limit both opens wait for ever.
    sendCommand(QStringLiteral("$PPLMT,0\r\n"), QStringLiteral("NVM Store"),
                QStringLiteral("NVM Store now: %1"));
    sendCommand(QStringLiteral("$PPLMT,0\r\n"), QStringLiteral("NVM Store"),
                QStringLiteral("NVM Store now: %1"));
}

void TestCommandChannel::atTheEndOfTheProgramAReaderStillGetsTheCommand()
{
    const QByteArray path = pipePath();
    QCOMPARE(::mkfifo(path.constData(), 0600), 0);
    const int reader = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(reader >= 0);

    limitCommandWaits();
    sendCommand(QStringLiteral("$PPLMT,0\r\n"), QStringLiteral("NVM Store"),
                QStringLiteral("NVM Store now: %1"));
    char text[64] = {};
    QCOMPARE(::read(reader, text, sizeof text), ssize_t(10));
    QCOMPARE(QByteArray(text), QByteArray("$PPLMT,0\r\n"));
    ::close(reader);
}

void TestCommandChannel::atTheEndOfTheProgramAPipeThatMayOnlyBeWrittenIsNotWaitedFor()
{
    const QByteArray path = pipePath();
    QCOMPARE(::chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    QCOMPARE(::mkfifo(path.constData(), 0600), 0);
    QCOMPARE(::chmod(path.constData(), 0222), 0);
    const ChildResult child = runSelf({kWaitAtEnd});
    QVERIFY(child.finished);
    QCOMPARE(child.exitCode, EXIT_SUCCESS);
    QCOMPARE(child.error, QByteArray()); // it was still waiting when it ended
}

void TestCommandChannel::signalsDoNotBreakTheWaitForAReader()
{
    struct sigaction action = {};
    action.sa_handler = &onSignal; // without SA_RESTART: a blocked call returns with EINTR
    sigaction(SIGUSR1, &action, nullptr);
    QCOMPARE(mkfifo(pipePath().constData(), 0600), 0);
    std::atomic<pthread_t> senderThread = 0;
    const std::unique_ptr<QThread> sender(QThread::create([&senderThread] {
        senderThread = pthread_self();
        sendCommand("$PPLMS,0\r\n", "GnssStatus", "start GNSS: %1");
    }));
    sender->start();
    QTRY_VERIFY(senderThread != 0);
    for (int i = 0; i < 20; ++i) {
        pthread_kill(senderThread, SIGUSR1);
        QVERIFY2(!sender->wait(5), "a signal broke the wait");
    }

    CommandPipeReader reader(pipePath());
    QVERIFY(sender->wait(10000));
    QTRY_COMPARE(reader.sentences(), QByteArrayList({"$PPLMS,0\r\n"}));
}

void TestCommandChannel::readerThatLeavesBetweenOpenAndWriteEndsNothing()
{
    QCOMPARE(mkfifo(pipePath().constData(), 0600), 0);
    int reader = open(pipePath().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(reader >= 0);
    int writesSeen = 0;
    beforeWrite = [&reader, &writesSeen](int fd) {
        struct stat info = {};
        if (reader >= 0 && fstat(fd, &info) == 0 && S_ISFIFO(info.st_mode)) {
            close(reader);
            reader = -1;
            ++writesSeen;
        }
    };

    sendCommand("$PPLMS,0\r\n", "GnssStatus", "start GNSS: %1");

    QCOMPARE(writesSeen, 1);
    QCOMPARE(trace->lines(), QStringList("d> GnssStatus: start GNSS: $PPLMS,0\r\n"));
}

void TestCommandChannel::absentPathBecomesAnOrdinaryFileThatEveryCommandRewrites()
{
    QFile file(QFile::decodeName(pipePath()));
    QVERIFY(!file.exists());
    sendCommand("$PPLMB,70,3f\r\n", "LocTechSet", "restart GNSS: %1");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("$PPLMB,70,3f\r\n"));
    file.close();

    sendCommand("$PPLMS,0\r\n", "GnssStatus", "start GNSS: %1");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("$PPLMS,0\r\n"));
}

void TestCommandChannel::unwritablePathGivesAnErrorLineAndNoDebugLine_data()
{
    QTest::addColumn<bool>("pathIsDirectory");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such directory") << false << "No such file or directory";
    QTest::newRow("a directory of that name") << true << systemErrorText(EISDIR);
}

void TestCommandChannel::unwritablePathGivesAnErrorLineAndNoDebugLine()
{
    QFETCH(bool, pathIsDirectory);
    QFETCH(QString, reason);
    const QString path = QFile::decodeName(pipePath());
    if (pathIsDirectory)
        QVERIFY(QDir().mkpath(path));
    else
        QVERIFY(QDir().rmdir(root->filePath("tmp")));

    sendCommand("$PPLMS,0\r\n", "GnssStatus", "start GNSS: %1");

    QCOMPARE(trace->lines(),
             QStringList(QString("E> GnssStatus: File (%1): %2").arg(path, reason)));
}

int main(int argc, char *argv[])
{
    if (argc > 1 && std::strcmp(argv[1], kWaitAtEnd) == 0)
        return waitAtEnd();
    QCoreApplication app(argc, argv);
    TestCommandChannel test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestCommandChannel.moc"
