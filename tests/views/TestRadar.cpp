// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/Radar.h"

#include "support/MessageLog.h"
#include "support/OddNumbers.h"
#include "support/Pixels.h"

#include <QFontMetrics>
#include <QtTest>

#include <cmath>
#include <vector>

namespace {

constexpr double kRadian = 3.141592653589793 / 180.0;

const QColor kRed(Qt::red);
const QColor kDarkRed(Qt::darkRed);
const QColor kWhite(Qt::white);

QFontMetrics letterMetrics()
{
    QFont font;
    font.setPixelSize(12);
    return QFontMetrics(font);
}

double scaleFor(QSize size)
{
    const QFontMetrics metrics = letterMetrics();
    return (std::min(size.width() - 3 * metrics.horizontalAdvance('W'), size.height()) -
            3 * metrics.height()) /
           180.0;
}

/// Pixel of a place in plot units.
QPoint pixelAt(QSize size, double x, double y)
{
    const double scale = scaleFor(size);
    return {static_cast<int>(std::floor(size.width() / 2 + x * scale)),
            static_cast<int>(std::floor(size.height() / 2 + y * scale))};
}

/// Rectangle between two places in plot units.
QRect areaBetween(QSize size, double left, double top, double right, double bottom)
{
    return {pixelAt(size, left, top), pixelAt(size, right, bottom)};
}

/// Place of a direction, in plot units.
QPointF placeOf(double azimuth, double elevation)
{
    const double r = 90 - elevation;
    return {r * std::sin(azimuth * kRadian), -r * std::cos(azimuth * kRadian)};
}

tSvInfo satellite(int prn, double azimuth, double elevation, bool used)
{
    return {prn, azimuth, elevation, 40.0, used};
}

QImage drawn(QSize size, const std::vector<tSvInfo> &list)
{
    Radar plot;
    plot.resize(size);
    plot.setSvInfo(list.data(), static_cast<int>(list.size()));
    return Pixels::of(plot);
}

bool isReddish(QRgb pixel)
{
    return qRed(pixel) > qGreen(pixel) + 60 && qRed(pixel) > qBlue(pixel) + 60;
}

bool isMark(QRgb pixel)
{
    return pixel != kWhite.rgb();
}

/// Share of the pixels along a line in plot units, within one pixel, that are not white.
double shareOfMarks(const QImage &image, double radiusFrom, double radiusTo, double azimuthFrom,
                    double azimuthTo)
{
    constexpr int kSteps = 400;
    int marks = 0;
    for (int i = 0; i < kSteps; ++i) {
        const double t = (i + 0.5) / kSteps;
        const double r = radiusFrom + t * (radiusTo - radiusFrom);
        const double azimuth = azimuthFrom + t * (azimuthTo - azimuthFrom);
        const QPointF place = placeOf(azimuth, 90 - r);
        const QPoint pixel = pixelAt(image.size(), place.x(), place.y());
        const QRect around(pixel - QPoint(1, 1), QSize(3, 3));
        marks += Pixels::count(image, around, isMark) > 0 ? 1 : 0;
    }
    return static_cast<double>(marks) / kSteps;
}

void addSizes()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("on the small screen") << QSize(580, 340);
    QTest::newRow("on the large screen") << QSize(960, 560);
    QTest::newRow("tall") << QSize(460, 900);
}

} // namespace

class TestRadar : public QObject
{
    Q_OBJECT

private slots:
    void drawsOnlyTheGridWithoutSatellites_data() { addSizes(); }
    void drawsOnlyTheGridWithoutSatellites();
    void drawsRingsAndDiameters_data() { addSizes(); }
    void drawsRingsAndDiameters();
    void drawsTheLetters_data() { addSizes(); }
    void drawsTheLetters();
    void outlinesTheGround();
    void fillsUsedAndLeavesOthersHollow_data() { addSizes(); }
    void fillsUsedAndLeavesOthersHollow();
    void keepsMarkersApartInAnyOrder();
    void marksTheDirection_data();
    void marksTheDirection();
    void writesTheNumberToTheLowerRight_data() { addSizes(); }
    void writesTheNumberToTheLowerRight();
    void drawsAll32();
    void drawsBelowTheHorizonOutsideTheCircle();
    void redrawsWhatItIsGiven();
    void survivesTinySizes_data();
    void survivesTinySizes();
    void survivesOddValues();
};

void TestRadar::drawsOnlyTheGridWithoutSatellites()
{
    QFETCH(QSize, size);
    const QImage image = drawn(size, {});
    QCOMPARE(Pixels::count(image, image.rect(), isReddish), 0);
    QCOMPARE(Pixels::count(image, image.rect(), Pixels::isColorless), size.width() * size.height());
    // Between rings and diameters is only ground.
    for (const double r : {15.0, 45.0, 75.0}) {
        for (int sector = 0; sector < 8; ++sector)
            QCOMPARE(shareOfMarks(image, r - 5, r + 5, sector * 45 + 20, sector * 45 + 25), 0.0);
    }
}

void TestRadar::drawsRingsAndDiameters()
{
    QFETCH(QSize, size);
    const QImage image = drawn(size, {});
    // Dashes leave gaps, so that a part of each line is enough; beside the lines there is none.
    for (const double r : {30.0, 60.0, 90.0}) {
        for (int sector = 0; sector < 8; ++sector) {
            const double azimuth = sector * 45;
            QVERIFY(shareOfMarks(image, r, r, azimuth + 10, azimuth + 35) > 0.5);
            QCOMPARE(shareOfMarks(image, r + 5, r + 5, azimuth + 18, azimuth + 27), 0.0);
        }
    }
    for (int direction = 0; direction < 8; ++direction)
        QVERIFY(shareOfMarks(image, 5, 85, direction * 45, direction * 45) > 0.5);
    // The horizon is the last ring, and no diameter goes beyond it.
    for (const int azimuth : {45, 135, 225, 315})
        QCOMPARE(shareOfMarks(image, 95, 105, azimuth, azimuth), 0.0);
}

void TestRadar::drawsTheLetters()
{
    QFETCH(QSize, size);
    const QImage image = drawn(size, {});
    const auto ink = [&](double left, double top, double right, double bottom) {
        return Pixels::count(image, areaBetween(size, left, top, right, bottom), Pixels::isDark);
    };
    const double height = letterMetrics().height();
    QVERIFY(ink(91, -8, 105, 5) > 10);                    // E, right of the circle
    QVERIFY(ink(-106, -8, -91, 5) > 10);                  // W, left of it
    QVERIFY(ink(-8, 92, 8, 92 + height) > 10);            // S, below it
    QVERIFY(ink(-8, -90 - height, 8, -92) > 10);          // N, above it
    QCOMPARE(ink(-80, -80, 80, 80), 0);                   // none on the plot
    QVERIFY(ink(-106, -8, -91, 5) > ink(91, -8, 105, 5)); // W has more ink than E
}

void TestRadar::outlinesTheGround()
{
    const QImage image = drawn(QSize(300, 200), {});
    const QRgb outside = QWidget().palette().window().color().rgb();
    QCOMPARE(image.pixel(0, 0), outside);
    QCOMPARE(image.pixel(299, 199), outside);
    QCOMPARE(image.pixel(5, 5), kWhite.rgb());
    // The pen of a new painter draws the rim; right and below it falls just outside the widget.
    const QRgb ink = QWidget().palette().windowText().color().rgb();
    QCOMPARE(image.pixel(50, 0), ink);
    QCOMPARE(image.pixel(0, 100), ink);
    QCOMPARE(image.pixel(50, 1), kWhite.rgb());
    QCOMPARE(image.pixel(50, 199), kWhite.rgb());
    QCOMPARE(image.pixel(299, 100), kWhite.rgb());
}

void TestRadar::fillsUsedAndLeavesOthersHollow()
{
    QFETCH(QSize, size);
    const QImage image = drawn(size, {satellite(5, 20, 45, true), satellite(6, 200, 45, false)});
    const auto at = [&](const QPointF &place, double dx, double dy) {
        return image.pixel(pixelAt(size, place.x() + dx, place.y() + dy));
    };
    const QPointF used = placeOf(20, 45);
    QCOMPARE(at(used, 0, 0), kRed.rgb());
    QCOMPARE(at(used, -1, 0), kRed.rgb());
    QCOMPARE(at(used, 0, 1), kRed.rgb());
    const QPointF other = placeOf(200, 45);
    QCOMPARE(at(other, 0, 0), kWhite.rgb());
    QCOMPARE(at(other, -0.9, 0), kWhite.rgb());
    QCOMPARE(at(other, 0, 0.9), kWhite.rgb());

    // Both have a rim one unit wide at the radius of two, dark red and not red.
    for (const QPointF &place : {used, other}) {
        const QRect around =
            areaBetween(size, place.x() - 3, place.y() - 3, place.x() + 3, place.y() + 3);
        const auto isDarkRed = [](QRgb pixel) {
            return pixel == kDarkRed.rgb();
        };
        QVERIFY(Pixels::count(image, around, isDarkRed) > 4);
        QVERIFY(isReddish(at(place, -2, 0)) && qRed(at(place, -2, 0)) < 220);
        QVERIFY(isReddish(at(place, 0, 2)) && qRed(at(place, 0, 2)) < 220);
        QVERIFY(!isReddish(at(place, -3.2, 0)));
    }
}

// A filled marker before or after a hollow one must not fill it.
void TestRadar::keepsMarkersApartInAnyOrder()
{
    const QSize size(900, 900);
    for (const bool usedFirst : {true, false}) {
        std::vector<tSvInfo> list;
        for (int i = 0; i < 8; ++i)
            list.push_back(satellite(i + 1, 22.5 + i * 45, 45, (i % 2 == 0) == usedFirst));
        const QImage image = drawn(size, list);
        for (const tSvInfo &sv : list) {
            const QPointF place = placeOf(sv.azimuth, sv.elevation);
            QCOMPARE(image.pixel(pixelAt(size, place.x(), place.y())),
                     (sv.used ? kRed : kWhite).rgb());
        }
    }
}

void TestRadar::marksTheDirection_data()
{
    QTest::addColumn<double>("azimuth");
    QTest::addColumn<double>("elevation");
    QTest::addColumn<QPointF>("place");
    QTest::newRow("north on the horizon is the top of the outer circle")
        << 0.0 << 0.0 << QPointF(0, -90);
    QTest::newRow("east on the horizon") << 90.0 << 0.0 << QPointF(90, 0);
    QTest::newRow("zenith, azimuth 0") << 0.0 << 90.0 << QPointF(0, 0);
    QTest::newRow("zenith, azimuth 123") << 123.0 << 90.0 << QPointF(0, 0);
    QTest::newRow("45 and 45 in the upper right") << 45.0 << 45.0 << QPointF(31.82, -31.82);
    QTest::newRow("south-west, low") << 225.0 << 10.0 << QPointF(-56.57, 56.57);
}

void TestRadar::marksTheDirection()
{
    QFETCH(double, azimuth);
    QFETCH(double, elevation);
    QFETCH(QPointF, place);
    for (const QSize &size : {QSize(580, 340), QSize(960, 560), QSize(341, 901)}) {
        const QImage image = drawn(size, {satellite(9, azimuth, elevation, true)});
        QCOMPARE(image.pixel(pixelAt(size, place.x(), place.y())), kRed.rgb());
        const QRect marker =
            areaBetween(size, place.x() - 3, place.y() - 3, place.x() + 3, place.y() + 3);
        QCOMPARE(Pixels::count(image, marker.adjusted(-1, -1, 1, 1), isReddish),
                 Pixels::count(image, image.rect(), isReddish)); // and nowhere else
    }
}

void TestRadar::writesTheNumberToTheLowerRight()
{
    QFETCH(QSize, size);
    const QPointF place = placeOf(110, 45);
    const QImage without = drawn(size, {});
    const QImage with = drawn(size, {satellite(88, 110, 45, true)});
    // The baseline is two units below the dot's centre, the text starts two units right of it, both
    // cut to whole units.
    const QRect text =
        areaBetween(size, place.x() + 1, place.y() - 6, place.x() + 14, place.y() + 3);
    int ink = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            if (with.pixel(x, y) == without.pixel(x, y) || isReddish(with.pixel(x, y)))
                continue;
            const QRect marker =
                areaBetween(size, place.x() - 3, place.y() - 3, place.x() + 3, place.y() + 3);
            QVERIFY(text.contains(x, y) || marker.contains(x, y));
            ink += Pixels::isColorless(with.pixel(x, y)) && text.contains(x, y) ? 1 : 0;
        }
    }
    QVERIFY(ink > 10);
    // Gray, so nothing of it is darker than the pen.
    QCOMPARE(Pixels::count(with, text, Pixels::isDark), 0);
}

void TestRadar::drawsAll32()
{
    const QSize size(900, 900);
    std::vector<tSvInfo> list;
    for (int i = 0; i < 32; ++i) // spread so that no number covers another's dot
        list.push_back(satellite(i + 1, 11.25 + (i % 8) * 45, 12 + (i / 8) * 18, true));
    const QImage image = drawn(size, list);
    for (const tSvInfo &sv : list) {
        const QPointF place = placeOf(sv.azimuth, sv.elevation);
        QCOMPARE(image.pixel(pixelAt(size, place.x(), place.y())), kRed.rgb());
    }
}

void TestRadar::drawsBelowTheHorizonOutsideTheCircle()
{
    const QSize size(1000, 500);
    const QImage image = drawn(size, {satellite(1, 60, -30, true), satellite(2, 240, -10, false)});
    const QPointF used = placeOf(60, -30);
    QVERIFY(std::hypot(used.x(), used.y()) > 119);
    QCOMPARE(image.pixel(pixelAt(size, used.x(), used.y())), kRed.rgb());
    const QPointF other = placeOf(240, -10);
    QVERIFY(isReddish(image.pixel(pixelAt(size, other.x() - 2, other.y()))));
}

void TestRadar::redrawsWhatItIsGiven()
{
    Radar plot;
    plot.resize(400, 300);
    const tSvInfo sv = satellite(1, 30, 50, true);
    plot.setSvInfo(&sv, 1);
    QVERIFY(Pixels::count(Pixels::of(plot), kRed) > 0);
    plot.resize(200, 400);
    const QImage image = Pixels::of(plot);
    const QPointF place = placeOf(30, 50);
    QVERIFY(isReddish(image.pixel(pixelAt(image.size(), place.x(), place.y()))));
    plot.setSvInfo(&sv, 0);
    QCOMPARE(Pixels::count(Pixels::of(plot), kRed), 0);
}

void TestRadar::survivesTinySizes_data()
{
    QTest::addColumn<QSize>("size");
    const QFontMetrics metrics = letterMetrics();
    const int noRoom = 3 * metrics.height(); // the plot has no size at all
    for (const QSize &size :
         {QSize(0, 0), QSize(0, 100), QSize(100, 0), QSize(1, 1), QSize(2, 2), QSize(1, 300),
          QSize(300, 1), QSize(300, 2), QSize(300, noRoom), QSize(300, noRoom - 1),
          QSize(300, noRoom + 1), QSize(noRoom + 3 * metrics.horizontalAdvance('W'), 300)})
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
}

void TestRadar::survivesTinySizes()
{
    QFETCH(QSize, size);
    const MessageLog log;
    for (const std::size_t count : {std::size_t(0), std::size_t(1), std::size_t(32)}) {
        QWidget page;
        page.resize(320, 320);
        auto *plot = new Radar(&page);
        plot->setGeometry(QRect(QPoint(10, 10), size));
        const std::vector<tSvInfo> list(count, satellite(65, 123, 45, count == 1));
        plot->setSvInfo(list.data(), static_cast<int>(count));
        page.show();
        const QImage image = Pixels::of(page);
        const QRgb ground = page.palette().window().color().rgb();
        QCOMPARE(image.pixel(9, 9), ground); // nothing spills onto the page
        QCOMPARE(image.pixel(10 + size.width(), 10 + size.height()), ground);
        Pixels::of(*plot);
    }
    QCOMPARE(log.warnings(), QStringList());
}

void TestRadar::survivesOddValues()
{
    const MessageLog log;
    const QSize size(400, 300);
    for (const double odd : kOddNumbers) {
        for (const bool used : {true, false}) {
            const QImage image =
                drawn(size, {satellite(2147483647, odd, 45, used), satellite(1, 45, odd, used),
                             satellite(2, odd, odd, used), satellite(3, 30, 50, true)});
            const QPointF place = placeOf(30, 50);
            QVERIFY(isReddish(image.pixel(pixelAt(size, place.x(), place.y()))));
        }
    }
    QCOMPARE(log.warnings(), QStringList());
}

QTEST_MAIN(TestRadar)
#include "TestRadar.moc"
