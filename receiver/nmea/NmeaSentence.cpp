// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/nmea/NmeaSentence.h"

#include "base/NmeaFraming.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace {

constexpr int kAddressSize = 5;

bool isDigits(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0;
    });
}

// A decimal number in units of its `decimals`-th decimal, rounded half up. Done on the digits: a
// double would turn some exact halves into less than a half.
std::optional<qint64> scaled(const QByteArray &text, int decimals)
{
    constexpr int kMaxDigits = 9;
    const int point = text.indexOf('.');
    const QByteArray whole = point < 0 ? text : text.left(point);
    const QByteArray fraction = point < 0 ? QByteArray() : text.mid(point + 1);
    if (!isDigits(whole) || whole.size() > kMaxDigits ||
        !(fraction.isEmpty() || isDigits(fraction)))
        return std::nullopt;
    const QByteArray kept = fraction.left(decimals).leftJustified(decimals, '0');
    const bool up = fraction.size() > decimals && fraction[decimals] >= '5';
    return (whole + kept).toLongLong() + (up ? 1 : 0);
}

// Nothing when the checksum, or the sentence as a whole, is not right.
std::optional<QByteArray> bodyOf(const QByteArray &text, Nmea::LineEnd lineEnd)
{
    const std::optional<NmeaFraming::tFramed> framed = NmeaFraming::unframed(text);
    // A right checksum of nothing still makes no sentence.
    if (!framed || framed->body.isEmpty())
        return std::nullopt;
    const bool isWhole =
        framed->hasChecksum || (lineEnd == Nmea::LineEnd::Seen && Nmea::hasAddress(text));
    return isWhole ? std::optional<QByteArray>(framed->body) : std::nullopt;
}

} // namespace

namespace Nmea {

bool hasAddress(const QByteArray &text)
{
    constexpr int kAddressEnd = 1 + kAddressSize;
    if (!text.startsWith('$') || text.size() <= kAddressEnd || text[kAddressEnd] != ',')
        return false;
    return std::all_of(text.cbegin() + 1, text.cbegin() + kAddressEnd,
                       [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

std::optional<tNmeaSentence> parse(const QByteArray &text, LineEnd lineEnd)
{
    const std::optional<QByteArray> body = bodyOf(text, lineEnd);
    if (!body)
        return std::nullopt;
    tNmeaSentence sentence;
    sentence.fields = body->split(',');
    sentence.text = text;
    const QByteArray address = sentence.fields.first();
    // Proprietary ones begin with P, and end like ordinary ones at times: Garmin's PGRMC. But PQ is
    // a talker of BeiDou.
    const bool isProprietary = address.startsWith('P') && !address.startsWith("PQ");
    if (address.size() == kAddressSize && !isProprietary) {
        sentence.talker = address.left(2);
        sentence.type = address.mid(2);
    }
    return sentence;
}

std::optional<int> timeMs(const QByteArray &text)
{
    constexpr int kDayMs = 86400000;
    const std::optional<qint64> value = scaled(text, 3);
    const int point = text.indexOf('.');
    if (!value || (point < 0 ? text.size() : point) != 6)
        return std::nullopt;
    const int hour = text.left(2).toInt();
    const int minute = text.mid(2, 2).toInt();
    const int second = text.mid(4, 2).toInt();
    if (hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    const auto fraction = static_cast<int>(*value - text.left(6).toLongLong() * 1000);
    // Neither a leap second nor rounding may leave the day: the date stands elsewhere.
    return std::min(hour * 3600000 + minute * 60000 + second * 1000 + fraction, kDayMs - 1);
}

std::optional<qint64> angle(const QByteArray &text, const QByteArray &hemisphere, int maxDegrees)
{
    constexpr qint64 kMinute = 10000;
    constexpr qint64 kDegreesPlace = 100 * kMinute;
    const std::optional<qint64> value = scaled(text, 4);
    if (!value)
        return std::nullopt;
    const int point = text.indexOf('.');
    const qint64 whole = text.left(point < 0 ? text.size() : point).toLongLong() * kMinute;
    const qint64 degrees = whole / kDegreesPlace;
    const qint64 minutes = *value - degrees * kDegreesPlace;
    const qint64 units = degrees * 60 * kMinute + minutes;
    if (whole % kDegreesPlace >= 60 * kMinute || units > qint64(maxDegrees) * 60 * kMinute)
        return std::nullopt;
    return hemisphere == "S" || hemisphere == "W" ? -units : units;
}

std::optional<double> number(const QByteArray &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok && std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

void replaceIfKnown(std::optional<double> &value, const QByteArray &text)
{
    if (const std::optional<double> known = number(text))
        value = known;
}

std::optional<int> integer(const QByteArray &text)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok ? std::optional<int>(value) : std::nullopt;
}

std::optional<int> wholePart(const QByteArray &text)
{
    const int point = text.indexOf('.');
    if (point < 0)
        return integer(text);
    return number(text) ? integer(text.left(point)) : std::nullopt;
}

int decimals(const QByteArray &text)
{
    const int point = text.indexOf('.');
    return point < 0 ? 0 : text.size() - point - 1;
}

} // namespace Nmea
