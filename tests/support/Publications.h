// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gnss/GnssInfo.h"

#include <QObject>
#include <QString>

#include <vector>

bool operator==(const tUTCTime &a, const tUTCTime &b);
bool operator==(const tGnssLocation &a, const tGnssLocation &b);
bool operator==(const tGnssSv &a, const tGnssSv &b);
bool operator==(const tGnssSvStatus &a, const tGnssSvStatus &b);

/// What the pages could see of the receiver after one RMC sentence.
struct Publication
{
    tGnssLocation location;
    tUTCTime utc;
    tGnssSvStatus svStatus;
    uint ttff = 0;
    bool ttffSet = false;
    bool nvmSaved = false;
    int utcUpdates = 0; ///< signals since the start
    int ttffUpdates = 0;
    int nvmUpdates = 0;
};

bool operator==(const Publication &a, const Publication &b);

/// All of it in one line, numbers with every digit, for the message of a failed comparison.
QString describe(const Publication &publication);

/// Records what is published in GnssInfo while it lives; all on one thread.
class Publications
{
public:
    /// Starts from a model as it is when the program starts.
    Publications();

    const std::vector<Publication> &all() const { return list; }

    /// The model as it is now.
    Publication current() const;

    /// Puts the model back into the state in which the program starts with it.
    static void resetModel();

private:
    GnssInfo *model = GnssInfo::instance();
    int utcUpdates = 0;
    int ttffUpdates = 0;
    int nvmUpdates = 0;
    std::vector<Publication> list;
    QObject context; // the last, so that the connections end first
};

/// Empty when both are the same; otherwise the number and the texts of the first that differ.
QString firstDifference(const std::vector<Publication> &a, const std::vector<Publication> &b);
