// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/PipeWriter.h"

#include "base/SystemError.h"
#include "support/NotRoot.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class TestPipeWriter : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void dropsWithoutAReader();
    void writesToAReader();
    void noticesThatTheReaderLeft();
    void keepsNothingOldForTheNextReader();
    void writesOnlyWholeSentencesIntoAFullPipe();
    void survivesReadersThatComeAndGo();
    void remakesAPipeThatIsGone();
    void neverWritesIntoAnOrdinaryFile();
    void saysOnceWhyItCannotWrite();
    void saysThatItMayNotWrite();

private:
    int openReader();
    QByteArray readAll(int descriptor);

    std::unique_ptr<QTemporaryDir> folder;
    QByteArray path;
};

using Result = PipeWriter::Result;

void TestPipeWriter::initTestCase()
{
    // As the daemon does; a write to a reader that has left must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
}

void TestPipeWriter::init()
{
    folder = std::make_unique<QTemporaryDir>();
    path = QFile::encodeName(folder->filePath(QStringLiteral("agiin")));
}

int TestPipeWriter::openReader()
{
    return ::open(path.constData(), O_RDONLY | O_NONBLOCK);
}

QByteArray TestPipeWriter::readAll(int descriptor)
{
    QByteArray all;
    char buffer[4096];
    ssize_t size = 0;
    while ((size = ::read(descriptor, buffer, sizeof(buffer))) > 0)
        all.append(buffer, static_cast<int>(size));
    return all;
}

void TestPipeWriter::dropsWithoutAReader()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY2(writer.prepare(&error), qPrintable(error));
    QVERIFY(!writer.hasReader());
    for (int i = 0; i < 1000; ++i)
        QVERIFY(writer.write({"$OLD\r\n"}) == Result::NoReader);
    const int reader = openReader();
    QVERIFY(writer.write({"$NEW\r\n"}) == Result::Written);
    QCOMPARE(readAll(reader), QByteArray("$NEW\r\n"));
    ::close(reader);
}

void TestPipeWriter::writesToAReader()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    const int reader = openReader();
    QVERIFY(writer.hasReader());
    QVERIFY(writer.write({"$A\r\n", "$B\r\n"}) == Result::Written);
    QVERIFY(writer.write({}) == Result::Written);
    QCOMPARE(readAll(reader), QByteArray("$A\r\n$B\r\n"));
    ::close(reader);
}

void TestPipeWriter::noticesThatTheReaderLeft()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    QSignalSpy notices(&writer, &PipeWriter::notice);
    const int reader = openReader();
    QVERIFY(writer.hasReader());
    ::close(reader);
    QVERIFY(notices.size() == 2 || notices.wait(2000));
    QTRY_COMPARE(notices.size(), 2);
    QVERIFY(notices.at(1).at(0).toString().contains(QStringLiteral("left")));
    QVERIFY(writer.write({"$A\r\n"}) == Result::NoReader);
}

void TestPipeWriter::keepsNothingOldForTheNextReader()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    const int first = openReader();
    QVERIFY(writer.write({"$OLD\r\n"}) == Result::Written); // never read
    QSignalSpy notices(&writer, &PipeWriter::notice);
    ::close(first);
    QTRY_COMPARE(notices.size(), 1);
    const int second = openReader();
    QVERIFY(writer.write({"$NEW\r\n"}) == Result::Written);
    QCOMPARE(readAll(second), QByteArray("$NEW\r\n"));
    ::close(second);
}

void TestPipeWriter::writesOnlyWholeSentencesIntoAFullPipe()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    const int reader = openReader();
    // 30 sentences of 73 bytes a cycle, below what the system writes in one piece.
    QVector<QByteArray> cycle;
    for (int i = 0; i < 30; ++i)
        cycle.append('$' + QByteArray(70, static_cast<char>('A' + i % 26)) + "\r\n");
    int written = 0;
    int full = 0;
    for (int i = 0; i < 200; ++i) {
        const Result result = writer.write(cycle);
        QVERIFY(result == Result::Written || result == Result::Full);
        ++(result == Result::Written ? written : full);
    }
    QVERIFY(full > 100);
    const QByteArray whole = cycle.toList().join();
    const QByteArray got = readAll(reader);
    QCOMPARE(got, whole.repeated(written));
    QVERIFY(writer.write(cycle) == Result::Written); // and it goes on after the reader caught up
    QCOMPARE(readAll(reader), whole);

    // A cycle longer than one piece still ends with a whole sentence.
    const QVector<QByteArray> longCycle = cycle + cycle + cycle;
    while (writer.write(longCycle) == Result::Written) {
    }
    const QByteArray rest = readAll(reader);
    QVERIFY(rest.endsWith("\r\n"));
    for (const QByteArray &line : rest.chopped(2).split('\n'))
        QVERIFY(line.trimmed().size() == 71 && line.startsWith('$'));
    ::close(reader);
}

void TestPipeWriter::survivesReadersThatComeAndGo()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    for (int i = 0; i < 50; ++i) {
        const int reader = openReader();
        QVERIFY(writer.write({"$A\r\n"}) == Result::Written);
        if (i % 2 == 0)
            QCOMPARE(readAll(reader), QByteArray("$A\r\n"));
        ::close(reader);
        QVERIFY(writer.write({"$B\r\n"}) == Result::NoReader);
        QCoreApplication::processEvents();
    }
}

void TestPipeWriter::remakesAPipeThatIsGone()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    QVERIFY(QFile::remove(QFile::decodeName(path)));
    QVERIFY(writer.write({"$A\r\n"}) == Result::NoReader);
    const int reader = openReader();
    QVERIFY(reader >= 0);
    QVERIFY(writer.write({"$A\r\n"}) == Result::Written);
    ::close(reader);
}

void TestPipeWriter::neverWritesIntoAnOrdinaryFile()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    QVERIFY(QFile::remove(QFile::decodeName(path)));
    QFile file(QFile::decodeName(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(writer.write({"$A\r\n"}) == Result::NoReader);
    QCOMPARE(file.size(), static_cast<qint64>(0));
}

void TestPipeWriter::saysOnceWhyItCannotWrite()
{
    PipeWriter writer(path);
    QString error;
    QVERIFY(writer.prepare(&error));
    const QString name = QFile::decodeName(path);
    QSignalSpy notices(&writer, &PipeWriter::notice);
    QVERIFY(!writer.hasReader()); // nobody there is no trouble
    QCOMPARE(notices.size(), 0);
    QVERIFY(QFile::remove(name));
    QVERIFY(QDir().mkdir(name));
    for (int i = 0; i < 3; ++i)
        QVERIFY(!writer.hasReader());
    QCOMPARE(notices.size(), 1);
    QVERIFY(notices.at(0).at(0).toString().contains(QStringLiteral("no named pipe")));
    QVERIFY(QDir().rmdir(name));
    QVERIFY(QFile::link(name, name)); // leads to itself: another trouble
    for (int i = 0; i < 3; ++i)
        QVERIFY(!writer.hasReader());
    QCOMPARE(notices.size(), 2);
    QVERIFY(notices.at(1).at(0).toString().contains(name));
    // Without it the pipe is made again, and the next trouble is said again.
    QVERIFY(QFile::remove(name));
    QVERIFY(!writer.hasReader());
    QVERIFY(!writer.hasReader());
    QCOMPARE(notices.size(), 3);
    QVERIFY(notices.at(2).at(0).toString().contains(QStringLiteral("made again")));
    QVERIFY(QFile::remove(name));
    QVERIFY(QDir().mkdir(name));
    QVERIFY(!writer.hasReader());
    QCOMPARE(notices.size(), 4);
}

void TestPipeWriter::saysThatItMayNotWrite()
{
    QCOMPARE(::chmod(QFile::encodeName(folder->path()).constData(), 0755), 0);
    QCOMPARE(::mkfifo(path.constData(), 0444), 0);
    PipeWriter writer(path);
    QSignalSpy notices(&writer, &PipeWriter::notice);
    {
        const NotRoot user;
        for (int i = 0; i < 3; ++i)
            QVERIFY(writer.write({"$A\r\n"}) == Result::NoReader);
    }
    QCOMPARE(notices.size(), 1);
    QCOMPARE(notices.at(0).at(0).toString(),
             QStringLiteral("nothing can be sent: cannot open %1: %2")
                 .arg(QFile::decodeName(path), systemErrorText(EACCES)));
    QCOMPARE(::chmod(path.constData(), 0666), 0);
    const int reader = openReader();
    QVERIFY(reader >= 0);
    QVERIFY(writer.write({"$A\r\n"}) == Result::Written);
    ::close(reader);
}

QTEST_GUILESS_MAIN(TestPipeWriter)
#include "TestPipeWriter.moc"
