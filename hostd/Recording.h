// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/EpochBuilder.h"
#include "hostd/SentenceCutter.h"

#include <QFile>
#include <QQueue>
#include <QStringList>

#include <optional>

/// Recorded NMEA data in one or several ordinary files, read epoch by epoch. Comment lines, binary
/// data and broken sentences are passed over. One thread at a time.
class Recording
{
public:
    /// The files in the order in which they are read.
    explicit Recording(const QStringList &files);

    /// Bytes that are read for one epoch before next() returns without it, so that nobody who has
    /// something else to do waits for the end of a huge file.
    static constexpr qint64 kMostBytesALook = 1048576;

    /// The next epoch. Nothing at the end, after a failure, and when none was found within
    /// kMostBytesALook: the next call then goes on, see atEnd().
    std::optional<tEpoch> next();

    /// Whether there is nothing more to come from next(), after a failure as well.
    bool atEnd() const;

    /// Begins again with the first file.
    void rewind();

    /// Why reading ended early, empty when it did not.
    const QString &error() const { return errorText; }

    /// Sentences with a wrong checksum, or cut off without one, since the first file was begun.
    qint64 brokenSentences() const { return broken; }

    /// Satellites that the device has no number for, since the first file was begun.
    int unnumberedSatellites() const { return builder.unnumberedSatellites(); }

private:
    bool openNext();
    void readMore();
    void take(const tCutSentence &sentence);

    QStringList names;
    int nextFile = 0;
    QFile file;
    QString fileName; // of the open one
    SentenceCutter cutter{SentenceCutter::Comments::PassOver};
    EpochBuilder builder;
    QQueue<tEpoch> ready;
    QString errorText;
    qint64 broken = 0;
};
