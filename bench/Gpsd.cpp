// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "Gpsd.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int kStartMs = 20000;
constexpr int kEndMs = 5000;
constexpr int kRetryMs = 20;

quint16 freePort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : 0;
}

bool accepts(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(kRetryMs);
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
    daemon.terminate();
    if (!daemon.waitForFinished(kEndMs)) {
        daemon.kill();
        daemon.waitForFinished(kEndMs);
    }
    for (const int descriptor : {line, farEnd}) {
        if (descriptor >= 0)
            ::close(descriptor);
    }
}

bool Gpsd::start()
{
    port = freePort();
    if (port == 0 || !openLine())
        return false;
    daemon.setStandardErrorFile(QProcess::nullDevice());
    daemon.start(QStringLiteral("gpsd"),
                 {QStringLiteral("-N"), QStringLiteral("-n"), QStringLiteral("-b"),
                  QStringLiteral("-S"), QString::number(port), QString::fromLatin1(lineName)});
    const QDeadlineTimer deadline(kStartMs);
    while (daemon.state() != QProcess::NotRunning && !deadline.hasExpired()) {
        if (accepts(port))
            return true;
        QThread::msleep(kRetryMs);
    }
    return false;
}

QString Gpsd::server() const
{
    return QStringLiteral("127.0.0.1:%1").arg(port);
}

bool Gpsd::write(const QByteArray &bytes) const
{
    return ::write(line, bytes.constData(), static_cast<std::size_t>(bytes.size())) == bytes.size();
}

int Gpsd::satellitesInView(int timeoutMs) const
{
    const QDeadlineTimer deadline(timeoutMs);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
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

bool Gpsd::openLine()
{
    line = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (line < 0 || ::grantpt(line) != 0 || ::unlockpt(line) != 0)
        return false;
    lineName = ::ptsname(line);
    // gpsd gives up root before it opens its devices.
    farEnd = ::open(lineName.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw = {};
    if (farEnd < 0 || ::fchmod(farEnd, 0666) != 0 || ::tcgetattr(farEnd, &raw) != 0)
        return false;
    ::cfmakeraw(&raw);
    return ::tcsetattr(farEnd, TCSANOW, &raw) == 0;
}
