// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/CommandReader.h"

#include "base/SystemError.h"
#include "support/NotRoot.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class TestCommandReader : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void readsSeveralSentencesInOneWrite();
    void joinsHalvesOfTwoWrites();
    void reportsUnknownAndGarbage();
    void takesOneOpenACommand();
    void refusesASecondReader();
    void restoresALostPipe();
    void saysOnceWhyItCannotRestore();
    void survivesAFlood();
    void saysThatItMayNotRead();

private:
    void send(const QByteArray &bytes);

    std::unique_ptr<QTemporaryDir> folder;
    QByteArray path;
};

void TestCommandReader::init()
{
    folder = std::make_unique<QTemporaryDir>();
    path = QFile::encodeName(folder->filePath(QStringLiteral("agiout")));
}

// Opens, writes and closes, as the viewer does.
void TestCommandReader::send(const QByteArray &bytes)
{
    const int descriptor = ::open(path.constData(), O_WRONLY | O_NONBLOCK);
    QVERIFY(descriptor >= 0);
    QCOMPARE(::write(descriptor, bytes.constData(), static_cast<size_t>(bytes.size())),
             static_cast<ssize_t>(bytes.size()));
    ::close(descriptor);
}

void TestCommandReader::readsSeveralSentencesInOneWrite()
{
    CommandReader reader(path);
    QString error;
    QVERIFY2(reader.open(&error), qPrintable(error));
    QSignalSpy commands(&reader, &CommandReader::commandReceived);
    send("$PPLMS,1\r\n$PPLMS,0\r\n$PPLMB,70,3f\r\n");
    QTRY_COMPARE(commands.size(), 3);
    QCOMPARE(commands.at(0).at(1).toByteArray(), QByteArray("$PPLMS,1"));
    QCOMPARE(commands.at(2).at(0).value<tReceiverCommand>().mask, 0x3fU);
}

void TestCommandReader::joinsHalvesOfTwoWrites()
{
    CommandReader reader(path);
    QString error;
    QVERIFY(reader.open(&error));
    QSignalSpy commands(&reader, &CommandReader::commandReceived);
    send("$PPL");
    QVERIFY(!commands.wait(50));
    send("MG,7\r");
    QTRY_COMPARE(commands.size(), 1);
    QCOMPARE(commands.at(0).at(1).toByteArray(), QByteArray("$PPLMG,7"));
    send("\n");
    QVERIFY(!commands.wait(50));
}

void TestCommandReader::reportsUnknownAndGarbage()
{
    CommandReader reader(path);
    QString error;
    QVERIFY(reader.open(&error));
    QSignalSpy commands(&reader, &CommandReader::commandReceived);
    QSignalSpy unknown(&reader, &CommandReader::unknownSentence);
    QSignalSpy strays(&reader, &CommandReader::strayBytes);
    send("hello\r\n$PPLMG,9\r\n$PPLMS,0$PPLMG,3\r\n$" + QByteArray(2000, 'x') + "\r\n");
    QTRY_COMPARE(unknown.size(), 2);
    QCOMPARE(unknown.at(0).at(0).toByteArray(), QByteArray("$PPLMG,9"));
    // A command without its line end is a broken one, whatever it looks like.
    QCOMPARE(unknown.at(1).at(0).toByteArray(), QByteArray("$PPLMS,0"));
    QCOMPARE(commands.size(), 1);
    QTRY_COMPARE(strays.size(), 1);
    QCOMPARE(strays.at(0).at(0).toLongLong(), 5LL + 2001LL);
}

void TestCommandReader::takesOneOpenACommand()
{
    CommandReader reader(path);
    QString error;
    QVERIFY(reader.open(&error));
    QSignalSpy commands(&reader, &CommandReader::commandReceived);
    for (int i = 1; i <= 200; ++i) {
        send("$PPLMT,0\r\n");
        if (i % 20 == 0)
            QTRY_COMPARE(commands.size(), i);
    }
}

void TestCommandReader::refusesASecondReader()
{
    CommandReader first(path);
    CommandReader second(path);
    QString error;
    QVERIFY(first.open(&error));
    QVERIFY(!second.open(&error));
    QVERIFY(error.contains(QStringLiteral("another tavrin-hostd")));
}

void TestCommandReader::restoresALostPipe()
{
    CommandReader reader(path);
    QString error;
    QVERIFY(reader.open(&error));
    QSignalSpy commands(&reader, &CommandReader::commandReceived);
    QSignalSpy notices(&reader, &CommandReader::notice);
    reader.restoreIfLost();
    QCOMPARE(notices.size(), 0);
    QVERIFY(QFile::remove(QFile::decodeName(path)));
    reader.restoreIfLost();
    QCOMPARE(notices.size(), 1);
    send("$PPLMS,0\r\n");
    QTRY_COMPARE(commands.size(), 1);
    // A viewer that commands while the pipe is gone leaves an ordinary file.
    QVERIFY(QFile::remove(QFile::decodeName(path)));
    QFile file(QFile::decodeName(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    reader.restoreIfLost();
    send("$PPLMS,1\r\n");
    QTRY_COMPARE(commands.size(), 2);
}

void TestCommandReader::saysOnceWhyItCannotRestore()
{
    CommandReader reader(path);
    QString error;
    QVERIFY(reader.open(&error));
    const QString name = QFile::decodeName(path);
    QSignalSpy notices(&reader, &CommandReader::notice);
    QVERIFY(QFile::remove(name));
    QVERIFY(QDir().mkdir(name));
    for (int i = 0; i < 3; ++i)
        reader.restoreIfLost();
    QCOMPARE(notices.size(), 1);
    QVERIFY(notices.at(0).at(0).toString().contains(QStringLiteral("is no named pipe")));
    // Another reason is said again: now a second daemon has the pipe.
    QVERIFY(QDir().rmdir(name));
    {
        CommandReader second(path);
        QVERIFY2(second.open(&error), qPrintable(error));
        for (int i = 0; i < 3; ++i)
            reader.restoreIfLost();
        QCOMPARE(notices.size(), 2);
        QVERIFY(notices.at(1).at(0).toString().contains(QStringLiteral("another tavrin-hostd")));
    }
    reader.restoreIfLost();
    QCOMPARE(notices.size(), 3);
    QVERIFY(notices.at(2).at(0).toString().contains(QStringLiteral("made again")));
    // And the first one too when it comes back after all was well.
    QVERIFY(QFile::remove(name));
    QVERIFY(QDir().mkdir(name));
    reader.restoreIfLost();
    QCOMPARE(notices.size(), 4);
}

void TestCommandReader::survivesAFlood()
{
    CommandReader reader(path);
    QString error;
    QVERIFY(reader.open(&error));
    QSignalSpy commands(&reader, &CommandReader::commandReceived);
    QByteArray flood;
    while (flood.size() < 60000)
        flood += "$PPLMS,0\r\n";
    send(flood);
    QTRY_COMPARE(commands.size(), flood.size() / 10);
}

void TestCommandReader::saysThatItMayNotRead()
{
    QCOMPARE(::chmod(QFile::encodeName(folder->path()).constData(), 0755), 0);
    QCOMPARE(::mkfifo(path.constData(), 0222), 0);
    CommandReader reader(path);
    QString error;
    {
        const NotRoot user;
        QVERIFY(!reader.open(&error));
    }
    QCOMPARE(
        error,
        QStringLiteral("cannot open %1: %2").arg(QFile::decodeName(path), systemErrorText(EACCES)));
}

QTEST_GUILESS_MAIN(TestCommandReader)
#include "TestCommandReader.moc"
