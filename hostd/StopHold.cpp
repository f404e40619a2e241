// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/StopHold.h"

#include <utility>

namespace {

using Kind = tReceiverCommand::Kind;

bool isStart(Kind kind)
{
    return kind == Kind::Start || isReset(kind);
}

} // namespace

tCommandAnswer StopHold::take(Kind kind, const tCommandAnswer &answer, bool midEpoch)
{
    if (kind == Kind::Stop)
        return stop(answer, midEpoch);
    return held && isStart(kind) ? start(kind, answer, midEpoch) : answer;
}

tCommandAnswer StopHold::stop(const tCommandAnswer &answer, bool midEpoch)
{
    const bool wasOpen = isOpen();
    held = !answer.obeyed;
    // A receiver that stops after all, at the second stop say.
    skipsEpoch = !held && !wasOpen && midEpoch;
    if (!held)
        return answer;
    if (way == Way::Pause)
        return {true, QStringLiteral("the recording pauses until a start")};
    return {true,
            QStringLiteral("the receiver's data is held back until a start (%1)").arg(answer.text)};
}

tCommandAnswer StopHold::start(Kind kind, const tCommandAnswer &answer, bool midEpoch)
{
    held = false;
    skipsEpoch = midEpoch;
    const QString again = way == Way::Pause
                              ? QStringLiteral("the recording goes on")
                              : QStringLiteral("the receiver's data is handed on again");
    if (answer.obeyed || kind != Kind::Start)
        return {answer.obeyed, QStringLiteral("%1; %2").arg(answer.text, again)};
    return {true, way == Way::Pause ? again : QStringLiteral("%1 (%2)").arg(again, answer.text)};
}

bool StopHold::passesEpoch()
{
    return !held && !std::exchange(skipsEpoch, false);
}

QString StopHold::stateText() const
{
    if (!held)
        return {};
    return way == Way::Pause ? QStringLiteral("paused until a start")
                             : QStringLiteral("held back until a start");
}
