// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/CommandReader.h"
#include "hostd/PipeWriter.h"
#include "hostd/SentenceGate.h"
#include "hostd/StatusLine.h"
#include "hostd/StopHold.h"
#include "receiver/sources/ReceiverSource.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

/// What the viewer is given.
enum class DaemonOutput {
    Dialect, ///< the epochs in the device's dialect
    Raw,     ///< the receiver's bytes as they come
};

/// Joins a source with the viewer's two pipes: what the source delivers goes out in the device's
/// dialect, what the viewer commands goes to the source, and everything that happens is reported
/// on standard error. One thread.
class HostDaemon : public QObject
{
    Q_OBJECT
public:
    explicit HostDaemon(std::unique_ptr<ReceiverSource> source,
                        DaemonOutput outputForm = DaemonOutput::Dialect, QObject *parent = nullptr);
    ~HostDaemon() override;

    /// Makes and opens the pipes and starts the source. False, with the reason reported, when the
    /// pipes cannot be had or the source has nothing.
    bool start();

signals:
    /// The source is at its end; the program's exit code.
    void ended(int exitCode);

private slots:
    void takeEpoch(const tEpoch &epoch);
    void writeRaw(const QByteArray &bytes);
    void obey(const tReceiverCommand &command, const QByteArray &sentence);
    void finish(bool ok, const QString &text);
    void lookAfterPipes();
    void startWithReader();
    void retryHeld();
    void showStatus();
    void sayCounters();

private:
    void writeEpoch(const tEpoch &epoch);
    void connectParts();
    void noteResult(PipeWriter::Result result);
    void reportDropped();
    bool shouldHold(PipeWriter::Result result);
    void applyStop();

    CommandReader commands;
    PipeWriter output;
    std::unique_ptr<ReceiverSource> source;
    DaemonOutput form;
    StopHold stopHold;
    SentenceGate rawGate; // for DaemonOutput::Raw
    StatusLine status;
    QTimer statusTimer;
    QTimer countersTimer;
    QTimer pipeTimer;   // looks after the pipes
    QTimer readerTimer; // waits for the first reader
    QTimer retryTimer;  // waits for room in the pipe
    QVector<QByteArray> heldSentences;
    QElapsedTimer heldSince;
    bool pipeFull = false;    // the latest cycle found no room
    qint64 droppedCycles = 0; // for this reader
    bool finishHeld = false;  // the source ended while its last cycle was held
    bool finishOk = true;
    QString finishText;
};
