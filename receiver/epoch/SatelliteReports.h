// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/Epoch.h"
#include "receiver/nmea/NmeaSentence.h"

#include <QSet>
#include <QVector>

#include <optional>

/// What the GSV and GSA sentences of each cycle tell of the satellites. Joins the sets of several
/// signals, drops sets of which a part is missing, and keeps what the next cycles need: the sets
/// that a cycle with GSA only refers to, systems that are reported in turns, the GSA for a cycle
/// without one. One thread at a time.
class SatelliteReports
{
public:
    /// Takes in the GSV and GSA sentences of one cycle, in their order, and fills in the epoch's
    /// satellites in view and those in use. What an epoch without a fix says is owed to the next.
    void complete(const QVector<tNmeaSentence> &sentences, tEpoch &epoch);

    /// Forgets what is kept from cycle to cycle, as a restart of the receiver does.
    void forget();

    /// How many different satellites were left out because the device has no number for them.
    int unnumberedSatellites() const { return unnumbered.size(); }

    /// The GSV set that a sentence belongs to: the talker with the signal identifier.
    static QByteArray setOf(const tNmeaSentence &gsv);

    /// The same of a sentence that begins its set; empty for all others, of other types too.
    static QByteArray begunSet(const tNmeaSentence &gsv);

private:
    // The messages of one set.
    struct tSet
    {
        QByteArray talker;
        QByteArray key;
        int messages = 0;
        int next = 1;
        bool broken = false;
        QVector<tSatellite> satellites;

        bool isWhole() const { return !broken && next > messages; }
    };

    // The latest reports on the satellites of a talker.
    struct tKnown
    {
        QByteArray talker;
        QVector<tSatellite> satellites;
        QVector<QByteArray> together; // the talkers that reported in the same cycle
        qint64 last = 0;              // number of that cycle among those with reports
        qint64 previous = 0;          // the report before, 0 when there was none
        qint64 oneBefore = 0;         // and the one before that
        bool over = false;            // it came no more, and only its turn is remembered

        void carryOn(const tKnown &old);
        qint64 turn() const; // cycles from report to report, 0 while unknown
    };

    struct tActive
    {
        QByteArray talker;      // whose numbers they are
        bool isCertain = false; // otherwise what is in view has a say
        QVector<int> numbers;
    };

    void addMessage(const tNmeaSentence &gsv, QVector<tSet> &sets);
    QVector<tSatellite> satellitesOf(const tNmeaSentence &gsv, const QByteArray &talker);
    void noteSets(const QVector<tSet> &sets);
    bool isOver(const tKnown &missing, const QVector<tKnown> &now) const;
    QVector<tSatellite> inView() const;
    void addUsed(const QVector<tActive> &actives, const QVector<tSatellite> &seen, tEpoch &epoch);
    void addUsedInTurns(const QVector<tActive> &actives, tEpoch &epoch) const;
    static QVector<tActive> readActive(const QVector<tNmeaSentence> &sentences, tEpoch &epoch);
    QVector<int> numbersOf(const tActive &active, const QVector<tSatellite> &seen,
                           const QVector<int> &used);
    QVector<int> eachNumberOf(const tActive &active, const QVector<tSatellite> &seen);
    std::optional<int> numbered(const QByteArray &talker, int number);

    QVector<tKnown> known;     // in the order of their reports
    qint64 reports = 0;        // cycles with a whole set so far
    int cyclesWithoutSets = 0; // since the latest of them
    bool isOwed = false;       // sets came that no epoch has told yet
    tEpoch latest;             // what the latest GSAs said, and whether there was a fix
    QSet<QByteArray> unnumbered;
};
