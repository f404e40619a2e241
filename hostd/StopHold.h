// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/ReceiverCommand.h"

#include <QString>

/// Makes the viewer's stop true where the source does not obey it: nothing is handed on until a
/// start. As with a receiver that obeys, a hot, warm, cold or factory start is one too, and the
/// choice of constellations is none. One thread.
class StopHold
{
public:
    /// What happens to the data meanwhile.
    enum class Way {
        HoldBack, ///< it goes on coming and is lost
        Pause,    ///< the source waits with it
    };

    explicit StopHold(Way holdWay)
        : way(holdWay)
    {
    }

    /// Takes note of a command and of the source's answer to it; the answer for the report.
    /// `midEpoch`: whether a part of an epoch has come already, which is not handed on then.
    tCommandAnswer take(tReceiverCommand::Kind kind, const tCommandAnswer &answer, bool midEpoch);

    /// To be asked at the end of every epoch: whether it is handed on.
    bool passesEpoch();

    /// Whether the stop lasts.
    bool isHeld() const { return held; }

    /// Whether what comes now is handed on.
    bool isOpen() const { return !held && !skipsEpoch; }

    /// For the status line; empty without a stop.
    QString stateText() const;

private:
    tCommandAnswer stop(const tCommandAnswer &answer, bool midEpoch);
    tCommandAnswer start(tReceiverCommand::Kind kind, const tCommandAnswer &answer, bool midEpoch);

    Way way;
    bool held = false;
    bool skipsEpoch = false; // the open one began before the start
};
