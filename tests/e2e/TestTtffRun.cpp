// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/TtffRig.h"
#include "support/Pages.h"

#include <QRegularExpression>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

namespace {

constexpr int kLongMs = 90000;
/// The viewer's promise; the checks of a sanitizer at the end of a process take time of their own.
constexpr int kExitMs = EXIT_MS;
constexpr int kStoreDelayMs = 36000;
/// The log has the time of day, which the system may set right while the waits go on.
constexpr int kClockMs = 20;
/// How much later than it should something may come on a machine with a lot else to do.
constexpr int kBusyMs = 30000;

const QString kBegin = QStringLiteral("Test Begin");
const QString kEnd = QStringLiteral("Test End");
const QString kStopping = QStringLiteral("TTFF Testing Stopping");
const QString kDone = QStringLiteral("TTFF Test Done.");
const QString kStore = QStringLiteral("$PPLMT,0");
const QString kStoreBegins = QStringLiteral("nvmStoreToFlash run!");
/// No fix within any test.
const QString kNever = QStringLiteral("hot=9000,warm=9000,cold=9000,factory=9000");

/// A run that takes most of a minute, because the first fix is followed by the wait for the
/// memory's store: all of them go on beside the other tests.
struct tLongRun
{
    QString name;
    QString ttff;
    tTtffSetting setting;
    bool stamped = true;
    int presses = 1;
    std::unique_ptr<TtffRig> rig;
    QDateTime pressed;
};

struct tStamped
{
    std::optional<QTime> at;
    QString text;
};

tStamped stampedLine(const QString &line)
{
    static const QRegularExpression kStamp(
        QStringLiteral("^\\[(\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d)\\] (.*)$"));
    const QRegularExpressionMatch match = kStamp.match(line);
    if (!match.hasMatch())
        return {std::nullopt, line};
    return {QTime::fromString(match.captured(1), QStringLiteral("hh:mm:ss.zzz")),
            match.captured(2)};
}

QStringList withoutStamps(const QStringList &lines)
{
    QStringList texts;
    for (const QString &line : lines)
        texts << stampedLine(line).text;
    return texts;
}

/// From one time of day to the next, past midnight as well.
int passedMs(QTime from, QTime to)
{
    constexpr int kDayMs = 86400000;
    return (from.msecsTo(to) + kDayMs + kClockMs) % kDayMs - kClockMs;
}

/// Exactly this many, because the receiver has an epoch a second of its time.
int figureOf(double announcedSeconds)
{
    return static_cast<int>(std::ceil(announcedSeconds));
}

/// Two blanks after "Hot,", unlike all others.
QString logLine(const QString &type, int figure)
{
    return QStringLiteral("Test Type: %1,%2 TTFF Result: %3")
        .arg(type, type == QStringLiteral("Hot") ? QStringLiteral(" ") : QString())
        .arg(figure);
}

QString resetOf(const QString &type)
{
    const QStringList kTypes = {QStringLiteral("Hot"), QStringLiteral("Warm"),
                                QStringLiteral("Cold")};
    const int index = kTypes.indexOf(type);
    return QStringLiteral("$PPLMG,%1").arg(index < 0 ? 7 : index + 1);
}

} // namespace

class TestTtffRun : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void loopsZeroSendNoReset_data();
    void loopsZeroSendNoReset();
    void withoutDataTheButtonDoesNothing();
    void stopInTheFixWait_data();
    void stopInTheFixWait();
    void stopInTracking();
    void exitInTracking();
    void stopAndTestAtOnce_data();
    void stopAndTestAtOnce();
    void exitInTheFixWait_data();
    void exitInTheFixWait();
    void exitInAStoreWaitInsideTheRun();
    void controlPageDuringARun();
    void severalLoops_data();
    void severalLoops();
    void runBegunInsideAStoppedOne();

private:
    bool startRun(const QString &ttff, const tTtffSetting &setting);
    tLongRun &addRun(const char *name, const QString &ttff, const tTtffSetting &setting);
    const tLongRun &longRun(const QString &name);
    QStringList onlyLog() const;
    void checkTimes(const QStringList &log, const tLongRun &run) const;

    std::vector<tLongRun> longRuns; ///< in the order of their start
    std::unique_ptr<TtffRig> ownRig;
    TtffRig *rig = nullptr; ///< the one that the test at hand is about
};

void TestTtffRun::initTestCase()
{
    const QString kTtff = QStringLiteral("hot=2,warm=3,cold=5,factory=8");
    const QString kHot = QStringLiteral("Hot");
    const QString kWarm = QStringLiteral("Warm");
    const QString kCold = QStringLiteral("Cold");
    addRun("begun inside a stopped one", kTtff, {kCold, 2, 1}).presses = 3;
    addRun("hot", kTtff, {kHot, 4, 1});
    addRun("warm", kTtff, {kWarm, 3, 2});
    addRun("cold", kTtff, {kCold, 3, 1});
    addRun("factory", kTtff, {QStringLiteral("Factory"), 2, 1});
    addRun("tracking zero", QStringLiteral("hot=2.5"), {kHot, 5, 0}).stamped = false;
    // Last those that must be met while they track, which they do for a minute and a half.
    addRun("stopped in tracking", kTtff, {kWarm, 5, 99});
    addRun("left in tracking", kTtff, {kWarm, 5, 99});

    for (tLongRun &run : longRuns) {
        run.rig = std::make_unique<TtffRig>();
        rig = run.rig.get();
        QVERIFY2(rig->start(run.ttff, run.stamped) && rig->feedData() && rig->choose(run.setting),
                 qPrintable(run.name));
        run.pressed = QDateTime::currentDateTime();
        QVERIFY2(rig->pressTest(run.presses), qPrintable(run.name));
    }
}

void TestTtffRun::cleanup()
{
    if (QTest::currentTestFailed() && rig)
        qInfo("%s", qPrintable(rig->traces()));
    rig = nullptr;
    ownRig.reset();
}

/// A run of the test's own, up to its first reset.
bool TestTtffRun::startRun(const QString &ttff, const tTtffSetting &setting)
{
    ownRig = std::make_unique<TtffRig>();
    rig = ownRig.get();
    return rig->start(ttff) && rig->feedData() && rig->choose(setting) && rig->pressTest() &&
           QTest::qWaitFor(
               [this, &setting] { return rig->commands() == QStringList(resetOf(setting.type)); },
               kLongMs);
}

tLongRun &TestTtffRun::addRun(const char *name, const QString &ttff, const tTtffSetting &setting)
{
    longRuns.emplace_back();
    tLongRun &run = longRuns.back();
    run.name = QString::fromLatin1(name);
    run.ttff = ttff;
    run.setting = setting;
    return run;
}

/// One of the long runs, whose rig then is the one at hand.
const tLongRun &TestTtffRun::longRun(const QString &name)
{
    const auto run = std::find_if(longRuns.begin(), longRuns.end(),
                                  [&name](const tLongRun &one) { return one.name == name; });
    if (run == longRuns.end())
        qFatal("no run '%s'", qPrintable(name));
    rig = run->rig.get();
    return *run;
}

/// The texts of the one log that there must be.
QStringList TestTtffRun::onlyLog() const
{
    const QStringList names = rig->logNames();
    return names.size() == 1 ? withoutStamps(rig->log(names.constFirst()))
                             : QStringList(QStringLiteral("not one log")) + names;
}

void TestTtffRun::loopsZeroSendNoReset_data()
{
    QTest::addColumn<bool>("stamped");
    QTest::newRow("with time stamps") << true;
    QTest::newRow("without") << false;
}

void TestTtffRun::loopsZeroSendNoReset()
{
    QFETCH(bool, stamped);
    ownRig = std::make_unique<TtffRig>();
    rig = ownRig.get();
    QVERIFY(rig->start(kNever, stamped));
    QVERIFY(rig->feedData());
    QVERIFY(rig->choose({QStringLiteral("Cold"), 0, 5}));
    QVERIFY(rig->pressTest());
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown(),
                              QStringList({QStringLiteral("TTFF Total Loop 0, Testing..."), kDone}),
                              kLongMs);
    QCOMPARE(onlyLog(), QStringList({kBegin, kEnd}));
    const QStringList lines = rig->log(rig->logNames().constFirst());
    for (const QString &line : lines)
        QCOMPARE(stampedLine(line).at.has_value(), stamped);
    QCOMPARE(rig->buttonText(), QStringLiteral("Test"));
    QCOMPARE(rig->commands(), QStringList());
}

void TestTtffRun::withoutDataTheButtonDoesNothing()
{
    ownRig = std::make_unique<TtffRig>();
    rig = ownRig.get();
    QVERIFY(rig->start(kNever));
    QVERIFY(rig->choose({QStringLiteral("Cold"), 3, 5}));
    QVERIFY(rig->pressTest());
    // The presses are handled in their order: after the page change, this one has been.
    QVERIFY(rig->viewer.showPage(Pages::kControlButton, Pages::kControl));
    QVERIFY(rig->viewer.showPage(Pages::kTtffButton, Pages::kTtff));
    QCOMPARE(rig->shown(), QStringList(QString()));
    QCOMPARE(rig->buttonText(), QStringLiteral("Test"));
    QCOMPARE(rig->logNames(), QStringList());
    QCOMPARE(rig->commands(), QStringList());

    QVERIFY(rig->feedData());
    QVERIFY(rig->pressTest());
    QTRY_COMPARE_WITH_TIMEOUT(rig->commands(), QStringList(resetOf(QStringLiteral("Cold"))),
                              kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(rig->buttonText(), QStringLiteral("Stop"), kLongMs);
}

void TestTtffRun::stopInTheFixWait_data()
{
    QTest::addColumn<int>("trackingSeconds");
    QTest::newRow("tracking zero") << 0;
    QTest::newRow("tracking 30") << 30;
}

void TestTtffRun::stopInTheFixWait()
{
    QFETCH(int, trackingSeconds);
    QVERIFY(startRun(kNever, {QStringLiteral("Factory"), 3, trackingSeconds}));
    QTRY_COMPARE_WITH_TIMEOUT(rig->buttonText(), QStringLiteral("Stop"), kLongMs);
    QCOMPARE(rig->shown(), QStringList(QStringLiteral("TTFF Total Loop 3, Testing...")));
    QVERIFY(rig->pressTest());
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown(), QStringList({kStopping, kDone}), kLongMs);
    QCOMPARE(rig->buttonText(), QStringLiteral("Test"));
    QCOMPARE(onlyLog(), QStringList({kBegin, kEnd}));
    const QStringList lines = rig->log(rig->logNames().constFirst());
    const int took = passedMs(*stampedLine(lines.at(0)).at, *stampedLine(lines.at(1)).at);
    QVERIFY2(took >= 999 - kClockMs && took < kBusyMs, qPrintable(lines.join(QLatin1Char('\n'))));
    QCOMPARE(rig->commands(), QStringList(resetOf(QStringLiteral("Factory"))));
    QCOMPARE(rig->traced(QStringLiteral("time out")), 0);
}

void TestTtffRun::stopInTracking()
{
    const QString result = QStringLiteral("Loop: 1 TTFF Result: 3 Seconds");
    longRun(QStringLiteral("stopped in tracking"));
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown().constLast(), result, kLongMs);
    QVERIFY(rig->pressTest());
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown(), QStringList({kStopping, kDone}), kLongMs);
    QCOMPARE(rig->buttonText(), QStringLiteral("Test"));
    QCOMPARE(onlyLog(), QStringList({kBegin, logLine(QStringLiteral("Warm"), 3), kEnd}));
    QCOMPARE(rig->commands(), QStringList({resetOf(QStringLiteral("Warm")), kStore}));
}

void TestTtffRun::exitInTracking()
{
    const QString result = QStringLiteral("Loop: 1 TTFF Result: 3 Seconds");
    longRun(QStringLiteral("left in tracking"));
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown().constLast(), result, kLongMs);
    QVERIFY(rig->viewer.pressMain(Pages::kExitButton));
    QVERIFY(rig->viewer.waitForEnd(kExitMs));
    QCOMPARE(rig->viewer.exitCode(), 0);
    QCOMPARE(onlyLog(), QStringList({kBegin, logLine(QStringLiteral("Warm"), 3), kEnd}));
    QCOMPARE(rig->commands(), QStringList({resetOf(QStringLiteral("Warm")), kStore}));
}

void TestTtffRun::stopAndTestAtOnce_data()
{
    QTest::addColumn<bool>("laterSecond");
    QTest::newRow("logs of one name, or of two") << false;
    QTest::newRow("logs of two names") << true;
}

void TestTtffRun::stopAndTestAtOnce()
{
    QFETCH(bool, laterSecond);
    const QString reset = resetOf(QStringLiteral("Warm"));
    ownRig = std::make_unique<TtffRig>();
    rig = ownRig.get();
    QVERIFY(rig->start(kNever));
    QVERIFY(rig->feedData());
    QVERIFY(rig->choose({QStringLiteral("Warm"), 3, 30}));
    if (laterSecond) {
        QVERIFY(rig->pressTest());
        QTRY_COMPARE_WITH_TIMEOUT(rig->logNames().size(), 1, kLongMs);
        const QDateTime begun = TtffRig::timeInName(rig->logNames().constFirst());
        QTRY_VERIFY(QDateTime::currentDateTime() >= begun.addSecs(1));
        QVERIFY(rig->pressTest(2));
    } else {
        QTRY_VERIFY(QTime::currentTime().msec() < 150); // room for three presses in this second
        QVERIFY(rig->pressTest(3));
    }
    QTRY_COMPARE_WITH_TIMEOUT(rig->commands(), QStringList({reset, reset}), kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(
        rig->shown(), QStringList(QStringLiteral("TTFF Total Loop 3, Testing...")), kLongMs);
    QCOMPARE(rig->buttonText(), QStringLiteral("Stop"));

    QStringList names = rig->logNames();
    QVERIFY2(names.size() == 2 || (names.size() == 1 && !laterSecond),
             qPrintable(names.join(QLatin1Char(' '))));
    QCOMPARE(withoutStamps(rig->log(names.constLast())), QStringList(kBegin));
    const QStringList older = names.size() == 2 ? rig->log(names.constFirst()) : QStringList();
    if (!older.isEmpty())
        QCOMPARE(withoutStamps(older), QStringList({kBegin, kEnd}));

    QVERIFY(rig->pressTest());
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown(), QStringList({kStopping, kDone}), kLongMs);
    QVERIFY(rig->viewer.showPage(Pages::kControlButton, Pages::kControl));
    QCOMPARE(rig->shown(), QStringList({kStopping, kDone}));
    QCOMPARE(rig->buttonText(), QStringLiteral("Test"));
    QCOMPARE(rig->logNames(), names);
    QCOMPARE(withoutStamps(rig->log(names.constLast())), QStringList({kBegin, kEnd}));
    if (!older.isEmpty())
        QCOMPARE(rig->log(names.constFirst()), older);
    QCOMPARE(rig->commands(), QStringList({reset, reset}));
}

void TestTtffRun::exitInTheFixWait_data()
{
    QTest::addColumn<bool>("byButton");
    QTest::newRow("Exit") << true;
    QTest::newRow("closed by the window system") << false;
}

void TestTtffRun::exitInTheFixWait()
{
    QFETCH(bool, byButton);
    QVERIFY(startRun(kNever, {QStringLiteral("Hot"), 3, 30}));
    if (byButton)
        QVERIFY(rig->viewer.pressMain(Pages::kExitButton));
    else
        QVERIFY(rig->viewer.screen().requestClose());
    QVERIFY(rig->viewer.waitForEnd(kExitMs));
    QCOMPARE(rig->viewer.exitCode(), 0);
    QCOMPARE(onlyLog(), QStringList({kBegin, kEnd}));
    QCOMPARE(rig->commands(), QStringList(resetOf(QStringLiteral("Hot"))));
}

void TestTtffRun::exitInAStoreWaitInsideTheRun()
{
    QVERIFY(startRun(QStringLiteral("hot=2"), {QStringLiteral("Hot"), 3, 30}));
    QTRY_COMPARE_WITH_TIMEOUT(rig->traced(kStoreBegins), 1, kLongMs);
    QVERIFY(rig->viewer.pressMain(Pages::kExitButton));
    QVERIFY(rig->viewer.waitForEnd(kExitMs));
    QCOMPARE(rig->viewer.exitCode(), 0);
    // The result would have been looked at after the store only.
    QCOMPARE(onlyLog(), QStringList({kBegin, kEnd}));
    QTRY_COMPARE_WITH_TIMEOUT(rig->commands(),
                              QStringList({resetOf(QStringLiteral("Hot")), kStore}), kLongMs);
}

void TestTtffRun::controlPageDuringARun()
{
    const auto shown = [this](const char *label) {
        return rig->viewer.text(Pages::kControl, QString::fromLatin1(label));
    };
    const auto press = [this](const char *button) {
        return rig->viewer.press(Pages::kControl, QString::fromLatin1(button));
    };
    const QRegularExpression utc(QStringLiteral("^6/1/2025  1[89]:\\d\\d:\\d\\d UTC$"));
    QStringList commands = {resetOf(QStringLiteral("Warm"))};
    // Neither the run's own start nor the one that new constellations bring leads to a fix.
    QVERIFY(startRun(QStringLiteral("hot=9000,warm=9000,cold=2"), {QStringLiteral("Warm"), 3, 30}));
    QVERIFY(rig->viewer.showPage(Pages::kControlButton, Pages::kControl));
    QTRY_COMPARE_WITH_TIMEOUT(shown("label_state"), QStringLiteral("Runing..."), kLongMs);
    QCOMPARE(shown("pushButton_start"), QStringLiteral("Stop"));
    QCOMPARE(shown("label_TTFF"), QStringLiteral("TTFF not avaiable"));
    QVERIFY(press("pushButton_ShowTime"));
    QTRY_VERIFY2_WITH_TIMEOUT(utc.match(shown("label_time")).hasMatch(),
                              qPrintable(shown("label_time")), kLongMs);
    const QString time = shown("label_time");
    QTRY_VERIFY_WITH_TIMEOUT(shown("label_time") != time, kLongMs);

    // A reset by hand in the middle of the run; a second before it may be counted as well.
    QVERIFY(press("radioButton_coldReset"));
    QVERIFY(press("pushButton_GpsReset"));
    commands << resetOf(QStringLiteral("Cold"));
    QTRY_COMPARE_WITH_TIMEOUT(rig->commands(), commands, kLongMs);
    QTRY_VERIFY2_WITH_TIMEOUT(
        QStringList({QStringLiteral("TTFF: 2 seconds"), QStringLiteral("TTFF: 3 seconds")})
            .contains(shown("label_TTFF")),
        qPrintable(shown("label_TTFF")), kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(rig->traced(kStoreBegins), 1, kLongMs);

    // Until the store the run does not look at that fix, and new constellations take it away: from
    // here on nothing hurries.
    QVERIFY(press("pushButton_locTechSet"));
    commands << QStringLiteral("$PPLMB,70,3");
    QTRY_COMPARE_WITH_TIMEOUT(rig->commands().mid(0, commands.size()), commands, kLongMs);

    QVERIFY(rig->viewer.showPage(Pages::kTtffButton, Pages::kTtff));
    QCOMPARE(rig->buttonText(), QStringLiteral("Stop"));
    QCOMPARE(rig->shown(), QStringList(QStringLiteral("TTFF Total Loop 3, Testing...")));
    QCOMPARE(onlyLog(), QStringList(kBegin));
    QVERIFY(rig->viewer.pressMain(Pages::kExitButton));
    QVERIFY(rig->viewer.waitForEnd(kExitMs));
    QCOMPARE(rig->viewer.exitCode(), 0);
    QCOMPARE(onlyLog(), QStringList({kBegin, kEnd}));
    commands << kStore;
    QTRY_COMPARE_WITH_TIMEOUT(rig->commands(), commands, kLongMs);
}

void TestTtffRun::severalLoops_data()
{
    QTest::addColumn<int>("seconds");
    QTest::newRow("hot") << 2;
    QTest::newRow("warm") << 3;
    QTest::newRow("cold") << 5;
    QTest::newRow("factory") << 8;
    QTest::newRow("tracking zero") << 3;
}

void TestTtffRun::severalLoops()
{
    QFETCH(int, seconds);
    const tLongRun &run = longRun(QString::fromLatin1(QTest::currentDataTag()));
    const tTtffSetting &setting = run.setting;
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown().constLast(), kDone, kLongMs);
    QCOMPARE(rig->buttonText(), QStringLiteral("Test"));

    const QList<double> announced = rig->announced();
    QCOMPARE(announced.size(), setting.loops);
    QStringList log(kBegin);
    QStringList shown(QStringLiteral("TTFF Total Loop %1, Testing...").arg(setting.loops));
    QStringList commands;
    for (int loop = 1; loop <= setting.loops; ++loop) {
        const int figure = figureOf(announced.at(loop - 1));
        QCOMPARE(figure, seconds);
        log << logLine(setting.type, figure);
        shown << QStringLiteral("Loop: %1 TTFF Result: %2 Seconds").arg(loop).arg(figure);
        commands << resetOf(setting.type);
    }
    commands.insert(1, kStore); // once in a run, and the run waits for it
    QCOMPARE(onlyLog(), log << kEnd);
    QCOMPARE(rig->shown(), shown << kDone);
    QCOMPARE(rig->commands(), commands);
    QCOMPARE(rig->viewer.text(Pages::kControl, QStringLiteral("label_TTFF")),
             QStringLiteral("TTFF: %1 seconds").arg(seconds));
    QCOMPARE(rig->traced(QStringLiteral("E> ")), 0);
    QCOMPARE(rig->traced(QStringLiteral("time out")), 0);
    checkTimes(rig->log(rig->logNames().constFirst()), run);
}

void TestTtffRun::checkTimes(const QStringList &log, const tLongRun &run) const
{
    const QDateTime named = TtffRig::timeInName(rig->logNames().constFirst());
    QVERIFY(named.isValid());
    QVERIFY(named >= run.pressed.addMSecs(-999 - kClockMs)); // the name has whole seconds
    QVERIFY(named <= run.pressed.addMSecs(kBusyMs));
    if (!run.stamped) {
        for (const QString &line : log)
            QVERIFY2(!stampedLine(line).at, qPrintable(line));
        return;
    }

    QTime before = named.time();
    for (int line = 0; line < log.size(); ++line) {
        const std::optional<QTime> at = stampedLine(log.at(line)).at;
        QVERIFY2(at && at->isValid(), qPrintable(log.at(line)));
        const int trackedMs = run.setting.trackingSeconds * 1000;
        int least = trackedMs + 1000; // a result: tracking of the loop before, a second for the fix
        if (line == 0)
            least = 0;
        else if (line == 1)
            least = kStoreDelayMs; // the store's wait goes on inside the wait for the first fix
        else if (line == log.size() - 1)
            least = trackedMs;
        const int passed = passedMs(before, *at);
        QVERIFY2(passed >= least - kClockMs && passed <= least + kBusyMs,
                 qPrintable(QStringLiteral("%1 ms before %2").arg(passed).arg(log.at(line))));
        before = *at;
    }
}

void TestTtffRun::runBegunInsideAStoppedOne()
{
    longRun(QStringLiteral("begun inside a stopped one"));
    const QString reset = resetOf(QStringLiteral("Cold"));
    QTRY_COMPARE_WITH_TIMEOUT(rig->shown().constLast(), kDone, kLongMs);
    QCOMPARE(rig->buttonText(), QStringLiteral("Test"));
    QCOMPARE(rig->commands(), QStringList({reset, reset, kStore, reset}));

    // Both runs' receivers have no fix yet: a second of the older run's may count for the newer.
    const QStringList names = rig->logNames();
    QStringList log = withoutStamps(rig->log(names.constLast()));
    QCOMPARE(log.size(), 4);
    const int first = log.at(1) == logLine(QStringLiteral("Cold"), 6) ? 6 : 5;
    QCOMPARE(log, QStringList({kBegin, logLine(QStringLiteral("Cold"), first),
                               logLine(QStringLiteral("Cold"), 5), kEnd}));
    QCOMPARE(rig->shown(),
             QStringList({QStringLiteral("TTFF Total Loop 2, Testing..."),
                          QStringLiteral("Loop: 1 TTFF Result: %1 Seconds").arg(first),
                          QStringLiteral("Loop: 2 TTFF Result: 5 Seconds"), kDone}));
    QVERIFY(names.size() == 1 || names.size() == 2); // the presses may fall into two seconds
    if (names.size() == 2)
        QCOMPARE(withoutStamps(rig->log(names.constFirst())), QStringList({kBegin, kEnd}));
}

QTEST_GUILESS_MAIN(TestTtffRun)
#include "TestTtffRun.moc"
