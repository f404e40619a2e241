// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/DeviceTrouble.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryFile>
#include <QtTest>

class TestDeviceTrouble : public QObject
{
    Q_OBJECT
private slots:
    void tellsWhoHasAFileOpen();
    void tellsWhatToDo_data();
    void tellsWhatToDo();
    void hasNothingAgainstAnOwnFile();
};

void TestDeviceTrouble::tellsWhoHasAFileOpen()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    QCOMPARE(DeviceTrouble::holders(file.fileName()), QString()); // this process does not count
    QCOMPARE(DeviceTrouble::holders(file.fileName() + QStringLiteral(".absent")), QString());
    QProcess sleeper;
    sleeper.setStandardInputFile(file.fileName());
    sleeper.start(QStringLiteral("sleep"), {"60"});
    QVERIFY(sleeper.waitForStarted());
    QTRY_COMPARE(DeviceTrouble::holders(file.fileName()),
                 QStringLiteral("sleep (%1)").arg(sleeper.processId()));
    sleeper.kill();
    QVERIFY(sleeper.waitForFinished());
}

void TestDeviceTrouble::tellsWhatToDo_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<bool>("groupMay");
    QTest::addColumn<bool>("inGroup");
    QTest::addColumn<QString>("advice");
    const QString join = QStringLiteral("join it with 'sudo adduser $USER ");
    const QString owner = QStringLiteral("only its owner or root may");
    QTest::newRow("dialout") << "dialout" << true << false << join + "dialout'";
    QTest::newRow("another group") << "uucp" << true << false << join + "uucp'";
    QTest::newRow("group may not either") << "dialout" << false << false << owner;
    QTest::newRow("already in the group") << "dialout" << true << true << owner;
    QTest::newRow("root's group") << "root" << true << false << owner;
    QTest::newRow("group without a name") << "" << true << false << owner;
}

void TestDeviceTrouble::tellsWhatToDo()
{
    QFETCH(QString, group);
    QFETCH(bool, groupMay);
    QFETCH(bool, inGroup);
    QFETCH(QString, advice);
    const QString text =
        DeviceTrouble::permissionText(QStringLiteral("/dev/ttyUSB0"), group, groupMay, inGroup);
    QVERIFY2(text.startsWith(QStringLiteral("no permission to read and write /dev/ttyUSB0; ")),
             qPrintable(text));
    QVERIFY2(text.contains(advice), qPrintable(text));
}

void TestDeviceTrouble::hasNothingAgainstAnOwnFile()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    QCOMPARE(DeviceTrouble::missingPermission(file.fileName()), QString());
}

QTEST_GUILESS_MAIN(TestDeviceTrouble)
#include "TestDeviceTrouble.moc"
