// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchStyle.h"
#include "support/TextRecorder.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QFontInfo>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSlider>
#include <QSpinBox>
#include <QStyleOptionSpinBox>
#include <QtTest>

namespace {

constexpr int kFinger = 40;

} // namespace

class TestTouchStyle : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void appliesToTheApplication();
    void widgetsWantAFinger();
    void textsFit_data();
    void textsFit();
    void shownTextsFit();
    void textThatFitsKeepsItsFont();
    void spinArrowsStandBesideEachOther();
    void spinArrowsStep();
    void narrowSpinBoxKeepsAField();
    void wholeRowTakesThePress();
    void pressReleasedElsewhereDoesNothing();
    void folderChooserFillsTheScreen();
};

void TestTouchStyle::initTestCase()
{
    TouchStyle::apply({800, 480});
    // As in the program: a style sheet wraps the style, and asks it less than it would be asked
    // alone.
    qApp->setStyleSheet("QGroupBox {  border: 1px solid gray; border-radius: 5px; }");
}

void TestTouchStyle::appliesToTheApplication()
{
    QCOMPARE(QApplication::font().pixelSize(), 13);
    const QLabel label("text");
    QCOMPARE(label.font().pixelSize(), 13);
}

void TestTouchStyle::widgetsWantAFinger()
{
    QPushButton button("...");
    QCheckBox box("Text");
    QRadioButton circle("Cold");
    QSlider slider(Qt::Horizontal);
    for (QWidget *widget : std::initializer_list<QWidget *>{&button, &box, &circle, &slider}) {
        widget->ensurePolished();
        QVERIFY2(widget->sizeHint().height() >= kFinger, widget->metaObject()->className());
        QVERIFY2(widget->sizeHint().width() >= kFinger, widget->metaObject()->className());
    }
    QCOMPARE(box.style()->pixelMetric(QStyle::PM_IndicatorWidth), 24);
    QCOMPARE(circle.style()->pixelMetric(QStyle::PM_ExclusiveIndicatorHeight), 24);
    QCOMPARE(slider.style()->pixelMetric(QStyle::PM_SliderLength), kFinger);
}

void TestTouchStyle::textsFit_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QSize>("room");
    QTest::addColumn<bool>("sameLetters");
    QTest::addColumn<bool>("wrapped");
    QTest::newRow("as it is") << "Location" << QSize(300, 60) << true << false;
    QTest::newRow("wraps first") << "TTFF not avaiable" << QSize(130, 80) << true << true;
    QTest::newRow("one word shrinks") << "Location" << QSize(60, 60) << false << false;
    QTest::newRow("too low") << "Location" << QSize(300, 14) << false << false;
    QTest::newRow("two lines shrink") << "Show\nLocation" << QSize(60, 24) << false << false;
}

void TestTouchStyle::textsFit()
{
    QFETCH(QString, text);
    QFETCH(QSize, room);
    QFont font;
    font.setPixelSize(22);
    const auto fitted = TouchStyle::fitted(font, text, room, Qt::AlignCenter);
    QTEST(QFontInfo(fitted.font).pixelSize() == 22, "sameLetters");
    QTEST(bool(fitted.flags & Qt::TextWordWrap), "wrapped");
    const QRect drawn =
        QFontMetrics(fitted.font).boundingRect(QRect(QPoint(), room), fitted.flags, text);
    QVERIFY(QRect(QPoint(), room).adjusted(-1, -1, 1, 1).contains(drawn));
}

void TestTouchStyle::shownTextsFit()
{
    QPushButton button("Show\nLocation");
    QFont font = button.font();
    font.setPointSize(16);
    button.setFont(font);
    button.resize(62, 30);
    const QVector<TextRecorder::tText> texts = TextRecorder::textsOf(&button);
    QCOMPARE(texts.size(), 2);
    for (const TextRecorder::tText &text : texts)
        QVERIFY2(QRectF(button.rect()).contains(text.place), qPrintable(text.text));
    QCOMPARE(button.font().pointSize(), 16);
}

void TestTouchStyle::textThatFitsKeepsItsFont()
{
    QLabel label("Lon:");
    label.resize(label.sizeHint());
    const QVector<TextRecorder::tText> texts = TextRecorder::textsOf(&label);
    QCOMPARE(texts.size(), 1);
    QCOMPARE(texts.first().letterPixels, 13);
}

void TestTouchStyle::spinArrowsStandBesideEachOther()
{
    QSpinBox box;
    box.resize(200, 50);
    QStyleOptionSpinBox option;
    option.initFrom(&box);
    const auto part = [&](QStyle::SubControl control) {
        return box.style()->subControlRect(QStyle::CC_SpinBox, &option, control, &box);
    };
    QCOMPARE(part(QStyle::SC_SpinBoxDown), QRect(120, 0, kFinger, 50));
    QCOMPARE(part(QStyle::SC_SpinBoxUp), QRect(160, 0, kFinger, 50));
    QVERIFY(QRect(0, 0, 120, 50).contains(part(QStyle::SC_SpinBoxEditField)));
    QCOMPARE(part(QStyle::SC_SpinBoxFrame), box.rect());
}

void TestTouchStyle::spinArrowsStep()
{
    QSpinBox box;
    box.setValue(20);
    box.resize(200, 50);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QTest::mouseClick(&box, Qt::LeftButton, {}, {198, 2});
    QTest::mouseClick(&box, Qt::LeftButton, {}, {162, 48});
    QCOMPARE(box.value(), 22);
    QTest::mouseClick(&box, Qt::LeftButton, {}, {158, 2});
    QCOMPARE(box.value(), 21);
}

void TestTouchStyle::narrowSpinBoxKeepsAField()
{
    QSpinBox box;
    box.resize(60, 50);
    QStyleOptionSpinBox option;
    option.initFrom(&box);
    QCOMPARE(box.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, &box),
             QRect(40, 0, 20, 50));
}

void TestTouchStyle::wholeRowTakesThePress()
{
    QCheckBox box("GPS");
    box.ensurePolished();
    box.resize(200, 50);
    for (const QPoint place : {QPoint(199, 0), QPoint(0, 49), QPoint(12, 25), QPoint(100, 40)}) {
        const bool before = box.isChecked();
        QTest::mouseClick(&box, Qt::LeftButton, {}, place);
        QCOMPARE(box.isChecked(), !before);
    }
    QRadioButton circle("Cold");
    circle.ensurePolished();
    circle.resize(200, 50);
    QTest::mouseClick(&circle, Qt::LeftButton, {}, {190, 5});
    QVERIFY(circle.isChecked());
}

void TestTouchStyle::pressReleasedElsewhereDoesNothing()
{
    QCheckBox box("GPS");
    box.ensurePolished();
    box.resize(200, 50);
    QTest::mousePress(&box, Qt::LeftButton, {}, {190, 5});
    QVERIFY(box.isDown());
    QTest::mouseRelease(&box, Qt::LeftButton, {}, {190, 80});
    QVERIFY(!box.isChecked());
    QVERIFY(!box.isDown());
}

void TestTouchStyle::folderChooserFillsTheScreen()
{
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.size(), dialog.screen()->availableSize());
}

QTEST_MAIN(TestTouchStyle)
#include "TestTouchStyle.moc"
