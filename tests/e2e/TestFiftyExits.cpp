// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/FaultRig.h"
#include "support/CommandPipeReader.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/SteadyReceiver.h"

#include <QtTest>

#include <memory>

class TestFiftyExits : public FaultRig
{
    Q_OBJECT

private slots:
    void exitOnEveryPageFiftyTimes();

private:
    /// What the viewer is in the middle of.
    enum class Wait { None, ForFix, BeforeStore, BeforeStoreWithoutReader };

    void enter(Wait wait);

    std::unique_ptr<CommandPipeReader> reader;
};

void TestFiftyExits::enter(Wait wait)
{
    const QByteArray commandPipe = QFile::encodeName(viewer->path(outputPath));
    if (wait == Wait::BeforeStoreWithoutReader)
        reader.reset(); // the pipe stays
    else if (!reader)
        reader = std::make_unique<CommandPipeReader>(commandPipe);
    if (wait == Wait::None)
        return;
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0, kLongMs);
    if (wait == Wait::ForFix) {
        const int before = reader->count();
        QVERIFY(viewer->showPage(Pages::kTtffButton, Pages::kTtff));
        QVERIFY(viewer->press(Pages::kTtff, QStringLiteral("pushButton_Test")));
        QTRY_VERIFY_WITH_TIMEOUT(reader->count() > before, kLongMs);
        return;
    }
    // A second without a fix makes the next one a first fix.
    QTRY_VERIFY_WITH_TIMEOUT(
        pipe->write(NmeaSentences::sentence("GNRMC,115959.000,V,,,,,,,050321,,,N")), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(
        viewer->standardError().contains(QStringLiteral("nvmStoreToFlash run!")), kLongMs);
}

void TestFiftyExits::exitOnEveryPageFiftyTimes()
{
    const QList<QPair<QString, QString>> pages = {
        {Pages::kSatelliteButton, Pages::kSatellite}, {Pages::kControlButton, Pages::kControl},
        {Pages::kTtffButton, Pages::kTtff},           {Pages::kLogButton, Pages::kLog},
        {Pages::kConfigButton, Pages::kConfig},
    };
    const QList<Wait> waits = {Wait::None, Wait::ForFix, Wait::BeforeStore,
                               Wait::BeforeStoreWithoutReader};
    makePipe();
    const SteadyReceiver receiver(*pipe, kTenHertz);
    for (int i = 0; i < 50; ++i) {
        // Five pages and four waits: each page meets each wait within twenty rounds.
        const auto &[button, page] = pages[i % pages.size()];
        const Wait wait = waits[i % waits.size()];
        start();
        enter(wait);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(viewer->showPage(button, page));
        verifyResponsive();
        const int commands = reader ? reader->count() : 0;
        QVERIFY(viewer->pressMain(Pages::kExitButton));
        QVERIFY2(viewer->waitForEnd(kExitMs), qPrintable(page));
        QCOMPARE(viewer->exitCode(), 0);
        if (wait == Wait::BeforeStore) {
            QTRY_COMPARE_WITH_TIMEOUT(reader->count(), commands + 1, kLongMs);
            QCOMPARE(reader->sentences().last(), QByteArray("$PPLMT,0\r\n"));
        }
        renewViewer();
    }
}

QTEST_GUILESS_MAIN(TestFiftyExits)
#include "TestFiftyExits.moc"
