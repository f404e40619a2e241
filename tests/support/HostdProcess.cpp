// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/HostdProcess.h"

#include "support/BuiltProgram.h"

#include <QProcessEnvironment>
#include <QRegularExpression>

namespace {

constexpr int kStartMs = 30000;
constexpr int kEndMs = 10000;

} // namespace

HostdProcess::HostdProcess(const QString &deviceRoot)
    : root(deviceRoot)
{
}

HostdProcess::~HostdProcess()
{
    stop();
}

bool HostdProcess::start(const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TAVRIN_ROOT"), root);
    daemon.setProcessEnvironment(environment);
    startBuilt(daemon, QStringLiteral(HOSTD_BINARY), arguments);
    return daemon.waitForStarted(kStartMs);
}

bool HostdProcess::stop()
{
    if (daemon.state() == QProcess::NotRunning)
        return true;
    daemon.terminate();
    if (daemon.waitForFinished(kEndMs))
        return daemon.exitStatus() == QProcess::NormalExit && daemon.exitCode() == 0;
    kill();
    return false;
}

void HostdProcess::kill()
{
    daemon.kill();
    daemon.waitForFinished(kEndMs);
}

QStringList HostdProcess::reports()
{
    daemon.waitForReadyRead(1);
    reported += daemon.readAllStandardError();
    return QString::fromUtf8(reported).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList HostdProcess::commands()
{
    static const QRegularExpression kCommand(QStringLiteral("obeyed (\\$PPLM[^:]*):"));
    QStringList sentences;
    const QStringList lines = reports();
    for (const QString &line : lines) {
        const QRegularExpressionMatch match = kCommand.match(line);
        if (match.hasMatch())
            sentences << match.captured(1);
    }
    return sentences;
}
