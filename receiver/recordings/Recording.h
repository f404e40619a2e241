// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/EpochStream.h"
#include "receiver/recordings/TransferLogReader.h"

#include <QFile>
#include <QQueue>
#include <QStringList>

#include <optional>

/// What a recording gives next.
struct tPlayed
{
    tEpoch epoch;
    QString event;                ///< a recorded command or remark; there is no epoch then
    std::optional<qint64> timeUs; ///< when it was recorded, where the recording tells
};

/// Recorded NMEA data in one or several ordinary files, read epoch by epoch: plain data, in which
/// comment lines are passed over, and transfer logs, which bring their own times and the commands
/// of then. Binary data and broken sentences are passed over. One thread at a time.
class Recording
{
public:
    /// The files in the order in which they are read.
    explicit Recording(const QStringList &files);

    /// Bytes that are read for one epoch before next() returns without it, so that nobody who has
    /// something else to do waits for the end of a huge file.
    static constexpr qint64 kMostBytesALook = 1048576;

    /// Silence that ends an epoch of a transfer log, recorded microseconds.
    static constexpr qint64 kPauseUs = 200000;

    /// The next epoch or event. Nothing at the end, after a failure, and when none was found within
    /// kMostBytesALook: the next call then goes on, see atEnd().
    std::optional<tPlayed> next();

    /// Whether there is nothing more to come from next(), after a failure as well.
    bool atEnd() const;

    /// Begins again with the first file.
    void rewind();

    /// Why reading ended early, empty when it did not.
    const QString &error() const { return errorText; }

    /// Sentences with a wrong checksum, or cut off without one, since the first file was begun.
    qint64 brokenSentences() const { return stream.brokenSentences(); }

    /// Whole sentences that have no place in the device's dialect, since the first file was begun.
    qint64 leftOutSentences() const { return stream.leftOutSentences(); }

    /// Satellites that the device has no number for, since the first file was begun.
    int unnumberedSatellites() const { return stream.unnumberedSatellites(); }

private:
    bool openNext();
    void readMore();
    void endFile();
    void take(const tTransferRecord &record);
    void enqueue(const QVector<tEpoch> &epochs, std::optional<qint64> timeUs = std::nullopt);

    QStringList names;
    int nextFile = 0;
    QFile file;
    QString fileName; // of the open one
    EpochStream stream{SentenceCutter::Comments::PassOver};
    std::optional<TransferLogReader> log; // reads the open file where that is a transfer log
    std::optional<qint64> receivedUs;     // time of the latest bytes of a transfer log
    QQueue<tPlayed> ready;
    QString errorText;
};
