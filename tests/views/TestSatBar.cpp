// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SatBar.h"

#include "support/MessageLog.h"
#include "support/OddNumbers.h"
#include "support/Pixels.h"

#include <QFontMetrics>
#include <QPainter>
#include <QtTest>

#include <cmath>
#include <vector>

namespace {

const QColor kWhite(Qt::white);
const QColor kGray(Qt::gray);
const QColor kBlue(Qt::blue);
const QColor kGreen(Qt::green);

QFont textFont()
{
    QFont font;
    font.setPixelSize(12);
    return font;
}

int margin()
{
    return QFontMetrics(textFont()).height() + 4;
}

/// Pixels per dB-Hz in a widget of that height.
double scaleFor(int height)
{
    return static_cast<double>(static_cast<float>(height - 2 * margin()) / 100.0F);
}

int barTop(int height, double cn0)
{
    return static_cast<int>(margin() + (100 - cn0) * scaleFor(height));
}

int textX(int index, int slot, const QString &text)
{
    return static_cast<int>((index + 0.5) * slot -
                            QFontMetrics(textFont()).horizontalAdvance(text) / 2.0);
}

tSvInfo satellite(int prn, double cn0, bool used)
{
    return {prn, 0.0, 0.0, cn0, used};
}

QImage drawn(QSize size, const std::vector<tSvInfo> &list)
{
    SatBar chart;
    chart.resize(size);
    chart.setSvInfo(list.data(), static_cast<int>(list.size()));
    return Pixels::of(chart);
}

/// Pixels outside the four rounded corners that differ from the white ground.
int marksOnGround(const QImage &image)
{
    const auto isMark = [](QRgb pixel) {
        return pixel != kWhite.rgb();
    };
    return Pixels::count(image, image.rect().adjusted(10, 0, -10, 0), isMark) +
           Pixels::count(image, image.rect().adjusted(0, 10, 0, -10), isMark);
}

/// The box of `text` drawn alone, as the chart's text is to look: black on the background colour.
bool showsText(const QImage &image, const QPoint &origin, const QString &text)
{
    QImage alone(image.size(), QImage::Format_RGB32);
    alone.fill(Qt::white);
    QPainter painter(&alone);
    painter.setPen(QPen(Qt::black, 0));
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.setBackground(QWidget().palette().window());
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setFont(textFont());
    painter.drawText(origin, text);
    painter.end();
    const QFontMetrics metrics(textFont());
    const QRect box(origin.x(), origin.y() - metrics.ascent(), metrics.horizontalAdvance(text),
                    metrics.ascent());
    return Pixels::count(alone, box, Pixels::isDark) > 0 && alone.copy(box) == image.copy(box);
}

} // namespace

class TestSatBar : public QObject
{
    Q_OBJECT

private slots:
    void drawsOnlyTheGroundWithoutSatellites_data();
    void drawsOnlyTheGroundWithoutSatellites();
    void roundsTheCorners();
    void colorsByUseAndNumber_data();
    void colorsByUseAndNumber();
    void drawsBarsToThePixel_data();
    void drawsBarsToThePixel();
    void drawsTopAndBottomToThePixel_data();
    void drawsTopAndBottomToThePixel();
    void writesNumberAndValue_data();
    void writesNumberAndValue();
    void zeroDbHzHasNoBarAndTheText0AboveIt();
    void clipsNeitherHighNorNegativeValues();
    void keepsTheOrderOfTheList();
    void collapsesAtTheLeftWhenNarrowerThanTheCount();
    void redrawsWhatItIsGiven();
    void survivesTinySizes_data();
    void survivesTinySizes();
    void survivesOddValues();
};

void TestSatBar::drawsOnlyTheGroundWithoutSatellites_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("on the small screen") << QSize(580, 340);
    QTest::newRow("on the large screen") << QSize(960, 560);
    QTest::newRow("low") << QSize(300, 30);
}

void TestSatBar::drawsOnlyTheGroundWithoutSatellites()
{
    QFETCH(QSize, size);
    const QImage image = drawn(size, {});
    QCOMPARE(image.size(), size);
    QCOMPARE(marksOnGround(image), 0);
}

void TestSatBar::roundsTheCorners()
{
    const QImage image = drawn(QSize(300, 200), {});
    const QRgb outside = QWidget().palette().window().color().rgb();
    QVERIFY(outside != kWhite.rgb());
    for (const QPoint &corner : {QPoint(0, 0), QPoint(299, 0), QPoint(0, 199), QPoint(299, 199)})
        QCOMPARE(image.pixel(corner), outside);
    // A radius of 10 leaves 7 pixels of the diagonal's 10 to the ground.
    QCOMPARE(image.pixel(4, 4), kWhite.rgb());
    QCOMPARE(image.pixel(1, 1), outside);
}

void TestSatBar::colorsByUseAndNumber_data()
{
    QTest::addColumn<int>("prn");
    QTest::addColumn<bool>("used");
    QTest::addColumn<QColor>("color");
    QTest::newRow("12 used is blue") << 12 << true << kBlue;
    QTest::newRow("63 used is blue") << 63 << true << kBlue;
    QTest::newRow("64 used is green") << 64 << true << kGreen;
    QTest::newRow("65 used is green") << 65 << true << kGreen;
    QTest::newRow("301 used is green") << 301 << true << kGreen;
    QTest::newRow("0 used is blue") << 0 << true << kBlue;
    QTest::newRow("-1 used is blue") << -1 << true << kBlue;
    QTest::newRow("12 not used is gray") << 12 << false << kGray;
    QTest::newRow("65 not used is gray") << 65 << false << kGray;
}

void TestSatBar::colorsByUseAndNumber()
{
    QFETCH(int, prn);
    QFETCH(bool, used);
    QFETCH(QColor, color);
    const QImage image = drawn(QSize(100, 300), {satellite(prn, 50, used)});
    QCOMPARE(QColor(image.pixel(50, 200)), color);
    for (const QColor &other : {kBlue, kGreen, kGray}) {
        if (other != color)
            QCOMPARE(Pixels::count(image, other), 0);
    }
}

void TestSatBar::drawsBarsToThePixel_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("count");
    QTest::newRow("7 satellites in 700 pixels") << QSize(700, 300) << 7;
    QTest::newRow("3 satellites") << QSize(333, 200) << 3;
    QTest::newRow("31 satellites on the small screen") << QSize(580, 340) << 31;
    QTest::newRow("31 satellites on the large screen") << QSize(960, 560) << 31;
    QTest::newRow("32 satellites") << QSize(1000, 690) << 32;
}

void TestSatBar::drawsBarsToThePixel()
{
    QFETCH(QSize, size);
    QFETCH(int, count);
    std::vector<tSvInfo> list;
    for (int i = 0; i < count; ++i)
        list.push_back(satellite(i % 2 ? 65 + i : 1 + i, 30 + i % 20, i % 3 != 0));
    const QImage image = drawn(size, list);

    const int slot = size.width() / count;
    const int y = size.height() - margin() - 3; // inside every bar, below every text above one
    for (int i = 0; i < count; ++i) {
        const QRgb color = (i % 3 == 0 ? kGray : i % 2 ? kGreen : kBlue).rgb();
        const int left = static_cast<int>(i * slot + 0.05 * slot);
        const double right = left + 0.9 * slot;
        for (int x = left; x < static_cast<int>(right); ++x)
            QCOMPARE(image.pixel(x, y), color);
        if (left > 0)
            QCOMPARE(image.pixel(left - 1, y), kWhite.rgb());
        if (std::ceil(right) < size.width())
            QCOMPARE(image.pixel(static_cast<int>(std::ceil(right)), y), kWhite.rgb());
    }
}

void TestSatBar::drawsTopAndBottomToThePixel_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<double>("cn0");
    QTest::newRow("40 in 300") << 300 << 40.0;
    QTest::newRow("45.5 in 300") << 300 << 45.5;
    QTest::newRow("99 in 300") << 300 << 99.0;
    QTest::newRow("12.3 in 561") << 561 << 12.3;
    QTest::newRow("51 in 120") << 120 << 51.0;
}

void TestSatBar::drawsTopAndBottomToThePixel()
{
    QFETCH(int, height);
    QFETCH(double, cn0);
    const QImage image = drawn(QSize(200, height), {satellite(5, cn0, true)});
    const int top = barTop(height, cn0);
    const double bottom = top + cn0 * scaleFor(height);
    const int x = 12; // in the bar, beside the texts
    QCOMPARE(image.pixel(x, top - 1), kWhite.rgb());
    for (int y = top; y < static_cast<int>(bottom); ++y)
        QCOMPARE(image.pixel(x, y), kBlue.rgb());
    QCOMPARE(image.pixel(x, static_cast<int>(std::ceil(bottom))), kWhite.rgb());
}

void TestSatBar::writesNumberAndValue_data()
{
    QTest::addColumn<int>("prn");
    QTest::addColumn<double>("cn0");
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("value");
    QTest::newRow("40 is written 40") << 7 << 40.0 << "7"
                                      << "40";
    QTest::newRow("45.5 is written 45.5") << 65 << 45.5 << "65"
                                          << "45.5";
    QTest::newRow("three digits") << 301 << 38.25 << "301"
                                  << "38.25";
    QTest::newRow("six digits of a value") << 1 << 33.3333333 << "1"
                                           << "33.3333";
    QTest::newRow("nothing received") << 88 << 0.0 << "88"
                                      << "0";
}

void TestSatBar::writesNumberAndValue()
{
    QFETCH(int, prn);
    QFETCH(double, cn0);
    QFETCH(QString, number);
    QFETCH(QString, value);
    constexpr int slot = 100;
    constexpr int height = 300;
    const QImage image =
        drawn(QSize(2 * slot, height), {satellite(9, 20, true), satellite(prn, cn0, false)});
    QVERIFY(showsText(image, QPoint(textX(1, slot, number), height - 4), number));
    const int y = static_cast<int>(margin() + (100 - cn0) * scaleFor(height) - 4);
    QVERIFY(showsText(image, QPoint(textX(1, slot, value), y), value));
}

void TestSatBar::zeroDbHzHasNoBarAndTheText0AboveIt()
{
    const QImage image = drawn(QSize(100, 300), {satellite(7, 0, true)});
    QCOMPARE(Pixels::count(image, kBlue), 0);
    const int bottom = 300 - margin();
    const auto isMark = [](QRgb pixel) {
        return pixel != kWhite.rgb();
    };
    QCOMPARE(Pixels::count(image, QRect(10, bottom - 1, 30, 2), isMark), 0);
    // The scale is no exact number, so that the truncation may take a pixel.
    const int y = static_cast<int>(margin() + 100 * scaleFor(300) - 4);
    QVERIFY(y == bottom - 4 || y == bottom - 5);
    QVERIFY(showsText(image, QPoint(textX(0, 100, "0"), y), "0"));
}

void TestSatBar::clipsNeitherHighNorNegativeValues()
{
    const QImage image = drawn(QSize(200, 300), {satellite(1, 105, true), satellite(2, -5, false)});
    QVERIFY(5 * scaleFor(300) > 8);
    const int top = barTop(300, 105);
    QVERIFY(top < margin());
    QCOMPARE(image.pixel(12, top), kBlue.rgb());
    QCOMPARE(image.pixel(12, top - 1), kWhite.rgb());

    const int foot = barTop(300, -5);
    QCOMPARE(image.pixel(112, foot - 1), kGray.rgb());
    QCOMPARE(image.pixel(112, foot + 1), kWhite.rgb());
    QCOMPARE(image.pixel(112, 300 - margin() - 2), kWhite.rgb());
}

void TestSatBar::keepsTheOrderOfTheList()
{
    const QImage image = drawn(QSize(300, 300), {satellite(88, 50, true), satellite(3, 40, true),
                                                 satellite(17, 45, false)});
    QCOMPARE(image.pixel(50, 250), kGreen.rgb());
    QCOMPARE(image.pixel(150, 250), kBlue.rgb());
    QCOMPARE(image.pixel(250, 250), kGray.rgb());
}

void TestSatBar::collapsesAtTheLeftWhenNarrowerThanTheCount()
{
    const std::vector<tSvInfo> list(32, satellite(65, 40, true));
    const QImage image = drawn(QSize(31, 300), list);
    QCOMPARE(Pixels::count(image, kGreen), 0);
    const auto isMark = [](QRgb pixel) {
        return pixel != kWhite.rgb();
    };
    const int halfText = (QFontMetrics(textFont()).horizontalAdvance("65") + 1) / 2;
    QVERIFY(Pixels::count(image, QRect(0, 10, halfText + 1, 280), Pixels::isDark) > 0);
    QCOMPARE(Pixels::count(image, QRect(halfText + 1, 10, 31, 280), isMark), 0);
}

void TestSatBar::redrawsWhatItIsGiven()
{
    SatBar chart;
    chart.resize(200, 300);
    const tSvInfo sv = satellite(1, 50, true);
    chart.setSvInfo(&sv, 1);
    QVERIFY(Pixels::count(Pixels::of(chart), kBlue) > 0);
    chart.resize(400, 200);
    QVERIFY(Pixels::count(Pixels::of(chart), kBlue) > 0);
    chart.setSvInfo(&sv, 0);
    QCOMPARE(marksOnGround(Pixels::of(chart)), 0);
}

void TestSatBar::survivesTinySizes_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size :
         {QSize(0, 0), QSize(0, 100), QSize(100, 0), QSize(1, 1), QSize(2, 2), QSize(1, 300),
          QSize(300, 1), QSize(2, 300), QSize(300, 2), QSize(31, 31), QSize(33, 2 * margin())})
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
}

void TestSatBar::survivesTinySizes()
{
    QFETCH(QSize, size);
    const MessageLog log;
    for (const std::size_t count : {std::size_t(0), std::size_t(1), std::size_t(32)}) {
        QWidget page;
        page.resize(320, 320);
        auto *chart = new SatBar(&page);
        chart->setGeometry(QRect(QPoint(10, 10), size));
        const std::vector<tSvInfo> list(count, satellite(65, 40, true));
        chart->setSvInfo(list.data(), static_cast<int>(count));
        page.show();
        const QImage image = Pixels::of(page);
        const QRgb ground = page.palette().window().color().rgb();
        QCOMPARE(image.pixel(9, 9), ground); // nothing spills onto the page
        QCOMPARE(image.pixel(10 + size.width(), 10 + size.height()), ground);
        Pixels::of(*chart);
    }
    QCOMPARE(log.warnings(), QStringList());
}

void TestSatBar::survivesOddValues()
{
    const MessageLog log;
    for (const QSize &size : {QSize(400, 300), QSize(20, 20), QSize(400, 2 * margin())}) {
        for (const double odd : kOddNumbers) {
            const QImage image =
                drawn(size, {satellite(2147483647, odd, true), satellite(3, 40, true)});
            QCOMPARE(image.size(), size);
        }
    }
    QCOMPARE(log.warnings(), QStringList());
}

QTEST_MAIN(TestSatBar)
#include "TestSatBar.moc"
