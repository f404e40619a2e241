// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/NmeaFields.h"

#include <QString>
#include <QtAlgorithms>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr quint32 kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kHighBits = 0x8080808080808080U;

/// Eight bytes of a sentence, the first in the lowest place.
std::uint64_t loadWord(const char *bytes)
{
    return qFromLittleEndian<quint64>(bytes);
}

/// The high bit of each byte that is a comma. Splitting is most of what decoding costs, and eight
/// bytes at a time it costs a third.
std::uint64_t commasIn(std::uint64_t word)
{
    const std::uint64_t zeroAtComma = word ^ 0x2c2c2c2c2c2c2c2cU;
    return ~(((zeroAtComma & ~kHighBits) + ~kHighBits) | zeroAtComma) & kHighBits;
}

bool isBlank(char c)
{
    // What Qt takes for a blank, as far as one byte goes.
    return c == ' ' || (c >= '\t' && c <= '\r') || c == '\x85' || c == '\xa0';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Takes a sign off the front of `text`; true when it was a minus.
bool takeMinus(std::string_view &text)
{
    const bool minus = !text.empty() && text.front() == '-';
    if (minus || (!text.empty() && text.front() == '+'))
        text.remove_prefix(1);
    return minus;
}

/// True for a character that a finite decimal number can have.
bool belongsToNumber(char c)
{
    return isDigit(c) || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E';
}

/// A text that is nothing but digits with at most one point.
struct PlainNumber
{
    qint64 digits = 0; ///< all digits as one number
    int decimals = -1; ///< digits behind the point; -1 without a point
    bool ok = false;
};

/// Reads what receivers send nearly always. Up to 15 digits are exact in a double, as are the
/// powers of ten up to 15, so that one division gives the very value that Qt's reading would.
PlainNumber readPlainNumber(std::string_view text)
{
    PlainNumber number;
    if (text.size() > 16)
        return number;
    std::size_t digits = 0;
    for (const char c : text) {
        if (isDigit(c)) {
            number.digits = number.digits * 10 + (c - '0');
            number.decimals += number.decimals >= 0 ? 1 : 0;
            ++digits;
        } else if (c == '.' && number.decimals < 0) {
            number.decimals = 0;
        } else {
            return number;
        }
    }
    number.ok = digits > 0 && digits < 16;
    return number;
}

double valueOf(const PlainNumber &number)
{
    const auto digits = static_cast<double>(number.digits);
    return number.decimals > 0 ? digits / kPowersOfTen[number.decimals] : digits;
}

QString toQString(std::string_view text)
{
    return QString::fromLatin1(text.data(), static_cast<int>(text.size()));
}

} // namespace

NmeaFields::NmeaFields(std::string_view text)
    : sentence(text)
    , starts(static_cast<int>(text.size()) + 2)
{
    quint32 *next = starts.data();
    *next++ = 0;
    const auto size = static_cast<quint32>(sentence.size());
    std::uint64_t seen = 0;
    quint32 at = 0;
    for (; at + kWord <= size; at += kWord) {
        const std::uint64_t word = loadWord(sentence.data() + at);
        seen |= word;
        for (std::uint64_t commas = commasIn(word); commas != 0; commas &= commas - 1)
            *next++ = at + qCountTrailingZeroBits(quint64(commas)) / 8 + 1;
    }
    for (; at < size; ++at) {
        seen |= static_cast<unsigned char>(sentence[at]);
        if (sentence[at] == ',')
            *next++ = at + 1;
    }
    *next++ = size + 1;
    starts.resize(static_cast<int>(next - starts.data()));
    ascii = (seen & kHighBits) == 0;
}

std::string_view NmeaFields::lastField() const
{
    const std::string_view field = raw(count() - 1);
    return field.substr(0, field.find('*'));
}

namespace NmeaText {

int toIntInFull(std::string_view text)
{
    text = trimmed(text);
    const bool minus = takeMinus(text);
    qint64 value = 0;
    for (const char c : text) {
        if (!isDigit(c) || value > std::numeric_limits<int>::max())
            return 0;
        value = value * 10 + (c - '0');
    }
    value = minus ? -value : value;
    const bool fits =
        value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
    return fits ? static_cast<int>(value) : 0;
}

double toDoubleInFull(std::string_view text)
{
    const PlainNumber plain = readPlainNumber(text);
    if (plain.ok)
        return valueOf(plain);
    const std::string_view whole = trimmed(text);
    std::string_view amount = whole;
    const bool minus = takeMinus(amount);
    const PlainNumber number = readPlainNumber(amount);
    if (number.ok)
        return minus ? -valueOf(number) : valueOf(number);
    // Damaged text comes often enough (an SNR cut within the checksum) to cost no allocation.
    if (!std::all_of(whole.begin(), whole.end(), belongsToNumber))
        return 0.0;
    bool ok = false;
    const double value = toQString(whole).toDouble(&ok);
    return ok && std::isfinite(value) ? value : 0.0;
}

float toFloatInFull(std::string_view text)
{
    const double value = toDoubleInFull(text);
    return std::abs(value) <= double(std::numeric_limits<float>::max()) ? static_cast<float>(value)
                                                                        : 0.0F;
}

bool hasAsciiAddress(std::string_view sentence)
{
    if (sentence.size() >= kWord)
        return (loadWord(sentence.data()) & kHighBits & 0xffffffffffffU) == 0;
    const std::string_view address = left(sentence, 6);
    return std::all_of(address.begin(), address.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

double toDegrees(std::string_view coordinate)
{
    const std::string_view minutes = right(coordinate, 7);
    const std::string_view degrees = left(coordinate, coordinate.size() - minutes.size());
    // Two finite parts can have a sum that is not.
    const double value = toDouble(minutes) / 60.0 + toDouble(degrees);
    return std::isfinite(value) ? value : 0.0;
}

void readUtc(std::string_view time, std::string_view date, tUTCTime &utc)
{
    utc.second = toDouble(right(time, 6));
    utc.minute = static_cast<qint16>(toInt(left(right(time, 8), 2)));
    utc.hour = static_cast<qint16>(toInt(left(right(time, 10), 2)));
    utc.day = static_cast<qint16>(toInt(left(date, 2)));
    utc.month = static_cast<qint16>(toInt(right(left(date, 4), 2)));
    utc.year = static_cast<qint16>(toInt(right(date, 2)) + 2000);
}

} // namespace NmeaText
