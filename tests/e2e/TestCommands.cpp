// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/CommandPipeReader.h"
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/ViewerProcess.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

using Pages::kControl;

namespace {

constexpr int kLongMs = 60000;
constexpr int kStoreDelayMs = 36000;

const QString kInput = QStringLiteral("/tmp/agiin");
const QString kOutput = QStringLiteral("/tmp/agiout");
const QString kStart = QStringLiteral("pushButton_start");
const QString kReset = QStringLiteral("pushButton_GpsReset");
const QString kSet = QStringLiteral("pushButton_locTechSet");
const QString kState = QStringLiteral("label_state");

/// Check boxes by their bit in the mask, the lowest first.
const QStringList kBoxes = {
    QStringLiteral("checkBox_locGPS"),     QStringLiteral("checkBox_locGlonass"),
    QStringLiteral("checkBox_locGalileo"), QStringLiteral("checkBox_locBDS"),
    QStringLiteral("checkBox_locSBAS"),    QStringLiteral("checkBox_locQZSS")};

} // namespace

class TestCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startAndStop();
    void fourResets();
    void allConstellationMasks();
    void storeFollowsTheFixAfter36Seconds();
    void windowWaitsForAReaderAndGoesOn();
    void absentPathBecomesAnOrdinaryFile();
    void unwritablePathIsReported();

private:
    bool startViewer();
    bool press(const QString &button) { return viewer->press(kControl, button); }
    QString state() { return viewer->text(kControl, kState); }
    int traced(const QString &text) const { return viewer->standardError().count(text); }
    QByteArray fileContent() const;

    std::unique_ptr<ViewerProcess> viewer;
};

void TestCommands::init()
{
    viewer = std::make_unique<ViewerProcess>();
}

void TestCommands::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s", qPrintable(viewer->standardError().right(4000)));
    viewer.reset();
}

/// With the control page shown.
bool TestCommands::startViewer()
{
    if (viewer->start() && viewer->showPage(Pages::kControlButton, kControl))
        return true;
    qWarning("%s", qPrintable(viewer->errorText()));
    return false;
}

QByteArray TestCommands::fileContent() const
{
    QFile file(viewer->path(kOutput));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestCommands::startAndStop()
{
    CommandPipeReader receiver(QFile::encodeName(viewer->path(kOutput)));
    QVERIFY(startViewer());
    QByteArrayList expected;
    for (int round = 0; round < 3; ++round) {
        QVERIFY(press(kStart));
        expected << "$PPLMS,0\r\n";
        QTRY_COMPARE_WITH_TIMEOUT(receiver.sentences(), expected, kLongMs);
        QTRY_COMPARE_WITH_TIMEOUT(state(), QStringLiteral("Running"), kLongMs);
        QVERIFY(press(kStart));
        expected << "$PPLMS,1\r\n";
        QTRY_COMPARE_WITH_TIMEOUT(receiver.sentences(), expected, kLongMs);
        QTRY_COMPARE_WITH_TIMEOUT(state(), QStringLiteral("Idle"), kLongMs);
    }
    QCOMPARE(receiver.writerCloses(), expected.size());
}

void TestCommands::fourResets()
{
    CommandPipeReader receiver(QFile::encodeName(viewer->path(kOutput)));
    QVERIFY(startViewer());
    QByteArrayList expected;
    const std::pair<QString, QByteArray> kResets[] = {
        {QString(), "$PPLMG,3\r\n"}, // cold is chosen from the start
        {QStringLiteral("radioButton_hotReset"), "$PPLMG,1\r\n"},
        {QStringLiteral("radioButton_warmReset"), "$PPLMG,2\r\n"},
        {QStringLiteral("radioButton_factoryReset"), "$PPLMG,7\r\n"},
        {QStringLiteral("radioButton_coldReset"), "$PPLMG,3\r\n"},
    };
    for (const auto &[button, sentence] : kResets) {
        QVERIFY(button.isEmpty() || press(button));
        QVERIFY(press(kReset));
        expected << sentence;
        QTRY_COMPARE_WITH_TIMEOUT(receiver.sentences(), expected, kLongMs);
    }
    QCOMPARE(receiver.writerCloses(), expected.size());
    QCOMPARE(viewer->standardOutput().count(QStringLiteral("on_pushButton_GpsReset_clicked.\n")),
             expected.size());
}

void TestCommands::allConstellationMasks()
{
    CommandPipeReader receiver(QFile::encodeName(viewer->path(kOutput)));
    QVERIFY(startViewer());
    // In the order of a Gray code each mask is one press away from the one before; from GPS with
    // GLONASS, which are chosen at the start.
    QByteArrayList expected;
    unsigned mask = 3;
    for (unsigned i = 0; i < 64; ++i) {
        const unsigned next = 3 ^ i ^ (i >> 1);
        for (int bit = 0; bit < kBoxes.size(); ++bit) {
            if (((mask ^ next) >> bit & 1) != 0)
                QVERIFY(press(kBoxes.at(bit)));
        }
        mask = next;
        QVERIFY(press(kSet));
        expected << "$PPLMB,70," + QByteArray::number(mask, 16) + "\r\n";
        QTRY_COMPARE_WITH_TIMEOUT(receiver.count(), expected.size(), kLongMs);
    }
    QCOMPARE(receiver.sentences(), expected);
    QCOMPARE(receiver.writerCloses(), expected.size());
}

void TestCommands::storeFollowsTheFixAfter36Seconds()
{
    CommandPipeReader receiver(QFile::encodeName(viewer->path(kOutput)));
    NmeaPipe pipe(viewer->path(kInput));
    QVERIFY(viewer->start());
    QVERIFY(pipe.write(NmeaSentences::sentence("GNRMC,123455.000,V,,,,,,,050321,,,N") +
                       NmeaSentences::epochOf31Satellites(45296)));
    // From before the wait can have begun, so that the time seen is never shorter than the wait.
    QElapsedTimer sinceFix;
    sinceFix.start();
    QTRY_VERIFY_WITH_TIMEOUT(traced(QStringLiteral("nvmStoreToFlash run!")) > 0, kLongMs);
    const qint64 begun = sinceFix.elapsed();

    // The page lives on meanwhile, and further seconds with a fix ask for no second store.
    int second = 45297;
    while (receiver.count() == 0 && sinceFix.elapsed() < 2 * kStoreDelayMs) {
        QVERIFY(pipe.write(NmeaSentences::epochOf31Satellites(second)));
        const QString time = QTime(0, 0).addSecs(second++).toString(QStringLiteral("hhmmss.zzz"));
        QTRY_COMPARE_WITH_TIMEOUT(viewer->text(Pages::kSatellite, QStringLiteral("label_utc")),
                                  time, kLongMs);
    }
    QVERIFY2(sinceFix.elapsed() >= kStoreDelayMs, qPrintable(QString::number(sinceFix.elapsed())));
    QVERIFY2(sinceFix.elapsed() - begun < kStoreDelayMs + 10000,
             qPrintable(QString::number(sinceFix.elapsed())));
    QTRY_COMPARE_WITH_TIMEOUT(traced(QStringLiteral("NVM Store now: $PPLMT,0")), 1, kLongMs);
    QCOMPARE(receiver.sentences(), QByteArrayList{"$PPLMT,0\r\n"});
    QCOMPARE(receiver.writerCloses(), 1);
    QCOMPARE(traced(QStringLiteral("nvmStoreToFlash run!")), 1);
}

void TestCommands::windowWaitsForAReaderAndGoesOn()
{
    QVERIFY(startViewer());
    QCOMPARE(::mkfifo(QFile::encodeName(viewer->path(kOutput)).constData(), 0600), 0);
    const int tries = traced(QStringLiteral("try to start"));
    QVERIFY(press(kStart));
    // The reading thread goes on while the window waits for a reader.
    QTRY_VERIFY_WITH_TIMEOUT(traced(QStringLiteral("try to start")) >= tries + 3, kLongMs);
    QCOMPARE(traced(QStringLiteral("start GNSS")), 0);

    CommandPipeReader receiver(QFile::encodeName(viewer->path(kOutput)));
    QTRY_COMPARE_WITH_TIMEOUT(receiver.sentences(), QByteArrayList{"$PPLMS,0\r\n"}, kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(state(), QStringLiteral("Running"), kLongMs);
    QVERIFY(press(kStart));
    QTRY_COMPARE_WITH_TIMEOUT(receiver.sentences(),
                              (QByteArrayList{"$PPLMS,0\r\n", "$PPLMS,1\r\n"}), kLongMs);
}

void TestCommands::absentPathBecomesAnOrdinaryFile()
{
    QVERIFY(startViewer());
    QVERIFY(press(kSet));
    QTRY_COMPARE_WITH_TIMEOUT(fileContent(), QByteArray("$PPLMB,70,3\r\n"), kLongMs);
    // Each command takes the place of the one before.
    QVERIFY(press(kStart));
    QTRY_COMPARE_WITH_TIMEOUT(fileContent(), QByteArray("$PPLMS,0\r\n"), kLongMs);
    QCOMPARE(traced(QStringLiteral("E> ")), 0);
}

void TestCommands::unwritablePathIsReported()
{
    // A directory is unwritable for everybody, an ordinary file never for the superuser.
    QVERIFY(QDir().mkdir(viewer->path(kOutput)));
    QVERIFY(startViewer());
    QVERIFY(press(kStart));
    QTRY_COMPARE_WITH_TIMEOUT(state(), QStringLiteral("Running"), kLongMs);
    const QString error = QStringLiteral("E> GnssStatus: File (%1): ").arg(viewer->path(kOutput));
    QCOMPARE(traced(error), 1);
    QCOMPARE(traced(QStringLiteral("start GNSS")), 0);
    QVERIFY(press(kReset));
    QTRY_COMPARE_WITH_TIMEOUT(
        traced(QStringLiteral("E> GnssReset: File (%1): ").arg(viewer->path(kOutput))), 1, kLongMs);
}

QTEST_GUILESS_MAIN(TestCommands)
#include "TestCommands.moc"
