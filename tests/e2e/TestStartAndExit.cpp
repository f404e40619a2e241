// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemError.h"
#include "support/CommandPipeReader.h"
#include "support/HostdProcess.h"
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/SettingsFile.h"
#include "support/SteadyReceiver.h"
#include "support/ViewerProcess.h"

#include <QtTest>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>

namespace {

constexpr int kLongMs = 60000;
/// The viewer's promise; the checks of a sanitizer at the end of a process take time of their own.
constexpr int kExitMs = EXIT_MS;
constexpr std::chrono::milliseconds
    kFastPeriod(20); ///< of epochs, far more than any receiver sends

const QString kInput = QStringLiteral("/tmp/agiin");
const QString kOutput = QStringLiteral("/tmp/agiout");
const QString kSettings = QStringLiteral("/etc/config.xml");

} // namespace

class TestStartAndExit : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void fillsTheScreenWithoutAFrame_data();
    void fillsTheScreenWithoutAFrame();
    void applicationSettings();
    void loadsNoOpenGlUnlessAskedTo_data();
    void loadsNoOpenGlUnlessAskedTo();
    void buttonsStandInTheirOrder();
    void buttonsSwitchThePages();
    void buttonOfTheShownPageChangesNothing();
    void minimizeLeavesFullScreen();
    void commandLineOptionsAreIgnored_data();
    void commandLineOptionsAreIgnored();
    void settingsFile_data();
    void settingsFile();
    void exitEndsWithZero_data();
    void exitEndsWithZero();
    void closedByTheWindowSystemEndsWithZero();
    void brokenPipeSignalIsIgnored();
    void exitDuringAStoreWaitSendsTheCommand_data();
    void exitDuringAStoreWaitSendsTheCommand();
    void newInputPipeIsPickedUp();
    void restartedHostDaemonIsPickedUp();

private:
    bool startViewer(const QStringList &arguments = {});
    QString inputPath() const { return viewer->path(kInput); }
    int traced(const QString &text) const { return viewer->standardError().count(text); }
    QString utc() const { return viewer->text(Pages::kSatellite, QStringLiteral("label_utc")); }

    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<NmeaPipe> pipe;
};

void TestStartAndExit::init()
{
    viewer = std::make_unique<ViewerProcess>();
}

void TestStartAndExit::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(4000)));
    viewer.reset();
    pipe.reset();
}

bool TestStartAndExit::startViewer(const QStringList &arguments)
{
    if (viewer->start(arguments))
        return true;
    qWarning("%s", qPrintable(viewer->errorText()));
    return false;
}

void TestStartAndExit::fillsTheScreenWithoutAFrame_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::newRow("800x480") << QSize(800, 480);
    QTest::newRow("1280x720") << QSize(1280, 720);
}

void TestStartAndExit::fillsTheScreenWithoutAFrame()
{
    QFETCH(QSize, screen);
    viewer = std::make_unique<ViewerProcess>(screen);
    QVERIFY(startViewer());
    QCOMPARE(viewer->rect(Pages::kWindow, {}), QRect(QPoint(0, 0), screen));
    QVERIFY(viewer->property(Pages::kWindow, {}, "fullScreen").toBool());
    QVERIFY(viewer->screen().isFrameless());
    QVERIFY(viewer->isShown(Pages::kSatellite));
    for (const QString &hidden : {Pages::kControl, Pages::kTtff, Pages::kConfig})
        QVERIFY2(!viewer->isShown(hidden), qPrintable(hidden));
}

void TestStartAndExit::applicationSettings()
{
    const auto property = [this](const char *name) {
        return viewer->property({}, {}, name).toString();
    };
    QVERIFY(startViewer());
    QCOMPARE(property("organizationDomain"), QStringLiteral("Norvale"));
    QCOMPARE(property("applicationName"), QStringLiteral("TavrinViewer"));
    QCOMPARE(property("styleSheet"),
             QStringLiteral("QGroupBox {  border: 1px solid gray; border-radius: 5px; }"));
}

void TestStartAndExit::loadsNoOpenGlUnlessAskedTo_data()
{
    QTest::addColumn<QByteArray>("asked");
    QTest::newRow("not asked") << QByteArray();
    QTest::newRow("asked") << QByteArray("xcb_glx");
}

void TestStartAndExit::loadsNoOpenGlUnlessAskedTo()
{
    QFETCH(QByteArray, asked);
    const auto restore = qScopeGuard([] { qunsetenv("QT_XCB_GL_INTEGRATION"); });
    if (!asked.isEmpty())
        qputenv("QT_XCB_GL_INTEGRATION", asked);
    QVERIFY(startViewer());
    QFile maps(QStringLiteral("/proc/%1/maps").arg(viewer->process().processId()));
    QVERIFY(maps.open(QIODevice::ReadOnly));
    QCOMPARE(maps.readAll().contains("qxcb-glx-integration"), !asked.isEmpty());
}

void TestStartAndExit::buttonsStandInTheirOrder()
{
    struct Button
    {
        QString name;
        QString text;
    };
    const Button kButtons[] = {
        {Pages::kControlButton, QStringLiteral("Control")},
        {Pages::kSatelliteButton, QStringLiteral("Satellite")},
        {Pages::kTtffButton, QStringLiteral("TTFF Test")},
        {QStringLiteral("pushButton_logging"), QStringLiteral("Log")},
        {Pages::kConfigButton, QStringLiteral("Config")},
        {Pages::kMinimizeButton, QStringLiteral("Minimize")},
        {Pages::kExitButton, QStringLiteral("Exit")},
    };
    QVERIFY(startViewer());
    const QRect page = viewer->rect(Pages::kSatellite, {});
    QRect above;
    for (const Button &button : kButtons) {
        const QRect place = viewer->rect(Pages::kWindow, button.name);
        QCOMPARE(viewer->text(Pages::kWindow, button.name), button.text);
        QVERIFY(!place.isEmpty());
        QVERIFY2(above.isNull() || place.top() > above.bottom(), qPrintable(button.name));
        QVERIFY2(place.right() < page.left(), qPrintable(button.name));
        above = place;
    }
}

void TestStartAndExit::buttonsSwitchThePages()
{
    const QStringList kPages = {Pages::kControl, Pages::kSatellite, Pages::kTtff, Pages::kConfig};
    QVERIFY(startViewer());
    const QRect area = viewer->rect(Pages::kSatellite, {});
    for (const auto &[button, shown] : {std::make_pair(Pages::kControlButton, Pages::kControl),
                                        std::make_pair(Pages::kTtffButton, Pages::kTtff),
                                        std::make_pair(Pages::kConfigButton, Pages::kConfig),
                                        std::make_pair(Pages::kSatelliteButton, Pages::kSatellite),
                                        std::make_pair(Pages::kControlButton, Pages::kControl)}) {
        QVERIFY(viewer->showPage(button, shown));
        for (const QString &page : kPages)
            QCOMPARE(viewer->isShown(page), page == shown);
        QCOMPARE(viewer->rect(shown, {}), area);
    }
}

void TestStartAndExit::buttonOfTheShownPageChangesNothing()
{
    const auto screenBesideTheButtons = [this] {
        return viewer->screenshot().copy(viewer->rect(Pages::kConfig, {}));
    };
    QVERIFY(startViewer());
    QVERIFY(viewer->showPage(Pages::kConfigButton, Pages::kConfig));
    const QImage before = screenBesideTheButtons();
    QVERIFY(viewer->pressMain(Pages::kConfigButton));
    // The presses are handled in their order: after the next page's, this one has been.
    QVERIFY(viewer->showPage(Pages::kSatelliteButton, Pages::kSatellite));
    QVERIFY(viewer->pressMain(Pages::kSatelliteButton));
    QVERIFY(viewer->showPage(Pages::kConfigButton, Pages::kConfig));
    QTRY_COMPARE_WITH_TIMEOUT(screenBesideTheButtons(), before, kLongMs);
    QVERIFY(!viewer->isShown(Pages::kSatellite));
}

void TestStartAndExit::minimizeLeavesFullScreen()
{
    QVERIFY(startViewer());
    QVERIFY(viewer->pressMain(Pages::kMinimizeButton));
    QTRY_VERIFY_WITH_TIMEOUT(!viewer->property(Pages::kWindow, {}, "fullScreen").toBool(), kLongMs);
    QVERIFY(viewer->property(Pages::kWindow, {}, "maximized").toBool());
    QVERIFY(viewer->isShown(Pages::kSatellite));

    // Once more does nothing, and the window still answers.
    QVERIFY(viewer->pressMain(Pages::kMinimizeButton));
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
    QVERIFY(viewer->property(Pages::kWindow, {}, "maximized").toBool());
}

void TestStartAndExit::commandLineOptionsAreIgnored_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char *name, const char *arguments) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(QLatin1Char(' '));
    };
    row("short p with value", "-p eglfs:fb=/dev/fb0");
    row("short P, long plugin", "-P --plugin evdevtouch:/dev/input/event0");
    row("platform is the toolkit's", "--platform xcb");
    row("help and version", "--help --version");
    row("unknown and incomplete ones", "--nonsense -x file --plugin");
}

void TestStartAndExit::commandLineOptionsAreIgnored()
{
    QFETCH(QStringList, arguments);
    QVERIFY(startViewer(arguments));
    QVERIFY(viewer->isShown(Pages::kSatellite));
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
}

void TestStartAndExit::settingsFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("directory");
    const QString none;
    QTest::newRow("missing") << QByteArray()
                             << "Error: cannot read file %1: No such file or directory" << none;
    QTest::newRow("broken") << QByteArray("<configuration>\n<log>")
                            << "Error : parse error at line 2, 6: unexpected end of file" << none;
    QTest::newRow("another root") << QByteArray("<settings/>") << "Error: Not a configuration file"
                                  << none;
    QTest::newRow("with a directory") << ::settingsFile("/data/log") << none << "/data/log";
}

void TestStartAndExit::settingsFile()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, error);
    QFETCH(QString, directory);
    if (!text.isEmpty())
        QVERIFY(writeSettings(viewer->root(), text));
    QVERIFY(startViewer());
    QVERIFY(viewer->isShown(Pages::kSatellite));
    error.replace(QStringLiteral("%1"), viewer->path(kSettings));
    const QString output = viewer->standardError();
    QCOMPARE(output.count(QStringLiteral("Error")), error.isEmpty() ? 0 : 1);
    QVERIFY2(output.contains(error), qPrintable(output));
    QCOMPARE(viewer->text(Pages::kConfig, QStringLiteral("lineEdit_logPath")), directory);
}

void TestStartAndExit::exitEndsWithZero_data()
{
    QTest::addColumn<QString>("state");
    for (const char *state : {"no pipe at all", "pipe without a writer", "pipe with an idle writer",
                              "pipe with flowing data", "ordinary file", "directory",
                              "after the pipe was replaced", "after the pipe was removed"})
        QTest::newRow(state) << QString::fromLatin1(state);
}

void TestStartAndExit::exitEndsWithZero()
{
    QFETCH(QString, state);
    std::unique_ptr<SteadyReceiver> receiver;
    QFile file(inputPath());
    if (state.contains(QStringLiteral("pipe")) && state != QStringLiteral("no pipe at all"))
        pipe = std::make_unique<NmeaPipe>(inputPath());
    if (state == QStringLiteral("ordinary file")) {
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.write(NmeaSentences::epochOf31Satellites(45296)) > 0);
        file.close();
    }
    if (state == QStringLiteral("directory"))
        QVERIFY(QDir().mkdir(inputPath()));
    if (state == QStringLiteral("pipe with flowing data"))
        receiver = std::make_unique<SteadyReceiver>(*pipe, kFastPeriod);

    QVERIFY(startViewer());
    if (state == QStringLiteral("no pipe at all"))
        QTRY_VERIFY_WITH_TIMEOUT(traced("open error " + systemErrorText(ENOENT)) > 1, kLongMs);
    else
        QTRY_VERIFY_WITH_TIMEOUT(traced(QStringLiteral("notifier_start")) > 0, kLongMs);
    if (state == QStringLiteral("pipe without a writer"))
        pipe->close();
    if (state == QStringLiteral("pipe with an idle writer") || state == QStringLiteral("directory"))
        QTRY_VERIFY_WITH_TIMEOUT(traced(QStringLiteral("read error")) > 1, kLongMs);
    if (state == QStringLiteral("pipe with flowing data"))
        QTRY_VERIFY_WITH_TIMEOUT(traced(QStringLiteral("RMC received")) > 50, kLongMs);
    if (state == QStringLiteral("ordinary file"))
        QTRY_COMPARE_WITH_TIMEOUT(utc(), QStringLiteral("123456.000"), kLongMs);
    if (state == QStringLiteral("after the pipe was replaced")) {
        pipe->replace();
        QVERIFY(pipe->write(NmeaSentences::epochOf31Satellites(45296)));
        QTRY_COMPARE_WITH_TIMEOUT(utc(), QStringLiteral("123456.000"), kLongMs);
    }
    if (state == QStringLiteral("after the pipe was removed")) {
        QVERIFY(pipe->write(NmeaSentences::epochOf31Satellites(45296)));
        QTRY_COMPARE_WITH_TIMEOUT(utc(), QStringLiteral("123456.000"), kLongMs);
        QVERIFY(file.remove());
        pipe->close();
    }

    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
    QCOMPARE(traced(QStringLiteral("E> ")), 0);
}

void TestStartAndExit::closedByTheWindowSystemEndsWithZero()
{
    pipe = std::make_unique<NmeaPipe>(inputPath());
    QVERIFY(startViewer());
    QTRY_VERIFY_WITH_TIMEOUT(traced(QStringLiteral("read error")) > 0, kLongMs);
    QVERIFY(viewer->screen().requestClose());
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
}

void TestStartAndExit::brokenPipeSignalIsIgnored()
{
    QVERIFY(startViewer());
    QCOMPARE(::kill(static_cast<pid_t>(viewer->process().processId()), SIGPIPE), 0);
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
}

void TestStartAndExit::exitDuringAStoreWaitSendsTheCommand_data()
{
    QTest::addColumn<bool>("byButton");
    QTest::newRow("Exit") << true;
    QTest::newRow("closed by the window system") << false;
}

void TestStartAndExit::exitDuringAStoreWaitSendsTheCommand()
{
    QFETCH(bool, byButton);
    CommandPipeReader receiver(QFile::encodeName(viewer->path(kOutput)));
    pipe = std::make_unique<NmeaPipe>(inputPath());
    QVERIFY(startViewer());
    // A first fix after a second without one, with the constellations agreeing.
    QVERIFY(pipe->write(NmeaSentences::sentence("GNRMC,123455.000,V,,,,,,,050321,,,N") +
                        NmeaSentences::epochOf31Satellites(45296)));
    QTRY_VERIFY_WITH_TIMEOUT(traced(QStringLiteral("nvmStoreToFlash run!")) > 0, kLongMs);
    QCOMPARE(receiver.count(), 0);
    if (byButton)
        QVERIFY(viewer->pressMain(Pages::kExitButton));
    else
        QVERIFY(viewer->screen().requestClose());
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(receiver.sentences(), QByteArrayList{"$PPLMT,0\r\n"}, kLongMs);
    QCOMPARE(traced(QStringLiteral("nvmStoreToFlash run!")), 1);
}

void TestStartAndExit::newInputPipeIsPickedUp()
{
    pipe = std::make_unique<NmeaPipe>(inputPath());
    QVERIFY(startViewer());
    for (int second = 45296; second < 45299; ++second) {
        QVERIFY(pipe->write(NmeaSentences::epochOf31Satellites(second)));
        const QString time = QTime(0, 0).addSecs(second).toString(QStringLiteral("hhmmss.zzz"));
        QTRY_COMPARE_WITH_TIMEOUT(utc(), time, kLongMs);
        // In the middle of a sentence, which then never ends.
        QVERIFY(pipe->write("$GNRMC,1"));
        pipe->replace();
    }
}

void TestStartAndExit::restartedHostDaemonIsPickedUp()
{
    // The receiver's noise does not reach the digit that is looked at.
    const auto latitude = [this] {
        return viewer->text(Pages::kSatellite, QStringLiteral("label_lat")).left(4);
    };
    const auto simulate = [](const char *position) {
        return QStringList{QStringLiteral("simulate"), QStringLiteral("--position"),
                           QString::fromLatin1(position), QStringLiteral("--ttff"),
                           QStringLiteral("cold=2")};
    };
    QVERIFY(startViewer());
    for (const char *place : {"48.55,11.55,500", "12.55,77.55,900"}) {
        HostdProcess hostd(viewer->root());
        QVERIFY(hostd.start(simulate(place)));
        QTRY_COMPARE_WITH_TIMEOUT(latitude(), QString::fromLatin1(place).left(4), kLongMs);
        QVERIFY(hostd.stop());
    }
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
}

QTEST_GUILESS_MAIN(TestStartAndExit)
#include "TestStartAndExit.moc"
