// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <memory>

class ControlView;
class GnssInfo;
class LogFiles;

namespace Ui {
class TTFFTester;
} // namespace Ui

/// The page that measures the time to first fix over and over: reset the receiver, wait for the
/// fix, record it on screen and in a log file of the run's own, track for a while, start over.
/// User-interface thread.
///
/// A run lives inside the click handler of its Test button and waits there with the events going
/// on, so that another click, of the same button too, is handled inside its wait.
class TTFFTester : public QWidget
{
    Q_OBJECT

public:
    explicit TTFFTester(QWidget *parent = nullptr);
    ~TTFFTester() override;

    /// Ends a running test as a press of Stop does, whether or not NMEA data flows, and completes
    /// its log before returning; the waiting loop then leaves without another word. For the way
    /// out of the program. Does nothing when no test runs.
    void stopTest();

public slots:
    /// Number of loops of the next run.
    void setTestTimes(int loop);
    /// Seconds of tracking after each loop, taken over by the next loop.
    void setTrackingTime(int time);
    /// Whether NMEA data is being read; without it the Test button does nothing.
    void setNmeaOutputStatus(bool status);

private slots:
    void on_pushButton_Test_clicked();
    /// Runs a whole test; `testType` is a ControlView::ResetType.
    void testLoop(int testType);
    /// Writes one line into the log: "Test Begin" for a `time` of 0, "Test End" for -1, otherwise
    /// a result of `time` seconds.
    void saveTtffResult(int testType, int time);

private:
    void connectSettings();
    int selectedTestType() const;
    void showStopping();
    int beginRun();
    void endRun(int run);
    bool isEnded(int run) const;
    void waitOneSecond(int run);
    void waitForFix(int run, int loop);
    void reportFix(int run, int loop, int testType);
    void track(int run, int seconds);

    std::unique_ptr<Ui::TTFFTester> ui;
    GnssInfo *gnssInfo = nullptr;       ///< the process-wide model, not owned
    ControlView *controlView = nullptr; ///< sends the resets, not owned
    LogFiles *logFiles = nullptr;       ///< not owned
    bool nmeaOutputStatus = false;      ///< see setNmeaOutputStatus()
    qint32 testing = 0;                 ///< 1 while a test runs and was not stopped
    qint32 testTimes = 10;              ///< loops
    qint32 trackingTime = 20;           ///< seconds
    int lastRun = 0;                    ///< number of the run begun last
    int openRun = 0;                    ///< the run whose log lacks its end, 0 when there is none
};
