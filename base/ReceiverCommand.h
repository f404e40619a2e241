// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/ConstellationMask.h"

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <optional>

/// One thing that the viewer asks of the receiver.
struct tReceiverCommand
{
    enum class Kind {
        Start,
        Stop,
        HotStart,
        WarmStart,
        ColdStart,
        FactoryStart,
        SelectConstellations,
        StoreNvm,
    };

    Kind kind = Kind::Start;
    unsigned mask = 0; ///< ConstellationMask bits, only for SelectConstellations
};

Q_DECLARE_METATYPE(tReceiverCommand)

/// Whether a command makes the receiver start anew: hot, warm, cold or factory start.
bool isReset(tReceiverCommand::Kind kind);

/// What became of a command.
struct tCommandAnswer
{
    bool obeyed = false;
    QString text; ///< what was done or why not, one line for the report
};

/// The command that a sentence, from its `$` up to but without the line end, stands for; nothing
/// when it is none. A checksum may follow; a wrong one makes the sentence unknown, for a garbled
/// command must not reset a receiver. Mask bits beyond the six known ones are ignored.
std::optional<tReceiverCommand> parseReceiverCommand(const QByteArray &sentence);

/// What people call the constellations of a ConstellationMask.
QStringList constellationNames(unsigned mask);
