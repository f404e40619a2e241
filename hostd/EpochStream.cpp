// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/EpochStream.h"

QVector<tEpoch> EpochStream::feed(const QByteArray &bytes)
{
    QVector<tEpoch> out;
    const QVector<tCutSentence> cuts = cutter.feed(bytes.constData(), bytes.size());
    for (const tCutSentence &cut : cuts)
        take(cut, out);
    return out;
}

QVector<tEpoch> EpochStream::takeRest()
{
    QVector<tEpoch> out;
    take(cutter.takeRest(), out);
    if (const std::optional<tEpoch> rest = builder.takeRest())
        out.append(*rest);
    return out;
}

void EpochStream::take(const tCutSentence &cut, QVector<tEpoch> &out)
{
    if (cut.text.isEmpty())
        return;
    const Nmea::LineEnd lineEnd = cut.terminated ? Nmea::LineEnd::Seen : Nmea::LineEnd::Missing;
    const std::optional<tNmeaSentence> sentence = Nmea::parse(cut.text, lineEnd);
    if (!sentence) {
        // Binary data holds dollar signs too; only what has an address is worth counting.
        broken += Nmea::hasAddress(cut.text) ? 1 : 0;
        return;
    }
    if (const std::optional<tEpoch> epoch = builder.add(*sentence))
        out.append(*epoch);
}
