// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Publications.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

/// A second decoder of the same rules, written for being plainly right instead of fast: everything
/// as QString, split with Qt's own means, numbers read by Qt. What NmeaReader publishes is compared
/// with what this one does. It knows nothing of GnssInfo.
class PlainDecoder
{
public:
    /// Takes in what one read delivered.
    void read(const QByteArray &bytes);

    /// A reset of the receiver: the decoder's buffers and the model are cleared together.
    void clear();

    const std::vector<Publication> &all() const { return list; }

    /// What would be published by now, satellites from GLL included.
    const Publication &current() const { return model; }

    /// Longest text from a '$' to before its carriage return, or to the end, met so far.
    int longestSentence() const { return longest; }

private:
    void decode(const QByteArray &bytes);
    void decodePosition(const QString &type);
    void decodeGsa();
    void decodeGsv();
    void decodeRmc();
    void updateTtff();
    bool cycleComplete();
    long long utcGap() const;

    QString element(int n) const;

    Publication model;
    tUTCTime previousUtc;
    std::vector<Publication> list;
    QByteArray pending;
    int longest = 0;
    QStringList elements;

    tGnssSvStatus svStatus;
    tGnssLocation location;
    tUTCTime utc;
    bool noFix = false;
    uint timeCount = 0;
    int stored = 0;
    long long totalInView = 0;
    int inView[5] = {};
    bool first[5] = {};
    bool last[5] = {};
    bool gsvSeen[3] = {};
    bool gsaSeen[3] = {};
};
