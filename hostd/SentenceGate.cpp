// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/SentenceGate.h"

#include "receiver/nmea/SentenceCutter.h"

namespace {

// Binary data may hold a dollar sign; what cannot be in a sentence shows that it began none.
bool belongsToSentence(char byte)
{
    return (byte >= 0x20 && byte < 0x7f) || byte == '\r' || byte == '\n';
}

} // namespace

QByteArray SentenceGate::passed(const QByteArray &bytes)
{
    QByteArray out;
    for (const char byte : bytes) {
        if (byte == '$' || !belongsToSentence(byte) || length > SentenceCutter::kMaxLength)
            length = 0;
        if (length == 0)
            passing = wanted;
        if (passing)
            out += byte;
        if (byte == '\n')
            length = 0;
        else if (length > 0 || byte == '$')
            ++length;
    }
    return out;
}
