// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/nmea/BinaryFrame.h"
#include "receiver/nmea/SentenceCutter.h"

#include <QByteArray>

/// Tells by the bytes whether a serial line runs at the receiver's speed: only then there are NMEA
/// sentences and binary frames with right checksums. One thread at a time.
class BaudFinder
{
public:
    /// The speeds that receivers are delivered with or commonly set to, likeliest first, bit/s.
    static constexpr int kRates[] = {9600,  115200, 38400,  4800,  57600,
                                     19200, 230400, 460800, 921600};

    /// Takes what has come. True when it completes a sentence or frame that is right.
    bool feed(const QByteArray &bytes);

    /// How many bytes have come since the latest one that was right.
    qint64 bytesSinceRight() const { return wrongBytes; }

    /// Forgets everything, for another speed.
    void restart();

private:
    SentenceCutter cutter;
    BinaryFrameCutter frames;
    qint64 wrongBytes = 0;
};
