// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/ScriptRig.h"

#include <QtTest>

namespace {

constexpr int kLongMs = 60000;

QStringList lines(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly)
               ? QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)
               : QStringList();
}

} // namespace

/// `./test` and the scripts that make the packages.
class TestProjectScripts : public QObject
{
    Q_OBJECT

private slots:
    void optionsOfCtestAreHandedOn_data();
    void optionsOfCtestAreHandedOn();
    void otherArgumentsOfTestAreRefused_data();
    void otherArgumentsOfTestAreRefused();
    void packagesAreMadeInAnyFolderAndLocale();
    void includesAgainstTheOrderOfTheRoomsAreNamed_data();
    void includesAgainstTheOrderOfTheRoomsAreNamed();

private:
    static bool addTest(const ScriptRig &rig);
};

/// `./test` with stand-ins for what it would build and run: only its own work is looked at.
bool TestProjectScripts::addTest(const ScriptRig &rig)
{
    return rig.add(QStringLiteral("test")) && rig.add(QStringLiteral("packaging/prepare.sh")) &&
           rig.addTool(QStringLiteral("cmake"), "mkdir -p build/dev") &&
           rig.addTool(QStringLiteral("ctest"),
                       "printf '%s\\n' \"$@\" > arguments\n"
                       "echo '<testsuite\n tests=\"1\"\n failures=\"0\"\n skipped=\"0\"/>'"
                       " > build/dev/test-results.xml");
}

void TestProjectScripts::optionsOfCtestAreHandedOn_data()
{
    QTest::addColumn<QStringList>("options");
    const auto row = [](const char *options) {
        QTest::newRow(options) << QString::fromLatin1(options).split(QLatin1Char(' '),
                                                                     Qt::SkipEmptyParts);
    };
    row("");
    row("-R TestRadar");
    row("-L unit -LE fuzz -E Corpus");
    row("--tests-regex Test -j 1 -V");
    row("-j4 --repeat until-fail:50 --timeout 10");
    row("--rerun-failed --stop-on-failure --schedule-random --no-tests=ignore");
}

void TestProjectScripts::optionsOfCtestAreHandedOn()
{
    QFETCH(QStringList, options);
    BoundProcess ctest;
    ctest.start(QStringLiteral("ctest"), {QStringLiteral("--help")});
    QVERIFY(ctest.waitForFinished(kLongMs));
    const QByteArray help = ctest.readAllStandardOutput();
    for (const QString &option : qAsConst(options)) {
        const QByteArray name =
            option.section(QRegularExpression(QStringLiteral("[=0-9]")), 0, 0).toUtf8();
        QVERIFY2(!name.startsWith('-') || help.contains("  " + name) || help.contains(", " + name),
                 name.constData());
    }

    const ScriptRig rig;
    QVERIFY(addTest(rig));
    BoundProcess test;
    rig.set(test, QStringLiteral("test"), options, QDir::rootPath());
    test.start();
    QVERIFY(test.waitForFinished(kLongMs));
    QCOMPARE(test.exitCode(), 0);
    QVERIFY(test.readAllStandardOutput().endsWith("1 passed, 0 failed, 0 skipped\n"));
    const QStringList handedOn = lines(rig.path(QStringLiteral("arguments")));
    QCOMPARE(handedOn.mid(handedOn.size() - options.size()), options);
}

void TestProjectScripts::otherArgumentsOfTestAreRefused_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QByteArray>("named");
    QTest::newRow("mistyped option") << "--lnit" << QByteArray("'--lnit'");
    QTest::newRow("name of a test") << "TestRadar" << QByteArray("'TestRadar'");
    QTest::newRow("behind a right one") << "-L unit Radar" << QByteArray("'Radar'");
    QTest::newRow("value joined") << "--tests-regex=Radar" << QByteArray("'--tests-regex=Radar'");
    QTest::newRow("second kind") << "--asan --lint" << QByteArray("'--lint'");
    QTest::newRow("value missing") << "-R" << QByteArray("-R needs a value");
    QTest::newRow("lint takes nothing") << "--lint src" << QByteArray("--lint");
}

void TestProjectScripts::otherArgumentsOfTestAreRefused()
{
    QFETCH(QString, arguments);
    QFETCH(QByteArray, named);
    const ScriptRig rig;
    QVERIFY(addTest(rig));
    BoundProcess test;
    rig.set(test, QStringLiteral("test"), arguments.split(QLatin1Char(' ')), QDir::rootPath());
    test.start();
    QVERIFY(test.waitForFinished(kLongMs));
    QCOMPARE(test.exitCode(), 2);
    const QByteArray said = test.readAllStandardError();
    QVERIFY2(said.startsWith("test: ") && said.contains(named), said.constData());
    QVERIFY(said.contains("usage: ./test"));
    QVERIFY(!QFile::exists(rig.path(QStringLiteral("build"))));
}

// With CMake and CPack as they are, but with a project of one file, as all of this one takes
// minutes.
void TestProjectScripts::packagesAreMadeInAnyFolderAndLocale()
{
    const ScriptRig rig(QStringLiteral("Pr\u00FCfung"));
    for (const char *const file :
         {"packaging/make-packages", "packaging/prepare.sh", "CMakePresets.json"})
        QVERIFY(rig.add(QString::fromLatin1(file)));
    QFile project(rig.path(QStringLiteral("CMakeLists.txt")));
    QVERIFY(project.open(QIODevice::WriteOnly));
    project.write("cmake_minimum_required(VERSION 3.21)\n"
                  "project(OneFile VERSION 1 LANGUAGES NONE)\n"
                  "add_custom_target(tavrin-viewer)\n"
                  "add_custom_target(tavrin-hostd)\n"
                  "add_custom_target(package-files)\n"
                  "install(FILES CMakeLists.txt DESTINATION /etc COMPONENT hostd)\n"
                  "set(CPACK_PACKAGE_CONTACT nobody)\n"
                  "set(CPACK_DEB_COMPONENT_INSTALL ON)\n"
                  "include(CPack)\n");
    project.close();
    BoundProcess script;
    rig.set(script, QStringLiteral("packaging/make-packages"), {}, QDir::rootPath());
    QProcessEnvironment environment = script.processEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    script.setProcessEnvironment(environment);
    script.setProcessChannelMode(QProcess::MergedChannels);
    script.start();
    QVERIFY(script.waitForFinished(kLongMs));
    QVERIFY2(script.exitCode() == 0, script.readAll().constData());
    QCOMPARE(QDir(rig.path(QStringLiteral("build/packages")))
                 .entryList({QStringLiteral("*.deb")})
                 .size(),
             1);
}

void TestProjectScripts::includesAgainstTheOrderOfTheRoomsAreNamed_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("included");
    QTest::addColumn<bool>("allowed");
    const auto row = [](const char *file, const char *included, bool allowed) {
        QTest::addRow("%s: %s", file, included)
            << QString::fromLatin1(file) << QString::fromLatin1(included) << allowed;
    };
    row("base/A.h", "base/B.h", true);
    row("base/A.h", "receiver/nmea/B.h", false);
    row("base/A.h", "gnss/B.h", false);
    row("receiver/nmea/A.cpp", "base/B.h", true);
    row("receiver/epoch/A.cpp", "receiver/nmea/B.h", true);
    row("receiver/epoch/A.cpp", "receiver/epoch/B.h", true);
    row("receiver/epoch/A.cpp", "receiver/sources/B.h", false);
    row("receiver/sources/A.cpp", "hostd/B.h", false);
    row("receiver/links/A.cpp", "config/B.h", false);
    row("hostd/A.cpp", "receiver/sources/B.h", true);
    row("hostd/A.cpp", "gnss/B.h", false);
    row("src/app/A.cpp", "base/B.h", true);
    row("src/app/A.cpp", "views/B.h", true);
    row("src/app/A.cpp", "receiver/nmea/B.h", false);
    row("src/app/A.cpp", "hostd/B.h", false);
    row("src/app/A.cpp", "ui_A.h", true);
}

void TestProjectScripts::includesAgainstTheOrderOfTheRoomsAreNamed()
{
    QFETCH(QString, file);
    QFETCH(QString, included);
    QFETCH(bool, allowed);
    const ScriptRig rig;
    QVERIFY(rig.add(QStringLiteral("tests/check-rooms")));
    for (const char *room : {"base", "receiver", "src", "hostd"})
        QVERIFY(QDir(rig.path(QString())).mkpath(QString::fromLatin1(room)));
    QVERIFY(QDir(rig.path(QString())).mkpath(QFileInfo(file).path()));
    QFile source(rig.path(file));
    QVERIFY(source.open(QIODevice::WriteOnly));
    source.write("// A comment.\n#include \"" + included.toUtf8() + "\"\n#include <QString>\n");
    source.close();
    BoundProcess check;
    check.start(rig.path(QStringLiteral("tests/check-rooms")), {});
    QVERIFY(check.waitForFinished(kLongMs));
    QCOMPARE(check.exitCode(), allowed ? 0 : 1);
    QCOMPARE(check.readAllStandardOutput().contains(file.toUtf8() + ":2: "), !allowed);
}

QTEST_GUILESS_MAIN(TestProjectScripts)
#include "TestProjectScripts.moc"
