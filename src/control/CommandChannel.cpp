// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "control/CommandChannel.h"

#include "base/SystemHooks.h"
#include "config/DebugOutput.h"

#include <QFile>

#include <chrono>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr int kLongestWaitAtEndMs = 1000;

QByteArray pipePath()
{
    return SystemHooks::systemPath(SystemHooks::kCommandPipe);
}

/// Takes the place of the pipe's reader, which ends every wait in an open for writing. The
/// descriptor stays open on purpose, until the process ends. False when it may only be written.
bool standInForReader(const QByteArray &path)
{
    struct stat status = {};
    if (::stat(path.constData(), &status) != 0 || !S_ISFIFO(status.st_mode))
        return true;
    return ::open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC) >= 0;
}

} // namespace

void sendCommand(const QString &command, const QString &logTag, const QString &debugText)
{
    QFile pipe(QFile::decodeName(pipePath()));
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

void sendNvmStore()
{
    sendCommand(QStringLiteral("$PPLMT,0\r\n"), QStringLiteral("NVM Store"),
                QStringLiteral("NVM Store now: %1"));
}

void limitCommandWaits()
{
    // Another thread, because the one that waits cannot do it. Nothing waits for it: it holds no
    // more than its path, so that it may be cut off at any point.
    const std::chrono::milliseconds delay(SystemHooks::waitLength(kLongestWaitAtEndMs));
    std::thread([path = pipePath(), delay] {
        std::this_thread::sleep_for(delay);
        if (standInForReader(path))
            return;
        // Nothing ends that wait but the process; what is done without a reader has had its time.
        std::this_thread::sleep_for(delay / 2);
        std::_Exit(EXIT_SUCCESS);
    }).detach();
}
