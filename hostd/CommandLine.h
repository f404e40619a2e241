// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/SimulatedReceiver.h"

#include <QString>
#include <QStringList>

/// What the user asked for on the command line.
struct tCommandLine
{
    enum class Action {
        ShowText, ///< help or version: `text` goes to standard output
        Simulate,
        Replay,
        Fail, ///< wrong usage: `text` says what is wrong
    };

    Action action = Action::Fail;
    QString text;
    tSimulationSettings simulation;
    double timeScale = 1.0; ///< simulated seconds in a real one
    QStringList files;      ///< recordings to replay, in order
    double speed = 1.0;     ///< recorded seconds in a real one
    bool loop = false;
};

/// Reads the program's arguments, the program's own name first, and checks every value.
tCommandLine parseCommandLine(const QStringList &arguments);
