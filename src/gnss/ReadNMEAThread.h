// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QThread>

#include <atomic>
#include <memory>

class NmeaReader;

/// The worker thread on which the receiver's output is read and decoded. It probes the input pipe
/// once a second until it opens, then reads until it is asked to stop.
///
/// The object lives on the user-interface thread, its NmeaReader on the thread itself.
class ReadNMEAThread : public QThread
{
    Q_OBJECT

public:
    explicit ReadNMEAThread(QObject *parent = nullptr);
    /// Stops the thread and waits for it without a bound: whoever must not wait for a read that
    /// hangs in the system waits with one before.
    ~ReadNMEAThread() override;

    /// Sets the stop flag and wakes the thread where it waits: it leaves its read loop and stays in
    /// its event loop until that is told to exit. Any thread.
    void stopReading();

    /// stopReading(), and ends the event loop with 0: the thread finishes. Not lost on a thread
    /// that has not started or not got going yet. Any thread.
    void requestStop();

    /// True while reads deliver data. Any thread.
    bool isReading() const { return readingFlag; }

signals:
    void done(); ///< never emitted
    /// Tells whether NMEA data flows: false with each attempt to open the pipe and when reading has
    /// ended, true with each read that brought data. A level, not an edge.
    void tryStart(bool gotDate);

public slots:
    /// Clears the reader's decoding state, when there is a reader. Runs on the user-interface
    /// thread while the reading thread may be decoding: no lock is taken, a clear mixes at worst
    /// with one decoding pass.
    void clearBuffer();

protected:
    void run() override;

private:
    void openInput();
    void readInput();

    std::atomic<bool> stopFlag = false;
    std::atomic<bool> readingFlag = false;
    std::atomic<NmeaReader *> reader = nullptr;
    std::unique_ptr<NmeaReader> ownedReader;
    std::atomic<bool> exitRequested = false;
};
