// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gnss/GnssInfo.h"

#include <QVarLengthArray>

#include <string_view>

/// The functions that turn field text into values. Numbers follow QString::toInt() and toDouble():
/// the C locale, surrounding blanks allowed, 0 where any part of the text is no number. A value
/// that is not finite counts as 0.
namespace NmeaText {

inline int toInt(std::string_view text);
inline double toDouble(std::string_view text);
/// As toDouble(); 0 where a float cannot hold the value.
inline float toFloat(std::string_view text);

/// The value of one to three digits and nothing else, as nearly all numbers of GSV and GSA are; -1
/// for any other text.
inline int shortNumber(std::string_view text)
{
    const auto digit = [text](std::size_t i) {
        return static_cast<unsigned char>(text[i] - '0');
    };
    switch (text.size()) {
    case 1:
        return digit(0) <= 9 ? digit(0) : -1;
    case 2:
        return digit(0) <= 9 && digit(1) <= 9 ? digit(0) * 10 + digit(1) : -1;
    case 3:
        return digit(0) <= 9 && digit(1) <= 9 && digit(2) <= 9
                   ? digit(0) * 100 + digit(1) * 10 + digit(2)
                   : -1;
    default:
        return -1;
    }
}

/// What the three above do with any text that is no short number.
int toIntInFull(std::string_view text);
double toDoubleInFull(std::string_view text);
float toFloatInFull(std::string_view text);

inline int toInt(std::string_view text)
{
    const int value = shortNumber(text);
    return value >= 0 ? value : toIntInFull(text);
}

inline double toDouble(std::string_view text)
{
    const int value = shortNumber(text);
    return value >= 0 ? value : toDoubleInFull(text);
}

inline float toFloat(std::string_view text)
{
    const int value = shortNumber(text);
    return value >= 0 ? static_cast<float>(value) : toFloatInFull(text);
}

/// The last, respectively first, `n` characters, or the whole of a shorter text.
inline std::string_view right(std::string_view text, std::size_t n)
{
    return text.size() > n ? text.substr(text.size() - n) : text;
}

inline std::string_view left(std::string_view text, std::size_t n)
{
    return text.substr(0, n);
}

/// True when the first six characters, dollar sign, talker and type, are one byte each.
bool hasAsciiAddress(std::string_view sentence);

/// The three letters that name a sentence, behind its two-letter talker.
inline std::string_view sentenceType(std::string_view sentence)
{
    return right(left(sentence, 6), 3);
}

/// Degrees from ddmm.mmmm or dddmm.mmmm. The cut is of fixed width: the last 7 characters are the
/// minutes, what stands before them the degrees, so that other than four decimals decode wrongly.
double toDegrees(std::string_view coordinate);

/// Sets date and time of `utc` from hhmmss.sss and ddmmyy, cut at fixed places counted from the
/// end of the time and from the start of the date. `valid` is left alone.
void readUtc(std::string_view time, std::string_view date, tUTCTime &utc);

} // namespace NmeaText

/// The comma-separated fields of one NMEA 0183 sentence, as views into its bytes: field 0 is the
/// address, so that NMEA field n is fields[n]. The sentence must outlive the object.
class NmeaFields
{
public:
    explicit NmeaFields(std::string_view sentence);

    int count() const { return starts.size() - 1; }
    bool isAscii() const { return ascii; }

    /// Field `n`, which must exist, with whatever checksum stands in it.
    std::string_view raw(int n) const
    {
        return {sentence.data() + starts[n], starts[n + 1] - starts[n] - 1};
    }

    /// Field `n`; empty text where the sentence has none. From the sentence's last field the
    /// asterisk and what follows it are cut off.
    std::string_view operator[](int n) const
    {
        return n < count() - 1 ? raw(n) : n == count() - 1 ? lastField() : std::string_view();
    }

private:
    std::string_view lastField() const;

    std::string_view sentence;
    // Where each field begins, and one more past the end. Enough room for every sentence of the
    // standard, so that none of them costs an allocation.
    QVarLengthArray<quint32, 128> starts;
    bool ascii = true;
};
