// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/EpochBuilder.h"
#include "hostd/SentenceCutter.h"

#include <QFile>
#include <QQueue>
#include <QStringList>

#include <optional>

/// Recorded NMEA data in one or several files, read epoch by epoch. Comment lines, binary data and
/// broken sentences are passed over. One thread at a time.
class Recording
{
public:
    /// The files in the order in which they are read.
    explicit Recording(const QStringList &files);

    /// The next epoch, nothing at the end or after a failure.
    std::optional<tEpoch> next();

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
    SentenceCutter cutter{SentenceCutter::Comments::PassOver};
    EpochBuilder builder;
    QQueue<tEpoch> ready;
    QString errorText;
    qint64 broken = 0;
};
