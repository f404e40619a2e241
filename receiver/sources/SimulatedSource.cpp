// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/sources/SimulatedSource.h"

#include <algorithm>
#include <cmath>

namespace {

tSimulationSettings withStartTime(tSimulationSettings settings)
{
    if (!settings.startTime.isValid()) {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        settings.startTime = now.addMSecs(1000 - now.time().msec());
    }
    return settings;
}

} // namespace

SimulatedSource::SimulatedSource(const tSimulationSettings &settings, double timeScale,
                                 QObject *parent)
    : ReceiverSource(parent)
    , receiver(withStartTime(settings))
    , periodMs(1000.0 / (settings.rateHz * timeScale))
    , firstDelayMs(settings.startTime.isValid()
                       ? 0.0
                       : 1000.0 - QDateTime::currentDateTimeUtc().time().msec())
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &SimulatedSource::deliverDue);
}

void SimulatedSource::start()
{
    emit notice(QStringLiteral("power-up, cold start: first fix in about %1 s")
                    .arg(receiver.timeToFirstFixS(), 0, 'f', 1));
    clock.start();
    nextDueMs = firstDelayMs;
    schedule();
}

tCommandAnswer SimulatedSource::obey(const tReceiverCommand &command)
{
    const int startsBefore = receiver.startCount();
    tCommandAnswer answer = receiver.obey(command);
    const bool restarted = receiver.startCount() != startsBefore;
    // A receiver needs a moment to restart. Without it the first epoch could reach the viewer
    // before the viewer has forgotten what was before its own command.
    if (restarted && clock.isValid()) {
        const auto now = static_cast<double>(clock.elapsed());
        while (nextDueMs - now < periodMs / 2.0) {
            receiver.passSilently();
            nextDueMs += periodMs;
        }
        schedule();
    }
    return answer;
}

void SimulatedSource::deliverDue()
{
    const auto now = static_cast<double>(clock.elapsed());
    if (now - nextDueMs > kMaxLagMs)
        nextDueMs = now;
    for (int i = 0; i < kEpochsATurn && nextDueMs <= now; ++i) {
        nextDueMs += periodMs;
        if (const std::optional<tEpoch> epoch = receiver.nextEpoch())
            emit epochReady(*epoch);
    }
    schedule();
}

void SimulatedSource::schedule()
{
    const double wait = std::ceil(nextDueMs - static_cast<double>(clock.elapsed()));
    timer.start(static_cast<int>(std::clamp(wait, 0.0, 60000.0)));
}
