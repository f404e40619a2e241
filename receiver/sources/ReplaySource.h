// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/recordings/Recording.h"
#include "receiver/sources/ReceiverSource.h"

#include <QElapsedTimer>
#include <QTimer>

#include <optional>

/// Plays a recording at the pace of its own times, or as fast as the computer can where that is too
/// fast for it. A transfer log has the times of then, gaps included; the commands of then are
/// shown. Works in short turns of the event loop. Cannot obey commands; can wait.
class ReplaySource : public ReceiverSource
{
    Q_OBJECT
public:
    /// `speed`: recorded seconds in a real one, above 0. `loop`: begin again at the end. `startS`:
    /// where to begin, also again, recorded seconds after the first epoch.
    ReplaySource(const QStringList &files, double speed, bool loop, double startS = 0.0,
                 QObject *parent = nullptr);

    /// Looks for the first epoch. Where that takes long it goes on in the event loop; finished()
    /// then says if there is none, also before start().
    bool prepare(QString *error) override;
    void start() override;
    tCommandAnswer obey(const tReceiverCommand &command) override;
    bool canWait() const override { return true; }
    void setHeld(bool held) override;
    tSourceCounters counters() const override { return {0, recording.brokenSentences()}; }

    /// Longest pause between two epochs, recorded milliseconds.
    static constexpr int kMaxPauseMs = 10000;

    /// Recorded milliseconds from one epoch to the next, 1 to kMaxPauseMs. `usualMs` is the pause
    /// where the times tell none: one is missing, they go back, or by so much forward that it must
    /// be back over midnight.
    static int pauseMs(const std::optional<int> &fromMs, const std::optional<int> &toMs,
                       int usualMs);

private slots:
    void takeTurn();

private:
    void deliverDue();
    void deliver(const tPlayed &played);
    bool find();
    void advance();
    double passedMs(const tPlayed &next) const;
    double waitMs(const tPlayed &next, double passedMs);
    void noteTimes(const tPlayed &played);
    void endPass();
    void end(bool ok, const QString &text);
    QString nothingFound() const;
    QString summary() const;
    void schedule();
    qint64 nowMs() const;

    Recording recording;
    double speed;
    bool loop;
    double startMs; // where to begin, recorded time after the first epoch
    bool held = false;
    qint64 heldSinceMs = 0; // by the clock below
    bool firstPass = true;
    bool ended = false;
    std::optional<tPlayed> upcoming; // nothing while it is looked for
    std::optional<int> lastTimeMs;
    std::optional<qint64> lastTimeUs; // of the recording's own clock
    std::optional<double> positionMs; // of `upcoming`, after the first epoch; gaps included
    int usualPauseMs = 1000;
    qint64 delivered = 0; // epochs of this pass
    double nextDueMs = 0.0;
    QElapsedTimer clock;
    QTimer timer;
};
