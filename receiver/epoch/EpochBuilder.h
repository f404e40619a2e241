// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/Epoch.h"
#include "receiver/epoch/SatelliteReports.h"
#include "receiver/nmea/NmeaSentence.h"

#include <QSet>
#include <QVector>

#include <optional>

/// Puts the sentences of any receiver together to epochs: cuts the stream where a sentence with a
/// time begins a new cycle and where the receiver pauses, and takes what a cycle lacks of GGA and
/// RMC from the rest of it. Sentences of other types are kept as they are. docs/dialect.md tells
/// how doubtful streams are read. One thread at a time.
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

    /// Forgets the satellites of earlier epochs: the receiver was told to start anew.
    void forgetSatellites() { reports.forget(); }

    /// Whole sentences that have no place in the device's dialect: proprietary ones that the viewer
    /// would take for ordinary ones, parts of an epoch that came after its end.
    qint64 leftOutSentences() const { return leftOut; }

    /// How many different satellites were left out because the device has no number for them.
    int unnumberedSatellites() const { return reports.unnumberedSatellites(); }

private:
    enum Seen : unsigned { SeenGga = 1, SeenGns = 2, SeenGll = 4, SeenRmc = 8 };

    // A time as it was sent.
    struct tTime
    {
        int ms = 0; // of the day
        int decimals = 0;
    };

    // A type of sentence with a time, and how it is taken in.
    struct tTimed
    {
        const char *type;
        unsigned flag;
        int timeField;
        void (EpochBuilder::*add)(const tNmeaSentence &);
    };

    // The sentences with a time that belong to one epoch.
    struct tTimes
    {
        unsigned seen = 0;
        QVector<tTime> times;
        QVector<QByteArray> addresses;
        QVector<QByteArray> texts;

        bool agreeWith(const tTime &time) const;
    };

    static std::optional<tTime> timeOf(const QByteArray &text);
    static bool isSameFix(const tTime &one, const tTime &other);
    std::optional<tEpoch> addSentence(const tNmeaSentence &sentence);
    std::optional<tEpoch> addTimed(const tNmeaSentence &sentence, const tTimed &timedType);
    bool isRepetition(const tNmeaSentence &sentence) const;
    bool beginsNew(unsigned type, const std::optional<tTime> &time,
                   const tNmeaSentence &sentence) const;
    bool isLate(unsigned type, const std::optional<tTime> &time) const;
    void noteLate(const tNmeaSentence &sentence);
    void noteTime(unsigned type, const tTime &time);
    std::optional<tEpoch> addSatellites(const tNmeaSentence &sentence);
    bool followsItsOwn(const QByteArray &set) const;
    std::optional<tEpoch> addOther(const tNmeaSentence &sentence);
    QVector<tNmeaSentence> takeNextSets();
    void learnWhetherSetsLead();
    int beginOfNextSets() const;
    void dropSetsOfBefore();
    bool isPartOfARepetition() const;
    std::optional<tEpoch> complete(bool clockMovedOn = false);
    void forgetOpen();
    void noteRestart();
    void completeFix();
    QDate knownDate() const;
    void addGga(const tNmeaSentence &sentence);
    void addGns(const tNmeaSentence &sentence);
    void addGll(const tNmeaSentence &sentence);
    void addRmc(const tNmeaSentence &sentence);
    void noteZda(const tNmeaSentence &sentence);
    void addPosition(const tNmeaSentence &sentence, int firstField);

    tEpoch epoch;                      // the open one
    tTimes open;                       // its sentences with a time
    unsigned timeFrom = 0;             // the type that its time was taken from
    int positionDecimals = -1;         // of its coordinates' minutes
    QVector<tNmeaSentence> satellites; // its GSV and GSA sentences
    int leading = 0;                   // how many of them came before the first with a time
    int settled = 0;                   // how many came before the latest with a time
    QSet<QByteArray> sets;             // the GSV sets begun
    QDate ownZdaDate;                  // of a ZDA that another one has followed
    bool isStatusKnown = false;        // RMC or GLL has told it
    QByteArray latestText;             // of the sentence before
    int sentences = 0;                 // all that belong to it
    int otherBytes = 0;                // of its other sentences

    bool isFirst = true;         // no epoch has been completed since the stream began
    bool setsLead = false;       // the receiver sends the GSV sets before the time
    bool activeLeads = false;    // and the GSAs too
    tTimes before;               // of the epoch before
    std::optional<int> latestMs; // time of the latest epoch that had one
    tEpoch latest;               // what stays known from epoch to epoch: date, altitude
    std::optional<tTime> zdaTime;
    QDate zdaDate;
    SatelliteReports reports;
    int repeated = 0; // sentences that came word for word again since there was news
    qint64 leftOut = 0;
};
