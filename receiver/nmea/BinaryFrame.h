// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QVector>

/// One message in the binary framing that u-blox and Allystar share: two synchronisation bytes,
/// class, number, length (two bytes, the low one first), payload, and two sums over everything
/// between synchronisation and sums (RFC 1145's Fletcher sum, 8 bit).
struct tBinaryFrame
{
    enum class Maker { Ublox, Allystar };

    Maker maker = Maker::Ublox;
    unsigned char messageClass = 0;
    unsigned char messageId = 0;
    QByteArray payload;
};

/// The bytes of a frame, ready to be sent.
QByteArray binaryFrameBytes(const tBinaryFrame &frame);

/// Finds whole frames with right sums in bytes that arrive in any pieces. One thread at a time.
class BinaryFrameCutter
{
public:
    /// Longest payload that is believed; text seldom looks like a frame, but it can.
    static constexpr int kMaxPayload = 2048;

    /// The frames that these bytes complete.
    QVector<tBinaryFrame> feed(const QByteArray &bytes);

private:
    QByteArray open; // begins with what may become a frame, or is empty
};
