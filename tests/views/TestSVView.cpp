// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SVView.h"

#include "config/ConfigView.h"
#include "control/ControlView.h"
#include "gnss/GnssInfo.h"
#include "views/Radar.h"
#include "views/SatBar.h"

#include "support/MessageLog.h"
#include "support/Pixels.h"

#include <QApplication>
#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <limits>
#include <memory>

namespace {

constexpr const char *kValueLabels[] = {"label_lat",  "label_lon",   "label_alt",
                                        "label_fix",  "label_speed", "label_utc",
                                        "label_pdop", "label_hdop",  "label_vdop"};

/// What the value labels, in the order above, show of a cleared model.
const QStringList kZeros = {QStringLiteral("0.000000 \u00B0"),
                            QStringLiteral("0.000000 \u00B0"),
                            QStringLiteral("0.00"),
                            QStringLiteral("0"),
                            QStringLiteral("0.0"),
                            QStringLiteral("0.000"),
                            QStringLiteral("0.0"),
                            QStringLiteral("0.0"),
                            QStringLiteral("0.0")};

tGnssLocation someLocation()
{
    tGnssLocation location;
    location.latitude = 48.1173;
    location.longitude = 11.51666666;
    location.altitude = 545.456;
    location.fix = 2;
    location.speed = 3.24F;
    location.pdop = 1.75F;
    location.hdop = 0.94F;
    location.vdop = 99.96F;
    location.fixTime = 123519.25;
    return location;
}

tGnssSvStatus satellites(int count)
{
    tGnssSvStatus status;
    status.numSvs = count;
    for (int i = 0; i < std::clamp(count, 0, kMaxSatellites); ++i) {
        // Alternately GPS used, GLONASS used and one that is not used.
        status.svList[i] = {i % 3 == 1 ? 65 + i : 1 + i, 40.0, 30.0 + i, 11.0F * float(i),
                            i % 3 != 2};
    }
    return status;
}

const QColor kBarColors[] = {Qt::blue, Qt::green, Qt::gray};

} // namespace

class TestSVView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void fourPressesReturnToTheBars();
    void pressesOfAllPagesCountTogether();
    void makesItsOwnConfigurationPage();
    void hasTheForm_data();
    void hasTheForm();
    void laysTheFormOut();
    void clipsNothing_data();
    void clipsNothing();
    void absurdNumbersDoNotWidenThePage();
    void showsZerosAndNoSatellitesWithoutData();
    void showsEveryValue();
    void formatsValues_data();
    void formatsValues();
    void showsExactlyTheModelsSatellites_data();
    void showsExactlyTheModelsSatellites();
    void showsAzimuthAndElevation();
    void resetPressClearsAllButTheFix();
    void stopPressClearsAndStartPressDoesNot();
    void clearViewNeedsAStoppedReceiver();
    void singleClearsTouchOnlyTheirOwn();
    void reportsMultipleConstellations_data();
    void reportsMultipleConstellations();
    void tracesItsSlots();
    void survivesTheEndOfAPage();

private:
    QLabel *label(const char *name) { return page->findChild<QLabel *>(name); }
    QStringList values();
    QPushButton *viewSwitch() { return page->findChild<QPushButton *>("pushButton_viewSwitch"); }
    SatBar *satBar() { return page->findChild<SatBar *>(); }
    Radar *radar() { return page->findChild<Radar *>(); }
    int barsOnTheChart(int count);
    int redPixelsOnThePlot() { return Pixels::count(Pixels::of(*radar()), QColor(Qt::red)); }
    void stopReceiver();

    QTemporaryDir root; // the control page's commands go nowhere else
    std::unique_ptr<SVView> page;
    GnssInfo *model = GnssInfo::instance();
};

QStringList TestSVView::values()
{
    QStringList texts;
    for (const char *name : kValueLabels)
        texts << label(name)->text();
    return texts;
}

/// Number of slots, out of `count` of the same width, that hold a bar of the colour expected there.
int TestSVView::barsOnTheChart(int count)
{
    const QImage image = Pixels::of(*satBar());
    const int slot = image.width() / count;
    const int y = image.height() - 40; // in every bar, below every value
    int bars = 0;
    for (int i = 0; i < count; ++i)
        bars += image.pixel(i * slot + slot / 2, y) == kBarColors[i % 3].rgb() ? 1 : 0;
    return bars;
}

void TestSVView::stopReceiver()
{
    QPushButton *start = ControlView::instance()->getStartButton();
    while (ControlView::instance()->getState() != 1)
        start->click();
}

// The first page of the process is made here, where nothing has counted a press before it.
void TestSVView::initTestCase()
{
    QVERIFY(root.isValid());
    qputenv("TAVRIN_ROOT", QFile::encodeName(root.path()));
    page = std::make_unique<SVView>();
    QCOMPARE(viewSwitch()->text(), QString("Switch To SV"));
    QVERIFY(!satBar()->isHidden());
    QVERIFY(radar()->isHidden());
}

// Every test has a page of its own that shows the bars, and an empty model.
void TestSVView::init()
{
    const MessageLog quiet;
    model->clearGnssInfo();
    page = std::make_unique<SVView>();
    page->resize(1000, 600);
    if (satBar()->isHidden())
        viewSwitch()->click();
}

void TestSVView::fourPressesReturnToTheBars()
{
    for (int press = 1; press <= 4; ++press) {
        viewSwitch()->click();
        const bool bars = press % 2 == 0;
        QCOMPARE(viewSwitch()->text(), QString(bars ? "Switch To SV" : "Switch To CN0"));
        QCOMPARE(satBar()->isHidden(), !bars);
        QCOMPARE(radar()->isHidden(), bars);
    }
    QCOMPARE(viewSwitch()->text(), QString("Switch To SV"));
}

void TestSVView::pressesOfAllPagesCountTogether()
{
    const SVView second; // presses for itself
    QCOMPARE(second.findChild<QPushButton *>("pushButton_viewSwitch")->text(),
             QString("Switch To CN0"));
    QVERIFY(second.findChild<SatBar *>()->isHidden());
    QVERIFY(!second.findChild<Radar *>()->isHidden());

    viewSwitch()->click(); // so that the next press asks the first page for what it shows already
    QCOMPARE(viewSwitch()->text(), QString("Switch To SV"));
    QVERIFY(!satBar()->isHidden());
}

void TestSVView::makesItsOwnConfigurationPage()
{
    QList<ConfigView *> pages;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *const found = dynamic_cast<ConfigView *>(widget))
            pages << found;
    }
    QCOMPARE(pages, QList<ConfigView *>{ConfigView::instance()});
    QVERIFY(pages.constFirst()->isHidden());
}

void TestSVView::hasTheForm_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::newRow("label") << "label"
                           << "Lat:";
    QTest::newRow("label_2") << "label_2"
                             << "Lon:";
    QTest::newRow("label_3") << "label_3"
                             << "Alt:";
    QTest::newRow("label_9") << "label_9"
                             << "Fix:";
    QTest::newRow("label_7") << "label_7"
                             << "Speed:";
    QTest::newRow("label_8") << "label_8"
                             << "UTC:";
    QTest::newRow("label_4") << "label_4"
                             << "PDOP:";
    QTest::newRow("label_6") << "label_6"
                             << "HDOP:";
    QTest::newRow("label_5") << "label_5"
                             << "VDOP:";
    for (const char *name : kValueLabels)
        QTest::newRow(name) << name << "";
}

void TestSVView::hasTheForm()
{
    QFETCH(QString, name);
    const auto *found = page->findChild<QLabel *>(name);
    QVERIFY(found);
    QTEST(found->text(), "text");
    const bool leftmost = name == "label" || name == "label_2" || name == "label_3";
    QCOMPARE(found->sizePolicy().horizontalPolicy(),
             leftmost ? QSizePolicy::Fixed : QSizePolicy::Preferred);
    QCOMPARE(found->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(found->font().pointSize(), 10);
}

void TestSVView::laysTheFormOut()
{
    page = std::make_unique<SVView>();
    QCOMPARE(page->objectName(), QString("SVView"));
    QCOMPARE(page->windowTitle(), QString("Form"));
    QCOMPARE(page->size(), QSize(666, 473));

    const auto *column = page->findChild<QVBoxLayout *>("verticalLayout_7");
    QCOMPARE(page->layout(), column);
    QCOMPARE(column->spacing(), 2);
    QCOMPARE(column->contentsMargins().left(), 30);
    QCOMPARE(column->contentsMargins().top(), 20);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(column->stretch(i), i == 2 ? 8 : 1);

    const auto *values = page->findChild<QHBoxLayout *>("horizontalLayout");
    QCOMPARE(column->itemAt(0)->layout(), values);
    QCOMPARE(values->spacing(), 3);
    QStringList columns;
    for (int i = 0; i < values->count(); ++i) {
        columns << values->itemAt(i)->layout()->objectName();
        QCOMPARE(values->stretch(i), i % 2 == 0 ? 1 : 2);
        QCOMPARE(values->itemAt(i)->layout()->count(), 3);
    }
    QCOMPARE(columns, QStringList({"verticalLayout", "verticalLayout_2", "verticalLayout_3",
                                   "verticalLayout_4", "verticalLayout_5", "verticalLayout_6"}));

    QCOMPARE(column->itemAt(1)->widget(), viewSwitch());
    QCOMPARE(column->itemAt(1)->alignment(), Qt::AlignHCenter);
    QCOMPARE(viewSwitch()->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
    QCOMPARE(viewSwitch()->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);

    QLayout *views = column->itemAt(2)->layout();
    QCOMPARE(views->objectName(), QString("layout"));
    QCOMPARE(views->itemAt(0)->widget(), satBar());
    QCOMPARE(views->itemAt(1)->widget(), radar());
}

void TestSVView::clipsNothing_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("on the small screen") << QSize(620, 455);
    QTest::newRow("on the large screen") << QSize(1000, 690);
}

void TestSVView::clipsNothing()
{
    QFETCH(QSize, size);
    tGnssLocation location = someLocation();
    location.latitude = -89.123456;
    location.longitude = -179.123456;
    location.altitude = -12345.67;
    model->setLocation(location);
    page->updateLocation();
    page->resize(size);
    page->show();
    QVERIFY(QTest::qWaitForWindowExposed(page.get()));
    const QRect inside = page->rect();
    for (const QLabel *text : page->findChildren<QLabel *>()) {
        QVERIFY2(text->width() >= text->sizeHint().width(), qPrintable(text->objectName()));
        QVERIFY2(text->height() >= text->sizeHint().height(), qPrintable(text->objectName()));
        QVERIFY(inside.contains(text->geometry()));
    }
    QVERIFY(inside.contains(viewSwitch()->geometry()));
    QVERIFY(inside.contains(satBar()->geometry()));
    QVERIFY(satBar()->height() > size.height() / 2);
}

// A full-screen window that once grew beyond the screen would stay so.
void TestSVView::absurdNumbersDoNotWidenThePage()
{
    const QSize before = page->minimumSizeHint();
    tGnssLocation location;
    location.latitude = location.longitude = location.altitude = location.fixTime = 1e300;
    location.speed = location.pdop = location.hdop = location.vdop = 1e38F;
    location.fix = std::numeric_limits<qint32>::min();
    model->setLocation(location);
    page->updateLocation();
    page->layout()->activate();
    QVERIFY(label("label_alt")->text().size() > 300);
    QCOMPARE(page->minimumSizeHint(), before);
}

void TestSVView::showsZerosAndNoSatellitesWithoutData()
{
    for (int tick = 0; tick < 3; ++tick) {
        page->updateLocation();
        page->updateSats();
        QCOMPARE(values(), kZeros);
        QCOMPARE(barsOnTheChart(7), 0);
        QCOMPARE(redPixelsOnThePlot(), 0);
    }
}

void TestSVView::showsEveryValue()
{
    model->setLocation(someLocation());
    QCOMPARE(label("label_lat")->text(), QString()); // a page shows nothing before its first tick
    page->updateLocation();
    QCOMPARE(values(),
             QStringList({QStringLiteral("48.117300 \u00B0"), QStringLiteral("11.516667 \u00B0"),
                          "545.46", "2", "3.2", "123519.250", "1.8", "0.9", "100.0"}));
}

void TestSVView::formatsValues_data()
{
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("altitude");
    QTest::addColumn<int>("fix");
    QTest::addColumn<double>("fixTime");
    QTest::addColumn<QStringList>("texts"); // latitude, altitude, fix, UTC
    QTest::newRow("-33.8675 keeps its sign")
        << -33.8675 << -1.5 << 1 << 0.5
        << QStringList{QStringLiteral("-33.867500 \u00B0"), "-1.50", "1", "0.500"};
    QTest::newRow("no exponents") << 1e-9 << 1e7 << 8 << 235959.999
                                  << QStringList{QStringLiteral("0.000000 \u00B0"), "10000000.00",
                                                 "8", "235959.999"};
    QTest::newRow("rounds") << 12.3456789 << 0.006 << 0 << 1.0004
                            << QStringList{QStringLiteral("12.345679 \u00B0"), "0.01", "0",
                                           "1.000"};
    QTest::newRow("negative fix") << 0.0 << 0.0 << -2 << 0.0
                                  << QStringList{QStringLiteral("0.000000 \u00B0"), "0.00", "-2",
                                                 "0.000"};
}

void TestSVView::formatsValues()
{
    QFETCH(QStringList, texts);
    QFETCH(double, latitude);
    QFETCH(double, altitude);
    QFETCH(int, fix);
    QFETCH(double, fixTime);
    tGnssLocation location;
    location.latitude = latitude;
    location.altitude = altitude;
    location.fix = fix;
    location.fixTime = fixTime;
    model->setLocation(location);
    page->updateLocation();
    QCOMPARE(QStringList({label("label_lat")->text(), label("label_alt")->text(),
                          label("label_fix")->text(), label("label_utc")->text()}),
             texts);
}

void TestSVView::showsExactlyTheModelsSatellites_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("shown");
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("31") << 31 << 31;
    QTest::newRow("32") << 32 << 32;
    QTest::newRow("a torn copy with a count too high") << 1000000 << 32;
    QTest::newRow("a torn copy with a negative count") << -3 << 0;
}

void TestSVView::showsExactlyTheModelsSatellites()
{
    QFETCH(int, count);
    QFETCH(int, shown);
    model->setSvStatus(satellites(count));
    for (int tick = 0; tick < 4; ++tick) { // a tick does not add to the one before
        page->updateSats();
        QCOMPARE(barsOnTheChart(std::max(shown, 1)), shown);
        QCOMPARE(redPixelsOnThePlot() > 0, shown > 0);
    }

    model->setSvStatus(satellites(3)); // fewer than before, and nothing left of the others
    page->updateSats();
    QCOMPARE(barsOnTheChart(3), 3);

    model->clearSvStatus();
    page->updateSats();
    QCOMPARE(barsOnTheChart(32), 0);
    QCOMPARE(redPixelsOnThePlot(), 0);
}

// The model's entry has the angles in the other order than the display record.
void TestSVView::showsAzimuthAndElevation()
{
    tGnssSvStatus status;
    status.numSvs = 1;
    status.svList[0] = {7, 40.0, 30.0, 90.0F, true}; // east, 60 units from the zenith
    model->setSvStatus(status);
    page->updateSats();
    const QImage image = Pixels::of(*radar());
    const auto isRed = [](QRgb pixel) {
        return pixel == qRgb(255, 0, 0);
    };
    const int all = Pixels::count(image, image.rect(), isRed);
    QVERIFY(all > 0);
    const QPoint centre(image.width() / 2, image.height() / 2);
    const QRect east(centre + QPoint(10, -8), QSize(image.width(), 16));
    QCOMPARE(Pixels::count(image, east, isRed), all);
}

void TestSVView::resetPressClearsAllButTheFix()
{
    model->setLocation(someLocation());
    model->setSvStatus(satellites(31));
    page->updateLocation();
    page->updateSats();
    ControlView::instance()->getResetButton()->click();
    for (const char *name : kValueLabels)
        QCOMPARE(label(name)->text(), QString(qstrcmp(name, "label_fix") == 0 ? "2" : ""));
    QCOMPARE(barsOnTheChart(31), 0);
    QCOMPARE(redPixelsOnThePlot(), 0);
    QCOMPARE(model->getLocation().fix, 0);
    QCOMPARE(model->getSvStatus().numSvs, 0);
}

void TestSVView::stopPressClearsAndStartPressDoesNot()
{
    stopReceiver();
    const auto fill = [this] {
        model->setLocation(someLocation());
        model->setSvStatus(satellites(7));
        page->updateLocation();
        page->updateSats();
    };
    fill();
    QPushButton *start = ControlView::instance()->getStartButton();
    start->click();
    QCOMPARE(ControlView::instance()->getState(), 2);
    QCOMPARE(label("label_alt")->text(), QString("545.46"));
    QCOMPARE(label("label_utc")->text(), QString("123519.250"));
    QCOMPARE(barsOnTheChart(7), 7);

    start->click();
    QCOMPARE(ControlView::instance()->getState(), 1);
    QCOMPARE(label("label_alt")->text(), QString());
    QCOMPARE(label("label_utc")->text(), QString());
    QCOMPARE(label("label_fix")->text(), QString("2"));
    QCOMPARE(barsOnTheChart(7), 0);
}

void TestSVView::clearViewNeedsAStoppedReceiver()
{
    stopReceiver();
    model->setLocation(someLocation());
    page->updateLocation();
    ControlView::instance()->gnss_start();
    page->clearView();
    QCOMPARE(label("label_alt")->text(), QString("545.46"));
    ControlView::instance()->gnss_stop();
    page->clearView();
    QCOMPARE(label("label_alt")->text(), QString());
}

void TestSVView::singleClearsTouchOnlyTheirOwn()
{
    model->setLocation(someLocation());
    model->setSvStatus(satellites(7));
    page->updateLocation();
    page->updateSats();

    page->clearLocTime();
    QCOMPARE(label("label_utc")->text(), QString());
    QCOMPARE(label("label_alt")->text(), QString("545.46"));
    QCOMPARE(model->getLocation().fixTime, 123519.25);

    page->updateLocation();
    page->clearLocation();
    QCOMPARE(label("label_utc")->text(), QString("123519.250"));
    QCOMPARE(label("label_alt")->text(), QString());
    QCOMPARE(barsOnTheChart(7), 7);
    page->updateLocation(); // the model was cleared with the labels
    QCOMPARE(values(), kZeros);

    page->clearSats();
    QCOMPARE(barsOnTheChart(7), 0);
    QCOMPARE(values(), kZeros);
}

void TestSVView::reportsMultipleConstellations_data()
{
    QTest::addColumn<uint>("count");
    QTest::addColumn<QString>("line");
    QTest::newRow("none") << 0U << "d> setSvDispalyModel: 0";
    QTest::newRow("1 leaves it false") << 1U << "d> setSvDispalyModel: 0";
    QTest::newRow("2 sets it") << 2U << "d> setSvDispalyModel: 1";
    QTest::newRow("highest") << 4294967295U << "d> setSvDispalyModel: 1";
}

void TestSVView::reportsMultipleConstellations()
{
    QFETCH(uint, count);
    QFETCH(QString, line);
    const MessageLog log;
    page->setSvDispalyModel(count);
    QCOMPARE(log.lines(), QStringList(line));
    emit ControlView::instance()->notSingleConstellation(count);
    QCOMPARE(log.lines(), QStringList({line, line}));
}

void TestSVView::tracesItsSlots()
{
    ControlView::instance()->gnss_start();
    const MessageLog log;
    page->updateLocation();
    page->updateLocTime();
    page->updateSats();
    page->updateCN0Chart();
    page->clearView();
    QCOMPARE(log.lines(),
             QStringList({"d> : updateLocation", "d> : updateLocTime", "d> : updateSats",
                          "d> : updateCN0Chart", "d> : updateCN0Chart", "d> : cleanView"}));
    QCOMPARE(log.warnings(), QStringList());
}

// The control page outlives every satellite page.
void TestSVView::survivesTheEndOfAPage()
{
    page.reset();
    ControlView::instance()->getResetButton()->click();
    stopReceiver();
    emit ControlView::instance()->notSingleConstellation(2);
}

QTEST_MAIN(TestSVView)
#include "TestSVView.moc"
