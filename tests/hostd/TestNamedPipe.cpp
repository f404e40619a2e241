// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/NamedPipe.h"

#include "base/SystemError.h"
#include "support/NotRoot.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

class TestNamedPipe : public QObject
{
    Q_OBJECT
private slots:
    void makesAndRemovesItsOwn();
    void leavesWhatWasThere();
    void leavesWhatTookItsPlace();
    void leavesAFileThatTookItsPlace();
    void letsOtherUsersIn_data();
    void letsOtherUsersIn();
    void makesAnotherWhenItIsGone();
    void replacesAnOrdinaryFileOnlyWhenTold();
    void refusesAnythingElse();
    void takesALinkToAPipe();
    void saysWhatAForeignFolderForbids_data();
    void saysWhatAForeignFolderForbids();
};

namespace {

bool isPipe(const QByteArray &path)
{
    struct stat found = {};
    return ::lstat(path.constData(), &found) == 0 && S_ISFIFO(found.st_mode);
}

QByteArray pathIn(const QTemporaryDir &folder, const char *name)
{
    return QFile::encodeName(folder.filePath(QString::fromLatin1(name)));
}

} // namespace

using OrdinaryFile = NamedPipe::OrdinaryFile;

void TestNamedPipe::makesAndRemovesItsOwn()
{
    QTemporaryDir folder;
    const QByteArray path = pathIn(folder, "deep/er/agiin");
    QString error;
    QString notice;
    {
        NamedPipe pipe(path);
        QVERIFY2(pipe.make(OrdinaryFile::Refuse, &error, &notice), qPrintable(error));
        QVERIFY(isPipe(path));
        QVERIFY(notice.isEmpty());
    }
    QVERIFY(!QFile::exists(QFile::decodeName(path)));
}

void TestNamedPipe::leavesWhatWasThere()
{
    QTemporaryDir folder;
    const QByteArray path = pathIn(folder, "agiin");
    QCOMPARE(::mkfifo(path.constData(), 0600), 0);
    QString error;
    QString notice;
    {
        NamedPipe pipe(path);
        QVERIFY(pipe.make(OrdinaryFile::Replace, &error, &notice));
    }
    QVERIFY(isPipe(path));
}

void TestNamedPipe::leavesWhatTookItsPlace()
{
    QTemporaryDir folder;
    const QByteArray path = pathIn(folder, "agiin");
    QString error;
    QString notice;
    {
        NamedPipe pipe(path);
        QVERIFY(pipe.make(OrdinaryFile::Refuse, &error, &notice));
        // Another one under the same path; the old one is kept so that its number stays taken.
        QVERIFY(QFile::rename(QFile::decodeName(path), folder.filePath(QStringLiteral("old"))));
        QCOMPARE(::mkfifo(path.constData(), 0600), 0);
    }
    QVERIFY(isPipe(path));
}

// Many file systems give the number of a file that is gone to the next one that is made.
void TestNamedPipe::leavesAFileThatTookItsPlace()
{
    QTemporaryDir folder;
    const QByteArray path = pathIn(folder, "agiin");
    for (int round = 0; round < 20; ++round) {
        QString error;
        QString notice;
        {
            NamedPipe pipe(path);
            QVERIFY2(pipe.make(OrdinaryFile::Refuse, &error, &notice), qPrintable(error));
            QVERIFY(QFile::remove(QFile::decodeName(path)));
            QFile file(QFile::decodeName(path));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(file.write("kept"), static_cast<qint64>(4));
        }
        QVERIFY(QFile::remove(QFile::decodeName(path)));
        {
            NamedPipe pipe(path);
            QVERIFY2(pipe.make(OrdinaryFile::Refuse, &error, &notice), qPrintable(error));
            QVERIFY(QFile::remove(QFile::decodeName(path)));
            QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        }
        QVERIFY(isPipe(path)); // a pipe, but somebody else's
        QVERIFY(QFile::remove(QFile::decodeName(path)));
    }
}

void TestNamedPipe::letsOtherUsersIn_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("nothing masked") << 0;
    QTest::newRow("the usual mask") << 022;
    QTest::newRow("everything but the owner's masked") << 077;
}

// On the device the viewer and the daemon run as different users.
void TestNamedPipe::letsOtherUsersIn()
{
    QFETCH(int, mask);
    QTemporaryDir folder;
    const QByteArray path = pathIn(folder, "agiout");
    const mode_t before = ::umask(static_cast<mode_t>(mask));
    QString error;
    QString notice;
    NamedPipe pipe(path);
    const bool made = pipe.make(OrdinaryFile::Refuse, &error, &notice);
    const mode_t after = ::umask(before);
    QVERIFY2(made, qPrintable(error));
    QCOMPARE(static_cast<int>(after), mask); // of no concern to what is made later
    struct stat found = {};
    QCOMPARE(::lstat(path.constData(), &found), 0);
    QCOMPARE(static_cast<int>(found.st_mode & 0777U), 0666);
}

void TestNamedPipe::makesAnotherWhenItIsGone()
{
    QTemporaryDir folder;
    const QByteArray path = pathIn(folder, "agiin");
    const auto descriptors = [] {
        return QDir(QStringLiteral("/proc/self/fd"))
            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
            .size();
    };
    const int before = descriptors();
    QString error;
    QString notice;
    {
        NamedPipe pipe(path);
        for (int round = 0; round < 5; ++round) {
            QVERIFY2(pipe.make(OrdinaryFile::Refuse, &error, &notice), qPrintable(error));
            QVERIFY(isPipe(path));
            QVERIFY(QFile::remove(QFile::decodeName(path)));
        }
        QVERIFY(descriptors() <= before + 1);
        QVERIFY(pipe.make(OrdinaryFile::Refuse, &error, &notice));
    }
    QVERIFY(!QFile::exists(QFile::decodeName(path)));
    QCOMPARE(descriptors(), before);
}

void TestNamedPipe::replacesAnOrdinaryFileOnlyWhenTold()
{
    QTemporaryDir folder;
    const QByteArray path = pathIn(folder, "agiout");
    QFile file(QFile::decodeName(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("$PPLMS,0\r\n");
    file.close();
    QString error;
    QString notice;
    NamedPipe pipe(path);
    QVERIFY(!pipe.make(OrdinaryFile::Refuse, &error, &notice));
    QVERIFY(error.contains(QStringLiteral("no named pipe")));
    QCOMPARE(file.size(), static_cast<qint64>(10));
    QVERIFY(pipe.make(OrdinaryFile::Replace, &error, &notice));
    QVERIFY(notice.contains(QStringLiteral("10 bytes")));
    QVERIFY(isPipe(path));
}

void TestNamedPipe::refusesAnythingElse()
{
    QTemporaryDir folder;
    QString error;
    QString notice;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("agiin")));
    QVERIFY(!NamedPipe(pathIn(folder, "agiin")).make(OrdinaryFile::Replace, &error, &notice));
    QVERIFY(error.contains(QStringLiteral("no named pipe")));
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    error.clear();
    QVERIFY(!NamedPipe(pathIn(folder, "file/agiin")).make(OrdinaryFile::Replace, &error, &notice));
    QVERIFY(!error.isEmpty());
    // A link to an ordinary file is somebody's intent; neither the link nor the file is touched.
    QVERIFY(file.link(folder.filePath(QStringLiteral("link"))));
    QVERIFY(!NamedPipe(pathIn(folder, "link")).make(OrdinaryFile::Replace, &error, &notice));
    QVERIFY(file.exists());
}

void TestNamedPipe::takesALinkToAPipe()
{
    QTemporaryDir folder;
    QCOMPARE(::mkfifo(pathIn(folder, "pipe").constData(), 0600), 0);
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("pipe")),
                        folder.filePath(QStringLiteral("agiin"))));
    QString error;
    QString notice;
    NamedPipe pipe(pathIn(folder, "agiin"));
    QVERIFY2(pipe.make(OrdinaryFile::Replace, &error, &notice), qPrintable(error));
}

void TestNamedPipe::saysWhatAForeignFolderForbids_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("says");
    QTest::newRow("a pipe") << "agiin"
                            << "cannot make the pipe %1: " + systemErrorText(EACCES);
    QTest::newRow("a folder for it") << "sub/agiin"
                                     << "cannot make the folder";
    QTest::newRow("a pipe in place of a file")
        << "file"
        << "cannot replace the ordinary file %1 by a pipe: " + systemErrorText(EACCES);
}

void TestNamedPipe::saysWhatAForeignFolderForbids()
{
    QFETCH(QString, name);
    QFETCH(QString, says);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray path = QFile::encodeName(folder.path());
    QCOMPARE(::chmod(path.constData(), 0555), 0);
    const QString wanted = folder.filePath(name);
    QString error;
    QString notice;
    {
        const NotRoot user;
        NamedPipe pipe(QFile::encodeName(wanted));
        QVERIFY(!pipe.make(OrdinaryFile::Replace, &error, &notice));
    }
    QCOMPARE(::chmod(path.constData(), 0755), 0);
    const QString expected = says.contains('%') ? says.arg(wanted) : says;
    QVERIFY2(error.startsWith(expected), qPrintable(error));
    QVERIFY(error.contains(wanted));
    QVERIFY(notice.isEmpty());
    QVERIFY(file.exists());
}

QTEST_GUILESS_MAIN(TestNamedPipe)
#include "TestNamedPipe.moc"
