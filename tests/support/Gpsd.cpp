// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/Gpsd.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

namespace {

constexpr int kPatienceMs = 10000;
constexpr int kConnectMs = 200;
constexpr int kRetryMs = 20;

bool accepts(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(kConnectMs);
}

/// Satellites in the answer to a poll.
int countIn(const QJsonObject &answer)
{
    const QJsonObject sky = answer.value(QStringLiteral("sky")).toArray().at(0).toObject();
    return static_cast<int>(sky.value(QStringLiteral("satellites")).toArray().size());
}

} // namespace

Gpsd::~Gpsd()
{
    if (stop())
        return;
    daemon.kill();
    daemon.waitForFinished(kPatienceMs);
}

quint16 Gpsd::freePort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : quint16(0);
}

bool Gpsd::start(quint16 port, const QStringList &arguments)
{
    clientPort = port;
    // Not every user has the system's programs in the path.
    const QString program = QStandardPaths::findExecutable(
        QStringLiteral("gpsd"), {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin")});
    daemon.setStandardErrorFile(QProcess::nullDevice());
    daemon.start(program, QStringList{QStringLiteral("-N"), QStringLiteral("-n"),
                                      QStringLiteral("-S"), QString::number(port)} +
                              arguments);
    const QDeadlineTimer deadline(kPatienceMs);
    while (daemon.state() != QProcess::NotRunning && !deadline.hasExpired()) {
        if (accepts(port))
            return true;
        QThread::msleep(kRetryMs);
    }
    return false;
}

bool Gpsd::stop()
{
    daemon.terminate();
    return daemon.state() == QProcess::NotRunning || daemon.waitForFinished(kPatienceMs);
}

int Gpsd::satellitesInView() const
{
    const QDeadlineTimer deadline(kPatienceMs);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, clientPort);
    socket.write("?WATCH={\"enable\":true};\n?POLL;\n");
    while (!deadline.hasExpired()) {
        if (!socket.canReadLine() &&
            !socket.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            continue;
        const QJsonObject report = QJsonDocument::fromJson(socket.readLine()).object();
        if (report.value(QStringLiteral("class")).toString() == QStringLiteral("POLL"))
            return countIn(report);
    }
    return 0;
}
