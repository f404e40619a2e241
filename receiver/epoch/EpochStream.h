// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/EpochBuilder.h"
#include "receiver/nmea/SentenceCutter.h"

#include <QSet>
#include <QVector>

/// The dialect stage in front of Dialect::sentences(): bytes of any receiver, in any pieces, become
/// epochs. Broken sentences are counted and passed over. One thread at a time.
class EpochStream
{
public:
    explicit EpochStream(SentenceCutter::Comments comments = SentenceCutter::Comments::Ordinary)
        : cutter(comments)
    {
    }

    /// The epochs that these bytes show to be complete, in order.
    QVector<tEpoch> feed(const QByteArray &bytes);

    /// Tells that the receiver has been silent for a while; the epoch that is complete by that.
    std::optional<tEpoch> pause() { return builder.pause(); }

    /// The end of the stream: what is still open. The next bytes begin anew.
    QVector<tEpoch> takeRest();

    /// Forgets the satellites of earlier epochs: the receiver was told to start anew.
    void forgetSatellites() { builder.forgetSatellites(); }

    /// Whether an epoch is open, so that a pause has something to tell.
    bool isOpen() const { return builder.isOpen(); }

    /// Sentences with a wrong checksum, or cut off without one.
    qint64 brokenSentences() const { return broken; }

    /// Whole sentences that have no place in the device's dialect.
    qint64 leftOutSentences() const { return builder.leftOutSentences(); }

    /// Different satellites that the device has no number for.
    int unnumberedSatellites() const { return builder.unnumberedSatellites(); }

private:
    void take(const tCutSentence &cut, QVector<tEpoch> &out);
    bool isCutOff(const tNmeaSentence &sentence);

    SentenceCutter cutter;
    EpochBuilder builder;
    QSet<QByteArray> checked; // addresses of sentences that came with a checksum
    qint64 broken = 0;
};
