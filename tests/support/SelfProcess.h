// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BuiltProgram.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>

/// What came of a child process.
struct ChildResult
{
    bool finished = false; ///< ended by itself, not by a signal
    int exitCode = -1;
    QByteArray output;
    QByteArray error;
};

/// Runs this test's own executable with `arguments`, for what ends a process or has to be read from
/// its real standard streams. The test's main() looks for the first argument before QtTest does.
inline ChildResult runSelf(const QStringList &arguments)
{
    QProcess process;
    startBuilt(process, QCoreApplication::applicationFilePath(), arguments);
    ChildResult result;
    result.finished = process.waitForFinished() && process.exitStatus() == QProcess::NormalExit;
    result.exitCode = process.exitCode();
    result.output = process.readAllStandardOutput();
    result.error = process.readAllStandardError();
    return result;
}
