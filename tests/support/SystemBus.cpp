// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/SystemBus.h"

#include <QFile>

#include <csignal>

namespace {

constexpr int kToolMs = 30000;

// Like a system bus, but every client may send and receive everything.
const QString kConfiguration = QStringLiteral(
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
    " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
    "<busconfig>\n"
    "  <type>system</type>\n"
    "  <listen>%1</listen>\n"
    "  <auth>EXTERNAL</auth>\n"
    "  <policy context=\"default\">\n"
    "    <allow send_type=\"signal\"/>\n"
    "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
    "    <allow eavesdrop=\"true\"/>\n"
    "  </policy>\n"
    "</busconfig>\n");

} // namespace

SystemBus::SystemBus()
    : address(QStringLiteral("unix:path=") + folder.filePath(QStringLiteral("bus")))
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toLatin1());
    daemon.setStandardErrorFile(QProcess::nullDevice());
}

SystemBus::~SystemBus()
{
    stop();
}

bool SystemBus::start()
{
    if (daemon.state() == QProcess::Running)
        return true;
    if (!writeConfiguration())
        return false;
    // It prints its address once it listens there.
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--config-file=") + configurationPath(),
                  QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                  QStringLiteral("--print-address")});
    while (!daemon.canReadLine()) {
        if (!daemon.waitForReadyRead(kToolMs))
            return false;
    }
    return true;
}

void SystemBus::stop()
{
    if (daemon.state() == QProcess::NotRunning)
        return;
    // Not the polite way: one that hangs has to end as well.
    daemon.kill();
    daemon.waitForFinished(kToolMs);
}

bool SystemBus::hang()
{
    return sendToDaemon(SIGSTOP);
}

bool SystemBus::goOn()
{
    return sendToDaemon(SIGCONT);
}

bool SystemBus::emitSignal(const QString &signal) const
{
    return QProcess::execute(QStringLiteral("dbus-send"),
                             {QStringLiteral("--bus=") + address, QStringLiteral("--type=signal"),
                              QStringLiteral("/manager"), signal}) == 0;
}

bool SystemBus::writeConfiguration() const
{
    QFile file(configurationPath());
    return file.open(QIODevice::WriteOnly) &&
           file.write(kConfiguration.arg(address).toLatin1()) > 0;
}

bool SystemBus::sendToDaemon(int signal) const
{
    return ::kill(static_cast<pid_t>(daemon.processId()), signal) == 0;
}
