// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/MainWindow.h"
#include "config/ConfigView.h"
#include "control/ControlView.h"
#include "control/NVMWriter.h"
#include "control/TTFFTester.h"
#include "device/InputEventThread.h"
#include "device/MsgThread.h"
#include "gnss/GnssInfo.h"
#include "gnss/ReadNMEAThread.h"
#include "support/Child.h"
#include "support/MessageLog.h"
#include "views/SVView.h"

#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <memory>

namespace {

constexpr int kPeriodMs = 1000;
const QString kEnabled = QStringLiteral("d> : enableUpdate");
const QString kDisabled = QStringLiteral("d> : disableUpdate");
const QStringList kSlotsWithoutAButton = {
    QStringLiteral("QMetaObject::connectSlotsByName: No matching signal for "
                   "on_pushButton_map_clicked()"),
    QStringLiteral("QMetaObject::connectSlotsByName: No matching signal for "
                   "on_pushButton_testMode_clicked()")};
const QString kLatitude = QStringLiteral("48.117300 °");

/// Counts the events of one type that reach a widget.
class EventCount : public QObject
{
public:
    EventCount(QWidget *widget, QList<QEvent::Type> counted)
        : types(std::move(counted))
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        count += types.contains(event->type()) ? 1 : 0;
        return false;
    }

    int count = 0;

private:
    QList<QEvent::Type> types;
};

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void startsFramelessOverTheWholeScreenOnTheSatellitePage();
    void buttonsStandInTheirOrder();
    void signalsAndSlotsHaveTheirAgreedOrder();
    void slotsWithoutAButtonAreReported();
    void storedSettingsAreReadBeforeThePagesAreBuilt();
    void everyButtonShowsItsPage_data();
    void everyButtonShowsItsPage();
    void buttonOfTheShownPageChangesNothing();
    void minimizeTwiceEmitsAppPausedOnceAndAgainAfterAResume_data();
    void minimizeTwiceEmitsAppPausedOnceAndAgainAfterAResume();
    void resumeInFullScreenEmitsNothing();
    void refreshesWhicheverPageIsShown();
    void tickRefreshesLocationThenSatellites();
    void disabledTimerRefreshesNothingAndRestartsItsPeriod();
    void enablingAndDisablingTwiceIsHarmless();
    void clearOfTheControlPageEmptiesTheModel();
    void clearReachesTheReaderBeforeTheModel();
    void exitEndsTheEventLoopWithZero();
    void closingRequestsNoExit();
    void readSettingsKeepsSignalsAsTheyWere_data();
    void readSettingsKeepsSignalsAsTheyWere();
    void instanceIsTheWindowThatWasSet();
    void controlPageOutlivesTheWindow();

private:
    template<typename T>
    T *child(const char *name = nullptr) const
    {
        return childOf<T>(*window, name);
    }
    void press(const char *name) const
    {
        QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton);
    }
    /// The window's refresh timer: of all timers the only one that is the window's own child.
    QTimer *timer() const
    {
        return window->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    }
    /// A period's end, now.
    void tick() const { QMetaObject::invokeMethod(timer(), "timeout", Qt::DirectConnection); }
    QString shownLatitude() const { return child<QLabel>("label_lat")->text(); }
    static void locate()
    {
        tGnssLocation location;
        location.latitude = 48.1173;
        GnssInfo::instance()->setLocation(location);
    }

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<MessageLog> trace;
    std::unique_ptr<MainWindow> window;
};

void TestMainWindow::initTestCase()
{
    QApplication::setQuitOnLastWindowClosed(true);
}

void TestMainWindow::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(root->path()).mkdir("etc"));
    qputenv("TAVRIN_ROOT", QFile::encodeName(root->path()));
    GnssInfo::instance()->clearGnssInfo();
    trace = std::make_unique<MessageLog>();
    window = std::make_unique<MainWindow>();
    window->showFullScreen();
}

void TestMainWindow::cleanup()
{
    window.reset();
    QStringList warnings = trace->warnings();
    trace.reset();
    warnings.removeAll("This plugin does not support propagateSizeHints()");
    for (const QString &slot : kSlotsWithoutAButton)
        warnings.removeAll(slot);
    QCOMPARE(warnings, QStringList());
}

void TestMainWindow::startsFramelessOverTheWholeScreenOnTheSatellitePage()
{
    QVERIFY(window->windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(window->isFullScreen());
    QCOMPARE(window->geometry(), QRect(QPoint(0, 0), QGuiApplication::primaryScreen()->size()));
    QVERIFY(child<SVView>()->isVisible());
    QVERIFY(!child<TTFFTester>()->isVisible());
    QVERIFY(!child<ConfigView>()->isVisible());
    QVERIFY(!ControlView::instance()->isVisible());
    QVERIFY(!window->isExitRequested());
    QTRY_VERIFY(child<ReadNMEAThread>()->isRunning());
    QVERIFY(!child<NVMWriter>()->findChild<QThread *>());
}

void TestMainWindow::buttonsStandInTheirOrder()
{
    const auto *const column = child<QLayout>("verticalLayout");
    QStringList buttons;
    for (int i = 0; i < column->count(); ++i) {
        const auto *const button = qobject_cast<QPushButton *>(column->itemAt(i)->widget());
        QVERIFY(button);
        buttons << button->objectName() + QLatin1Char(' ') + button->text();
    }
    QCOMPARE(buttons, QStringList({"pushButton_control Control", "pushButton_svState Satellite",
                                   "pushButton_ttff TTFF Test", "pushButton_logging Log",
                                   "pushButton_config Config", "pushButton_minimize Minimize",
                                   "pushButton_exit Exit"}));
}

void TestMainWindow::signalsAndSlotsHaveTheirAgreedOrder()
{
    QByteArrayList names;
    const QMetaObject &meta = MainWindow::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names << meta.method(i).methodSignature();
    QCOMPARE(names,
             QByteArrayList({"settingChanged()", "appPaused()", "readSettings()", "writeSettings()",
                             "enableUpdate()", "disableUpdate()", "minimize()", "show()",
                             "onUIUpdateTimer()", "on_pushButton_control_clicked()",
                             "on_pushButton_map_clicked()", "on_pushButton_config_clicked()",
                             "on_pushButton_svState_clicked()", "on_pushButton_ttff_clicked()",
                             "on_pushButton_exit_clicked()", "on_pushButton_minimize_clicked()",
                             "on_pushButton_testMode_clicked()"}));
}

void TestMainWindow::slotsWithoutAButtonAreReported()
{
    QCOMPARE(trace->warnings().filter(QStringLiteral("No matching signal")), kSlotsWithoutAButton);
}

void TestMainWindow::storedSettingsAreReadBeforeThePagesAreBuilt()
{
    window.reset();
    QFile file(root->filePath("etc/config.xml"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write("<configuration><log><directory>/data/log</directory></log>"
                       "</configuration>") > 0);
    file.close();
    window = std::make_unique<MainWindow>();
    QCOMPARE(child<QLineEdit>("lineEdit_logPath")->text(), QString("/data/log"));
}

void TestMainWindow::everyButtonShowsItsPage_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QByteArray>("page");
    QTest::newRow("Control") << QByteArray("pushButton_control") << QByteArray("ControlView");
    QTest::newRow("TTFF Test") << QByteArray("pushButton_ttff") << QByteArray("TTFFTester");
    QTest::newRow("Config") << QByteArray("pushButton_config") << QByteArray("ConfigView");
}

void TestMainWindow::everyButtonShowsItsPage()
{
    QFETCH(QByteArray, button);
    QFETCH(QByteArray, page);
    const auto *const area = child<QLayout>("horizontalLayout");
    for (int round = 0; round < 2; ++round) {
        press(button.constData());
        QCOMPARE(area->count(), 1);
        QCOMPARE(area->itemAt(0)->widget()->metaObject()->className(), page.constData());
        QVERIFY(area->itemAt(0)->widget()->isVisible());
        QVERIFY(!child<SVView>()->isVisible());
        press("pushButton_svState");
        QCOMPARE(area->count(), 1);
        QCOMPARE(area->itemAt(0)->widget(), child<SVView>());
        QVERIFY(child<SVView>()->isVisible());
    }
}

void TestMainWindow::buttonOfTheShownPageChangesNothing()
{
    const EventCount changes(child<SVView>(), {QEvent::Show, QEvent::Hide, QEvent::Resize,
                                               QEvent::Move, QEvent::ParentChange});
    press("pushButton_svState");
    window->setCurrentView(child<SVView>());
    QCOMPARE(changes.count, 0);
    press("pushButton_ttff");
    QVERIFY(changes.count > 0);
}

void TestMainWindow::minimizeTwiceEmitsAppPausedOnceAndAgainAfterAResume_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("Minimize button") << false;
    QTest::newRow("home key") << true;
}

void TestMainWindow::minimizeTwiceEmitsAppPausedOnceAndAgainAfterAResume()
{
    QFETCH(bool, byKey);
    const auto minimize = [&] {
        if (byKey)
            emit child<InputEventThread>()->getEvent();
        else
            press("pushButton_minimize");
    };
    const QSignalSpy paused(window.get(), &MainWindow::appPaused);
    const auto reports = [this] {
        return trace->lines().count("error: TavrinDemo dbus connection is null\r\n");
    };
    QTRY_COMPARE(reports(), 1); // of the thread, which finds no bus
    minimize();
    minimize();
    QCOMPARE(paused.count(), 1);
    QCOMPARE(reports(), 2);
    QVERIFY(window->isMaximized());
    QVERIFY(!window->isFullScreen());

    emit child<MsgThread>()->appResume();
    QVERIFY(window->isFullScreen());
    QCOMPARE(paused.count(), 1);

    minimize();
    QCOMPARE(paused.count(), 2);
    QCOMPARE(reports(), 3);
    QVERIFY(window->isMaximized());
}

void TestMainWindow::resumeInFullScreenEmitsNothing()
{
    const QSignalSpy paused(window.get(), &MainWindow::appPaused);
    const QSignalSpy changed(window.get(), &MainWindow::settingChanged);
    window->show();
    QVERIFY(window->isFullScreen());
    QCOMPARE(paused.count(), 0);
    QCOMPARE(changed.count(), 0);
}

void TestMainWindow::refreshesWhicheverPageIsShown()
{
    for (const char *button : {"pushButton_svState", "pushButton_ttff"}) {
        press(button);
        GnssInfo::instance()->clearLocation();
        tick();
        QCOMPARE(shownLatitude(), QString("0.000000 °"));
        locate();
        QCOMPARE(shownLatitude(), QString("0.000000 °"));
        tick();
        QCOMPARE(shownLatitude(), kLatitude);
    }
}

void TestMainWindow::tickRefreshesLocationThenSatellites()
{
    window->disableUpdate();
    window->enableUpdate();
    trace->clear();
    tick();
    const QStringList lines = trace->lines();
    QCOMPARE(lines.filter("updateLocation").size(), 1);
    QCOMPARE(lines.filter("updateSats").size(), 1);
    QVERIFY(lines.indexOf(lines.filter("updateLocation").first()) <
            lines.indexOf(lines.filter("updateSats").first()));
}

void TestMainWindow::disabledTimerRefreshesNothingAndRestartsItsPeriod()
{
    QCOMPARE(timer()->interval(), kPeriodMs);
    QVERIFY(timer()->isActive());
    const QString before = shownLatitude();
    QSignalSpy ticks(timer(), &QTimer::timeout);

    emit ControlView::instance()->disableTimer();
    QVERIFY(!timer()->isActive());
    locate();
    // Without a tick the window is not repainted either.
    QVERIFY(!ticks.wait(2 * kPeriodMs));
    tick(); // a last one that was on its way
    QCOMPARE(shownLatitude(), before);

    emit ControlView::instance()->enableTimer();
    QVERIFY(timer()->isActive());
    QCOMPARE(timer()->interval(), kPeriodMs);
    QCOMPARE(shownLatitude(), before);
    QTRY_COMPARE_WITH_TIMEOUT(shownLatitude(), kLatitude, 10 * kPeriodMs);
}

void TestMainWindow::enablingAndDisablingTwiceIsHarmless()
{
    trace->clear();
    window->enableUpdate();
    QCOMPARE(trace->lines().count(kEnabled), 0);
    window->disableUpdate();
    window->disableUpdate();
    QCOMPARE(trace->lines().count(kDisabled), 1);
    QVERIFY(!timer()->isActive());
    window->enableUpdate();
    window->enableUpdate();
    QCOMPARE(trace->lines().count(kEnabled), 1);

    // Connected once again, not twice: a single disable takes the refresh away.
    window->disableUpdate();
    const QString before = shownLatitude();
    locate();
    tick();
    QCOMPARE(shownLatitude(), before);
}

void TestMainWindow::clearOfTheControlPageEmptiesTheModel()
{
    locate();
    emit ControlView::instance()->clear();
    QCOMPARE(GnssInfo::instance()->getLocation().latitude, 0.0);

    // Not any more once the window is gone.
    window.reset();
    locate();
    emit ControlView::instance()->clear();
    QCOMPARE(GnssInfo::instance()->getLocation().latitude, 48.1173);
}

void TestMainWindow::clearReachesTheReaderBeforeTheModel()
{
    QTRY_VERIFY(!trace->lines().filter("try to start").isEmpty());
    trace->clear();
    emit ControlView::instance()->clear();
    const QStringList cleared = trace->lines().filter("clear", Qt::CaseInsensitive);
    QCOMPARE(cleared,
             QStringList({"d> NmeaReader: NmeaReader clearBuf", "d> GnssInfo: GnssInfo clear"}));
}

void TestMainWindow::exitEndsTheEventLoopWithZero()
{
    QTimer::singleShot(0, window.get(), [this] { press("pushButton_exit"); });
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(window->isExitRequested());
    QVERIFY(!window->isVisible());
}

void TestMainWindow::closingRequestsNoExit()
{
    QVERIFY(window->close());
    QVERIFY(!window->isExitRequested());
}

void TestMainWindow::readSettingsKeepsSignalsAsTheyWere_data()
{
    QTest::addColumn<bool>("blocked");
    QTest::newRow("blocked") << true;
    QTest::newRow("open") << false;
}

void TestMainWindow::readSettingsKeepsSignalsAsTheyWere()
{
    QFETCH(bool, blocked);
    window->blockSignals(blocked);
    window->readSettings();
    QCOMPARE(window->signalsBlocked(), blocked);
    window->writeSettings();
    QCOMPARE(window->signalsBlocked(), blocked);
}

void TestMainWindow::instanceIsTheWindowThatWasSet()
{
    QCOMPARE(MainWindow::instance(), nullptr);
    MainWindow::setInstance(window.get());
    QCOMPARE(MainWindow::instance(), window.get());
    window.reset();
    QCOMPARE(MainWindow::instance(), nullptr);
}

void TestMainWindow::controlPageOutlivesTheWindow()
{
    ControlView *const page = ControlView::instance();
    press("pushButton_control");
    QVERIFY(page->isVisible());
    window.reset();
    QCOMPARE(ControlView::instance(), page);
    QCOMPARE(page->parentWidget(), nullptr);
    QVERIFY(!page->isVisible());
}

QTEST_MAIN(TestMainWindow)
#include "TestMainWindow.moc"
