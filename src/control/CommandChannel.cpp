// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "control/CommandChannel.h"

#include "config/DebugOutput.h"
#include "config/SystemHooks.h"

#include <QFile>

void sendCommand(const QString &command, const QString &logTag, const QString &debugText)
{
    QFile pipe(QFile::decodeName(SystemHooks::systemPath("/tmp/agiout")));
    if (!pipe.open(QIODevice::WriteOnly | QIODevice::Text)) {
        errorPrint(logTag,
                   QStringLiteral("File (%1): %2").arg(pipe.fileName(), pipe.errorString()));
        return;
    }

    // The result is not looked at on purpose: a reader that left between open and write gets no
    // second sentence, and whoever pressed the button can do nothing about it.
    pipe.write(command.toUtf8().constData());
    pipe.close();

    // Not arg(): it complains about a text without a place marker.
    QString message = debugText;
    debugPrint(1, logTag, message.replace(QStringLiteral("%1"), command));
}
