// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/ScriptRig.h"
#include "support/HostdProcess.h"
#include "support/VirtualDisplay.h"

#include <QtTest>

#include <csignal>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr int kLongMs = 60000;
constexpr int kTourMs = 200000;
constexpr QSize kScreen(800, 480);

const QString kViewer = QStringLiteral("tavrin-viewer");
const QString kHostd = QStringLiteral("tavrin-hostd");

QByteArray contents(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// `./run` with the programs of this build instead of those that it would build.
class TestRunScript : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void closedViewerEndsTheReceiver();
    void viewerThatCrashesIsReported();
    void secondRunForTheSameRootIsRefused_data();
    void secondRunForTheSameRootIsRefused();
    void daemonOfSomebodyElseIsLeftAlone();
    void signalsEndEverything_data();
    void signalsEndEverything();
    void recordingIsInTheUsersFolder();
    void deviceAndWhatIsRecordedAreInTheUsersFolder();
    void rootIsInTheUsersFolder();
    void traceLinesGoIntoAFileUnlessAskedFor_data();
    void traceLinesGoIntoAFileUnlessAskedFor();
    void displayThatLeadsNowhereIsNamed_data();
    void displayThatLeadsNowhereIsNamed();
    void withoutADisplayItTakesPicturesOfThePages();
    void receiverThatDoesNotStartIsNoViewer_data();
    void receiverThatDoesNotStartIsNoViewer();
    void refusesUnknownOptions();

private:
    void set(BoundProcess &run, const QStringList &arguments) const;
    void start(const QStringList &arguments);
    QMap<QString, qint64> running() const;
    QStringList programs() const { return running().keys(); }
    bool isShown() const { return programs() == QStringList{kHostd, kViewer}; }
    QString device(const char *path) const { return root->path() + QString::fromLatin1(path); }
    bool writeRecording(const QString &name) const;
    QByteArray said();

    ScriptRig rig;
    VirtualDisplay display{kScreen};
    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<QTemporaryDir> caller;
    std::unique_ptr<BoundProcess> run;
    /// What leads the next run to a display; none for the virtual one that it makes itself.
    QProcessEnvironment displayVariables;
    QByteArray output;
};

void TestRunScript::initTestCase()
{
    QVERIFY(display.isRunning());
    QVERIFY(rig.add(QStringLiteral("run")) && rig.add(QStringLiteral("packaging/prepare.sh")));
    QVERIFY(rig.addTool(QStringLiteral("cmake"), {}));
    for (const QString &program : QStringLiteral(PROGRAMS).split(QLatin1Char('|')))
        QVERIFY2(rig.addProgram(program), qPrintable(program));
}

void TestRunScript::init()
{
    root = std::make_unique<QTemporaryDir>();
    caller = std::make_unique<QTemporaryDir>();
    run = std::make_unique<BoundProcess>();
    displayVariables = {};
    displayVariables.insert(QStringLiteral("DISPLAY"), display.name());
    output.clear();
}

void TestRunScript::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s", said().right(4000).constData());
    run->terminate();
    if (run->state() != QProcess::NotRunning && !run->waitForFinished(kLongMs))
        run->kill();
    QTRY_COMPARE_WITH_TIMEOUT(programs().join(QLatin1Char(' ')), QString(), kLongMs);
}

void TestRunScript::set(BoundProcess &process, const QStringList &arguments) const
{
    rig.set(process, QStringLiteral("run"), arguments, caller->path());
    QProcessEnvironment environment = process.processEnvironment();
    for (const char *const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    environment.insert(displayVariables);
    environment.insert(QStringLiteral("TAVRIN_ROOT"), root->path());
    process.setProcessEnvironment(environment);
}

void TestRunScript::start(const QStringList &arguments)
{
    set(*run, arguments);
    run->setProcessChannelMode(QProcess::MergedChannels);
    run->start();
    QVERIFY(run->waitForStarted(kLongMs));
}

/// Numbers of the programs that run with the root in their environment.
QMap<QString, qint64> TestRunScript::running() const
{
    const QByteArray mark = "TAVRIN_ROOT=" + QFile::encodeName(root->path()) + '\0';
    const QStringList known{kHostd, kViewer, QStringLiteral("viewer-tour"), QStringLiteral("Xvfb")};
    QMap<QString, qint64> found;
    const QStringList numbers =
        QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs);
    for (const QString &number : numbers) {
        const QString process = QStringLiteral("/proc/") + number;
        const QString name =
            QFileInfo(QFile::symLinkTarget(process + QStringLiteral("/exe"))).fileName();
        if (known.contains(name) && contents(process + QStringLiteral("/environ")).contains(mark))
            found.insert(name, number.toLongLong());
    }
    return found;
}

/// Two epochs, in the folder that the script is started from.
bool TestRunScript::writeRecording(const QString &name) const
{
    QFile recording(caller->filePath(name));
    return recording.open(QIODevice::WriteOnly) &&
           recording.write("$GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,\r\n"
                           "$GPGGA,120001,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,\r\n") >
               0;
}

QByteArray TestRunScript::said()
{
    output += run->readAll();
    return output;
}

void TestRunScript::closedViewerEndsTheReceiver()
{
    start({});
    bool isAsked = false;
    QTRY_VERIFY_WITH_TIMEOUT((isAsked = isAsked || display.requestClose()), kLongMs);
    QVERIFY(run->waitForFinished(kLongMs));
    QCOMPARE(run->exitCode(), 0);
    QCOMPARE(programs(), QStringList());
    QVERIFY(said().contains("DISPLAY=" + display.name().toLatin1()));
}

void TestRunScript::viewerThatCrashesIsReported()
{
    start({});
    QTRY_VERIFY_WITH_TIMEOUT(isShown(), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(contents(device("/viewer-trace.log")).contains("read len"), kLongMs);
    QCOMPARE(::kill(static_cast<pid_t>(running().value(kViewer)), SIGKILL), 0);
    QVERIFY(run->waitForFinished(kLongMs));
    QCOMPARE(run->exitCode(), 128 + SIGKILL);
    QVERIFY(said().contains("The viewer ended with exit code 137."));
    QCOMPARE(programs(), QStringList());
}

void TestRunScript::secondRunForTheSameRootIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("receiver") << QStringList() << QStringList{kHostd, kViewer};
    QTest::newRow("recording that has ended")
        << QStringList{"replay", "drive.nmea"} << QStringList{kViewer};
}

void TestRunScript::secondRunForTheSameRootIsRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, shown);
    QVERIFY(writeRecording(QStringLiteral("drive.nmea")));
    start(arguments);
    QTRY_VERIFY_WITH_TIMEOUT(contents(device("/viewer-trace.log")).contains("read len"), kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(programs(), shown, kLongMs);
    BoundProcess second;
    set(second, {});
    second.start();
    QVERIFY(second.waitForFinished(kLongMs));
    QCOMPARE(second.exitCode(), 1);
    const QByteArray refusal = second.readAllStandardError();
    QVERIFY2(refusal.contains("already shows a viewer for " + root->path().toUtf8()),
             refusal.constData());
    QCOMPARE(programs(), shown);
}

// One that was started without `./run`.
void TestRunScript::daemonOfSomebodyElseIsLeftAlone()
{
    HostdProcess hostd(root->path());
    QVERIFY(hostd.start({QStringLiteral("simulate")}));
    QTRY_VERIFY(QFile::exists(device("/tmp/agiin")));
    start({});
    QVERIFY(run->waitForFinished(kLongMs));
    QCOMPARE(run->exitCode(), 1);
    QVERIFY(
        said().contains("another tavrin-hostd serves " + root->path().toUtf8() + "/tmp/agiout"));
    QCOMPARE(programs(), QStringList{kHostd});
    QVERIFY(hostd.stop());
}

void TestRunScript::signalsEndEverything_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("onDisplay");
    QTest::newRow("TERM") << SIGTERM << true;
    QTest::newRow("INT") << SIGINT << true;
    QTest::newRow("HUP") << SIGHUP << true;
    QTest::newRow("KILL") << SIGKILL << true;
    QTest::newRow("TERM, virtual display") << SIGTERM << false;
}

void TestRunScript::signalsEndEverything()
{
    QFETCH(int, number);
    QFETCH(bool, onDisplay);
    if (!onDisplay)
        displayVariables = {};
    start({});
    QTRY_VERIFY_WITH_TIMEOUT(programs().contains(kHostd) && programs().contains(kViewer), kLongMs);
    QCOMPARE(::kill(static_cast<pid_t>(run->processId()), number), 0);
    QVERIFY(run->waitForFinished(kLongMs));
    if (number != SIGKILL)
        QCOMPARE(run->exitCode(), 128 + number);
    QTRY_COMPARE_WITH_TIMEOUT(programs(), QStringList(), kLongMs);
    QVERIFY(!QFile::exists(device("/tmp/agiin"))); // the daemon could tidy up

    start({}); // nothing is left that would refuse the next one
    QTRY_VERIFY_WITH_TIMEOUT(programs().contains(kViewer), kLongMs);
}

void TestRunScript::recordingIsInTheUsersFolder()
{
    QVERIFY(writeRecording(QStringLiteral("drive.nmea")));
    start({QStringLiteral("replay"), QStringLiteral("--loop"), QStringLiteral("drive.nmea")});
    QTRY_VERIFY_WITH_TIMEOUT(contents(device("/viewer-trace.log")).contains("read len"), kLongMs);
}

void TestRunScript::deviceAndWhatIsRecordedAreInTheUsersFolder()
{
    start({QStringLiteral("serial"), QStringLiteral("./receiver"), QStringLiteral("--record"),
           QStringLiteral("kept.tlog")});
    const QByteArray awaited = caller->filePath(QStringLiteral("receiver")).toUtf8();
    QTRY_VERIFY_WITH_TIMEOUT(said().contains(awaited), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(caller->filePath(QStringLiteral("kept.tlog"))), kLongMs);
}

void TestRunScript::rootIsInTheUsersFolder()
{
    set(*run, {});
    QProcessEnvironment environment = run->processEnvironment();
    environment.insert(QStringLiteral("TAVRIN_ROOT"), QStringLiteral("receiver"));
    run->setProcessEnvironment(environment);
    run->start();
    const QString traces = caller->filePath(QStringLiteral("receiver/viewer-trace.log"));
    QTRY_VERIFY_WITH_TIMEOUT(contents(traces).contains("read len"), kLongMs);
}

void TestRunScript::traceLinesGoIntoAFileUnlessAskedFor_data()
{
    QTest::addColumn<bool>("onDisplay");
    QTest::addColumn<bool>("asked");
    QTest::newRow("file") << true << false;
    QTest::newRow("terminal") << true << true;
    QTest::newRow("file, virtual display") << false << false;
    QTest::newRow("terminal, virtual display") << false << true;
}

void TestRunScript::traceLinesGoIntoAFileUnlessAskedFor()
{
    QFETCH(bool, onDisplay);
    QFETCH(bool, asked);
    if (!onDisplay)
        displayVariables = {};
    start(asked ? QStringList{QStringLiteral("--trace")} : QStringList());
    const QString file = device("/viewer-trace.log");
    const auto traces = [&] {
        return asked ? said() : contents(file);
    };
    QTRY_VERIFY_WITH_TIMEOUT(traces().contains("read len"), kLongMs);
    QCOMPARE(said().contains("read len"), asked);
    QVERIFY(said().contains("tavrin-hostd: power-up"));
    QVERIFY(asked || said().contains(file.toUtf8()));
}

void TestRunScript::displayThatLeadsNowhereIsNamed_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::newRow("X") << "DISPLAY"
                       << ":7777";
    QTest::newRow("Wayland") << "WAYLAND_DISPLAY"
                             << "nowhere-7";
}

void TestRunScript::displayThatLeadsNowhereIsNamed()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    displayVariables = {};
    displayVariables.insert(variable, value);
    start({});
    const QByteArray expected = (variable + QLatin1Char('=') + value).toUtf8();
    QTRY_VERIFY_WITH_TIMEOUT(said().contains("on a virtual display"), kLongMs);
    QVERIFY(said().contains(expected + " leads to no display."));
}

void TestRunScript::withoutADisplayItTakesPicturesOfThePages()
{
    displayVariables = {};
    start({QStringLiteral("simulate"), QStringLiteral("--ttff"), QStringLiteral("cold=2")});
    QVERIFY(run->waitForFinished(kTourMs));
    QCOMPARE(run->exitCode(), 0);
    QCOMPARE(said().count("Fix:   1"), 2);
    for (const QString &size : {QStringLiteral("800x480"), QStringLiteral("1280x720")}) {
        const QDir pictures(rig.path(QStringLiteral("build/pictures/") + size));
        QCOMPARE(pictures.entryList({QStringLiteral("*.png")}).size(), 10);
    }
}

void TestRunScript::receiverThatDoesNotStartIsNoViewer_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("only its help") << QStringList{"serial", "--help"} << 0;
    QTest::newRow("wrong option") << QStringList{"serial", "--colour"} << 2;
}

void TestRunScript::receiverThatDoesNotStartIsNoViewer()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    // Left behind by a daemon that could not take them away.
    QVERIFY(QDir(root->path()).mkdir(QStringLiteral("tmp")));
    for (const char *const pipe : {"/tmp/agiin", "/tmp/agiout"})
        QCOMPARE(::mkfifo(QFile::encodeName(device(pipe)).constData(), 0600), 0);
    start(arguments);
    QVERIFY(run->waitForFinished(kLongMs));
    QCOMPARE(run->exitCode(), exitCode);
    QVERIFY(said().contains("tavrin-hostd serial"));
    QVERIFY(!said().contains("The viewer fills"));
}

void TestRunScript::refusesUnknownOptions()
{
    start({QStringLiteral("--trcae")});
    QVERIFY(run->waitForFinished(kLongMs));
    QCOMPARE(run->exitCode(), 2);
    QVERIFY(said().contains("usage: ./run"));
}

QTEST_GUILESS_MAIN(TestRunScript)
#include "TestRunScript.moc"
