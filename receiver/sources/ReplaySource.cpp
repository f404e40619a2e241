// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/sources/ReplaySource.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kDayMs = 86400000;
constexpr int kMostSkippedATurn = 1000;

// From one time of day to the next; nothing where they do not tell it.
std::optional<int> passed(const std::optional<int> &fromMs, const std::optional<int> &toMs)
{
    if (!fromMs || !toMs)
        return std::nullopt;
    int pause = *toMs - *fromMs;
    if (pause < -kDayMs / 2)
        pause += kDayMs;
    if (pause <= 0 || pause > kDayMs / 2)
        return std::nullopt;
    return pause;
}

// Sentences beside an epoch, which come with it.
bool isBeside(const tPlayed &played)
{
    return played.epoch.withoutFix && played.epoch.inView.isEmpty();
}

} // namespace

ReplaySource::ReplaySource(const QStringList &files, double replaySpeed, bool inLoop, double startS,
                           QObject *parent)
    : ReceiverSource(parent)
    , recording(files)
    , speed(replaySpeed)
    , loop(inLoop)
    , startMs(startS * 1000.0)
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &ReplaySource::takeTurn);
}

bool ReplaySource::prepare(QString *error)
{
    if (!find()) {
        *error = recording.error().isEmpty() ? nothingFound() : recording.error();
        return false;
    }
    schedule();
    return true;
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
    if (hold == held)
        return;
    held = hold;
    if (held) {
        timer.stop();
        heldSinceMs = nowMs();
        return;
    }
    nextDueMs += static_cast<double>(nowMs() - heldSinceMs);
    schedule();
}

// Since start(); 0 before it.
qint64 ReplaySource::nowMs() const
{
    return clock.isValid() ? clock.elapsed() : 0;
}

int ReplaySource::pauseMs(const std::optional<int> &fromMs, const std::optional<int> &toMs,
                          int usualMs)
{
    return std::min(passed(fromMs, toMs).value_or(usualMs), kMaxPauseMs);
}

void ReplaySource::takeTurn()
{
    if (upcoming)
        deliverDue();
    else
        advance();
    schedule();
}

// The clock is read once: what becomes due while this delivers has to wait for the next turn.
void ReplaySource::deliverDue()
{
    const auto now = static_cast<double>(clock.elapsed());
    if (now - nextDueMs > kMaxLagMs)
        nextDueMs = now;
    for (int i = 0; i < kEpochsATurn && !held && upcoming && nextDueMs <= now; ++i) {
        const tPlayed played = *upcoming;
        deliver(played);
        advance();
    }
}

void ReplaySource::deliver(const tPlayed &played)
{
    noteTimes(played);
    if (!played.event.isEmpty()) {
        emit notice(played.event);
        return;
    }
    delivered += played.epoch.withoutFix ? 0 : 1;
    emit epochReady(played.epoch);
}

// Gets the next epoch and the time when it is due, or comes to the end. Finds neither where the way
// to the next epoch is long, and goes on when called again.
void ReplaySource::advance()
{
    if (!find())
        endPass();
}

// False at the end.
bool ReplaySource::find()
{
    for (int i = 0; i < kMostSkippedATurn; ++i) {
        upcoming = recording.next();
        if (!upcoming)
            return !recording.atEnd();
        const double passed = passedMs(*upcoming);
        const double wait = waitMs(*upcoming, passed);
        positionMs = positionMs ? *positionMs + passed : 0.0;
        if (*positionMs >= startMs) {
            nextDueMs += wait / speed;
            return true;
        }
        noteTimes(*upcoming);
        upcoming.reset();
    }
    return true;
}

// Recorded milliseconds since what was before.
double ReplaySource::passedMs(const tPlayed &next) const
{
    if (next.timeUs) {
        const qint64 us = *next.timeUs - lastTimeUs.value_or(*next.timeUs);
        return static_cast<double>(std::max<qint64>(us, 0)) / 1000.0;
    }
    return isBeside(next) ? 0.0 : passed(lastTimeMs, next.epoch.timeMs).value_or(usualPauseMs);
}

// The same with long gaps shortened where the recording is not a log with times of its own.
double ReplaySource::waitMs(const tPlayed &next, double passedMs)
{
    if (next.timeUs || isBeside(next))
        return passedMs;
    const int pause = pauseMs(lastTimeMs, next.epoch.timeMs, usualPauseMs);
    // A gap says nothing about the usual pace.
    if (pause < kMaxPauseMs)
        usualPauseMs = pause;
    return pause;
}

void ReplaySource::noteTimes(const tPlayed &played)
{
    lastTimeUs = played.timeUs;
    // One without a fix belongs to the epoch before or after it.
    if (played.event.isEmpty() && !played.epoch.withoutFix)
        lastTimeMs = played.epoch.timeMs;
}

void ReplaySource::endPass()
{
    if (!recording.error().isEmpty()) {
        end(false, recording.error());
    } else if (delivered == 0) {
        end(false, nothingFound());
    } else if (!loop) {
        end(true, summary());
    } else {
        if (firstPass)
            emit notice(summary());
        firstPass = false;
        delivered = 0;
        lastTimeMs.reset();
        lastTimeUs.reset();
        positionMs.reset();
        recording.rewind();
    }
}

void ReplaySource::end(bool ok, const QString &text)
{
    ended = true;
    emit finished(ok, text);
}

QString ReplaySource::nothingFound() const
{
    if (positionMs && *positionMs < startMs)
        return QStringLiteral("the recording is over after %1 s, before --start")
            .arg(*positionMs / 1000.0);
    return QStringLiteral("no epoch in the recording: %1 broken sentences, none with a time among "
                          "the others")
        .arg(recording.brokenSentences());
}

QString ReplaySource::summary() const
{
    QString text = QStringLiteral("played %1 epochs").arg(delivered);
    if (recording.brokenSentences() > 0)
        text +=
            QStringLiteral(", passed over %1 broken sentences").arg(recording.brokenSentences());
    if (recording.leftOutSentences() > 0)
        text += QStringLiteral(", left out %1 sentences that the viewer would mistake for others")
                    .arg(recording.leftOutSentences());
    if (recording.unnumberedSatellites() > 0)
        text += QStringLiteral(", left out %1 satellites that the viewer has no number for")
                    .arg(recording.unnumberedSatellites());
    return text;
}

// Sees to it that the next turn comes: at once to look on for an epoch, otherwise when one is due.
void ReplaySource::schedule()
{
    if (held || ended)
        return;
    if (!upcoming) {
        timer.start(0);
    } else if (clock.isValid()) {
        const double wait = std::ceil(nextDueMs - static_cast<double>(clock.elapsed()));
        timer.start(static_cast<int>(std::clamp(wait, 0.0, 60000.0)));
    }
}
