// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/NmeaFraming.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr int kDigits = 2;

} // namespace

namespace NmeaFraming {

bool isHex(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](char digit) {
        return std::isxdigit(static_cast<unsigned char>(digit)) != 0;
    });
}

unsigned checksumOf(const QByteArray &body)
{
    unsigned sum = 0;
    for (const char byte : body)
        sum ^= static_cast<unsigned char>(byte);
    return sum;
}

QByteArray sentence(const QByteArray &body)
{
    return '$' + body + '*' +
           QByteArray::number(checksumOf(body), 16).toUpper().rightJustified(kDigits, '0') + "\r\n";
}

std::optional<tFramed> unframed(const QByteArray &sentence)
{
    if (!sentence.startsWith('$'))
        return std::nullopt;
    const int star = sentence.indexOf('*');
    if (star < 0)
        return tFramed{sentence.mid(1), false, {}};
    const QByteArray body = sentence.mid(1, star - 1);
    const QByteArray digits = sentence.mid(star + 1, kDigits);
    if (digits.size() < kDigits || !isHex(digits) || digits.toUInt(nullptr, 16) != checksumOf(body))
        return std::nullopt;
    return tFramed{body, true, sentence.mid(star + 1 + kDigits)};
}

} // namespace NmeaFraming
