// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/FaultRig.h"

#include "support/Pages.h"

#include <QtTest>

void FaultRig::init()
{
    root = std::make_unique<QTemporaryDir>();
    renewViewer();
}

void FaultRig::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(3000)));
    viewer.reset();
    pipe.reset();
}

void FaultRig::renewViewer()
{
    viewer = std::make_unique<ViewerProcess>(QSize(800, 480), root->path());
}

void FaultRig::start()
{
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    viewer->longestAnswerMs();
}

void FaultRig::makePipe()
{
    pipe = std::make_unique<NmeaPipe>(viewer->path(inputPath));
}

int FaultRig::shownSecond() const
{
    const QString text = viewer->text(Pages::kSatellite, QStringLiteral("label_utc"));
    const QTime time = QTime::fromString(text, QStringLiteral("hhmmss.zzz"));
    return time.isValid() ? QTime(0, 0).secsTo(time) : -1;
}

void FaultRig::verifyRecovery(int startMs)
{
    QElapsedTimer timer;
    timer.start();
    const int before = shownSecond();
    QTRY_VERIFY_WITH_TIMEOUT(shownSecond() > 0 && shownSecond() != before, kLongMs);
    qInfo("shown again after %lld ms", static_cast<long long>(timer.elapsed()));
    QVERIFY(timer.elapsed() < kRecoveryMs + startMs);
}

void FaultRig::verifyResponsive()
{
    QVERIFY(viewer->longestAnswerMs() < kHangMs);
}
