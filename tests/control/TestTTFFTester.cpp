// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchStyle.h"
#include "base/SystemHooks.h"
#include "config/ConfigFile.h"
#include "control/ControlView.h"
#include "control/NVMWriter.h"
#include "control/TTFFTester.h"
#include "gnss/GnssInfo.h"
#include "support/Child.h"
#include "support/CommandPipeReader.h"
#include "support/LayoutCheck.h"
#include "support/MessageLog.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QMetaMethod>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTimer>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

constexpr int kLongMs = 60000;
constexpr int kSoonMs = 10000;

/// The fake receiver: called when the tester begins its n-th second of waiting, counted from 1.
std::function<void(int)> onWait;
int waits = 0;
int waitMs = 0;
QList<int> nominalLengths;

int countWait(int nominalMs)
{
    nominalLengths << nominalMs;
    ++waits;
    if (onWait)
        onWait(waits);
    return waitMs;
}

/// Runs `action` as an event inside the wait that is about to begin.
void inThisWait(QObject *context, const std::function<void()> &action)
{
    QTimer::singleShot(0, context, action);
}

} // namespace

class TestTTFFTester : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void startUpState();
    void slotsHaveTheirAgreedOrder();
    void slidersComeIntoLineAtTheFirstChange();
    void withoutNmeaDataTheButtonDoesNothing();
    void pressClearsFirst();
    void loopsZeroSendNoReset();
    void resultLines_data();
    void resultLines();
    void hotFirstLoopTtffTwelve();
    void logLinesOfSpecialValues_data();
    void logLinesOfSpecialValues();
    void trackingZeroGoesOnWithTheNextResetAtOnce();
    void trackingTimeIsWaitedSecondBySecond();
    void everySecondIsMoreThan999Ms();
    void laterSettingsCountForTheNextLoopOrRunOnly();
    void loopWithoutAFixTimesOutAfter301Steps();
    void fixInTheLastStepGivesBothLines();
    void stopDuringTheFixWaitEndsWithinAboutOneSecond_data();
    void stopDuringTheFixWaitEndsWithinAboutOneSecond();
    void stopDuringTrackingEndsAfterThatSecond();
    void stopWithoutNmeaDataDoesNothing();
    void fixThatArrivesInTheStoppedSecondIsStillRecorded();
    void eachRunHasALogOfItsOwn();
    void newRunInsideAStoppedRunsLastSecondIsLeftAlone();
    void leavingEndsTheRunAtOnce_data();
    void leavingEndsTheRunAtOnce();
    void leavingAfterAStopPressCompletesTheLogAtOnce();
    void leavingWithoutARunDoesNothing();
    void newRunAfterLeavingWorks();
    void leavingInsideAnNvmWaitInsideTheRun();
    void leavingARunThatBeganInsideAnNvmWait();
    void quitOfTheApplicationEndsTheRun();
    void unwritableLogsDoNotStopTheTest();
    void fitsTheScreens_data();
    void fitsTheScreens();

private:
    template<typename T>
    T *child(const char *name) const
    {
        return childOf<T>(*page, name);
    }
    QPushButton *button() const { return child<QPushButton>("pushButton_Test"); }
    void press() const { QTest::mouseClick(button(), Qt::LeftButton); }
    QString shown() const { return child<QTextBrowser>("textBrowser")->toPlainText(); }
    void setUpRun(int loops, int trackingSeconds) const
    {
        child<QSpinBox>("spinBox_TestTimes")->setValue(loops);
        child<QSpinBox>("spinBox_TrackTime")->setValue(trackingSeconds);
    }
    QStringList logNames() const
    {
        return QDir(logDirectory.filePath("GNSS")).entryList(QDir::Files, QDir::Name);
    }
    QString logText(const QString &name) const
    {
        QFile file(logDirectory.filePath("GNSS/" + name));
        return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
    }
    /// The text of the one log there is.
    QString logText() const
    {
        const QStringList names = logNames();
        return names.size() == 1 ? logText(names.constFirst()) : names.join(" and ");
    }
    /// Traced resets and NVM stores, without their line ends.
    QStringList commands() const
    {
        QStringList sentences;
        for (const QString &line : trace->lines()) {
            const int at = line.indexOf("$PPLM");
            if (at >= 0)
                sentences << line.mid(at).trimmed();
        }
        return sentences;
    }

    QTemporaryDir logDirectory;
    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<MessageLog> trace;
    std::unique_ptr<CommandPipeReader> reader;
    std::unique_ptr<TTFFTester> page;
    GnssInfo *const model = GnssInfo::instance();
};

void TestTTFFTester::initTestCase()
{
    TouchStyle::apply({800, 480});
    qApp->setStyleSheet("QGroupBox {  border: 1px solid gray; border-radius: 5px; }");
    connect(ControlView::instance(), &ControlView::clear, model, &GnssInfo::clearGnssInfo);
}

void TestTTFFTester::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(root->path()).mkdir("tmp"));
    qputenv("TAVRIN_ROOT", QFile::encodeName(root->path()));
    reader = std::make_unique<CommandPipeReader>(QFile::encodeName(root->filePath("tmp/agiout")));
    ConfigFile::instance()->setDirectory(QFile::encodeName(logDirectory.path()).constData());
    ConfigFile::instance()->setDisplayTime(false);
    for (const QString &name : logNames())
        QVERIFY(QFile::remove(logDirectory.filePath("GNSS/" + name)));
    model->clearGnssInfo();

    waits = 0;
    waitMs = 0;
    onWait = nullptr;
    nominalLengths.clear();
    SystemHooks::setWaitLength(&countWait);
    trace = std::make_unique<MessageLog>();
    page = std::make_unique<TTFFTester>();
    page->resize(617, 458);
    page->show();
    page->setNmeaOutputStatus(true);
}

void TestTTFFTester::cleanup()
{
    page.reset();
    reader.reset();
    SystemHooks::setWaitLength(nullptr);
    onWait = nullptr;
    QStringList warnings = trace->warnings();
    warnings.removeAll("This plugin does not support propagateSizeHints()");
    trace.reset();
    QCOMPARE(warnings, QStringList());
}

void TestTTFFTester::startUpState()
{
    QCOMPARE(child<QSpinBox>("spinBox_TestTimes")->value(), 10);
    QCOMPARE(child<QSpinBox>("spinBox_TestTimes")->maximum(), 4000);
    QCOMPARE(child<QSpinBox>("spinBox_TrackTime")->value(), 20);
    QCOMPARE(child<QSpinBox>("spinBox_TrackTime")->maximum(), 99);
    for (const char *name : {"horizontalSlider_TestTimes", "horizontalSlider_TrackTime"}) {
        QCOMPARE(child<QSlider>(name)->value(), 0);
        QCOMPARE(child<QSlider>(name)->minimum(), 0);
        QCOMPARE(child<QSlider>(name)->orientation(), Qt::Horizontal);
    }
    QCOMPARE(child<QSlider>("horizontalSlider_TestTimes")->maximum(), 4000);
    QCOMPARE(child<QSlider>("horizontalSlider_TrackTime")->maximum(), 99);
    for (const char *type : {"Hot", "Warm", "Cold", "Factory"}) {
        const auto *const radio = page->findChild<QRadioButton *>(QString("radioButton_") + type);
        QVERIFY(radio);
        QCOMPARE(radio->text(), QString(type));
        QCOMPARE(radio->isChecked(), QString(type) == "Cold");
    }
    QCOMPARE(child<QLabel>("label")->text(), QString("Test Loops / times"));
    QCOMPARE(child<QLabel>("label_4")->text(), QString("Tracking Time / seconds"));
    QCOMPARE(child<QLabel>("label_2")->text(), QString());
    QCOMPARE(button()->text(), QString("Test"));
    QCOMPARE(shown(), QString());
}

void TestTTFFTester::slotsHaveTheirAgreedOrder()
{
    QByteArrayList names;
    const QMetaObject &meta = TTFFTester::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names << meta.method(i).methodSignature();
    QCOMPARE(names, QByteArrayList({"setTestTimes(int)", "setTrackingTime(int)",
                                    "setNmeaOutputStatus(bool)", "on_pushButton_Test_clicked()",
                                    "testLoop(int)", "saveTtffResult(int,int)"}));
}

void TestTTFFTester::slidersComeIntoLineAtTheFirstChange()
{
    child<QSpinBox>("spinBox_TestTimes")->setValue(11);
    QCOMPARE(child<QSlider>("horizontalSlider_TestTimes")->value(), 11);
    child<QSlider>("horizontalSlider_TestTimes")->setValue(4000);
    QCOMPARE(child<QSpinBox>("spinBox_TestTimes")->value(), 4000);
    child<QSlider>("horizontalSlider_TrackTime")->setValue(99);
    QCOMPARE(child<QSpinBox>("spinBox_TrackTime")->value(), 99);
    child<QSpinBox>("spinBox_TrackTime")->setValue(0);
    QCOMPARE(child<QSlider>("horizontalSlider_TrackTime")->value(), 0);
}

void TestTTFFTester::withoutNmeaDataTheButtonDoesNothing()
{
    page->setNmeaOutputStatus(false);
    QSignalSpy cleared(ControlView::instance(), &ControlView::clear);
    press();
    QCOMPARE(cleared.size(), 0);
    QCOMPARE(shown(), QString());
    QCOMPARE(button()->text(), QString("Test"));
    QCOMPARE(logNames(), QStringList());
    QCOMPARE(commands(), QStringList());
}

void TestTTFFTester::pressClearsFirst()
{
    setUpRun(0, 0);
    QStringList events;
    QObject context;
    connect(ControlView::instance(), &ControlView::clear, &context,
            [this, &events] { events << "clear, showing '" + shown() + "'"; });
    connect(model, &GnssInfo::ttffUpdate, &context, [&events] { events << "ttffUpdate"; });
    press();
    QCOMPARE(events, QStringList({"clear, showing ''", "ttffUpdate"}));
}

void TestTTFFTester::loopsZeroSendNoReset()
{
    setUpRun(0, 20);
    press();
    QCOMPARE(shown(), QString("TTFF Total Loop 0, Testing...\nTTFF Test Done."));
    QCOMPARE(logText(), QString("Test Begin\nTest End\n"));
    QCOMPARE(commands(), QStringList());
    QCOMPARE(waits, 0);
    QCOMPARE(button()->text(), QString("Test"));
    QCOMPARE(reader->writerCloses(), 0);
}

void TestTTFFTester::resultLines_data()
{
    QTest::addColumn<QString>("radio");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<QString>("line");
    QTest::newRow("hot") << "radioButton_Hot"
                         << "$PPLMG,1"
                         << "Test Type: Hot,  TTFF Result: %1\n";
    QTest::newRow("warm") << "radioButton_Warm"
                          << "$PPLMG,2"
                          << "Test Type: Warm, TTFF Result: %1\n";
    QTest::newRow("cold") << "radioButton_Cold"
                          << "$PPLMG,3"
                          << "Test Type: Cold, TTFF Result: %1\n";
    QTest::newRow("factory") << "radioButton_Factory"
                             << "$PPLMG,7"
                             << "Test Type: Factory, TTFF Result: %1\n";
    QTest::newRow("none checked") << ""
                                  << ""
                                  << "\n";
}

void TestTTFFTester::resultLines()
{
    QFETCH(QString, radio);
    QFETCH(QString, sentence);
    QFETCH(QString, line);
    if (radio.isEmpty()) {
        child<QRadioButton>("radioButton_Cold")->setAutoExclusive(false);
        child<QRadioButton>("radioButton_Cold")->setChecked(false);
    } else {
        page->findChild<QRadioButton *>(radio)->click();
    }
    setUpRun(3, 1);
    QString running;
    onWait = [this, &running](int wait) {
        if (wait % 2 == 0) // tracking
            return;
        running = button()->text();
        model->setTtff(static_cast<uint>(30 + wait));
    };
    press();
    QCOMPARE(running, QString("Stop"));
    QCOMPARE(shown(), QString("TTFF Total Loop 3, Testing...\n"
                              "Loop: 1 TTFF Result: 31 Seconds\n"
                              "Loop: 2 TTFF Result: 33 Seconds\n"
                              "Loop: 3 TTFF Result: 35 Seconds\n"
                              "TTFF Test Done."));
    const auto filled = [&line](int ttff) {
        return line.contains("%1") ? line.arg(ttff) : line;
    };
    QCOMPARE(logText(), "Test Begin\n" + filled(31) + filled(33) + filled(35) + "Test End\n");
    QCOMPARE(waits, 6);
    QTRY_COMPARE(QString(reader->sentences().join()),
                 (sentence.isEmpty() ? QString() : sentence + "\r\n").repeated(3));
    QCOMPARE(reader->writerCloses(), 3);
    QCOMPARE(button()->text(), QString("Test"));
}

void TestTTFFTester::hotFirstLoopTtffTwelve()
{
    child<QRadioButton>("radioButton_Hot")->click();
    setUpRun(1, 0);
    onWait = [this](int) {
        model->setTtff(12);
    };
    press();
    QVERIFY(shown().split('\n').contains("Loop: 1 TTFF Result: 12 Seconds"));
    QVERIFY(logText().split('\n').contains("Test Type: Hot,  TTFF Result: 12"));
}

void TestTTFFTester::logLinesOfSpecialValues_data()
{
    QTest::addColumn<uint>("ttff");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("text");
    QTest::newRow("a real 0 reads as a begin") << 0U << "Test Begin\n"
                                               << "0";
    QTest::newRow("all ones read as an end") << 4294967295U << "Test End\n"
                                             << "4294967295";
    QTest::newRow("the log is signed, the screen is not")
        << 4294967294U << "Test Type: Cold, TTFF Result: -2\n"
        << "4294967294";
}

void TestTTFFTester::logLinesOfSpecialValues()
{
    QFETCH(uint, ttff);
    QFETCH(QString, line);
    QFETCH(QString, text);
    setUpRun(1, 0);
    onWait = [this, ttff](int) {
        model->setTtff(ttff);
    };
    press();
    QCOMPARE(logText(), "Test Begin\n" + line + "Test End\n");
    QVERIFY(shown().contains("Loop: 1 TTFF Result: " + text + " Seconds"));
}

void TestTTFFTester::trackingZeroGoesOnWithTheNextResetAtOnce()
{
    setUpRun(4, 0);
    onWait = [this](int) {
        model->setTtff(5);
    };
    press();
    QCOMPARE(waits, 4); // one second of waiting for each fix, none for tracking
    QCOMPARE(commands().size(), 4);
}

void TestTTFFTester::trackingTimeIsWaitedSecondBySecond()
{
    setUpRun(2, 7);
    onWait = [this](int) {
        model->setTtff(5);
    };
    press();
    QCOMPARE(waits, 2 * (1 + 7));
}

void TestTTFFTester::everySecondIsMoreThan999Ms()
{
    setUpRun(1, 1);
    onWait = [this](int) {
        model->setTtff(5);
    };
    SystemHooks::setWaitLength([](int nominalMs) {
        countWait(nominalMs);
        return nominalMs;
    });
    QElapsedTimer clock;
    clock.start();
    press();
    QCOMPARE(nominalLengths, QList<int>({1000, 1000}));
    QVERIFY(clock.elapsed() >= 2000);
}

void TestTTFFTester::laterSettingsCountForTheNextLoopOrRunOnly()
{
    setUpRun(2, 3);
    onWait = [this](int wait) {
        model->setTtff(5);
        if (wait == 1)
            setUpRun(9, 1);
    };
    press();
    QCOMPARE(waits, (1 + 3) + (1 + 1));
    QCOMPARE(commands().size(), 2);
}

void TestTTFFTester::loopWithoutAFixTimesOutAfter301Steps()
{
    setUpRun(2, 1);
    onWait = [this](int wait) {
        if (wait == 303) // the second loop's first
            model->setTtff(8);
    };
    press();
    QCOMPARE(waits, 301 + 1 + 1 + 1);
    QCOMPARE(trace->lines().filter("time out"),
             QStringList("d> TTFF test: Loop 1 5 mins time out"));
    QCOMPARE(shown(), QString("TTFF Total Loop 2, Testing...\nLoop: 2 TTFF Result: 8 Seconds\n"
                              "TTFF Test Done."));
    QCOMPARE(logText(), QString("Test Begin\nTest Type: Cold, TTFF Result: 8\nTest End\n"));
}

void TestTTFFTester::fixInTheLastStepGivesBothLines()
{
    setUpRun(1, 0);
    onWait = [this](int wait) {
        if (wait == 301)
            model->setTtff(301);
    };
    press();
    QCOMPARE(trace->lines().filter("time out").size(), 1);
    QCOMPARE(logText(), QString("Test Begin\nTest Type: Cold, TTFF Result: 301\nTest End\n"));
}

void TestTTFFTester::stopDuringTheFixWaitEndsWithinAboutOneSecond_data()
{
    QTest::addColumn<int>("tracking");
    QTest::addColumn<int>("seconds");
    QTest::newRow("tracking 0: one second") << 0 << 1;
    QTest::newRow("tracking 20: two seconds") << 20 << 2;
}

void TestTTFFTester::stopDuringTheFixWaitEndsWithinAboutOneSecond()
{
    QFETCH(int, tracking);
    QFETCH(int, seconds);
    setUpRun(10, tracking);
    waitMs = 50;
    QString stopping;
    QString label;
    onWait = [this, &stopping, &label](int wait) {
        if (wait != 3)
            return;
        inThisWait(page.get(), [this, &stopping, &label] {
            press();
            stopping = shown();
            label = button()->text();
        });
    };
    press();
    QCOMPARE(waits, 2 + seconds);
    QCOMPARE(stopping, QString("TTFF Testing Stopping"));
    QCOMPARE(label, QString("Test"));
    QCOMPARE(shown(), QString("TTFF Testing Stopping\nTTFF Test Done."));
    QCOMPARE(logText(), QString("Test Begin\nTest End\n"));
    QCOMPARE(commands().size(), 1);
    QVERIFY(trace->lines().filter("time out").isEmpty());
}

void TestTTFFTester::stopDuringTrackingEndsAfterThatSecond()
{
    setUpRun(10, 20);
    waitMs = 50;
    onWait = [this](int wait) {
        if (wait == 1)
            model->setTtff(4);
        if (wait == 5)
            inThisWait(page.get(), [this] { press(); });
    };
    press();
    QCOMPARE(waits, 5);
    QCOMPARE(shown(), QString("TTFF Testing Stopping\nTTFF Test Done."));
    QCOMPARE(logText(), QString("Test Begin\nTest Type: Cold, TTFF Result: 4\nTest End\n"));
}

void TestTTFFTester::stopWithoutNmeaDataDoesNothing()
{
    setUpRun(1, 0);
    waitMs = 50;
    QString label;
    onWait = [this, &label](int wait) {
        if (wait == 2)
            model->setTtff(4);
        if (wait == 1)
            inThisWait(page.get(), [this, &label] {
                page->setNmeaOutputStatus(false);
                press();
                label = button()->text();
            });
    };
    press();
    QCOMPARE(label, QString("Stop"));
    QCOMPARE(logText(), QString("Test Begin\nTest Type: Cold, TTFF Result: 4\nTest End\n"));
}

void TestTTFFTester::fixThatArrivesInTheStoppedSecondIsStillRecorded()
{
    setUpRun(5, 0);
    waitMs = 50;
    onWait = [this](int wait) {
        if (wait == 1)
            inThisWait(page.get(), [this] {
                press();
                model->setTtff(4);
            });
    };
    press();
    QCOMPARE(shown(), QString("TTFF Testing Stopping\nLoop: 1 TTFF Result: 4 Seconds\n"
                              "TTFF Test Done."));
    QCOMPARE(logText(), QString("Test Begin\nTest Type: Cold, TTFF Result: 4\nTest End\n"));
    QCOMPARE(commands().size(), 1);
}

void TestTTFFTester::eachRunHasALogOfItsOwn()
{
    setUpRun(1, 0);
    onWait = [this](int wait) {
        model->setTtff(static_cast<uint>(wait));
    };
    press();
    const QTime first = QTime::currentTime();
    QTRY_VERIFY(QTime::currentTime().second() != first.second());
    press();
    QStringList texts;
    for (const QString &name : logNames())
        texts << logText(name);
    texts.sort();
    QCOMPARE(texts, QStringList({"Test Begin\nTest Type: Cold, TTFF Result: 1\nTest End\n",
                                 "Test Begin\nTest Type: Cold, TTFF Result: 2\nTest End\n"}));
}

void TestTTFFTester::newRunInsideAStoppedRunsLastSecondIsLeftAlone()
{
    // The older run cold, the newer one hot; a second of real time between their logs' names.
    setUpRun(3, 5);
    waitMs = kLongMs;
    QString olderLog;
    QString olderText;
    QString duringNewer;
    onWait = [&](int wait) {
        if (wait == 2) { // the newer run's first
            duringNewer = shown() + "|" + button()->text();
            model->setTtff(7);
        }
        if (wait != 1)
            return;
        olderLog = logNames().constFirst();
        inThisWait(page.get(), [&] {
            press();
            const QTime stopped = QTime::currentTime();
            QTRY_VERIFY(QTime::currentTime().second() != stopped.second());
            child<QRadioButton>("radioButton_Hot")->click();
            setUpRun(1, 1);
            waitMs = 1;
            press();
            olderText = logText(olderLog);
        });
    };
    QElapsedTimer clock;
    clock.start();
    press();

    QVERIFY(clock.elapsed() < kSoonMs);
    QCOMPARE(duringNewer, QString("TTFF Total Loop 1, Testing...|Stop"));
    QCOMPARE(waits, 1 + 2); // the older run waits no further second
    QCOMPARE(shown(), QString("TTFF Total Loop 1, Testing...\nLoop: 1 TTFF Result: 7 Seconds\n"
                              "TTFF Test Done."));
    QCOMPARE(commands(), QStringList({"$PPLMG,3", "$PPLMG,1"}));
    QStringList names = logNames();
    QCOMPARE(names.size(), 2);
    QCOMPARE(olderText, QString("Test Begin\nTest End\n"));
    QCOMPARE(logText(olderLog), olderText);
    names.removeAll(olderLog);
    QCOMPARE(logText(names.constFirst()),
             QString("Test Begin\nTest Type: Hot,  TTFF Result: 7\nTest End\n"));
    QCOMPARE(button()->text(), QString("Test"));
}

void TestTTFFTester::leavingEndsTheRunAtOnce_data()
{
    QTest::addColumn<int>("atWait");
    QTest::addColumn<bool>("nmeaFlows");
    QTest::addColumn<QString>("results");
    QTest::newRow("in the fix wait") << 1 << true << "";
    QTest::newRow("in tracking") << 2 << true << "Test Type: Cold, TTFF Result: 6\n";
    QTest::newRow("without NMEA data") << 1 << false << "";
}

void TestTTFFTester::leavingEndsTheRunAtOnce()
{
    QFETCH(int, atWait);
    QFETCH(bool, nmeaFlows);
    QFETCH(QString, results);
    setUpRun(10, 20);
    QString logAtReturn;
    onWait = [&](int wait) {
        if (wait == 1 && atWait == 2)
            model->setTtff(6);
        if (wait != atWait)
            return;
        waitMs = kLongMs;
        page->setNmeaOutputStatus(nmeaFlows);
        inThisWait(page.get(), [&] {
            page->stopTest();
            logAtReturn = logText();
        });
    };
    QSignalSpy cleared(ControlView::instance(), &ControlView::clear);
    QElapsedTimer clock;
    clock.start();
    press();
    QVERIFY(clock.elapsed() < kSoonMs);
    QCOMPARE(waits, atWait);
    QCOMPARE(logAtReturn, "Test Begin\n" + results + "Test End\n");
    QCOMPARE(logText(), logAtReturn);
    QCOMPARE(shown(), QString("TTFF Testing Stopping\nTTFF Test Done."));
    QCOMPARE(button()->text(), QString("Test"));
    QCOMPARE(commands().size(), 1);
    QCOMPARE(cleared.size(), 2); // the start's and the stop's
}

void TestTTFFTester::leavingAfterAStopPressCompletesTheLogAtOnce()
{
    setUpRun(10, 20);
    waitMs = kLongMs;
    onWait = [this](int) {
        inThisWait(page.get(), [this] {
            press();
            page->stopTest();
        });
    };
    QElapsedTimer clock;
    clock.start();
    press();
    QVERIFY(clock.elapsed() < kSoonMs);
    QCOMPARE(waits, 1);
    QCOMPARE(logText(), QString("Test Begin\nTest End\n"));
    QCOMPARE(shown(), QString("TTFF Testing Stopping\nTTFF Test Done."));
}

void TestTTFFTester::leavingWithoutARunDoesNothing()
{
    QSignalSpy cleared(ControlView::instance(), &ControlView::clear);
    page->stopTest();
    QCOMPARE(cleared.size(), 0);
    QCOMPARE(shown(), QString());
    QCOMPARE(logNames(), QStringList());
}

void TestTTFFTester::newRunAfterLeavingWorks()
{
    setUpRun(1, 0);
    waitMs = kLongMs;
    onWait = [this](int wait) {
        if (wait == 1)
            inThisWait(page.get(), [this] { page->stopTest(); });
        else
            model->setTtff(9);
    };
    press();
    waitMs = 1;
    press();
    QCOMPARE(shown(), QString("TTFF Total Loop 1, Testing...\nLoop: 1 TTFF Result: 9 Seconds\n"
                              "TTFF Test Done."));
}

void TestTTFFTester::leavingInsideAnNvmWaitInsideTheRun()
{
    NVMWriter nvmWriter;
    setUpRun(10, 20);
    waitMs = kLongMs;
    onWait = [&](int wait) {
        if (wait == 1)
            inThisWait(page.get(), [this] { emit model->nvmUpdate(); });
        if (wait == 2) // the NVM writer's, inside the tester's
            inThisWait(page.get(), [&] {
                page->stopTest();
                nvmWriter.requestStop();
                trace->note("$PPLM handler returns");
            });
    };
    QElapsedTimer clock;
    clock.start();
    press();
    QVERIFY(clock.elapsed() < kSoonMs);
    QCOMPARE(commands(), QStringList({"$PPLMG,3", "$PPLM handler returns", "$PPLMT,0"}));
    QCOMPARE(nominalLengths, QList<int>({1000, 36000}));
    QCOMPARE(logText(), QString("Test Begin\nTest End\n"));
    QTRY_COMPARE(reader->sentences().join(), QByteArray("$PPLMG,3\r\n$PPLMT,0\r\n"));
}

void TestTTFFTester::leavingARunThatBeganInsideAnNvmWait()
{
    NVMWriter nvmWriter;
    setUpRun(10, 20);
    waitMs = kLongMs;
    onWait = [&](int wait) {
        if (wait == 1) // the NVM writer's
            inThisWait(page.get(), [this] { press(); });
        if (wait == 2)
            inThisWait(page.get(), [&] {
                nvmWriter.requestStop();
                page->stopTest();
            });
    };
    QElapsedTimer clock;
    clock.start();
    emit model->nvmUpdate();
    QVERIFY(clock.elapsed() < kSoonMs);
    QCOMPARE(commands(), QStringList({"$PPLMG,3", "$PPLMT,0"}));
    QCOMPARE(logText(), QString("Test Begin\nTest End\n"));
}

void TestTTFFTester::quitOfTheApplicationEndsTheRun()
{
    setUpRun(4000, 20);
    onWait = [this](int wait) {
        if (wait == 1) {
            model->setTtff(3);
            return;
        }
        waitMs = kLongMs;
        inThisWait(page.get(), [] { QCoreApplication::quit(); });
    };
    QTimer::singleShot(0, page.get(), [this] { press(); });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(clock.elapsed() < kSoonMs);
    QCOMPARE(commands().size(), 1);
    QCOMPARE(logText(), QString("Test Begin\nTest Type: Cold, TTFF Result: 3\nTest End\n"));
}

void TestTTFFTester::unwritableLogsDoNotStopTheTest()
{
    ConfigFile::instance()->setDirectory(QFile::encodeName(root->filePath("absent")).constData());
    setUpRun(2, 0);
    onWait = [this](int) {
        model->setTtff(5);
    };
    press();
    QCOMPARE(commands().size(), 2);
    QCOMPARE(logNames(), QStringList());
    QVERIFY(shown().endsWith("TTFF Test Done."));
}

void TestTTFFTester::fitsTheScreens_data()
{
    addPageRows();
}

void TestTTFFTester::fitsTheScreens()
{
    QFETCH(QSize, size);
    QFETCH(bool, running);
    page->resize(size);
    setUpRun(running ? 100 : 0, 0);
    QStringList faults;
    onWait = [&](int) {
        model->setTtff(4294967295U);
        QCoreApplication::processEvents();
        faults += layoutFaults(*page);
    };
    if (running)
        press();
    QCoreApplication::processEvents();
    QCOMPARE(page->size(), size);
    QCOMPARE(faults + layoutFaults(*page), QStringList());
}

QTEST_MAIN(TestTTFFTester)
#include "TestTTFFTester.moc"
