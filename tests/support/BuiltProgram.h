// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// Starts a program of this build. In a cross-build the emulator runs it, as this machine cannot.
inline void startBuilt(QProcess &process, const QString &program, const QStringList &arguments)
{
    QStringList command =
        QStringLiteral(VIEWER_EMULATOR).split(QLatin1Char('|'), Qt::SkipEmptyParts);
    command << program << arguments;
    const QString first = command.takeFirst();
    process.start(first, command);
}
