// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>

#include <optional>

/// What stands around the text of an NMEA 0183 sentence: `$`, and `*` with two hexadecimal digits.
/// The viewer's reader does without: it looks at no checksum. Pure functions, any thread.
namespace NmeaFraming {

/// A sentence without its frame.
struct tFramed
{
    QByteArray body;          ///< between `$` and `*`, or to the end where there is none
    bool hasChecksum = false; ///< there is one, and it is right
    QByteArray behind;        ///< what stands behind the checksum
};

/// Whether a text has hexadecimal digits and nothing else; toUInt() would take a sign and "0x" too.
bool isHex(const QByteArray &text);

/// Exclusive or of all bytes, as between `$` and `*`.
unsigned checksumOf(const QByteArray &body);

/// `$`, the body, its checksum, CR and LF.
QByteArray sentence(const QByteArray &body);

/// Takes the frame off a sentence without its line end; nothing when it does not begin with `$` or
/// its checksum is wrong.
std::optional<tFramed> unframed(const QByteArray &sentence);

} // namespace NmeaFraming
