// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/simulator/SimulatedReceiver.h"
#include "receiver/sources/LiveSettings.h"

#include <QString>
#include <QStringList>

/// What the user asked for on the command line.
struct tCommandLine
{
    enum class Action {
        ShowText, ///< help or version: `text` goes to standard output
        Simulate,
        Replay,
        Live, ///< a real receiver
        Fail, ///< wrong usage: `text` says what is wrong
    };

    Action action = Action::Fail;
    QString text;
    QString helpCommand; ///< the command whose help tells more, empty where none was named
    tSimulationSettings simulation;
    double timeScale = 1.0; ///< simulated seconds in a real one
    QStringList files;      ///< recordings to replay, in order
    double speed = 1.0;     ///< recorded seconds in a real one
    double startS = 0.0;    ///< where in the recordings to begin, seconds
    bool loop = false;
    tLiveSettings live;
    bool raw = false; ///< the receiver's bytes instead of the device's dialect
    bool verbose = false;
};

/// Reads the program's arguments, the program's own name first, and checks every value.
tCommandLine parseCommandLine(const QStringList &arguments);
