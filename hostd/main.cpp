// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/Report.h"
#include "base/SignalWatcher.h"
#include "hostd/CommandLine.h"
#include "hostd/HostDaemon.h"
#include "receiver/sources/LiveSource.h"
#include "receiver/sources/ReplaySource.h"
#include "receiver/sources/SimulatedSource.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr int kWrongUsage = 2;

QString calledAs(const tCommandLine &line)
{
    const QString name = QCoreApplication::applicationName();
    return line.helpCommand.isEmpty() ? name : name + QLatin1Char(' ') + line.helpCommand;
}

std::unique_ptr<ReceiverSource> makeSource(const tCommandLine &line)
{
    if (line.action == tCommandLine::Action::Live)
        return std::make_unique<LiveSource>(line.live);
    if (line.action == tCommandLine::Action::Replay)
        return std::make_unique<ReplaySource>(line.files, line.speed, line.loop, line.startS);
    Report::line(QStringLiteral("simulating with --seed %1").arg(line.simulation.seed));
    return std::make_unique<SimulatedSource>(line.simulation, line.timeScale);
}

int serve(QCoreApplication &application, const tCommandLine &line)
{
    SignalWatcher signalWatcher;
    QString error;
    if (!signalWatcher.watch(&error)) {
        Report::line(error);
        return 1;
    }
    Report::setVerbose(line.verbose);
    HostDaemon daemon(makeSource(line), line.raw ? DaemonOutput::Raw : DaemonOutput::Dialect);
    int exitCode = 0;
    // Queued: an end may come before exec() runs, and exit() would then be forgotten.
    QObject::connect(
        &daemon, &HostDaemon::ended, &application,
        [&application, &exitCode](int code) {
            exitCode = code;
            application.quit();
        },
        Qt::QueuedConnection);
    QObject::connect(&signalWatcher, &SignalWatcher::endRequested, &application,
                     &QCoreApplication::quit);
    if (!daemon.start())
        return 1;
    QCoreApplication::exec();
    return exitCode;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavrin-hostd"));
    QCoreApplication::setApplicationVersion(QStringLiteral(HOSTD_VERSION));

    const tCommandLine line = parseCommandLine(QCoreApplication::arguments());
    switch (line.action) {
    case tCommandLine::Action::ShowText:
        static_cast<void>(std::fputs(line.text.toLocal8Bit().constData(), stdout));
        return std::fflush(stdout) == 0 ? 0 : 1;
    case tCommandLine::Action::Fail:
        Report::line(line.text);
        Report::line(QStringLiteral("see %1 --help").arg(calledAs(line)));
        return kWrongUsage;
    case tCommandLine::Action::Simulate:
    case tCommandLine::Action::Replay:
    case tCommandLine::Action::Live:
        break;
    }
    return serve(application, line);
}
