// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/epoch/EpochStream.h"

namespace {

// Fields that a whole sentence has at least, the address among them; 0 for other types.
int leastFields(const QByteArray &type)
{
    if (type == "GGA")
        return 15;
    if (type == "GNS")
        return 13;
    if (type == "GLL")
        return 7;
    if (type == "RMC")
        return 12;
    return type == "GSA" ? 18 : 0;
}

} // namespace

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
    checked.clear();
    return out;
}

void EpochStream::take(const tCutSentence &cut, QVector<tEpoch> &out)
{
    if (cut.text.isEmpty())
        return;
    const Nmea::LineEnd lineEnd = cut.terminated ? Nmea::LineEnd::Seen : Nmea::LineEnd::Missing;
    const std::optional<tNmeaSentence> sentence = Nmea::parse(cut.text, lineEnd);
    if (!sentence || isCutOff(*sentence)) {
        // Binary data holds dollar signs too; only what has an address is worth counting.
        broken += Nmea::hasAddress(cut.text) ? 1 : 0;
        return;
    }
    if (const std::optional<tEpoch> epoch = builder.add(*sentence))
        out.append(*epoch);
}

// Whether a sentence without a checksum lost its end. Some receivers send no checksums, or none
// with certain sentences; but none sends the same sentence with and without.
bool EpochStream::isCutOff(const tNmeaSentence &sentence)
{
    constexpr int kMaxRemembered = 1000; // noise can make up any number of addresses
    const QByteArray address = sentence.field(0);
    if (sentence.text.contains('*')) {
        if (checked.size() < kMaxRemembered)
            checked.insert(address);
        return false;
    }
    return !checked.isEmpty() &&
           (checked.contains(address) || sentence.fields.size() < leastFields(sentence.type));
}
