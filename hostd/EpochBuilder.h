// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/Epoch.h"
#include "hostd/NmeaSentence.h"

#include <QSet>

#include <optional>

/// Puts the sentences of any receiver together to epochs: cuts the stream where a sentence with a
/// time begins a new cycle and where the receiver pauses, gives the satellites the device's
/// numbers, joins the GSV sets of several signals. What a cycle lacks of GGA and RMC is taken from
/// the rest of it, and satellites in view without any GSA get the latest one. Sentences of other
/// types are kept as they are. One thread at a time.
class EpochBuilder
{
public:
    /// Takes a sentence; the epoch that it shows to be complete, if any.
    std::optional<tEpoch> add(const tNmeaSentence &sentence);

    /// Sentences of an epoch at most, so that a stream without any time comes out as well.
    static constexpr int kMostSentences = 200;
    /// Bytes of other sentences in an epoch at most; with them it still goes into the pipe in one
    /// piece. What is more comes out earlier.
    static constexpr int kMostOtherBytes = 1536;

    /// The epoch that is still open, for the end of the stream. The next sentence begins anew.
    std::optional<tEpoch> takeRest();

    /// Tells that the receiver has been silent for longer than within an epoch: the open epoch, if
    /// there is one.
    std::optional<tEpoch> pause();

    /// Whether anything is held, so that a pause has something to tell.
    bool isOpen() const { return sentences != 0; }

    /// Whole sentences that have no place in the device's dialect: proprietary ones that the viewer
    /// would take for ordinary ones, parts of an epoch that came after its end.
    qint64 leftOutSentences() const { return leftOut; }

    /// How many different satellites were left out because the device has no number for them.
    int unnumberedSatellites() const { return unnumbered.size(); }

private:
    enum Seen : unsigned { SeenGga = 1, SeenGns = 2, SeenGll = 4, SeenRmc = 8 };

    // A type of sentence with a time, and how it is taken in.
    struct tTimed
    {
        const char *type;
        unsigned flag;
        int timeField;
        void (EpochBuilder::*add)(const tNmeaSentence &);
    };

    std::optional<tEpoch> addSentence(const tNmeaSentence &sentence);
    std::optional<tEpoch> addTimed(const tNmeaSentence &sentence, const tTimed &timedType);
    bool beginsNew(unsigned type, const std::optional<int> &time, const QByteArray &address) const;
    bool isLate(unsigned type, const std::optional<int> &time) const;
    void noteLate(const tNmeaSentence &sentence);
    std::optional<tEpoch> beginSet(const tNmeaSentence &sentence);
    std::optional<tEpoch> addOther(const tNmeaSentence &sentence);
    std::optional<tEpoch> complete();
    void forgetOpen();
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

    tEpoch epoch;              // the open one
    unsigned seen = 0;         // its timed sentences
    QSet<QByteArray> timed;    // their addresses
    QSet<QByteArray> sets;     // its GSV sets: talker and signal
    int sentences = 0;         // all that belong to it
    int otherBytes = 0;        // of its other sentences
    unsigned seenBefore = 0;   // timed sentences of the epoch before
    std::optional<int> before; // time of that one
    tEpoch latest; // what stays known from epoch to epoch: date, altitude, active satellites
    QSet<QByteArray> unnumbered;
    qint64 leftOut = 0;
};
