// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/SettingsFile.h"
#include "support/ViewerProcess.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

const QString kTabBar = QStringLiteral("qt_tabwidget_tabbar");
const QString kChooser = QStringLiteral("QFileDialog");
const QString kQuestion = QStringLiteral("QMessageBox");
constexpr int kLongMs = 60000;

/// 7 mm on a panel of 130 dpi, which 800x480 on 7 inches has: what a finger hits without looking.
constexpr int kFingerPixels = 36;
constexpr int kMinLetterPixels = 8;

const std::pair<QString, QString> kButtonsAndPages[] = {
    {Pages::kControlButton, Pages::kControl},
    {Pages::kTtffButton, Pages::kTtff},
    {Pages::kLogButton, Pages::kLog},
    {Pages::kConfigButton, Pages::kConfig},
};

const QStringList kPressed = {"QPushButton", "QRadioButton", "QCheckBox", "QSpinBox",
                              "QSlider",     "QComboBox",    "QTabBar"};
/// Besides them: what is read or written, but is not pressed.
const QStringList kOthers = {"QLabel", "QLineEdit", "QTextEdit", "QTextBrowser", "SatBar", "Radar"};

QString classOf(const QJsonObject &widget)
{
    return widget.value("class").toString();
}

QString describe(const QJsonObject &widget)
{
    return classOf(widget) + ' ' + widget.value("name").toString();
}

QRect rectOf(const QJsonObject &entry)
{
    return QRectF(entry.value("x").toDouble(), entry.value("y").toDouble(),
                  entry.value("w").toDouble(), entry.value("h").toDouble())
        .toRect();
}

bool isSpinBoxField(const QJsonObject &widget)
{
    return widget.value("name").toString() == "qt_spinbox_lineedit";
}

bool isCounted(const QJsonObject &widget)
{
    return (kPressed + kOthers).contains(classOf(widget)) && !isSpinBoxField(widget);
}

QStringList textFaults(const QJsonObject &widget)
{
    static const QStringList kDrawnWhole = {"QPushButton", "QRadioButton", "QCheckBox", "QLabel",
                                            "QTabBar"};
    QStringList faults;
    if (!kDrawnWhole.contains(classOf(widget)) && !isSpinBoxField(widget))
        return faults;
    // Half a pixel is how far the width of a text may be from the sum of its letters' widths.
    const QRectF room = QRectF(QPointF(), rectOf(widget).size()).adjusted(-0.5, -0.5, 0.5, 0.5);
    for (const QJsonValue &value : widget.value("texts").toArray()) {
        const QJsonObject text = value.toObject();
        const QRectF place(text.value("x").toDouble(), text.value("y").toDouble(),
                           text.value("w").toDouble(), text.value("h").toDouble());
        const QString what = describe(widget) + ": '" + text.value("text").toString() + "' ";
        if (!room.contains(place))
            faults << what + "is cut";
        if (text.value("letter").toInt() < kMinLetterPixels)
            faults << what + "is too small to be read";
    }
    return faults;
}

/// What a user would see as a broken page; empty when it is in order.
QStringList pageFaults(const QJsonArray &widgets, const QRect &window)
{
    QStringList faults;
    QVector<QJsonObject> counted;
    for (const QJsonValue &value : widgets) {
        if (isCounted(value.toObject()))
            counted.append(value.toObject());
        else if (isSpinBoxField(value.toObject()))
            faults += textFaults(value.toObject());
    }
    if (counted.isEmpty())
        faults << QStringLiteral("nothing is shown");
    for (int i = 0; i < counted.size(); ++i) {
        const QRect place = rectOf(counted.at(i));
        if (!window.contains(place))
            faults << describe(counted.at(i)) + " leaves the window";
        faults += textFaults(counted.at(i));
        for (int j = 0; j < i; ++j) {
            if (place.intersects(rectOf(counted.at(j))))
                faults << describe(counted.at(i)) + " overlaps " + describe(counted.at(j));
        }
    }
    return faults;
}

QStringList fingerFaults(const QJsonArray &widgets)
{
    QStringList faults;
    for (const QJsonValue &value : widgets) {
        const QSize size = rectOf(value.toObject()).size();
        if (kPressed.contains(classOf(value.toObject())) &&
            (size.width() < kFingerPixels || size.height() < kFingerPixels))
            faults << QStringLiteral("%1 is %2x%3")
                          .arg(describe(value.toObject()))
                          .arg(size.width())
                          .arg(size.height());
    }
    return faults;
}

int smallestLetter(const QJsonArray &widgets, const QString &name)
{
    int smallest = INT_MAX;
    for (const QJsonValue &value : widgets) {
        if (value.toObject().value("name") != name)
            continue;
        for (const QJsonValue &text : value.toObject().value("texts").toArray())
            smallest = std::min(smallest, text.toObject().value("letter").toInt());
    }
    return smallest;
}

} // namespace

class TestScreenSizes : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void pagesFit_data();
    void pagesFit();
    void whatIsPressedHasAFingersSize();
    void spinArrowsStandSideBySide();
    void wholeRowOfABoxTakesThePress();
    void lettersFollowTheScreen_data();
    void lettersFollowTheScreen();

private:
    bool start(QSize screen, int factor = 1);
    /// Faults of a page or dialog that is shown, each with what it shows in front.
    QStringList faults(const QString &what, const QString &page, const QRect &window);
    QStringList faultsOfPages(const QRect &window);
    QStringList faultsOfConfigPage(const QRect &window);

    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<NmeaPipe> pipe;
};

void TestScreenSizes::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(2000)));
    viewer.reset();
    pipe.reset();
    qunsetenv("QT_SCALE_FACTOR");
}

bool TestScreenSizes::start(QSize screen, int factor)
{
    qputenv("QT_SCALE_FACTOR", QByteArray::number(factor));
    viewer = std::make_unique<ViewerProcess>(screen);
    pipe = std::make_unique<NmeaPipe>(viewer->path("/tmp/agiin"));
    // The TTFF test writes a log.
    if (!writeLogSettings(viewer->root()))
        return false;
    if (viewer->start())
        return true;
    qWarning("%s", qPrintable(viewer->errorText()));
    return false;
}

QStringList TestScreenSizes::faults(const QString &what, const QString &page, const QRect &window)
{
    QStringList result;
    if (!window.contains(viewer->rect(page, {})))
        result << what + ": larger than the screen";
    for (const QString &fault : pageFaults(viewer->layout(page), window))
        result << what + ": " + fault;
    return result;
}

QStringList TestScreenSizes::faultsOfPages(const QRect &window)
{
    QStringList result = faults("bars", Pages::kWindow, window);
    viewer->press(Pages::kSatellite, "pushButton_viewSwitch");
    result += faults("sky", Pages::kWindow, window);
    viewer->showPage(Pages::kControlButton, Pages::kControl);
    viewer->press(Pages::kControl, "pushButton_ShowTime");
    viewer->press(Pages::kControl, "pushButton_ShowLoc");
    result += faults("control", Pages::kWindow, window);
    viewer->press(Pages::kControl, "pushButton_GpsReset"); // the longest text about the TTFF
    result += faults("control after a reset", Pages::kWindow, window);
    viewer->showPage(Pages::kTtffButton, Pages::kTtff);
    viewer->enterText(Pages::kTtff, "spinBox_TestTimes", "4000");
    if (!QTest::qWaitFor(
            [this] { return viewer->text(Pages::kTtff, "spinBox_TestTimes") == "4000"; }, kLongMs))
        result << "4000 loops cannot be entered";
    result += faults("TTFF test", Pages::kWindow, window);
    const auto testButton = [this] {
        return viewer->text(Pages::kTtff, "pushButton_Test");
    };
    viewer->press(Pages::kTtff, "pushButton_Test");
    if (!QTest::qWaitFor([&] { return testButton() == "Stop"; }, kLongMs))
        result << "the TTFF test does not start";
    result += faults("running TTFF test", Pages::kWindow, window);
    viewer->press(Pages::kTtff, "pushButton_Test");
    if (!QTest::qWaitFor([&] { return testButton() == "Test"; }, kLongMs))
        result << "the TTFF test does not end";
    viewer->showPage(Pages::kLogButton, Pages::kLog);
    result += faults("log", Pages::kWindow, window);
    return result;
}

QStringList TestScreenSizes::faultsOfConfigPage(const QRect &window)
{
    const auto open = [this](const QString &dialog) {
        return QTest::qWaitFor([&] { return viewer->isShown(dialog); }, kLongMs);
    };
    const auto leave = [this](const QString &dialog, const QString &button) {
        return viewer->press(dialog, button) &&
               QTest::qWaitFor([&] { return !viewer->isShown(dialog); }, kLongMs);
    };
    viewer->showPage(Pages::kConfigButton, Pages::kConfig);
    QStringList result = faults("config", Pages::kWindow, window);
    viewer->press(Pages::kConfig, "pushButton_logPathOpen");
    open(kChooser);
    result += faults("folder chooser", kChooser, window);
    if (!leave(kChooser, "Cancel"))
        return result << "the folder chooser cannot be left";
    viewer->press(Pages::kConfig, "checkBox_debugText");
    for (int tab = 1; tab < 3; ++tab) {
        viewer->pressAt(Pages::kConfig, kTabBar, {(2 * tab + 1) / 6.0, 0.5});
        if (tab == 1) {
            open(kQuestion);
            result += faults("question", kQuestion, window);
            if (!leave(kQuestion, "No"))
                return result << "the question cannot be left";
        }
        const auto current = [this] {
            return viewer->property(Pages::kConfig, "tabWidget", "currentIndex").toInt();
        };
        if (!QTest::qWaitFor([&] { return current() == tab; }, kLongMs))
            result << QStringLiteral("tab %1 does not open").arg(tab);
        result += faults(QStringLiteral("tab %1").arg(tab), Pages::kWindow, window);
    }
    return result;
}

void TestScreenSizes::pagesFit_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<int>("factor");
    QTest::newRow("480x320") << QSize(480, 320) << 1;
    QTest::newRow("480x800") << QSize(480, 800) << 1;
    QTest::newRow("800x480") << QSize(800, 480) << 1;
    QTest::newRow("800x480 at factor 2") << QSize(800, 480) << 2;
    QTest::newRow("1280x720") << QSize(1280, 720) << 1;
    QTest::newRow("1920x1080") << QSize(1920, 1080) << 1;
}

void TestScreenSizes::pagesFit()
{
    QFETCH(QSize, screen);
    QFETCH(int, factor);
    QVERIFY(start(screen, factor));
    QVERIFY(pipe->write(NmeaSentences::epochOf31Satellites(1)));
    QTRY_VERIFY_WITH_TIMEOUT(viewer->text(Pages::kSatellite, "label_fix").toInt() > 0, kLongMs);
    const QRect window(QPoint(0, 0), screen / factor);
    QCOMPARE(viewer->rect(Pages::kWindow, {}), window);

    for (const auto &[button, page] : kButtonsAndPages) {
        QVERIFY2(viewer->showPage(button, page), qPrintable(page));
        QCOMPARE(viewer->rect(Pages::kWindow, {}), window);
    }
    QVERIFY(viewer->showPage(Pages::kSatelliteButton, Pages::kSatellite));

    QCOMPARE((faultsOfPages(window) + faultsOfConfigPage(window)).join('\n'), QString());
    QCOMPARE(viewer->rect(Pages::kWindow, {}), window);
    QVERIFY(viewer->pressMain(Pages::kMinimizeButton));
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kLongMs));
    QCOMPARE(viewer->exitCode(), 0);
}

void TestScreenSizes::whatIsPressedHasAFingersSize()
{
    QVERIFY(start({800, 480}));
    QStringList faults = fingerFaults(viewer->layout(Pages::kWindow));
    for (const auto &[button, page] : kButtonsAndPages) {
        QVERIFY(viewer->showPage(button, page));
        faults += fingerFaults(viewer->layout(Pages::kWindow));
    }
    QCOMPARE(faults.join('\n'), QString());
}

void TestScreenSizes::spinArrowsStandSideBySide()
{
    QVERIFY(start({800, 480}));
    QVERIFY(viewer->showPage(Pages::kTtffButton, Pages::kTtff));
    const QString box = QStringLiteral("spinBox_TestTimes");
    const double width = viewer->rect(Pages::kTtff, box).width();
    const auto value = [&] {
        return viewer->property(Pages::kTtff, box, "value").toInt();
    };
    int expected = 10;
    for (const double fromRight : {2.0, kFingerPixels - 2.0}) {
        for (const double share : {0.1, 0.9}) {
            QVERIFY(viewer->pressAt(Pages::kTtff, box, {1 - fromRight / width, share}));
            ++expected;
            QTRY_COMPARE_WITH_TIMEOUT(value(), expected, kLongMs);
        }
    }
    for (const double fromRight : {kFingerPixels + 8.0, 2 * kFingerPixels - 2.0}) {
        for (const double share : {0.1, 0.9}) {
            QVERIFY(viewer->pressAt(Pages::kTtff, box, {1 - fromRight / width, share}));
            --expected;
            QTRY_COMPARE_WITH_TIMEOUT(value(), expected, kLongMs);
        }
    }
}

void TestScreenSizes::wholeRowOfABoxTakesThePress()
{
    QVERIFY(start({800, 480}));
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
    for (const char *name : {"checkBox_locSBAS", "radioButton_factoryReset"}) {
        QVERIFY(!viewer->property(Pages::kControl, name, "checked").toBool());
        QVERIFY(viewer->pressAt(Pages::kControl, name, {0.97, 0.1}));
        QTRY_VERIFY_WITH_TIMEOUT(viewer->property(Pages::kControl, name, "checked").toBool(),
                                 kLongMs);
    }
}

void TestScreenSizes::lettersFollowTheScreen_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<int>("letter");
    QTest::newRow("480x320") << QSize(480, 320) << 10;
    QTest::newRow("800x480") << QSize(800, 480) << 13;
    QTest::newRow("1280x720") << QSize(1280, 720) << 20;
    QTest::newRow("1920x1080") << QSize(1920, 1080) << 29;
}

void TestScreenSizes::lettersFollowTheScreen()
{
    QFETCH(QSize, screen);
    QFETCH(int, letter);
    QVERIFY(start(screen));
    QVERIFY(viewer->showPage(Pages::kTtffButton, Pages::kTtff));
    const QJsonArray widgets = viewer->layout(Pages::kWindow);
    for (const QString &name : {Pages::kExitButton, QStringLiteral("pushButton_Test"),
                                QStringLiteral("radioButton_Factory"), QStringLiteral("label_4")})
        QCOMPARE(smallestLetter(widgets, name), letter);
}

QTEST_GUILESS_MAIN(TestScreenSizes)
#include "TestScreenSizes.moc"
