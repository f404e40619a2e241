// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/simulator/SimulatedReceiver.h"
#include "receiver/sources/ReceiverSource.h"

#include <QElapsedTimer>
#include <QTimer>

/// Runs a simulated receiver in real time, or a chosen number of times as fast.
class SimulatedSource : public ReceiverSource
{
    Q_OBJECT
public:
    /// `timeScale`: simulated seconds in a real one, above 0. Without a start time in the settings
    /// the simulation begins at the next whole second of the system clock.
    SimulatedSource(const tSimulationSettings &settings, double timeScale,
                    QObject *parent = nullptr);

    void start() override;
    tCommandAnswer obey(const tReceiverCommand &command) override;

private slots:
    void deliverDue();

private:
    void schedule();

    SimulatedReceiver receiver;
    double periodMs;        // real time between two epochs
    double firstDelayMs;    // real time from start() to the first epoch
    double nextDueMs = 0.0; // by the clock below
    QElapsedTimer clock;
    QTimer timer;
};
