// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/nmea/BinaryFrame.h"

namespace {

using Maker = tBinaryFrame::Maker;

constexpr int kClass = 2; // positions of the fields
constexpr int kId = 3;
constexpr int kLength = 4;
constexpr int kPayload = 6;
constexpr int kSums = 2;

struct tSync
{
    Maker maker;
    unsigned char first;
    unsigned char second;
};

constexpr tSync kSyncs[] = {{Maker::Ublox, 0xb5, 0x62}, {Maker::Allystar, 0xf1, 0xd9}};

unsigned char byteAt(const QByteArray &bytes, int i)
{
    return static_cast<unsigned char>(bytes.at(i));
}

QByteArray sums(const QByteArray &bytes, int from, int end)
{
    unsigned a = 0;
    unsigned b = 0;
    for (int i = from; i < end; ++i) {
        a = (a + byteAt(bytes, i)) & 0xff;
        b = (b + a) & 0xff;
    }
    return QByteArray(1, static_cast<char>(a)) + static_cast<char>(b);
}

// Whether the bytes from `start` on begin as a frame does, as far as they go.
const tSync *syncAt(const QByteArray &bytes, int start)
{
    for (const tSync &sync : kSyncs) {
        const bool first = byteAt(bytes, start) == sync.first;
        if (first && (start + 1 == bytes.size() || byteAt(bytes, start + 1) == sync.second))
            return &sync;
    }
    return nullptr;
}

} // namespace

QByteArray binaryFrameBytes(const tBinaryFrame &frame)
{
    const tSync &sync = kSyncs[frame.maker == Maker::Ublox ? 0 : 1];
    QByteArray bytes;
    for (const int byte :
         {int(sync.first), int(sync.second), int(frame.messageClass), int(frame.messageId),
          frame.payload.size() & 0xff, (frame.payload.size() >> 8) & 0xff})
        bytes.append(static_cast<char>(byte));
    bytes += frame.payload;
    return bytes + sums(bytes, kClass, bytes.size());
}

QVector<tBinaryFrame> BinaryFrameCutter::feed(const QByteArray &bytes)
{
    QVector<tBinaryFrame> frames;
    open += bytes;
    int start = 0;
    while (start < open.size()) {
        const tSync *sync = syncAt(open, start);
        if (!sync) {
            ++start;
            continue;
        }
        if (start + kPayload > open.size())
            break;
        const int length = byteAt(open, start + kLength) | byteAt(open, start + kLength + 1) << 8;
        const int end = start + kPayload + length;
        if (length <= kMaxPayload && end + kSums > open.size())
            break;
        if (length <= kMaxPayload && sums(open, start + kClass, end) == open.mid(end, kSums)) {
            frames.append({sync->maker, byteAt(open, start + kClass), byteAt(open, start + kId),
                           open.mid(start + kPayload, length)});
            start = end + kSums;
        } else {
            ++start;
        }
    }
    open.remove(0, start);
    return frames;
}
