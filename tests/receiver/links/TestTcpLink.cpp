// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/TcpLink.h"

#include "support/ShortWaits.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QtTest>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

/// The link to a TCP server, against servers on this machine.
class TestTcpLink : public QObject
{
    Q_OBJECT
private slots:
    void opensReadsAndWrites();
    void saysThatNobodyListens();
    void saysThatNobodyAnswers();
    void bringsWhatCameBeforeTheEnd();
    void saysNothingOfATryThatWasGivenUp();
    void refusesWhatTheServerDoesNotTake();
};

namespace {

struct tLinked
{
    explicit tLinked(quint16 port)
        : link({QStringLiteral("127.0.0.1"), port, {}})
        , opened(&link, &ByteLink::opened)
        , lost(&link, &ByteLink::lost)
        , received(&link, &ByteLink::bytesReceived)
    {
        link.open();
    }

    QByteArray bytes() const
    {
        QByteArray all;
        for (const QList<QVariant> &one : received)
            all += one.first().toByteArray();
        return all;
    }

    TcpLink link;
    QSignalSpy opened;
    QSignalSpy lost;
    QSignalSpy received;
};

/// A server whose queue is full of connections that it never accepts: what comes later gets no
/// answer.
class FullServer
{
public:
    FullServer()
    {
        sockaddr_in any = {};
        any.sin_family = AF_INET;
        any.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        listening = ::bind(server, reinterpret_cast<sockaddr *>(&any), sizeof(any)) == 0 &&
                    ::listen(server, 0) == 0 &&
                    ::getsockname(server, reinterpret_cast<sockaddr *>(&address), &size) == 0;
        for (int &client : clients) {
            client = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            static_cast<void>(
                ::connect(client, reinterpret_cast<sockaddr *>(&address), sizeof(address)));
        }
    }

    ~FullServer()
    {
        for (const int client : clients)
            ::close(client);
        ::close(server);
    }

    FullServer(const FullServer &) = delete;
    FullServer &operator=(const FullServer &) = delete;

    bool isListening() const { return listening; }
    quint16 port() const { return ntohs(address.sin_port); }

private:
    int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int clients[4] = {-1, -1, -1, -1};
    sockaddr_in address = {};
    bool listening = false;
};

} // namespace

void TestTcpLink::opensReadsAndWrites()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    tLinked linked(server.serverPort());
    QTRY_COMPARE(linked.opened.size(), 1);
    QTRY_VERIFY(server.hasPendingConnections());
    QTcpSocket *const socket = server.nextPendingConnection();
    socket->write("$GPGGA");
    QTRY_COMPARE(linked.bytes(), QByteArray("$GPGGA"));
    QString error;
    QVERIFY(linked.link.write("$PMTK101*32\r\n", &error));
    QTRY_COMPARE(socket->bytesAvailable(), qint64(13));
    QCOMPARE(socket->readAll(), QByteArray("$PMTK101*32\r\n"));
    linked.link.close();
    QTRY_COMPARE(socket->state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(linked.lost.size(), 0);
}

void TestTcpLink::saysThatNobodyListens()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const quint16 port = server.serverPort();
    server.close();
    tLinked linked(port);
    QTRY_COMPARE(linked.lost.size(), 1);
    QCOMPARE(linked.lost.first().first().toString(), QStringLiteral("Connection refused"));
    QString error;
    QVERIFY(!linked.link.write("x", &error));
    QCOMPARE(error, QStringLiteral("127.0.0.1:%1 is not connected").arg(port));
}

void TestTcpLink::saysThatNobodyAnswers()
{
    const ShortWaits waits(200);
    const FullServer server;
    QVERIFY(server.isListening());
    tLinked linked(server.port());
    QCOMPARE(ShortWaits::nominal(), std::vector<int>({10000}));
    QTRY_COMPARE(linked.lost.size(), 1);
    QCOMPARE(linked.lost.first().first().toString(), QStringLiteral("no answer"));
    QCOMPARE(linked.opened.size(), 0);
}

void TestTcpLink::bringsWhatCameBeforeTheEnd()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    tLinked linked(server.serverPort());
    QTRY_VERIFY(server.hasPendingConnections());
    QTcpSocket *const socket = server.nextPendingConnection();
    const QByteArray farewell(100000, 'x');
    socket->write(farewell);
    socket->disconnectFromHost();
    QTRY_COMPARE(linked.lost.size(), 1);
    QCOMPARE(linked.bytes(), farewell);
}

void TestTcpLink::saysNothingOfATryThatWasGivenUp()
{
    // Fails at once, and says so from the event loop.
    TcpLink link({QStringLiteral("255.255.255.255"), 10110, {}});
    QSignalSpy lost(&link, &ByteLink::lost);
    link.open();
    QCOMPARE(lost.size(), 0);
    link.open();
    QTRY_COMPARE(lost.size(), 1);
    link.open();
    link.close();
    QCoreApplication::processEvents();
    QCOMPARE(lost.size(), 1);
}

void TestTcpLink::refusesWhatTheServerDoesNotTake()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    server.pauseAccepting(); // connections wait, and nobody reads them
    tLinked linked(server.serverPort());
    QTRY_COMPARE(linked.opened.size(), 1);
    const QByteArray much(1 << 20, 'x');
    QString error;
    int taken = 0;
    while (taken < 100 && linked.link.write(much, &error)) {
        ++taken;
        QCoreApplication::processEvents();
    }
    QVERIFY(taken > 0 && taken < 100);
    QCOMPARE(error, linked.link.name() + QStringLiteral(" takes no bytes"));
    QCOMPARE(linked.lost.size(), 0);
}

QTEST_GUILESS_MAIN(TestTcpLink)
#include "TestTcpLink.moc"
