// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchStyle.h"
#include "config/LogView.h"

#include "config/ConfigFile.h"
#include "gnss/GnssInfo.h"
#include "support/Child.h"
#include "support/LayoutCheck.h"
#include "support/MessageLog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPaintEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QtTest>
#include <QVBoxLayout>

#include <memory>

namespace {

const QByteArray kSentence = "$GPGSV,3,1,12,01,40,083,46,02,17,308,41,12,07,344,39*7D\r\n";

void receive(const QByteArray &text)
{
    GnssInfo::instance()->setNmeaData(QString::fromLatin1(text));
}

/// Counts how often a widget paints that point of it.
class PaintWatch : public QObject
{
public:
    PaintWatch(QWidget *watched, QPoint at)
        : point(at)
    {
        watched->installEventFilter(this);
    }

    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint &&
            static_cast<QPaintEvent *>(event)->region().contains(point))
            ++count;
        return false;
    }

private:
    QPoint point;
};

} // namespace

class TestLogView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void hasTheForm();
    void slotsHaveTheirAgreedOrder();
    void showsTheDirectoryAsReadAtTheStart();
    void buttonDoesNothing();
    void threeUpdatesShowThreeBlocksTheFourthOnlyItsOwn();
    void updateWithoutTextAppendsAnEmptyParagraphAndOpensAnEmptyFile();
    void textIsTakenOutOfTheModel();
    void noiseThatLooksLikeMarkupStays_data();
    void noiseThatLooksLikeMarkupStays();
    void followsTheEndUnlessScrolledAway();
    void burstIsShownInSlicesThatLetEventsThrough();
    void burstStillWaitingIsFollowedByTheNextText();
    void burstStillWaitingIsDroppedWithTheDisplay();
    void longLineIsShownWhole();
    void tickedBoxRecordsEveryUpdate();
    void untickedBoxWritesNothing();
    void untickedBoxClosesTheFileAtTheNextUpdateAndTickedAgainMakesASecond();
    void clickOnTheBoxLeavesTheFileOpen();
    void everyUpdateRepaintsThePage();
    void textGoesOutAsLatin1();
    void fitsThePageArea_data();
    void fitsThePageArea();

private:
    template<typename T>
    T *child(const char *name) const
    {
        return childOf<T>(*page, name);
    }
    QTextEdit *display() const { return child<QTextEdit>("textEdit"); }
    QString shown() const { return display()->toPlainText(); }
    void tick(bool on) const { child<QCheckBox>("checkBox")->setChecked(on); }
    QStringList logs() const
    {
        return QDir(root->filePath("GNSS")).entryList(QDir::Files, QDir::Time | QDir::Reversed);
    }
    QByteArray logged(int index) const
    {
        QFile file(root->filePath("GNSS/" + logs().value(index)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<MessageLog> trace;
    std::unique_ptr<LogView> page;
};

// The subdirectory is made once per run, in the directory configured then.
void TestLogView::initTestCase()
{
    TouchStyle::apply({800, 480});
    root = std::make_unique<QTemporaryDir>();
    ConfigFile::instance()->setDirectory(QFile::encodeName(root->path()).constData());
}

void TestLogView::init()
{
    QDir(root->filePath("GNSS")).removeRecursively();
    QVERIFY(QDir(root->path()).mkdir("GNSS"));
    GnssInfo::instance()->clearNmeaData();
    trace = std::make_unique<MessageLog>();
    page = std::make_unique<LogView>();
    page->resize(617, 455);
    page->show();
    QVERIFY(QTest::qWaitForWindowExposed(page.get()));
}

void TestLogView::cleanup()
{
    tick(false);
    page->updateLogView(); // closes the log
    QStringList warnings = trace->warnings();
    // Said by the offscreen platform about any window.
    warnings.removeAll("This plugin does not support propagateSizeHints()");
    page.reset();
    trace.reset();
    QCOMPARE(warnings, QStringList());
}

void TestLogView::hasTheForm()
{
    QCOMPARE(page->objectName(), QString("LogView"));
    QCOMPARE(page->windowTitle(), QString("Form"));
    auto *const column = qobject_cast<QVBoxLayout *>(page->layout());
    QVERIFY(column);
    QCOMPARE(column->objectName(), QString("verticalLayout"));
    const auto *const row = qobject_cast<QHBoxLayout *>(column->itemAt(0)->layout());
    QVERIFY(row);
    QCOMPARE(row->objectName(), QString("horizontalLayout"));
    QCOMPARE(row->count(), 4);
    QCOMPARE(row->itemAt(0)->widget(), child<QComboBox>("comboBox_logType"));
    QCOMPARE(row->itemAt(1)->widget(), child<QLineEdit>("lineEdit"));
    QCOMPARE(row->itemAt(2)->widget(), child<QPushButton>("pushButton"));
    QCOMPARE(row->itemAt(3)->widget(), child<QCheckBox>("checkBox"));
    QCOMPARE(column->itemAt(1)->widget(), display());
    QCOMPARE(child<QPushButton>("pushButton")->text(), QString("..."));
    QCOMPARE(child<QCheckBox>("checkBox")->text(), QString("Save as File"));
    QVERIFY(!child<QCheckBox>("checkBox")->isChecked());
    const auto *const types = child<QComboBox>("comboBox_logType");
    QCOMPARE(types->count(), 1);
    QCOMPARE(types->currentIndex(), 0);
    QCOMPARE(types->currentText(), QString("NMEA"));
}

void TestLogView::slotsHaveTheirAgreedOrder()
{
    const QMetaObject &meta = LogView::staticMetaObject;
    QByteArrayList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names << meta.method(i).methodSignature();
    QCOMPARE(names, QByteArrayList({"updateLogView()", "on_checkBox_clicked()"}));
}

void TestLogView::showsTheDirectoryAsReadAtTheStart()
{
    QCOMPARE(child<QLineEdit>("lineEdit")->text(), root->path());
    ConfigFile::instance()->setDirectory("/else");
    page->updateLogView();
    QCOMPARE(child<QLineEdit>("lineEdit")->text(), root->path());
    ConfigFile::instance()->setDirectory(QFile::encodeName(root->path()).constData());
}

void TestLogView::buttonDoesNothing()
{
    receive(kSentence);
    page->updateLogView();
    const QString before = shown();
    QTest::mouseClick(child<QPushButton>("pushButton"), Qt::LeftButton);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(shown(), before);
}

void TestLogView::threeUpdatesShowThreeBlocksTheFourthOnlyItsOwn()
{
    const QStringList expected = {"one", "one\ntwo", "one\ntwo\nthree", "four", "four\nfive"};
    const QByteArrayList texts = {"one", "two", "three", "four", "five"};
    for (int i = 0; i < texts.size(); ++i) {
        receive(texts[i]);
        page->updateLogView();
        QCOMPARE(shown(), expected[i]);
    }
}

void TestLogView::updateWithoutTextAppendsAnEmptyParagraphAndOpensAnEmptyFile()
{
    receive("one");
    page->updateLogView();
    tick(true);
    page->updateLogView();
    QCOMPARE(shown(), QString("one\n"));
    QCOMPARE(logs().size(), 1);
    QCOMPARE(logged(0), QByteArray());
}

void TestLogView::textIsTakenOutOfTheModel()
{
    receive(kSentence);
    page->updateLogView();
    QCOMPARE(GnssInfo::instance()->getNmeaData(), QString());
}

void TestLogView::noiseThatLooksLikeMarkupStays_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("bold") << QByteArray("<b>$GPGGA</b>");
    QTest::newRow("document") << QByteArray("<html><body></body></html>");
    QTest::newRow("image") << QByteArray("<img src=\"/etc/passwd\">");
    QTest::newRow("entity") << QByteArray("&lt;&amp;");
    QTest::newRow("comment") << QByteArray("<!-- $GPGGA -->");
    QTest::newRow("blanks") << QByteArray("a   b  ");
}

void TestLogView::noiseThatLooksLikeMarkupStays()
{
    QFETCH(QByteArray, text);
    receive(text);
    page->updateLogView();
    QCOMPARE(shown(), QString::fromLatin1(text));
}

void TestLogView::followsTheEndUnlessScrolledAway()
{
    const QScrollBar *const bar = display()->verticalScrollBar();
    receive(kSentence.repeated(100));
    page->updateLogView();
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), bar->maximum());
    display()->verticalScrollBar()->setValue(10);
    receive(kSentence.repeated(100));
    page->updateLogView();
    QCOMPARE(bar->value(), 10);
}

void TestLogView::burstIsShownInSlicesThatLetEventsThrough()
{
    const QByteArray burst = kSentence.repeated(1000000 / kSentence.size());
    const QString expected = QString::fromLatin1(burst).replace("\r\n", "\n");
    receive(burst);
    page->updateLogView();
    int turns = 0;
    int shownBefore = 0;
    while (shown().size() < expected.size()) {
        QVERIFY(shown().size() > shownBefore || turns == 0);
        shownBefore = shown().size();
        QVERIFY(++turns < 100);
        QCoreApplication::processEvents();
    }
    QVERIFY(turns > 10);
    QCOMPARE(shown(), expected);
}

void TestLogView::burstStillWaitingIsFollowedByTheNextText()
{
    const QByteArray burst = kSentence.repeated(2000);
    receive(burst);
    page->updateLogView();
    receive("next");
    page->updateLogView();
    QTRY_COMPARE(shown(), QString::fromLatin1(burst).replace("\r\n", "\n") + "\nnext");
}

void TestLogView::burstStillWaitingIsDroppedWithTheDisplay()
{
    page->updateLogView();
    page->updateLogView();
    receive(kSentence.repeated(20000));
    page->updateLogView();
    receive("fourth");
    page->updateLogView();
    QCoreApplication::processEvents();
    QCOMPARE(shown(), QString("fourth"));
}

void TestLogView::longLineIsShownWhole()
{
    const QByteArray line(100000, 'x');
    receive(line);
    page->updateLogView();
    QTRY_COMPARE(shown(), QString::fromLatin1(line));
}

void TestLogView::tickedBoxRecordsEveryUpdate()
{
    QTest::mouseClick(child<QCheckBox>("checkBox"), Qt::LeftButton, {},
                      QPoint(12, child<QCheckBox>("checkBox")->height() / 2));
    QVERIFY(child<QCheckBox>("checkBox")->isChecked());
    QCOMPARE(logs(), QStringList()); // read at the next update
    for (const QByteArray &text : {kSentence, QByteArray("half a sen"), QByteArray("tence\r\n")}) {
        receive(text);
        page->updateLogView();
    }
    QCOMPARE(logs().size(), 1);
    QVERIFY(
        QRegularExpression("^\\d\\d-\\d\\d-\\d{4}_\\d{6}_nmea\\.log$").match(logs()[0]).hasMatch());
    QCOMPARE(logged(0), kSentence + "half a sentence\r\n");
}

void TestLogView::untickedBoxWritesNothing()
{
    receive(kSentence);
    page->updateLogView();
    QCOMPARE(logs(), QStringList());
}

void TestLogView::untickedBoxClosesTheFileAtTheNextUpdateAndTickedAgainMakesASecond()
{
    tick(true);
    receive("one");
    page->updateLogView();
    tick(false);
    receive("two");
    page->updateLogView();
    const QDateTime first = QDateTime::currentDateTime();
    QTRY_VERIFY(QDateTime::currentDateTime().toString("ss") != first.toString("ss"));
    tick(true);
    receive("three");
    page->updateLogView();
    QCOMPARE(logs().size(), 2);
    QCOMPARE(logged(0), QByteArray("one"));
    QCOMPARE(logged(1), QByteArray("three"));
}

void TestLogView::clickOnTheBoxLeavesTheFileOpen()
{
    const auto openLogs = [this] {
        int count = 0;
        for (const QFileInfo &entry :
             QDir("/proc/self/fd").entryInfoList(QDir::Files | QDir::System))
            count += entry.symLinkTarget().startsWith(root->path()) ? 1 : 0;
        return count;
    };
    tick(true);
    page->updateLogView();
    QCOMPARE(openLogs(), 1);
    child<QCheckBox>("checkBox")->click();
    QVERIFY(!child<QCheckBox>("checkBox")->isChecked());
    QCoreApplication::processEvents();
    QCOMPARE(openLogs(), 1);
    page->updateLogView();
    QCOMPARE(openLogs(), 0);
}

void TestLogView::everyUpdateRepaintsThePage()
{
    // Also where there is nothing but the page itself.
    const PaintWatch watch(page.get(), QPoint(0, 0));
    for (int i = 0; i < 4; ++i) {
        QCoreApplication::processEvents();
        const int before = watch.count;
        page->updateLogView();
        QTRY_COMPARE(watch.count, before + 1);
    }
}

void TestLogView::textGoesOutAsLatin1()
{
    tick(true);
    receive("a\xb0"
            "b");
    GnssInfo::instance()->setNmeaData(QString(QChar(0x20AC)));
    page->updateLogView();
    // The log's stream writes in the system's encoding; what Latin-1 lacks has become "?".
    QCOMPARE(QString::fromLocal8Bit(logged(0)), QString::fromLatin1("a\xb0"
                                                                    "b?"));
}

void TestLogView::fitsThePageArea_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("800x480") << QSize(617, 455);
    QTest::newRow("1280x720") << QSize(1000, 690);
}

void TestLogView::fitsThePageArea()
{
    QFETCH(QSize, size);
    page->resize(size);
    receive(kSentence.repeated(50));
    page->updateLogView();
    QCoreApplication::processEvents();
    QCOMPARE(page->size(), size);
    QCOMPARE(layoutFaults(*page), QStringList());
    for (const char *name : {"comboBox_logType", "lineEdit", "pushButton", "checkBox"})
        QVERIFY2(child<QWidget>(name)->height() >= 40, name);
}

QTEST_MAIN(TestLogView)
#include "TestLogView.moc"
