// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/BusMonitor.h"
#include "support/KeyDevice.h"
#include "support/Pages.h"
#include "support/ProcessFigures.h"
#include "support/SystemBus.h"
#include "support/ViewerProcess.h"

#include <QtTest>

#include <memory>

namespace {

constexpr int kLongMs = 60000;
/// The viewer's promise; the checks of a sanitizer at the end of a process take time of their own.
constexpr int kExitMs = EXIT_MS;

constexpr int kKey = 1;
constexpr int kHome = 172;
constexpr int kVolumeUp = 115;

const QString kHomeReleased = QStringLiteral("event code: 172, event value: 0");
const QByteArray kViewerInterface = "brel.app.Ostrel.interface";
const QString kResume = QStringLiteral("brel.app.Ostrel.interface.resume");
const QByteArray kManagerInterface = "brel.activity.manager.interface";
const QByteArray kMinimize =
    "/brel/activity/Ostrel brel.activity.manager.interface minimize (null destination)";
const QString kLost = QStringLiteral("E> MsgThread: the system bus went away");
const QString kNoConnection = QStringLiteral("error: TavrinDemo dbus connection is null");
const QString kBack = QStringLiteral("d> MsgThread: the system bus is back");

} // namespace

/// The viewer between its bus, with other programs in the activity manager's place, and its key.
class TestDeviceLink : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void minimizeAndResume_data();
    void minimizeAndResume();
    void otherKeysAndSignalsDoNothing();
    void resumeInFullScreenChangesNothing();
    void busStoppedAndStartedAgain();
    void busThatHangsAtTheStartIsTakenUpLater();
    void withoutBusAndKeyDeviceTheRestWorks();
    void unpluggedKeyDeviceLeavesTheRestWorking();
    void exitEndsWithZeroAndSoon_data();
    void exitEndsWithZeroAndSoon();

private:
    bool startViewer();
    bool startLinked();
    bool pressKey(int code) const;
    bool minimize(bool byKey) const;
    bool is(const char *windowState) const
    {
        return viewer->property(Pages::kWindow, {}, windowState).toBool();
    }
    int traced(const QString &text) const { return viewer->standardError().count(text); }

    SystemBus bus;
    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<KeyDevice> keys;
    std::unique_ptr<BusMonitor> monitor;
};

void TestDeviceLink::init()
{
    QVERIFY(bus.start());
    monitor = std::make_unique<BusMonitor>();
    QVERIFY(monitor->start());
    viewer = std::make_unique<ViewerProcess>();
    keys = std::make_unique<KeyDevice>(viewer->root());
}

void TestDeviceLink::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(4000)));
    viewer.reset();
    keys.reset();
    monitor.reset();
    bus.stop();
}

bool TestDeviceLink::startViewer()
{
    if (viewer->start())
        return true;
    qWarning("%s", qPrintable(viewer->errorText()));
    return false;
}

/// With the key device open and the manager's signals on their way.
bool TestDeviceLink::startLinked()
{
    return keys->make() && startViewer() &&
           QTest::qWaitFor([this] { return keys->openWriter(); }, kLongMs) &&
           // The bus's notice of the connection's name is read behind the match rule.
           QTest::qWaitFor([this] { return traced(QStringLiteral("unknown message")) > 0; },
                           kLongMs);
}

bool TestDeviceLink::pressKey(int code) const
{
    return keys->write(KeyDevice::record(kKey, code, 1) + KeyDevice::record(0, 0, 0) +
                       KeyDevice::record(kKey, code, 0) + KeyDevice::record(0, 0, 0));
}

bool TestDeviceLink::minimize(bool byKey) const
{
    return byKey ? pressKey(kHome) : viewer->pressMain(Pages::kMinimizeButton);
}

void TestDeviceLink::minimizeAndResume_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("Minimize button") << false;
    QTest::newRow("home key") << true;
}

void TestDeviceLink::minimizeAndResume()
{
    QFETCH(bool, byKey);
    QVERIFY(startLinked());
    for (int round = 1; round <= 3; ++round) {
        QVERIFY(is("fullScreen"));
        QVERIFY(minimize(byKey));
        QTRY_VERIFY_WITH_TIMEOUT(is("maximized") && !is("fullScreen"), kLongMs);
        QVERIFY(minimize(byKey)); // a second time while minimised tells nobody
        if (byKey)
            QTRY_COMPARE_WITH_TIMEOUT(traced(kHomeReleased), 2 * round, kLongMs);
        QVERIFY(bus.emitSignal(kResume));
        QTRY_VERIFY_WITH_TIMEOUT(is("fullScreen"), kLongMs);
        // What went over the bus before has then been seen as well.
        QTRY_COMPARE_WITH_TIMEOUT(monitor->signalsOf(kViewerInterface).size(), round, kLongMs);
        const QByteArrayList sent = monitor->signalsOf(kManagerInterface);
        QCOMPARE(sent.size(), round);
        QCOMPARE(sent.count(kMinimize), round);
        QCOMPARE(viewer->rect(Pages::kWindow, {}), QRect(0, 0, 800, 480));
    }
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
}

void TestDeviceLink::otherKeysAndSignalsDoNothing()
{
    QVERIFY(startLinked());
    QVERIFY(pressKey(kVolumeUp));
    QTRY_COMPARE_WITH_TIMEOUT(traced("event code: 115, event value: 0"), 1, kLongMs);
    QVERIFY(is("fullScreen"));

    QVERIFY(minimize(true));
    QTRY_VERIFY_WITH_TIMEOUT(is("maximized"), kLongMs);
    const int before = traced("unknown message");
    QVERIFY(bus.emitSignal(QStringLiteral("brel.app.Ostrel.interface.pause")));
    QTRY_COMPARE_WITH_TIMEOUT(traced("unknown message"), before + 1, kLongMs);
    QVERIFY(!is("fullScreen"));
}

void TestDeviceLink::resumeInFullScreenChangesNothing()
{
    QVERIFY(startLinked());
    QVERIFY(bus.emitSignal(kResume));
    QTRY_COMPARE_WITH_TIMEOUT(traced("TavrinDemo ---- received resume message"), 1, kLongMs);
    QVERIFY(is("fullScreen"));
    QCOMPARE(monitor->signalsOf(kManagerInterface), QByteArrayList());
}

void TestDeviceLink::busStoppedAndStartedAgain()
{
    QVERIFY(startLinked());
    viewer->longestAnswerMs();
    for (int round = 1; round <= 2; ++round) {
        bus.stop();
        QTRY_COMPARE_WITH_TIMEOUT(traced(kLost), round, kLongMs);
        // Minimised while nobody can be told.
        QVERIFY(minimize(true));
        QTRY_VERIFY_WITH_TIMEOUT(is("maximized"), kLongMs);
        monitor = std::make_unique<BusMonitor>();
        QVERIFY(bus.start());
        QTRY_COMPARE_WITH_TIMEOUT(traced(kBack), round, RECOVERY_MS);
        QVERIFY(monitor->start());

        QVERIFY(bus.emitSignal(kResume));
        QTRY_VERIFY_WITH_TIMEOUT(is("fullScreen"), kLongMs);
        QVERIFY(minimize(false));
        QTRY_COMPARE_WITH_TIMEOUT(monitor->signalsOf(kManagerInterface), QByteArrayList{kMinimize},
                                  kLongMs);
        QVERIFY(bus.emitSignal(kResume));
        QTRY_VERIFY_WITH_TIMEOUT(is("fullScreen"), kLongMs);
    }
    QVERIFY(viewer->longestAnswerMs() < HANG_MS);
}

void TestDeviceLink::busThatHangsAtTheStartIsTakenUpLater()
{
    QVERIFY(bus.hang());
    QVERIFY(startViewer());
    QCOMPARE(viewer->standardOutput().count("TavrinDemo dbus get error\n"), 1);
    QVERIFY(minimize(false));
    QTRY_VERIFY_WITH_TIMEOUT(is("maximized"), kLongMs);
    QVERIFY(bus.goOn());
    QTRY_VERIFY_WITH_TIMEOUT(traced("unknown message") > 0, kLongMs);
    QVERIFY(bus.emitSignal(kResume));
    QTRY_VERIFY_WITH_TIMEOUT(is("fullScreen"), kLongMs);
    QVERIFY(minimize(false));
    QTRY_COMPARE_WITH_TIMEOUT(monitor->signalsOf(kManagerInterface), QByteArrayList{kMinimize},
                              kLongMs);
}

void TestDeviceLink::withoutBusAndKeyDeviceTheRestWorks()
{
    bus.stop();
    QVERIFY(startViewer());
    QTRY_COMPARE_WITH_TIMEOUT(traced("InputEventThread start"), 1, kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(viewer->standardOutput().count("Can't open the input file\n"), 1,
                              kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(viewer->standardOutput().count("Radio recv dbus deamon exit "), 1,
                              kLongMs);
    QCOMPARE(viewer->standardOutput().count("TavrinDemo dbus get error\n"), 1);
    QCOMPARE(traced(kNoConnection), 1);
    QVERIFY(minimize(false));
    QTRY_COMPARE_WITH_TIMEOUT(traced(kNoConnection), 2, kLongMs);
    QVERIFY(is("maximized"));
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
}

void TestDeviceLink::unpluggedKeyDeviceLeavesTheRestWorking()
{
    const auto threads = [this] {
        return ProcessFigures::threads(viewer->process().processId());
    };
    QVERIFY(startLinked());
    viewer->longestAnswerMs();
    QVERIFY(pressKey(kVolumeUp));
    QTRY_COMPARE_WITH_TIMEOUT(traced("event code: 115, event value: 0"), 1, kLongMs);
    const int before = threads();
    QVERIFY(QFile::remove(QFile::decodeName(keys->fileName())));
    keys->closeWriter();
    QTRY_COMPARE_WITH_TIMEOUT(threads(), before - 1, kLongMs);
    QVERIFY(minimize(false));
    QTRY_VERIFY_WITH_TIMEOUT(is("maximized"), kLongMs);
    QVERIFY(bus.emitSignal(kResume));
    QTRY_VERIFY_WITH_TIMEOUT(is("fullScreen"), kLongMs);
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
    QVERIFY(viewer->longestAnswerMs() < HANG_MS);
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kExitMs));
    QCOMPARE(viewer->exitCode(), 0);
}

void TestDeviceLink::exitEndsWithZeroAndSoon_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("hasWriter");
    QTest::newRow("at rest") << "" << true;
    QTest::newRow("key device without a writer") << "" << false;
    QTest::newRow("minimised") << "minimised" << true;
    QTest::newRow("bus away") << "bus away" << true;
    QTest::newRow("bus hangs") << "bus hangs" << true;
    QTest::newRow("bus hung from the start") << "bus hung from the start" << true;
    QTest::newRow("bus hangs when it is back") << "bus hangs when it is back" << true;
}

void TestDeviceLink::exitEndsWithZeroAndSoon()
{
    QFETCH(QString, state);
    QFETCH(bool, hasWriter);
    if (state.endsWith("start")) {
        QVERIFY(bus.hang() && startViewer());
    } else if (hasWriter) {
        QVERIFY(startLinked());
    } else {
        QVERIFY(keys->make() && startViewer());
        QTRY_COMPARE_WITH_TIMEOUT(traced("InputEventThread start"), 1, kLongMs);
    }
    if (state == "minimised") {
        QVERIFY(minimize(true));
        QTRY_VERIFY_WITH_TIMEOUT(is("maximized"), kLongMs);
    }
    if (state == "bus hangs")
        QVERIFY(bus.hang());
    if (state == "bus away" || state.endsWith("back")) {
        bus.stop();
        QTRY_COMPARE_WITH_TIMEOUT(traced(kLost), 1, kLongMs);
    }
    if (state.endsWith("back")) {
        QVERIFY(bus.start() && bus.hang());
        // An attempt a second that finds no bus is reported; this one hangs together with the bus.
        const int attempts = traced(kNoConnection);
        QVERIFY(!QTest::qWaitFor([&] { return traced(kNoConnection) > attempts; }, 3000));
        QVERIFY(minimize(false)); // the window is not held up
        QTRY_VERIFY_WITH_TIMEOUT(is("maximized"), kExitMs);
    }
    QElapsedTimer timer;
    timer.start();
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kExitMs));
    qInfo("ended after %lld ms", timer.elapsed());
    QCOMPARE(viewer->exitCode(), 0);
}

QTEST_GUILESS_MAIN(TestDeviceLink)
#include "TestDeviceLink.moc"
