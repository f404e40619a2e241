// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/DeviceTrouble.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QtTest>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

class TestDeviceTrouble : public QObject
{
    Q_OBJECT
private slots:
    void tellsWhoHasAFileOpen();
    void tellsWhatToDo_data();
    void tellsWhatToDo();
    void hasNothingAgainstAnOwnFile();
    void seesWhatTheSystemDenies_data();
    void seesWhatTheSystemDenies();
};

namespace {

constexpr gid_t kGroup = 65533; // of nobody, and without a name

/// While it lives, this process, which has to be root's, asks for permissions as somebody else does
/// who is in one more group.
class Somebody
{
public:
    Somebody(gid_t gid, bool asFirst)
    {
        before.resize(static_cast<size_t>(::getgroups(0, nullptr)));
        const int count = ::getgroups(static_cast<int>(before.size()), before.data());
        // The effective user stays, for the way back.
        became = count >= 0 && ::setgroups(asFirst ? 0 : 1, &gid) == 0 &&
                 ::setregid(65534, asFirst ? gid : 65534) == 0 &&
                 ::setreuid(65534, static_cast<uid_t>(-1)) == 0;
    }

    ~Somebody()
    {
        static_cast<void>(::setreuid(0, static_cast<uid_t>(-1)));
        static_cast<void>(::setregid(0, 0));
        static_cast<void>(::setgroups(before.size(), before.data()));
    }

    Somebody(const Somebody &) = delete;
    Somebody &operator=(const Somebody &) = delete;

    bool isSomebody() const { return became; }

private:
    std::vector<gid_t> before;
    bool became = false;
};

} // namespace

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

void TestDeviceTrouble::seesWhatTheSystemDenies_data()
{
    QTest::addColumn<int>("gid");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("member"); // 0 no, 1 by its own group, 2 by another one
    QTest::addColumn<QString>("advice");
    const group *const dialout = ::getgrnam("dialout");
    const int known = dialout ? static_cast<int>(dialout->gr_gid) : 0;
    const QString join = QStringLiteral("join it with 'sudo adduser $USER dialout'");
    const QString owner = QStringLiteral("only its owner or root may");
    if (dialout)
        QTest::newRow("the group may") << known << 0660 << 0 << join;
    QTest::newRow("the owner may") << known << 0600 << 0 << owner;
    QTest::newRow("the group may read") << known << 0640 << 0 << owner;
    QTest::newRow("a group without a name") << static_cast<int>(kGroup) << 0660 << 0 << owner;
    QTest::newRow("in the group that may not") << static_cast<int>(kGroup) << 0600 << 1 << owner;
    QTest::newRow("also in the group that may not")
        << static_cast<int>(kGroup) << 0600 << 2 << owner;
    QTest::newRow("also in the group that may") << static_cast<int>(kGroup) << 0660 << 2 << "";
    QTest::newRow("everybody may") << known << 0666 << 0 << "";
}

void TestDeviceTrouble::seesWhatTheSystemDenies()
{
    QFETCH(int, gid);
    QFETCH(int, mode);
    QFETCH(int, member);
    QFETCH(QString, advice);
    if (::geteuid() != 0)
        QSKIP("only root can become a user without permission");
    QTemporaryDir folder;
    QVERIFY(::chmod(QFile::encodeName(folder.path()).constData(), 0755) == 0);
    QFile file(folder.filePath(QStringLiteral("device")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(::fchown(file.handle(), 0, static_cast<gid_t>(gid)), 0);
    QCOMPARE(::fchmod(file.handle(), static_cast<mode_t>(mode)), 0);
    QString text;
    {
        const Somebody somebody(member == 0 ? 65534 : static_cast<gid_t>(gid), member == 1);
        QVERIFY(somebody.isSomebody());
        text = DeviceTrouble::missingPermission(file.fileName());
    }
    QCOMPARE(::getuid(), 0U);
    QCOMPARE(text.isEmpty(), advice.isEmpty());
    QVERIFY2(text.contains(advice), qPrintable(text));
}

QTEST_GUILESS_MAIN(TestDeviceTrouble)
#include "TestDeviceTrouble.moc"
