// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/BaudFinder.h"

#include "receiver/nmea/NmeaSentence.h"

#include <algorithm>

namespace {

// A sentence without a checksum proves nothing here.
bool isRight(const tCutSentence &sentence)
{
    return sentence.terminated && Nmea::parse(sentence.text, Nmea::LineEnd::Missing).has_value();
}

} // namespace

bool BaudFinder::feed(const QByteArray &bytes)
{
    wrongBytes += bytes.size();
    const QVector<tCutSentence> sentences = cutter.feed(bytes.constData(), bytes.size());
    const bool right =
        !frames.feed(bytes).isEmpty() || std::any_of(sentences.cbegin(), sentences.cend(), isRight);
    if (right)
        wrongBytes = 0;
    return right;
}

void BaudFinder::restart()
{
    *this = BaudFinder();
}
