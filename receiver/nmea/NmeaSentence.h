// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// An NMEA 0183 sentence of any receiver, checked and split.
struct tNmeaSentence
{
    QByteArray text;          ///< as it came, without the line end
    QByteArray talker;        ///< two letters; empty for a proprietary sentence
    QByteArray type;          ///< three letters; empty for a proprietary sentence
    QList<QByteArray> fields; ///< fields[0] is the address, so that field n is fields[n]

    /// Field n, empty when the sentence has no such field.
    QByteArray field(int n) const { return fields.value(n); }
};

/// Reading of sentences and of their fields. Pure, any thread.
namespace Nmea {

/// Whether a line end was seen behind a sentence.
enum class LineEnd { Missing, Seen };

/// The sentence in a text that begins with `$`. Nothing with a wrong checksum: the cut and merged
/// sentences of a disturbed line look like good ones otherwise. Some receivers send none; such a
/// sentence is taken when its line end shows that it is whole.
std::optional<tNmeaSentence> parse(const QByteArray &text, LineEnd lineEnd);

/// Whether a text begins as sentences do: `$`, five letters or digits, a comma.
bool hasAddress(const QByteArray &text);

/// UTC time `hhmmss[.s...]` in milliseconds of the day, rounded; nothing when it is empty or none.
std::optional<int> timeMs(const QByteArray &text);

/// A coordinate `d...mm[.m...]` with its hemisphere letter in ten-thousandths of a minute, rounded,
/// south and west negative. Nothing when it is none or beyond `maxDegrees`.
std::optional<qint64> angle(const QByteArray &text, const QByteArray &hemisphere, int maxDegrees);

/// A finite decimal number, nothing otherwise.
std::optional<double> number(const QByteArray &text);

/// Puts a finite decimal number in the place of a value; other texts leave it.
void replaceIfKnown(std::optional<double> &value, const QByteArray &text);

/// A whole number, nothing otherwise.
std::optional<int> integer(const QByteArray &text);

/// The whole part of a decimal number, nothing otherwise: 40 for "40.5".
std::optional<int> wholePart(const QByteArray &text);

/// Digits behind the point.
int decimals(const QByteArray &text);

} // namespace Nmea
