// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/NmeaPipe.h"
#include "support/ViewerProcess.h"

#include <QObject>
#include <QTemporaryDir>

#include <chrono>
#include <memory>

/// Base of the tests that put faults in the viewer's way: a viewer and its input pipe for each of
/// them, and what may be expected of its screen.
class FaultRig : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    static constexpr int kLongMs = 60000;
    /// The screen never stands still for longer.
    static constexpr int kHangMs = HANG_MS;
    /// What the receiver sends is on the screen again so soon after the cause of a fault has gone.
    static constexpr int kRecoveryMs = RECOVERY_MS;
    static constexpr int kExitMs = EXIT_MS;
    static constexpr std::chrono::milliseconds kTenHertz{100};

    /// Another viewer in the same folders, not started yet.
    void renewViewer();
    void start();
    void makePipe();
    /// Second of the day that the satellite page shows, -1 while it shows none.
    int shownSecond() const;
    /// Waits for another time than the one shown now; says how long that took. `startMs`: what the
    /// receiver itself takes until it tells a time.
    void verifyRecovery(int startMs = 0);
    void verifyResponsive();

    const QString inputPath = QStringLiteral("/tmp/agiin");
    const QString outputPath = QStringLiteral("/tmp/agiout");
    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<NmeaPipe> pipe;
};
