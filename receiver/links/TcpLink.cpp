// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/TcpLink.h"

#include "base/SystemHooks.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace {

constexpr int kConnectMs = 10000;

// Somebody who only reads never learns otherwise that the other side has vanished.
void keepAlive(int descriptor)
{
    const auto set = [descriptor](int level, int option, int value) {
        static_cast<void>(::setsockopt(descriptor, level, option, &value, sizeof(value)));
    };
    constexpr int kIdleS = 10;
    constexpr int kIntervalS = 5;
    constexpr int kProbes = 3;
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, kIdleS);
    set(IPPROTO_TCP, TCP_KEEPINTVL, kIntervalS);
    set(IPPROTO_TCP, TCP_KEEPCNT, kProbes);
}

} // namespace

TcpLink::TcpLink(const tNetAddress &serverAddress, QObject *parent)
    : ByteLink(parent)
    , address(serverAddress)
{
    connectTimer.setSingleShot(true);
    connect(&connectTimer, &QTimer::timeout, this, [this] {
        close();
        emit lost(QStringLiteral("no answer"));
    });
    connect(&socket, &QTcpSocket::connected, this, &TcpLink::greet);
    connect(&socket, &QTcpSocket::errorOccurred, this, &TcpLink::fail);
    connect(&socket, &QTcpSocket::readyRead, this, &TcpLink::takeReceived);
}

TcpLink::~TcpLink()
{
    // The socket's own destructor would still signal into this object.
    socket.disconnect(this);
}

void TcpLink::open()
{
    close();
    connectTimer.start(SystemHooks::waitLength(kConnectMs));
    socket.connectToHost(address.host, address.port);
}

void TcpLink::close()
{
    ++attempt;
    connectTimer.stop();
    const QSignalBlocker quiet(socket);
    socket.abort();
}

bool TcpLink::write(const QByteArray &bytes, QString *error)
{
    if (socket.state() != QAbstractSocket::ConnectedState) {
        *error = QStringLiteral("%1 is not connected").arg(name());
        return false;
    }
    return writeTo(socket, bytes, error);
}

void TcpLink::greet()
{
    connectTimer.stop();
    keepAlive(static_cast<int>(socket.socketDescriptor()));
    emit opened({});
}

// Later, because the socket is still busy with its own end.
void TcpLink::fail()
{
    const QString reason = socket.errorString();
    const int failed = attempt;
    QTimer::singleShot(0, this, [this, failed, reason] {
        if (failed != attempt)
            return;
        takeReceived();
        close();
        emit lost(reason);
    });
}

void TcpLink::takeReceived()
{
    const QByteArray bytes = socket.readAll();
    if (!bytes.isEmpty())
        emit bytesReceived(bytes);
}
