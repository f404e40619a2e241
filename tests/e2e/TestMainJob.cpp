// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/CommandPipeReader.h"
#include "support/HostdProcess.h"
#include "support/KeyDevice.h"
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/ViewerProcess.h"

#include <QtTest>

#include <linux/input-event-codes.h>
#include <memory>

using Pages::kControl;
using Pages::kSatellite;

namespace {

constexpr int kLongMs = 60000;
constexpr int kPressed = 1;
constexpr int kReleased = 0;

const QString kInput = QStringLiteral("/tmp/agiin");
const QString kOutput = QStringLiteral("/tmp/agiout");
const QString kStart = QStringLiteral("pushButton_start");

} // namespace

/// The way of the data through the whole program, without a display.
class TestMainJob : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void labelsShowWhatThePipeDelivers();
    void pressesSendCommands();
    void homeKeyMinimises();
    void simulatedReceiverGetsItsFix();
    void exitEndsWithZero();
    void withoutAScreenItSaysSoAndEndsWithOne();

private:
    QString shown(const char *label)
    {
        return viewer->text(kSatellite, QString::fromLatin1(label));
    }

    std::unique_ptr<ViewerProcess> viewer;
};

void TestMainJob::init()
{
    viewer = std::make_unique<ViewerProcess>(ViewerProcess::Offscreen{});
}

void TestMainJob::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s", qPrintable(viewer->standardError().right(4000)));
    viewer.reset();
}

void TestMainJob::labelsShowWhatThePipeDelivers()
{
    NmeaPipe pipe(viewer->path(kInput));
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    QVERIFY(viewer->isShown(kSatellite));
    for (const int second : {45296, 45297}) {
        QVERIFY(pipe.write(NmeaSentences::epochOf31Satellites(second)));
        const QString time = QTime(0, 0).addSecs(second).toString(QStringLiteral("hhmmss.zzz"));
        QTRY_COMPARE_WITH_TIMEOUT(shown("label_utc"), time, kLongMs);
    }
    QCOMPARE(shown("label_lat"), QStringLiteral("48.117300 \u00B0"));
    QCOMPARE(shown("label_lon"), QStringLiteral("11.516667 \u00B0"));
    QCOMPARE(shown("label_alt"), QStringLiteral("545.40"));
}

void TestMainJob::pressesSendCommands()
{
    CommandPipeReader receiver(QFile::encodeName(viewer->path(kOutput)));
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    QVERIFY(viewer->showPage(Pages::kControlButton, kControl));
    QByteArrayList expected;
    const std::pair<const char *, QByteArray> kPresses[] = {
        {"pushButton_start", "$PPLMS,0\r\n"},         {"pushButton_start", "$PPLMS,1\r\n"},
        {"pushButton_GpsReset", "$PPLMG,3\r\n"},      {"radioButton_warmReset", {}},
        {"pushButton_GpsReset", "$PPLMG,2\r\n"},      {"checkBox_locGalileo", {}},
        {"pushButton_locTechSet", "$PPLMB,70,7\r\n"},
    };
    for (const auto &[button, sentence] : kPresses) {
        QVERIFY2(viewer->press(kControl, QString::fromLatin1(button)), button);
        if (sentence.isEmpty())
            continue;
        expected << sentence;
        QTRY_COMPARE_WITH_TIMEOUT(receiver.sentences(), expected, kLongMs);
    }
}

void TestMainJob::homeKeyMinimises()
{
    KeyDevice device(viewer->root());
    QVERIFY(device.make());
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    QTRY_VERIFY_WITH_TIMEOUT(device.openWriter(), kLongMs);
    QVERIFY(viewer->property(Pages::kWindow, {}, "fullScreen").toBool());
    for (const int value : {kPressed, kReleased})
        QVERIFY(device.write(KeyDevice::record(EV_KEY, KEY_HOMEPAGE, value)));
    QTRY_VERIFY_WITH_TIMEOUT(viewer->property(Pages::kWindow, {}, "maximized").toBool(), kLongMs);
    QVERIFY(!viewer->property(Pages::kWindow, {}, "fullScreen").toBool());
}

void TestMainJob::simulatedReceiverGetsItsFix()
{
    HostdProcess hostd(viewer->root());
    QVERIFY(hostd.start({QStringLiteral("simulate"), QStringLiteral("--position"),
                         QStringLiteral("48.55,11.55,500"), QStringLiteral("--ttff"),
                         QStringLiteral("cold=2")}));
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    // The receiver's noise does not reach the digits that are looked at.
    QTRY_COMPARE_WITH_TIMEOUT(shown("label_lat").left(4), QStringLiteral("48.5"), kLongMs);
    QCOMPARE(shown("label_lon").left(4), QStringLiteral("11.5"));
    QVERIFY(viewer->showPage(Pages::kControlButton, kControl));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, QStringLiteral("label_state")),
                              QStringLiteral("Runing..."), kLongMs);
    QVERIFY(viewer->press(kControl, kStart));
    QTRY_VERIFY_WITH_TIMEOUT(hostd.commands().contains(QStringLiteral("$PPLMS,1")), kLongMs);
    QVERIFY(hostd.stop());
}

void TestMainJob::exitEndsWithZero()
{
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kLongMs));
    QCOMPARE(viewer->exitCode(), 0);
}

// As the packages start it: without trace lines, and tried again by the service after each failure.
void TestMainJob::withoutAScreenItSaysSoAndEndsWithOne()
{
    const auto restore = qScopeGuard([] {
        qunsetenv("QT_LOGGING_RULES");
        qunsetenv("QT_QPA_FB_DISABLE_INPUT");
    });
    qputenv("QT_LOGGING_RULES", "default.debug=false");
    qputenv("QT_QPA_FB_DISABLE_INPUT", "1"); // no look at the machine's own input devices
    QVERIFY(!viewer->start({QStringLiteral("-platform"),
                            QStringLiteral("linuxfb:fb=") + viewer->path(QStringLiteral("/fb0"))}));
    QVERIFY(viewer->waitForEnd(kLongMs));
    QCOMPARE(viewer->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(viewer->exitCode(), 1);
    QVERIFY(viewer->standardError().contains(
        QStringLiteral("no screen: the platform linuxfb found none")));
}

QTEST_GUILESS_MAIN(TestMainJob)
#include "TestMainJob.moc"
