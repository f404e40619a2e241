// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/ReplaySource.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kDayMs = 86400000;
// Behind by more than this the time lost is not made up for.
constexpr double kMaxLagMs = 2000.0;

} // namespace

ReplaySource::ReplaySource(const QStringList &files, double replaySpeed, bool inLoop,
                           QObject *parent)
    : ReceiverSource(parent)
    , recording(files)
    , speed(replaySpeed)
    , loop(inLoop)
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &ReplaySource::deliver);
}

bool ReplaySource::prepare(QString *error)
{
    upcoming = recording.next();
    if (upcoming)
        return true;
    *error = !recording.error().isEmpty()
                 ? recording.error()
                 : QStringLiteral("no epoch in the recording: %1 sentences without the right "
                                  "checksum, none with a time among the others")
                       .arg(recording.brokenSentences());
    return false;
}

void ReplaySource::start()
{
    clock.start();
    nextDueMs = 0.0;
    schedule();
}

tCommandAnswer ReplaySource::obey(const tReceiverCommand &command)
{
    Q_UNUSED(command)
    return {false, QStringLiteral("a recording takes no commands")};
}

void ReplaySource::setHeld(bool hold)
{
    held = hold;
    if (held) {
        timer.stop();
    } else if (!ended) {
        nextDueMs = std::max(nextDueMs, static_cast<double>(clock.elapsed()));
        schedule();
    }
}

int ReplaySource::pauseMs(const std::optional<int> &fromMs, const std::optional<int> &toMs,
                          int usualMs)
{
    if (!fromMs || !toMs)
        return usualMs;
    int pause = *toMs - *fromMs;
    if (pause < -kDayMs / 2)
        pause += kDayMs;
    if (pause <= 0 || pause > kDayMs / 2)
        return usualMs;
    return std::min(pause, kMaxPauseMs);
}

void ReplaySource::deliver()
{
    const auto now = static_cast<double>(clock.elapsed());
    if (now - nextDueMs > kMaxLagMs)
        nextDueMs = now;
    while (!held && !ended && upcoming && nextDueMs <= static_cast<double>(clock.elapsed())) {
        const tEpoch epoch = *upcoming;
        lastTimeMs = epoch.timeMs;
        ++delivered;
        emit epochReady(epoch);
        advance();
    }
    if (!held && !ended)
        schedule();
}

// Gets the next epoch and the time when it is due, or comes to the end.
void ReplaySource::advance()
{
    upcoming = recording.next();
    if (!upcoming) {
        const QString text = recording.error().isEmpty() ? summary() : recording.error();
        ended = !loop || !recording.error().isEmpty();
        if (ended) {
            emit finished(recording.error().isEmpty(), text);
            return;
        }
        if (firstPass)
            emit notice(text);
        firstPass = false;
        delivered = 0;
        recording.rewind();
        upcoming = recording.next();
        lastTimeMs.reset();
        if (!upcoming) {
            ended = true;
            emit finished(false,
                          QStringLiteral("the recording is gone: %1").arg(recording.error()));
            return;
        }
    }
    const int pause = pauseMs(lastTimeMs, upcoming->timeMs, usualPauseMs);
    // A gap says nothing about the usual pace.
    if (pause < kMaxPauseMs)
        usualPauseMs = pause;
    nextDueMs += pause / speed;
}

QString ReplaySource::summary() const
{
    QString text = QStringLiteral("played %1 epochs").arg(delivered);
    if (recording.brokenSentences() > 0)
        text += QStringLiteral(", passed over %1 sentences without the right checksum")
                    .arg(recording.brokenSentences());
    if (recording.unnumberedSatellites() > 0)
        text += QStringLiteral(", left out %1 satellites that the viewer has no number for")
                    .arg(recording.unnumberedSatellites());
    return text;
}

void ReplaySource::schedule()
{
    const double wait = std::ceil(nextDueMs - static_cast<double>(clock.elapsed()));
    timer.start(static_cast<int>(std::clamp(wait, 0.0, 60000.0)));
}
