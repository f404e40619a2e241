// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchStyle.h"
#include "base/SystemError.h"
#include "control/ControlView.h"
#include "gnss/GnssInfo.h"
#include "support/Child.h"
#include "support/CommandPipeReader.h"
#include "support/LayoutCheck.h"
#include "support/MessageLog.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <thread>
#include <unistd.h>

namespace {

constexpr int kIdle = 1;
constexpr int kRunning = 2;

struct Constellation
{
    const char *checkBox;
    unsigned int bit;
    bool core;
};

constexpr Constellation kConstellations[] = {
    {"checkBox_locGPS", 0x01, true},     {"checkBox_locGlonass", 0x02, true},
    {"checkBox_locGalileo", 0x04, true}, {"checkBox_locBDS", 0x08, true},
    {"checkBox_locSBAS", 0x10, false},   {"checkBox_locQZSS", 0x20, false},
};

const QString kCleared = "clear()";
const QString kTtffUpdate = "ttffUpdate()";

/// Everything written to standard output while it lives, also what was flushed a moment ago.
class StandardOutput
{
public:
    explicit StandardOutput(const QString &path)
        : file(path)
        , saved(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        file.open(QIODevice::ReadWrite | QIODevice::Unbuffered);
        dup2(file.handle(), STDOUT_FILENO);
    }
    ~StandardOutput()
    {
        std::fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        close(saved);
    }
    StandardOutput(const StandardOutput &) = delete;
    StandardOutput &operator=(const StandardOutput &) = delete;

    QByteArray text()
    {
        QFile again(file.fileName());
        return again.open(QIODevice::ReadOnly) ? again.readAll() : QByteArray();
    }

private:
    QFile file;
    int saved;
};

} // namespace

class TestControlView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void firstDisplay();
    void groupsAndFonts_data();
    void groupsAndFonts();
    void instanceIsOnePageWithoutAParent();
    void signalsAndSlotsHaveTheirAgreedOrder();
    void accessorsGiveTheStartAndTheResetButton();
    void dataMovesTheStateToRunningAndItsLossToUnknown();
    void startingSendsTheCommandBetweenClearAndTheTimer();
    void pressingStartTwiceStopsAndDisablesTheTimer();
    void dataAfterAStopMovesTheStateToRunningAgain();
    void startSlotsTouchNoLabel();
    void resetSendsTheChosenTypeThenClears_data();
    void resetSendsTheChosenTypeThenClears();
    void resetWithoutAChoiceSendsAnEmptyCommand();
    void resetTypeSelectsTheSentence_data();
    void resetTypeSelectsTheSentence();
    void updateResetTypeSendsTheChosenSentence_data();
    void updateResetTypeSendsTheChosenSentence();
    void resetWithKnownTtffShowsItAsNotAvailableAtOnce();
    void ttffIsShownInSeconds_data();
    void ttffIsShownInSeconds();
    void everyConstellationMaskIsSent_data();
    void everyConstellationMaskIsSent();
    void constellationCountIsEmittedBeforeTheCommandAndClearAfterIt();
    void unwritablePipeShowsTheErrorLineAndIsStillMarkedRunning();
    void pipeWithoutReaderIsWaitedForAndThePageGoesOn();
    void utcIsShownOnlyAfterShowTime();
    void utcText_data();
    void utcText();
    void positionIsShownOnlyAfterShowLocation();
    void positionText_data();
    void positionText();
    void fitsTheScreens_data();
    void fitsTheScreens();
    void refreshViewChangesNothing();

private:
    template<typename T>
    T *child(const char *name) const
    {
        return childOf<T>(*page, name);
    }
    QString labelText(const char *name) const { return child<QLabel>(name)->text(); }
    void press(const char *name) const
    {
        QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton);
    }
    /// Notes the page's signals among the trace lines, and has a clear() empty the model.
    void followSignals();

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<MessageLog> trace;
    std::unique_ptr<CommandPipeReader> reader;
    std::unique_ptr<ControlView> page;
    GnssInfo *const model = GnssInfo::instance();
};

void TestControlView::initTestCase()
{
    TouchStyle::apply({800, 480});
    qApp->setStyleSheet("QGroupBox {  border: 1px solid gray; border-radius: 5px; }");
}

void TestControlView::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(root->path()).mkdir("tmp"));
    qputenv("TAVRIN_ROOT", QFile::encodeName(root->path()));
    reader = std::make_unique<CommandPipeReader>(QFile::encodeName(root->filePath("tmp/agiout")));
    model->setDataStatus(false);
    model->clearGnssInfo();
    model->clearUtcTime();
    trace = std::make_unique<MessageLog>();
    page = std::make_unique<ControlView>();
    page->resize(617, 458);
    page->show();
}

void TestControlView::cleanup()
{
    page.reset();
    reader.reset();
    QStringList warnings = trace->warnings();
    warnings.removeAll("This plugin does not support propagateSizeHints()");
    trace.reset();
    QCOMPARE(warnings, QStringList());
}

void TestControlView::followSignals()
{
    MessageLog *const lines = trace.get();
    connect(page.get(), &ControlView::notSingleConstellation, page.get(),
            [lines](unsigned int count) { lines->note(QString("constellations %1").arg(count)); });
    connect(page.get(), &ControlView::enableTimer, page.get(),
            [lines] { lines->note("enableTimer()"); });
    connect(page.get(), &ControlView::disableTimer, page.get(),
            [lines] { lines->note("disableTimer()"); });
    connect(page.get(), &ControlView::clear, page.get(), [lines] { lines->note(kCleared); });
    connect(page.get(), &ControlView::clear, page.get(), [this] {
        model->clearLocation();
        model->clearSvStatus();
        model->clearTtff();
    });
    connect(model, &GnssInfo::ttffUpdate, page.get(), [lines] { lines->note(kTtffUpdate); });
    trace->clear();
}

void TestControlView::firstDisplay()
{
    QCOMPARE(labelText("label_state"), QString("Unknown"));
    QCOMPARE(child<QPushButton>("pushButton_start")->text(), QString("Start"));
    QCOMPARE(labelText("label_TTFF"), QString("TTFF:"));
    QCOMPARE(page->getState(), 0);
    const QMap<QString, QString> radios = {{"radioButton_warmReset", "Warm"},
                                           {"radioButton_coldReset", "Cold"},
                                           {"radioButton_hotReset", "Hot"},
                                           {"radioButton_factoryReset", "Factory"}};
    for (const auto *radio : page->findChildren<QRadioButton *>()) {
        QCOMPARE(radio->text(), radios.value(radio->objectName()));
        QCOMPARE(radio->isChecked(), radio->text() == "Cold");
    }
    const QMap<QString, QString> boxes = {
        {"checkBox_locGPS", "GPS"},         {"checkBox_locBDS", "BDS"},
        {"checkBox_locQZSS", "QZSS"},       {"checkBox_locSBAS", "SBAS"},
        {"checkBox_locGlonass", "Glonass"}, {"checkBox_locGalileo", "Galileo"}};
    QCOMPARE(page->findChildren<QCheckBox *>().size(), boxes.size());
    for (const auto *box : page->findChildren<QCheckBox *>()) {
        QCOMPARE(box->text(), boxes.value(box->objectName()));
        QCOMPARE(box->isChecked(), box->text() == "GPS" || box->text() == "Glonass");
    }
    for (const char *empty : {"label_2", "label_3", "label_4", "label_5", "label_6", "label_7",
                              "label_8", "label_9", "label_time", "label_loc"})
        QCOMPARE(labelText(empty), QString());
    QCOMPARE(labelText("label"), QString("Status :"));
    QCOMPARE(child<QPushButton>("pushButton_GpsReset")->text(), QString("Reset"));
    QCOMPARE(child<QPushButton>("pushButton_locTechSet")->text(), QString("Set"));
    QCOMPARE(child<QPushButton>("pushButton_ShowTime")->text(), QString("Show\nTime"));
    QCOMPARE(child<QPushButton>("pushButton_ShowLoc")->text(), QString("Show\nLocation"));
}

void TestControlView::groupsAndFonts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("points");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<bool>("italic");
    const int any = 0;
    QTest::newRow("start mode") << "groupBox_StartMode"
                                << "Start Mode" << any << true << false;
    QTest::newRow("location") << "groupBox_LocaTech"
                              << "Location Tech" << any << true << false;
    QTest::newRow("start control") << "groupBox_StartStop"
                                   << "Start Control" << any << true << false;
    QTest::newRow("status") << "groupBox_GnssStatus"
                            << "GNSS Status" << any << true << false;
    QTest::newRow("set") << "pushButton_locTechSet"
                         << "" << 16 << true << false;
    QTest::newRow("start") << "pushButton_start"
                           << "" << 28 << true << false;
    QTest::newRow("show time") << "pushButton_ShowTime"
                               << "" << 16 << false << false;
    QTest::newRow("show location") << "pushButton_ShowLoc"
                                   << "" << 16 << false << false;
    QTest::newRow("state's name") << "label"
                                  << "" << 16 << false << false;
    QTest::newRow("state") << "label_state"
                           << "" << 20 << false << true;
}

void TestControlView::groupsAndFonts()
{
    QFETCH(QString, name);
    QFETCH(QString, title);
    QFETCH(int, points);
    QFETCH(bool, bold);
    QFETCH(bool, italic);
    const auto *const widget = page->findChild<QWidget *>(name);
    QVERIFY(widget);
    if (points > 0)
        QCOMPARE(widget->font().pointSize(), points);
    QCOMPARE(widget->font().bold(), bold);
    QCOMPARE(widget->font().italic(), italic);
    if (const auto *const group = qobject_cast<const QGroupBox *>(widget)) {
        QCOMPARE(group->title(), title);
        QVERIFY(!group->isCheckable());
    }
    if (name == "pushButton_start") {
        QCOMPARE(widget->minimumHeight(), 27);
        QVERIFY(!child<QPushButton>("pushButton_start")->isFlat());
    }
}

void TestControlView::instanceIsOnePageWithoutAParent()
{
    ControlView *const one = ControlView::instance();
    QVERIFY(one);
    QVERIFY(!one->parent());
    QCOMPARE(ControlView::instance(), one);
}

void TestControlView::signalsAndSlotsHaveTheirAgreedOrder()
{
    QByteArrayList names;
    const QMetaObject &meta = ControlView::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names << meta.method(i).methodSignature();
    QCOMPARE(names,
             QByteArrayList(
                 {"notSingleConstellation(uint)", "enableTimer()", "disableTimer()", "clear()",
                  "on_pushButton_start_clicked()", "on_pushButton_locTechSet_clicked()",
                  "on_pushButton_GpsReset_clicked()", "on_pushButton_ShowTime_clicked()",
                  "on_pushButton_ShowLoc_clicked()", "updateLocTechSet(bool)",
                  "updateResetType(bool)", "updateLoction()", "updateUtc()", "updateTTFF()",
                  "checkState()", "gnss_start()", "gnss_stop()", "gnss_reset(int)"}));
}

void TestControlView::accessorsGiveTheStartAndTheResetButton()
{
    QCOMPARE(page->getStartButton(), child<QPushButton>("pushButton_start"));
    QCOMPARE(page->getResetButton(), child<QPushButton>("pushButton_GpsReset"));
}

void TestControlView::dataMovesTheStateToRunningAndItsLossToUnknown()
{
    model->setDataStatus(true);
    emit model->dataReceived();
    QCOMPARE(page->getState(), kRunning);
    QCOMPARE(labelText("label_state"), QString("Runing..."));
    QCOMPARE(page->getStartButton()->text(), QString("Stop"));

    model->setDataStatus(false);
    emit model->dataReceived();
    QCOMPARE(page->getState(), 0);
    QCOMPARE(labelText("label_state"), QString("Unknown"));
    QCOMPARE(page->getStartButton()->text(), QString("Start"));
}

void TestControlView::startingSendsTheCommandBetweenClearAndTheTimer()
{
    followSignals();
    press("pushButton_start");
    QTRY_COMPARE(reader->sentences(), QByteArrayList({"$PPLMS,0\r\n"}));
    QCOMPARE(trace->lines(),
             QStringList({kCleared, "d> GnssStatus: start GNSS: $PPLMS,0\r\n", "enableTimer()"}));
}

void TestControlView::pressingStartTwiceStopsAndDisablesTheTimer()
{
    press("pushButton_start");
    QTRY_COMPARE(reader->count(), 1);
    QCOMPARE(labelText("label_state"), QString("Running"));
    QCOMPARE(page->getStartButton()->text(), QString("Stop"));
    QCOMPARE(page->getState(), kRunning);

    followSignals();
    press("pushButton_start");
    QTRY_COMPARE(reader->sentences(), QByteArrayList({"$PPLMS,0\r\n", "$PPLMS,1\r\n"}));
    QCOMPARE(labelText("label_state"), QString("Idle"));
    QCOMPARE(page->getStartButton()->text(), QString("Start"));
    QCOMPARE(page->getState(), kIdle);
    QCOMPARE(labelText("label_TTFF"), QString("TTFF not avaiable"));
    QCOMPARE(trace->lines(), QStringList({"d> GnssStatus: stop GNSS: $PPLMS,1\r\n",
                                          "disableTimer()", kCleared, kTtffUpdate}));
}

void TestControlView::dataAfterAStopMovesTheStateToRunningAgain()
{
    model->setDataStatus(true);
    emit model->dataReceived();
    press("pushButton_start");
    QCOMPARE(page->getState(), kIdle);
    emit model->dataReceived();
    QCOMPARE(page->getState(), kRunning);
    QCOMPARE(labelText("label_state"), QString("Runing..."));
}

void TestControlView::startSlotsTouchNoLabel()
{
    page->gnss_start();
    QCOMPARE(page->getState(), kRunning);
    page->gnss_stop();
    QCOMPARE(page->getState(), kIdle);
    QCOMPARE(labelText("label_state"), QString("Unknown"));
    QCOMPARE(page->getStartButton()->text(), QString("Start"));
}

void TestControlView::resetSendsTheChosenTypeThenClears_data()
{
    QTest::addColumn<QString>("radio");
    QTest::addColumn<QByteArray>("sentence");
    QTest::newRow("hot") << "radioButton_hotReset" << QByteArray("$PPLMG,1\r\n");
    QTest::newRow("warm") << "radioButton_warmReset" << QByteArray("$PPLMG,2\r\n");
    QTest::newRow("cold") << "radioButton_coldReset" << QByteArray("$PPLMG,3\r\n");
    QTest::newRow("factory") << "radioButton_factoryReset" << QByteArray("$PPLMG,7\r\n");
}

void TestControlView::resetSendsTheChosenTypeThenClears()
{
    QFETCH(QString, radio);
    QFETCH(QByteArray, sentence);
    page->findChild<QRadioButton *>(radio)->click();
    followSignals();
    QByteArray printed;
    {
        StandardOutput out(root->filePath("stdout"));
        press("pushButton_GpsReset");
        printed = out.text();
    }
    QVERIFY2(printed.startsWith("on_pushButton_GpsReset_clicked.\n"), printed.constData());
    QTRY_COMPARE(reader->sentences(), QByteArrayList({sentence}));
    QCOMPARE(reader->writerCloses(), 1);
    QCOMPARE(trace->lines(), QStringList({"d> GnssReset: Reset GNSS: " + QString(sentence),
                                          kCleared, kTtffUpdate}));
    QCOMPARE(page->getState(), 0);
}

void TestControlView::resetWithoutAChoiceSendsAnEmptyCommand()
{
    for (auto *radio : page->findChildren<QRadioButton *>()) {
        radio->setAutoExclusive(false);
        radio->setChecked(false);
    }
    press("pushButton_GpsReset");
    QTRY_COMPARE(reader->sentences(), QByteArrayList({""}));
}

void TestControlView::resetTypeSelectsTheSentence_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("sentence");
    QTest::newRow("0: opens and closes, writes zero bytes") << 0 << QByteArray("");
    QTest::newRow("1: hot") << 1 << QByteArray("$PPLMG,1\r\n");
    QTest::newRow("2: warm") << 2 << QByteArray("$PPLMG,2\r\n");
    QTest::newRow("3: cold") << 3 << QByteArray("$PPLMG,3\r\n");
    QTest::newRow("4: factory, exactly 10 bytes, code 7") << 4 << QByteArray("$PPLMG,7\r\n");
    QTest::newRow("5: opens and closes, writes zero bytes") << 5 << QByteArray("");
    QTest::newRow("-1: opens and closes, writes zero bytes") << -1 << QByteArray("");
}

void TestControlView::resetTypeSelectsTheSentence()
{
    QFETCH(int, type);
    QFETCH(QByteArray, sentence);
    trace->clear();
    page->gnss_reset(type);
    QTRY_COMPARE(reader->sentences(), QByteArrayList({sentence}));
    QCOMPARE(reader->writerCloses(), 1);
    QCOMPARE(trace->lines(), QStringList("d> GnssReset: Reset GNSS: " + QString(sentence)));
}

void TestControlView::updateResetTypeSendsTheChosenSentence_data()
{
    resetSendsTheChosenTypeThenClears_data();
}

void TestControlView::updateResetTypeSendsTheChosenSentence()
{
    QFETCH(QString, radio);
    QFETCH(QByteArray, sentence);
    page->findChild<QRadioButton *>(radio)->click();
    followSignals();
    QVERIFY(QMetaObject::invokeMethod(page.get(), "updateResetType", Q_ARG(bool, false)));
    QTRY_COMPARE(reader->sentences(), QByteArrayList({sentence}));
    QCOMPARE(trace->lines(), QStringList("d> ResetType: restart GNSS: " + QString(sentence)));
}

void TestControlView::resetWithKnownTtffShowsItAsNotAvailableAtOnce()
{
    followSignals();
    model->setTtff(31);
    emit model->ttffUpdate();
    QCOMPARE(labelText("label_TTFF"), QString("TTFF: 31 seconds"));
    press("pushButton_GpsReset");
    QCOMPARE(labelText("label_TTFF"), QString("TTFF not avaiable"));
}

void TestControlView::ttffIsShownInSeconds_data()
{
    QTest::addColumn<uint>("ttff");
    QTest::addColumn<QString>("text");
    QTest::newRow("none, or a real 0") << 0U << "TTFF not avaiable";
    QTest::newRow("one") << 1U << "TTFF: 1 seconds";
    QTest::newRow("unsigned") << 4294967295U << "TTFF: 4294967295 seconds";
}

void TestControlView::ttffIsShownInSeconds()
{
    QFETCH(uint, ttff);
    QFETCH(QString, text);
    model->setTtff(ttff);
    emit model->ttffUpdate();
    QCOMPARE(labelText("label_TTFF"), text);
}

void TestControlView::everyConstellationMaskIsSent_data()
{
    QTest::addColumn<unsigned int>("mask");
    const QMap<unsigned int, QString> remarks = {{0x00, ", no box: sent as it is"},
                                                 {0x01, ", only GPS"},
                                                 {0x10, ", only SBAS: no core"},
                                                 {0x33, ", GPS, GLONASS, SBAS and QZSS: two core"},
                                                 {0x3f, ", all six"}};
    for (unsigned int mask = 0; mask < 64; ++mask) {
        const QString name = QString("mask 0x%1").arg(mask, 2, 16, QChar('0'));
        QTest::newRow(qPrintable(name + remarks.value(mask))) << mask;
    }
}

void TestControlView::everyConstellationMaskIsSent()
{
    QFETCH(unsigned int, mask);
    unsigned int count = 0;
    for (const Constellation &constellation : kConstellations) {
        auto *const box = child<QCheckBox>(constellation.checkBox);
        const bool wanted = (mask & constellation.bit) != 0;
        if (box->isChecked() != wanted)
            box->click();
        count += wanted && constellation.core ? 1 : 0;
    }
    QSignalSpy counted(page.get(), &ControlView::notSingleConstellation);

    press("pushButton_locTechSet");

    static const QByteArray digits = "0123456789abcdef";
    QByteArray sentence = "$PPLMB,70,";
    if (mask >= 16)
        sentence += digits[mask / 16];
    sentence += digits[mask % 16];
    sentence += "\r\n";
    QTRY_COMPARE(reader->sentences(), QByteArrayList({sentence}));
    QCOMPARE(reader->writerCloses(), 1);
    QCOMPARE(counted.size(), 1);
    QCOMPARE(counted.constFirst().constFirst().toUInt(), count);
}

void TestControlView::constellationCountIsEmittedBeforeTheCommandAndClearAfterIt()
{
    followSignals();
    press("pushButton_locTechSet");
    QCOMPARE(trace->lines(),
             QStringList({"d> updateLocTechSet: constl 2", "constellations 2",
                          "d> LocTechSet: restart GNSS: $PPLMB,70,3\r\n", kCleared}));
}

void TestControlView::unwritablePipeShowsTheErrorLineAndIsStillMarkedRunning()
{
    reader.reset();
    const QString path = root->filePath("tmp/agiout");
    QVERIFY(QFile::remove(path));
    QVERIFY(QDir().mkdir(path));
    followSignals();
    press("pushButton_start");
    QCOMPARE(
        trace->lines(),
        QStringList({kCleared,
                     QString("E> GnssStatus: File (%1): %2").arg(path, systemErrorText(EISDIR)),
                     "enableTimer()"}));
    QCOMPARE(page->getState(), kRunning);
    QCOMPARE(labelText("label_state"), QString("Running"));
    QCOMPARE(page->getStartButton()->text(), QString("Stop"));
}

void TestControlView::pipeWithoutReaderIsWaitedForAndThePageGoesOn()
{
    reader.reset(); // the FIFO stays
    constexpr int kAbsentMs = 200;
    std::thread device([this] {
        QThread::msleep(kAbsentMs); // the time for which nobody reads
        reader =
            std::make_unique<CommandPipeReader>(QFile::encodeName(root->filePath("tmp/agiout")));
    });
    QElapsedTimer clock;
    clock.start();
    press("pushButton_start");
    const qint64 waited = clock.elapsed();
    device.join();
    QVERIFY(waited >= kAbsentMs / 2);
    QTRY_COMPARE(reader->sentences(), QByteArrayList({"$PPLMS,0\r\n"}));
    QCOMPARE(labelText("label_state"), QString("Running"));
    press("pushButton_start");
    QCOMPARE(labelText("label_state"), QString("Idle"));
}

void TestControlView::utcIsShownOnlyAfterShowTime()
{
    tUTCTime utc;
    utc.hour = 11;
    model->setUtcTime(utc);
    emit model->utcUpdate();
    QCOMPARE(labelText("label_time"), QString());

    press("pushButton_ShowTime");
    QCOMPARE(labelText("label_time"), QString("0/0/0  11:00:00 UTC"));
    utc.hour = 12;
    model->setUtcTime(utc);
    QCOMPARE(labelText("label_time"), QString("0/0/0  11:00:00 UTC"));
    emit model->utcUpdate();
    QCOMPARE(labelText("label_time"), QString("0/0/0  12:00:00 UTC"));
}

void TestControlView::utcText_data()
{
    QTest::addColumn<QVector<int>>("dateAndTime");
    QTest::addColumn<double>("second");
    QTest::addColumn<QString>("text");
    QTest::newRow("single digits")
        << QVector<int>{2021, 3, 5, 8, 4} << 7.5 << "3/5/2021  08:04:07.5 UTC";
    QTest::newRow("00:00:00.0") << QVector<int>{2021, 3, 5, 0, 0} << 0.0
                                << "3/5/2021  00:00:00 UTC";
    QTest::newRow("two digits") << QVector<int>{2026, 12, 31, 23, 59} << 59.999
                                << "12/31/2026  23:59:59.999 UTC";
    QTest::newRow("ten seconds") << QVector<int>{2026, 1, 1, 10, 10} << 10.0
                                 << "1/1/2026  10:10:10 UTC";
    QTest::newRow("six digits at most")
        << QVector<int>{2026, 1, 1, 10, 10} << 9.9999999 << "1/1/2026  10:10:010 UTC";
}

void TestControlView::utcText()
{
    QFETCH(QVector<int>, dateAndTime);
    QFETCH(double, second);
    QFETCH(QString, text);
    tUTCTime utc;
    utc.year = static_cast<qint16>(dateAndTime[0]);
    utc.month = static_cast<qint16>(dateAndTime[1]);
    utc.day = static_cast<qint16>(dateAndTime[2]);
    utc.hour = static_cast<qint16>(dateAndTime[3]);
    utc.minute = static_cast<qint16>(dateAndTime[4]);
    utc.second = second;
    model->setUtcTime(utc);
    press("pushButton_ShowTime");
    QCOMPARE(labelText("label_time"), text);
}

void TestControlView::positionIsShownOnlyAfterShowLocation()
{
    tGnssLocation location;
    location.latitude = 48.5;
    location.longitude = 11.25;
    model->setLocation(location);
    emit model->locationUpdate();
    QCOMPARE(labelText("label_loc"), QString());

    press("pushButton_ShowLoc");
    QCOMPARE(labelText("label_loc"), QString("48.5 N 11.25 E"));
    location.latitude = 49;
    model->setLocation(location);
    QCOMPARE(labelText("label_loc"), QString("48.5 N 11.25 E"));
    emit model->locationUpdate();
    QCOMPARE(labelText("label_loc"), QString("49 N 11.25 E"));
}

void TestControlView::positionText_data()
{
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing yet") << 0.0 << 0.0 << "0 N 0 E";
    QTest::newRow("six digits") << 48.1173333 << 111.5166667 << "48.1173 N 111.517 E";
    QTest::newRow("negative numbers keep N and E") << -33.8 << -70.25 << "-33.8 N -70.25 E";
    QTest::newRow("tiny numbers") << 1.25e-05 << 0.5 << "1.25e-05 N 0.5 E";
}

void TestControlView::positionText()
{
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(QString, text);
    tGnssLocation location;
    location.latitude = latitude;
    location.longitude = longitude;
    model->setLocation(location);
    press("pushButton_ShowLoc");
    QCOMPARE(labelText("label_loc"), text);
}

void TestControlView::fitsTheScreens_data()
{
    addPageRows();
}

void TestControlView::fitsTheScreens()
{
    QFETCH(QSize, size);
    QFETCH(bool, running);
    page->resize(size);
    if (running) {
        model->setDataStatus(true);
        emit model->dataReceived();
        tUTCTime utc;
        utc.year = 2026;
        utc.month = 12;
        utc.day = 31;
        utc.hour = 23;
        utc.minute = 59;
        utc.second = 59.999;
        model->setUtcTime(utc);
        tGnssLocation location;
        location.latitude = -12.34567;
        location.longitude = -123.45678;
        model->setLocation(location);
        model->setTtff(4294967295U);
        emit model->ttffUpdate();
        press("pushButton_ShowTime");
        press("pushButton_ShowLoc");
    }
    QCoreApplication::processEvents();
    QCOMPARE(page->size(), size);
    QCOMPARE(layoutFaults(*page), QStringList());
}

void TestControlView::refreshViewChangesNothing()
{
    page->refreshView();
    QCOMPARE(labelText("label_state"), QString("Unknown"));
}

QTEST_MAIN(TestControlView)
#include "TestControlView.moc"
