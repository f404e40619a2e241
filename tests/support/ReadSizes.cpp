// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/ReadSizes.h"

#include "gnss/NmeaReader.h"
#include "support/PlainDecoder.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int kLongestKept = 1024;
constexpr int kLargest = ReadSizes::kAll[std::size(ReadSizes::kAll) - 1];

PlainDecoder playPlainly(const QByteArray &bytes, int readSize)
{
    PlainDecoder plain;
    for (int at = 0; at < bytes.size(); at += readSize)
        plain.read(bytes.mid(at, readSize));
    return plain;
}

QString faultOfResult(const ReadSizes::Result &result, const PlainDecoder &plain)
{
    const QString published = firstDifference(result.published, plain.all());
    if (!published.isEmpty() || result.last == plain.current())
        return published;
    return QStringLiteral("last state, then that of the plain decoder\n%1\n%2")
        .arg(describe(result.last), describe(plain.current()));
}

/// Shows where the texts part without printing all of them.
QString faultOfText(const QString &a, const QString &b)
{
    const auto [inA, inB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (inA == a.end() && inB == b.end())
        return {};
    return QStringLiteral("texts of %1 and %2 characters differ at %3")
        .arg(a.size())
        .arg(b.size())
        .arg(inA - a.begin());
}

} // namespace

namespace ReadSizes {

Result play(const QByteArray &bytes, int readSize)
{
    const Publications publications;
    NmeaReader reader;
    for (int at = 0; at < bytes.size(); at += readSize)
        reader.feed({bytes.constData() + at,
                     static_cast<std::size_t>(std::min(readSize, bytes.size() - at))});
    return {publications.all(), publications.current(), GnssInfo::instance()->getNmeaData()};
}

QString fault(const QByteArray &bytes)
{
    const Result whole = play(bytes, kLargest);
    const PlainDecoder plain = playPlainly(bytes, kLargest);
    QString text = faultOfResult(whole, plain);
    for (const int size : kAll) {
        if (!text.isEmpty() || size == kLargest)
            break;
        const Result result = play(bytes, size);
        text = faultOfText(result.text, whole.text);
        if (text.isEmpty())
            text = faultOfResult(result, playPlainly(bytes, size));
        if (text.isEmpty() && plain.longestSentence() <= kLongestKept)
            text = faultOfResult(result, plain);
        if (!text.isEmpty())
            text = QStringLiteral("read size %1: %2").arg(size).arg(text);
    }
    return text;
}

} // namespace ReadSizes
