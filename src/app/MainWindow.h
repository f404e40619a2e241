// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMainWindow>
#include <QSettings>

#include <memory>

class ConfigView;
class ControlView;
class GnssInfo;
class InputEventThread;
class LogFiles;
class MsgThread;
class NVMWriter;
class QTimer;
class ReadNMEAThread;
class SVView;
class TTFFTester;

namespace Ui {
class MainWindow;
}

/// The frameless full-screen window: owns every page and worker thread, wires them together,
/// switches pages and refreshes them once a second. User-interface thread.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Reads the settings, builds every page, shows the satellite page and starts the threads.
    explicit MainWindow(QWidget *parent = nullptr);
    /// Stops the threads and waits for them, together at most 1.5 s.
    ~MainWindow() override;

    /// The program's one window, null before it was given to setInstance().
    static MainWindow *instance();
    /// Called once, by main().
    static void setInstance(MainWindow *window);

    /// True once the Exit button was pressed.
    bool isExitRequested() const { return exitRequested; }

    /// Shows `page` in the page area instead of the one that is there.
    void setCurrentView(QWidget *page);

signals:
    void settingChanged(); ///< never emitted
    void appPaused();      ///< the window left full screen

public slots:
    /// Nothing is stored for the window: neither reads anything nor writes anything.
    void readSettings();
    void writeSettings();
    /// Starts the one-second refresh of the pages; nothing happens when it runs.
    void enableUpdate();
    /// Stops the refresh; nothing happens when it does not run.
    void disableUpdate();
    /// Leaves full screen for a maximised window and reports it, once until the next show().
    void minimize();
    /// Returns to full screen, whatever the window was. Hides QWidget::show() on purpose.
    void show();

protected:
    /// Whichever way the window is closed, a running test and a due NVM store are brought to their
    /// end, as the program ends with the window.
    void closeEvent(QCloseEvent *event) override;

private slots:
    void onUIUpdateTimer();
    void on_pushButton_control_clicked();
    void on_pushButton_map_clicked();
    void on_pushButton_config_clicked();
    void on_pushButton_svState_clicked();
    void on_pushButton_ttff_clicked();
    void on_pushButton_exit_clicked();
    void on_pushButton_minimize_clicked();
    void on_pushButton_testMode_clicked();

private:
    void createPages();
    void connectWorkers();
    void disconnectWorkers();
    void stopThreads();
    void giveBackControlView();

    bool exitRequested = false;
    std::unique_ptr<Ui::MainWindow> ui;
    GnssInfo *gnssInfo = nullptr;
    ReadNMEAThread *readThread = nullptr;
    MsgThread *msgThread = nullptr;
    bool minimized = false; ///< between minimize() and the next show()
    InputEventThread *inputThread = nullptr;
    QTimer *uiTimer = nullptr;
    bool updateEnabled = false;
    QSettings settings; ///< neither read nor written
    QWidget *currentView = nullptr;
    [[maybe_unused]] LogFiles *logFiles = nullptr;
    TTFFTester *ttffTester = nullptr;
    ControlView *controlView = nullptr;
    ConfigView *configView = nullptr;
    SVView *svView = nullptr;
    NVMWriter *nvmWriter = nullptr;
};
