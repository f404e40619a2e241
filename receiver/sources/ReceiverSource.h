// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/ReceiverCommand.h"
#include "receiver/epoch/Epoch.h"

#include <QObject>
#include <QString>

/// What a source has counted so far.
struct tSourceCounters
{
    qint64 bytes = 0;           ///< received
    qint64 brokenSentences = 0; ///< with a wrong checksum, or cut off without one
};

/// Where epochs come from: a simulated receiver, a recording or a real one. The daemon starts
/// it, passes the viewer's commands on and writes out every epoch. Lives on the daemon's thread.
class ReceiverSource : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Looks whether there is anything to deliver from, before the pipes are opened. False with
    /// `error` set when there is not.
    virtual bool prepare(QString *error)
    {
        Q_UNUSED(error)
        return true;
    }

    /// Begins to deliver. What went wrong comes as finished().
    virtual void start() = 0;

    /// Takes note of a command's sentence, before it is to be obeyed.
    virtual void noteCommand(const QByteArray &sentence) { Q_UNUSED(sentence) }

    /// Obeys a command, or says that this source cannot.
    virtual tCommandAnswer obey(const tReceiverCommand &command) = 0;

    /// Whether the source can wait: it is then started when a reader is there, and held while the
    /// pipe is full. A live receiver cannot.
    virtual bool canWait() const { return false; }

    /// Stops and resumes delivering, only called when canWait(). What is delivered afterwards is
    /// what would have come then, with the pauses that were left.
    virtual void setHeld(bool held) { Q_UNUSED(held) }

    /// Whether a part of the next epoch has come already.
    virtual bool isMidEpoch() const { return false; }

    /// What was counted since start().
    virtual tSourceCounters counters() const { return {}; }

signals:
    void epochReady(const tEpoch &epoch);
    /// The receiver's bytes as they came, from a source that has any.
    void bytesReady(const QByteArray &bytes);
    /// Nothing more will come. `ok` is false after a failure; `text` is for the report.
    void finished(bool ok, const QString &text);
    /// Something the user should know.
    void notice(const QString &text);
    /// What only a user who looks for a fault wants to know.
    void detail(const QString &text);

protected:
    /// Behind by more milliseconds than this, after a suspend say, a source that paces itself does
    /// not make up for the time lost.
    static constexpr double kMaxLagMs = 2000.0;
    /// No more epochs at once, so that one with more than the machine can write leaves the event
    /// loop time for signals and commands.
    static constexpr int kEpochsATurn = 50;
};
