// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "control/TTFFTester.h"

#include "config/DebugOutput.h"
#include "config/LogFiles.h"
#include "control/ControlView.h"
#include "control/EventWait.h"
#include "gnss/GnssInfo.h"
#include "ui_TTFFTester.h"

namespace {

/// Values of the time in saveTtffResult() that stand for something else.
constexpr int kTestBegin = 0;
constexpr int kTestEnd = -1;

/// One step of waiting: more than 999 ms.
constexpr int kStepMs = 1000;
/// Steps without a fix after which a loop is given up: five minutes, and the one that shows it.
constexpr int kFixSteps = 301;

QString resultPattern(int testType)
{
    switch (testType) {
    case ControlView::kHot: // two blanks, unlike the others
        return QStringLiteral("Test Type: Hot,  TTFF Result: %1");
    case ControlView::kWarm:
        return QStringLiteral("Test Type: Warm, TTFF Result: %1");
    case ControlView::kCold:
        return QStringLiteral("Test Type: Cold, TTFF Result: %1");
    case ControlView::kFactory:
        return QStringLiteral("Test Type: Factory, TTFF Result: %1");
    default:
        return {};
    }
}

QString logLine(int testType, int time)
{
    if (time == kTestBegin)
        return QStringLiteral("Test Begin");
    if (time == kTestEnd)
        return QStringLiteral("Test End");
    const QString pattern = resultPattern(testType);
    return pattern.isEmpty() ? pattern : pattern.arg(time);
}

} // namespace

TTFFTester::TTFFTester(QWidget *parent)
    : QWidget(parent)
    , ui(std::make_unique<Ui::TTFFTester>())
    , gnssInfo(GnssInfo::instance())
    , controlView(ControlView::instance())
    , logFiles(LogFiles::instance())
{
    ui->setupUi(this);
    connectSettings();
    ui->radioButton_Cold->setChecked(true);
}

TTFFTester::~TTFFTester() = default;

void TTFFTester::stopTest()
{
    if (openRun == 0)
        return;
    if (testing != 0) {
        emit controlView->clear();
        emit gnssInfo->ttffUpdate();
        showStopping();
    }
    endRun(openRun);
}

void TTFFTester::setTestTimes(int loop)
{
    testTimes = loop;
}

void TTFFTester::setTrackingTime(int time)
{
    trackingTime = time;
}

void TTFFTester::setNmeaOutputStatus(bool status)
{
    nmeaOutputStatus = status;
}

void TTFFTester::on_pushButton_Test_clicked()
{
    if (!nmeaOutputStatus)
        return;
    emit controlView->clear();
    emit gnssInfo->ttffUpdate();
    if (testing != 0) {
        showStopping();
        return;
    }

    // A stopped run may still be waiting for its second to pass, further out on this stack. Its
    // log gets its end now, while it is the one that is written to.
    endRun(openRun);
    testing = 1;
    ui->pushButton_Test->setText(tr("Stop"));
    ui->textBrowser->setPlainText(tr("TTFF Total Loop %1, Testing...").arg(testTimes));
    testLoop(selectedTestType());
}

void TTFFTester::testLoop(int testType)
{
    const int loops = testTimes;
    const int run = beginRun();
    for (int loop = 0; loop != loops && !isEnded(run);) {
        ++loop;
        const int trackingSeconds = trackingTime;
        controlView->gnss_reset(testType);
        gnssInfo->clearTtff();
        waitForFix(run, loop);
        reportFix(run, loop, testType);
        track(run, trackingSeconds);
        if (testing == 0)
            break;
    }
    endRun(run);
}

void TTFFTester::saveTtffResult(int testType, int time)
{
    const QByteArray line = logLine(testType, time).toLatin1();
    logFiles->prepareDirectory();
    logFiles->writeTtff(line.constData());
}

void TTFFTester::connectSettings()
{
    connect(ui->horizontalSlider_TestTimes, &QSlider::valueChanged, ui->spinBox_TestTimes,
            &QSpinBox::setValue);
    connect(ui->spinBox_TestTimes, qOverload<int>(&QSpinBox::valueChanged),
            ui->horizontalSlider_TestTimes, &QSlider::setValue);
    connect(ui->horizontalSlider_TrackTime, &QSlider::valueChanged, ui->spinBox_TrackTime,
            &QSpinBox::setValue);
    connect(ui->spinBox_TrackTime, qOverload<int>(&QSpinBox::valueChanged),
            ui->horizontalSlider_TrackTime, &QSlider::setValue);
    connect(ui->spinBox_TestTimes, qOverload<int>(&QSpinBox::valueChanged), this,
            &TTFFTester::setTestTimes);
    connect(ui->spinBox_TrackTime, qOverload<int>(&QSpinBox::valueChanged), this,
            &TTFFTester::setTrackingTime);
}

int TTFFTester::selectedTestType() const
{
    if (ui->radioButton_Hot->isChecked())
        return ControlView::kHot;
    if (ui->radioButton_Warm->isChecked())
        return ControlView::kWarm;
    if (ui->radioButton_Cold->isChecked())
        return ControlView::kCold;
    return ui->radioButton_Factory->isChecked() ? ControlView::kFactory : ControlView::kNoReset;
}

void TTFFTester::showStopping()
{
    testing = 0;
    ui->pushButton_Test->setText(tr("Test"));
    ui->textBrowser->setPlainText(tr("TTFF Testing Stopping"));
}

int TTFFTester::beginRun()
{
    openRun = ++lastRun;
    logFiles->prepareDirectory();
    logFiles->openTtffLog();
    saveTtffResult(ControlView::kNoReset, kTestBegin);
    return openRun;
}

/// Completes the run on screen and in its log, once: when it was ended from elsewhere the screen
/// and the open log belong to a newer run, or to nobody.
void TTFFTester::endRun(int run)
{
    if (run == 0 || isEnded(run))
        return;
    ui->textBrowser->append(tr("TTFF Test Done."));
    saveTtffResult(ControlView::kNoReset, kTestEnd);
    openRun = 0;
    testing = 0;
    ui->pushButton_Test->setText(tr("Test"));
}

bool TTFFTester::isEnded(int run) const
{
    return openRun != run;
}

void TTFFTester::waitOneSecond(int run)
{
    const bool goOn = waitProcessingEvents(kStepMs, [this, run] { return isEnded(run); });
    if (!goOn && !isEnded(run))
        stopTest();
}

void TTFFTester::waitForFix(int run, int loop)
{
    for (int step = 0; step < kFixSteps; ++step) {
        if (gnssInfo->isTtffSet())
            return;
        waitOneSecond(run);
        if (testing == 0 || isEnded(run))
            return;
    }
    debugPrint(1, QStringLiteral("TTFF test"), QStringLiteral("Loop %1 5 mins time out").arg(loop));
}

void TTFFTester::reportFix(int run, int loop, int testType)
{
    if (isEnded(run) || !gnssInfo->isTtffSet())
        return;
    const uint ttff = gnssInfo->getTtff();
    ui->textBrowser->append(tr("Loop: %1 TTFF Result: %2 Seconds").arg(loop).arg(ttff));
    saveTtffResult(testType, static_cast<int>(ttff));
}

void TTFFTester::track(int run, int seconds)
{
    for (int second = 0; second < seconds && !isEnded(run); ++second) {
        waitOneSecond(run);
        if (testing == 0)
            return;
    }
}
