// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/MainWindow.h"

#include "base/SystemHooks.h"
#include "config/ConfigFile.h"
#include "config/ConfigView.h"
#include "config/DebugOutput.h"
#include "config/LogFiles.h"
#include "config/LogView.h"
#include "control/CommandChannel.h"
#include "control/ControlView.h"
#include "control/NVMWriter.h"
#include "control/TTFFTester.h"
#include "device/InputEventThread.h"
#include "device/MsgThread.h"
#include "gnss/GnssInfo.h"
#include "gnss/ReadNMEAThread.h"
#include "ui_MainWindow.h"
#include "views/SVView.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace {

constexpr int kUpdatePeriodMs = 1000;
/// Far more than the threads need once they were woken, far less than a user waits for the end.
constexpr int kThreadEndMs = 1500;

MainWindow *theWindow = nullptr;

/// Destroying a running QThread aborts the program; one that hangs in the system is left behind.
void leaveBehindUnlessEnded(QThread *thread, QDeadlineTimer deadline)
{
    if (thread->wait(deadline))
        return;
    const QLatin1String name(thread->metaObject()->className());
    errorPrint(TAG, QStringLiteral("%1 does not end").arg(name));
    thread->setParent(nullptr);
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent, Qt::FramelessWindowHint)
    , ui(std::make_unique<Ui::MainWindow>())
{
    ui->setupUi(this);
    setGeometry(QRect(QPoint(0, 0), QGuiApplication::primaryScreen()->size()));

    gnssInfo = GnssInfo::instance();
    readThread = new ReadNMEAThread(this);
    msgThread = new MsgThread(this);
    inputThread = new InputEventThread(this);

    // Before any page is built, so that the pages see the stored settings.
    ConfigFile::instance()->read(SystemHooks::systemPath("/etc/config.xml").constData());
    createPages();

    // Connected first, the pages are refreshed before the window repaints; once the updates were
    // disabled and enabled again, behind it.
    uiTimer = new QTimer(this);
    enableUpdate();
    connectWorkers();
    setCurrentView(svView);
    connect(uiTimer, &QTimer::timeout, this, &MainWindow::onUIUpdateTimer);
    readThread->start();
    connect(msgThread, &MsgThread::appResume, this, &MainWindow::show);
    connect(this, &MainWindow::appPaused, msgThread, &MsgThread::onAppPaused);
    msgThread->start();
    connect(inputThread, &InputEventThread::getEvent, this, &MainWindow::minimize);
    inputThread->start();
}

MainWindow::~MainWindow()
{
    disableUpdate();
    disconnectWorkers();
    stopThreads();
    giveBackControlView();
    if (theWindow == this)
        theWindow = nullptr;
}

MainWindow *MainWindow::instance()
{
    return theWindow;
}

void MainWindow::setInstance(MainWindow *window)
{
    theWindow = window;
}

void MainWindow::setCurrentView(QWidget *page)
{
    if (page == currentView)
        return;
    if (currentView) {
        ui->horizontalLayout->removeWidget(currentView);
        currentView->hide();
    }
    currentView = page;
    ui->horizontalLayout->addWidget(page);
    page->setVisible(true);
}

void MainWindow::readSettings()
{
    const bool wasBlocked = blockSignals(true);
    blockSignals(wasBlocked);
}

void MainWindow::writeSettings() {}

void MainWindow::enableUpdate()
{
    if (updateEnabled)
        return;
    debugPrint(1, TAG, QStringLiteral("enableUpdate"));
    connect(uiTimer, &QTimer::timeout, svView, &SVView::updateLocation);
    connect(uiTimer, &QTimer::timeout, svView, &SVView::updateSats);
    connect(uiTimer, &QTimer::timeout, logView, &LogView::updateLogView);
    uiTimer->start(kUpdatePeriodMs);
    updateEnabled = true;
}

void MainWindow::disableUpdate()
{
    if (!updateEnabled)
        return;
    debugPrint(1, TAG, QStringLiteral("disableUpdate"));
    disconnect(uiTimer, &QTimer::timeout, svView, &SVView::updateLocation);
    disconnect(uiTimer, &QTimer::timeout, svView, &SVView::updateSats);
    disconnect(uiTimer, &QTimer::timeout, logView, &LogView::updateLogView);
    uiTimer->stop();
    updateEnabled = false;
}

void MainWindow::minimize()
{
    if (minimized)
        return;
    showMaximized();
    minimized = true;
    emit appPaused();
}

void MainWindow::show()
{
    showFullScreen();
    minimized = false;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    limitCommandWaits();
    ttffTester->stopTest();
    nvmWriter->requestStop();
    QMainWindow::closeEvent(event);
}

void MainWindow::onUIUpdateTimer()
{
    update();
}

void MainWindow::on_pushButton_control_clicked()
{
    setCurrentView(controlView);
}

// The form has no such button; finding no signal for the slot is reported at start-up.
void MainWindow::on_pushButton_map_clicked() {}

void MainWindow::on_pushButton_logging_clicked()
{
    setCurrentView(logView);
}

void MainWindow::on_pushButton_config_clicked()
{
    setCurrentView(configView);
}

void MainWindow::on_pushButton_svState_clicked()
{
    setCurrentView(svView);
}

void MainWindow::on_pushButton_ttff_clicked()
{
    setCurrentView(ttffTester);
}

void MainWindow::on_pushButton_exit_clicked()
{
    exitRequested = true;
    nvmWriter->requestStop();
    close();
}

void MainWindow::on_pushButton_minimize_clicked()
{
    minimize();
}

// As with the map button.
void MainWindow::on_pushButton_testMode_clicked() {}

void MainWindow::createPages()
{
    controlView = ControlView::instance();
    logFiles = LogFiles::instance();
    ttffTester = new TTFFTester(this);
    logView = new LogView(this);
    configView = new ConfigView(this);
    svView = new SVView(this);
    nvmWriter = new NVMWriter(this);
    for (QWidget *page :
         std::initializer_list<QWidget *>{controlView, ttffTester, svView, logView, configView})
        page->hide();
}

void MainWindow::connectWorkers()
{
    // The reader's state goes before the model's: what it decodes in between is cleared as well.
    connect(controlView, &ControlView::clear, readThread, &ReadNMEAThread::clearBuffer);
    connect(controlView, &ControlView::clear, gnssInfo, &GnssInfo::clearGnssInfo);
    connect(controlView, &ControlView::disableTimer, this, &MainWindow::disableUpdate);
    connect(controlView, &ControlView::enableTimer, this, &MainWindow::enableUpdate);
    connect(readThread, &ReadNMEAThread::tryStart, ttffTester, &TTFFTester::setNmeaOutputStatus);
}

void MainWindow::disconnectWorkers()
{
    disconnect(controlView, &ControlView::clear, readThread, &ReadNMEAThread::clearBuffer);
    disconnect(controlView, &ControlView::clear, gnssInfo, &GnssInfo::clearGnssInfo);
    disconnect(controlView, &ControlView::disableTimer, this, &MainWindow::disableUpdate);
    disconnect(controlView, &ControlView::enableTimer, this, &MainWindow::enableUpdate);
    disconnect(readThread, &ReadNMEAThread::tryStart, ttffTester, &TTFFTester::setNmeaOutputStatus);
}

void MainWindow::stopThreads()
{
    // All are woken before the first is waited for, and none waits longer than all may.
    readThread->requestStop();
    msgThread->requestStop();
    inputThread->requestStop();
    const QDeadlineTimer deadline(kThreadEndMs);
    for (QThread *thread : std::initializer_list<QThread *>{readThread, msgThread, inputThread})
        leaveBehindUnlessEnded(thread, deadline);
}

/// The control page outlives the window; shown once, it has become the window's child.
void MainWindow::giveBackControlView()
{
    controlView->hide();
    controlView->setParent(nullptr);
}
