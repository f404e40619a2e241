// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/Epoch.h"
#include "hostd/NmeaSentence.h"

#include <QSet>

#include <optional>

/// Puts the sentences of any receiver together to epochs: cuts the stream where a sentence with a
/// time begins a new cycle, gives the satellites the device's numbers, joins the GSV sets of
/// several signals. What a cycle lacks of GGA and RMC is taken from the rest of it, and satellites
/// in view without any GSA get the latest one. One thread at a time.
class EpochBuilder
{
public:
    /// Takes a sentence; the epoch that it shows to be complete, if any.
    std::optional<tEpoch> add(const tNmeaSentence &sentence);

    /// The epoch that is still open, for the end of the stream. The next sentence begins anew.
    std::optional<tEpoch> takeRest();

    /// Tells that the receiver has been silent for a while: the open epoch, where that shows it to
    /// be complete.
    std::optional<tEpoch> pause();

    /// Whether there is an open epoch.
    bool isOpen() const { return seen != 0; }

    /// How many different satellites were left out because the device has no number for them.
    int unnumberedSatellites() const { return unnumbered.size(); }

private:
    enum Seen : unsigned { SeenGga = 1, SeenGns = 2, SeenGll = 4, SeenRmc = 8 };

    bool beginsNew(unsigned type, const std::optional<int> &time) const;
    std::optional<tEpoch> complete();
    void completeFix();
    void completeActive();
    void addGga(const tNmeaSentence &sentence);
    void addGns(const tNmeaSentence &sentence);
    void addGll(const tNmeaSentence &sentence);
    void addRmc(const tNmeaSentence &sentence);
    void addGsa(const tNmeaSentence &sentence);
    void addGsv(const tNmeaSentence &sentence);
    void addPosition(const tNmeaSentence &sentence, int firstField, bool preferred);
    std::optional<int> numbered(const QByteArray &talker, const QByteArray &number);

    tEpoch epoch;      // the open one
    unsigned seen = 0; // timed sentences of the open epoch
    tEpoch latest;     // what stays known from epoch to epoch: date, altitude, active satellites
    QSet<QByteArray> unnumbered;
};
