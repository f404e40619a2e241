// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/NamedPipe.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

class TestNamedPipe : public QObject
{
    Q_OBJECT
private slots:
    void makesAndRemovesItsOwn();
    void leavesWhatWasThere();
    void leavesWhatTookItsPlace();
    void replacesAnOrdinaryFileOnlyWhenTold();
    void refusesAnythingElse();
    void takesALinkToAPipe();
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

QTEST_GUILESS_MAIN(TestNamedPipe)
#include "TestNamedPipe.moc"
