// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/GpsdLink.h"

#include "support/ShortWaits.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QtTest>

/// The link to a gpsd, against a server that says what the test tells it.
class TestGpsdLink : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void asksForTheSentences_data();
    void asksForTheSentences();
    void givesUpWithoutAnAnswer();
    void givesUpWhatIsNoGpsd_data();
    void givesUpWhatIsNoGpsd();
    void takesCommandsForARecognisedReceiverOnly();
    void followsTheReceiverThatItHas();
    void takesOnlyTheReceiverThatWasAskedFor();
    void saysOnceThatThereIsNoReceiver();
    void givesUpWhereTheReceiverThatWasAskedForIsAbsent();
    void reportsOtherErrors();
    void passesOverWhatItDoesNotKnow_data();
    void passesOverWhatItDoesNotKnow();

private:
    void connectTo(const QString &device = {});
    void greet();
    void say(const QByteArray &line) { socket->write(line + "\r\n"); }
    QString named(const char *text) const
    {
        return link->name() + QStringLiteral(": ") + QLatin1String(text);
    }
    QString last(const std::unique_ptr<QSignalSpy> &spy) const
    {
        return spy->isEmpty() ? QString() : spy->last().first().toString();
    }
    bool canWrite(QString *error)
    {
        error->clear();
        return link->write("ab", error);
    }

    std::unique_ptr<QTcpServer> server;
    std::unique_ptr<GpsdLink> link;
    std::unique_ptr<QTcpSocket> socket;
    std::unique_ptr<QSignalSpy> opened;
    std::unique_ptr<QSignalSpy> lost;
    std::unique_ptr<QSignalSpy> notices;
    std::unique_ptr<QSignalSpy> bytes;
};

namespace {

const QByteArray kVersion =
    R"({"class":"VERSION","release":"3.22","rev":"3.22","proto_major":3,"proto_minor":14})";
const QByteArray kDevices = R"({"class":"DEVICES","devices":[{"class":"DEVICE","path":"/dev/a",)"
                            R"("activated":"2026-01-01T00:00:00.000Z"}]})";
const QByteArray kNoDevices = R"({"class":"DEVICES","devices":[]})";
const QByteArray kGone = R"({"class":"DEVICE","path":"/dev/a","activated":0})";
const QByteArray kOtherGone = R"({"class":"DEVICE","path":"/dev/b","activated":0})";
const QByteArray kOther = R"({"class":"DEVICE","path":"/dev/b","activated":1.5})";
const QByteArray kAnError = R"({"class":"ERROR","message":"Unrecognized request"})";
const QByteArray kSentence = "$GPRMC,120000.00,V,,,,,,,010126,,,N*7A";

} // namespace

void TestGpsdLink::init()
{
    server = std::make_unique<QTcpServer>();
    QVERIFY(server->listen(QHostAddress::LocalHost));
}

void TestGpsdLink::cleanup()
{
    link.reset();
    socket.reset();
}

void TestGpsdLink::connectTo(const QString &device)
{
    link = std::make_unique<GpsdLink>(
        tNetAddress{QStringLiteral("127.0.0.1"), server->serverPort(), device});
    opened = std::make_unique<QSignalSpy>(link.get(), &ByteLink::opened);
    lost = std::make_unique<QSignalSpy>(link.get(), &ByteLink::lost);
    notices = std::make_unique<QSignalSpy>(link.get(), &ByteLink::notice);
    bytes = std::make_unique<QSignalSpy>(link.get(), &ByteLink::bytesReceived);
    link->open();
    QTRY_VERIFY(server->hasPendingConnections());
    socket.reset(server->nextPendingConnection());
    socket->setParent(nullptr);
}

void TestGpsdLink::greet()
{
    say(kVersion);
    QTRY_COMPARE(opened->size(), 1);
    QCOMPARE(last(opened), QStringLiteral("release 3.22"));
}

void TestGpsdLink::asksForTheSentences_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QByteArray>("request");
    QTest::newRow("any receiver") << "" << QByteArray(R"(?WATCH={"enable":true,"nmea":true};)");
    QTest::newRow("one receiver")
        << "/dev/a" << QByteArray(R"(?WATCH={"device":"/dev/a","enable":true,"nmea":true};)");
}

void TestGpsdLink::asksForTheSentences()
{
    QFETCH(QString, device);
    QFETCH(QByteArray, request);
    connectTo(device);
    QByteArray told;
    QTRY_COMPARE(told += socket->readAll(), request + '\n');
}

void TestGpsdLink::givesUpWithoutAnAnswer()
{
    const ShortWaits waits(10000);
    connectTo();
    QByteArray told;
    QTRY_VERIFY((told += socket->readAll()).endsWith('\n'));
    QCOMPARE(ShortWaits::nominal(), std::vector<int>({10000, 10000}));
    QCOMPARE(lost->size(), 0);
    // Again, now with a short wait for the answer only: the one for the connection runs already.
    link->open();
    ShortWaits::setLength(20);
    QTRY_COMPARE(lost->size(), 1);
    QCOMPARE(last(lost), QStringLiteral("no answer; is it a gpsd?"));
    QCOMPARE(opened->size(), 0);
}

void TestGpsdLink::givesUpWhatIsNoGpsd_data()
{
    QTest::addColumn<QByteArray>("said");
    QTest::newRow("sentences at once") << kSentence + "\r\n";
    QTest::newRow("JSON and then sentences") << "{\"class\":\"SKY\"}\n" + kSentence + "\r\n";
    QTest::newRow("a line without an end") << QByteArray(70000, 'x');
    QTest::newRow("an endless line of JSON") << '{' + QByteArray(70000, ' ');
}

void TestGpsdLink::givesUpWhatIsNoGpsd()
{
    QFETCH(QByteArray, said);
    connectTo();
    socket->write(said);
    QTRY_COMPARE(lost->size(), 1);
    QCOMPARE(last(lost), QStringLiteral("this is no gpsd"));
    QCOMPARE(bytes->size(), 0);
    QTRY_COMPARE(socket->state(), QAbstractSocket::UnconnectedState);
}

void TestGpsdLink::takesCommandsForARecognisedReceiverOnly()
{
    connectTo();
    QString error;
    QVERIFY(!canWrite(&error));
    QCOMPARE(error, link->name() + QStringLiteral(" is not connected"));
    greet();
    QVERIFY(!canWrite(&error));
    QCOMPARE(error, link->name() + QStringLiteral(" has no receiver"));
    say(kDevices);
    QTRY_COMPARE(last(notices), named("receiver at /dev/a"));
    QVERIFY(!canWrite(&error));
    QCOMPARE(error, link->name() + QStringLiteral(" has not recognised the receiver yet"));
    say(kSentence);
    QTRY_COMPARE(bytes->size(), 1);
    QCOMPARE(bytes->first().first().toByteArray(), kSentence + "\r\n");
    socket->readAll();
    QVERIFY2(canWrite(&error), qPrintable(error));
    QByteArray told;
    QTRY_VERIFY((told += socket->readAll()).endsWith('\n'));
    QVERIFY2(told.endsWith(R"(?DEVICE={"hexdata":"6162","path":"/dev/a"};)"
                           "\n"),
             told.constData());
    link->close();
    QVERIFY(!canWrite(&error));
    QCOMPARE(error, link->name() + QStringLiteral(" is not connected"));
}

void TestGpsdLink::followsTheReceiverThatItHas()
{
    connectTo();
    greet();
    say(kDevices);
    QTRY_COMPARE(last(notices), named("receiver at /dev/a"));
    say(kSentence);
    // Others come and go beside it.
    say(kOther);
    say(kOtherGone);
    say(kSentence);
    QTRY_COMPARE(bytes->size(), 2);
    QCOMPARE(notices->size(), 1);
    say(kGone);
    QTRY_COMPARE(last(notices), named("the receiver at /dev/a is gone"));
    QString error;
    QVERIFY(!canWrite(&error));
    QCOMPARE(error, link->name() + QStringLiteral(" has no receiver"));
    say(kOther);
    QTRY_COMPARE(last(notices), named("receiver at /dev/b"));
    QVERIFY(!canWrite(&error)); // recognised anew
    QCOMPARE(error, link->name() + QStringLiteral(" has not recognised the receiver yet"));
    QCOMPARE(lost->size(), 0);
}

void TestGpsdLink::takesOnlyTheReceiverThatWasAskedFor()
{
    connectTo(QStringLiteral("/dev/a"));
    QVERIFY(link->name().endsWith(QStringLiteral(", /dev/a")));
    greet();
    say(kOther);
    say(kDevices);
    QTRY_COMPARE(last(notices), named("receiver at /dev/a"));
    QCOMPARE(notices->size(), 1);
}

void TestGpsdLink::saysOnceThatThereIsNoReceiver()
{
    connectTo();
    greet();
    say(kNoDevices);
    say(kNoDevices);
    QTRY_VERIFY(notices->size() > 0);
    QCOMPARE(last(notices), link->name() + QStringLiteral(" has no receiver yet"));
    say(kDevices);
    QTRY_COMPARE(last(notices), named("receiver at /dev/a"));
    QCOMPARE(notices->size(), 2);
}

void TestGpsdLink::givesUpWhereTheReceiverThatWasAskedForIsAbsent()
{
    connectTo(QStringLiteral("/dev/c"));
    greet();
    say(R"({"class":"ERROR","message":"Can't open /dev/c"})");
    QTRY_COMPARE(lost->size(), 1);
    QCOMPARE(last(lost), QStringLiteral("Can't open /dev/c"));
}

void TestGpsdLink::reportsOtherErrors()
{
    connectTo();
    greet();
    say(kAnError);
    QTRY_COMPARE(last(notices), named("Unrecognized request"));
    link->close();
    cleanup();
    // Also where the receiver that was asked for is there.
    connectTo(QStringLiteral("/dev/a"));
    greet();
    say(kDevices);
    say(kAnError);
    QTRY_COMPARE(last(notices), named("Unrecognized request"));
    QCOMPARE(lost->size(), 0);
}

void TestGpsdLink::passesOverWhatItDoesNotKnow_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("another class") << QByteArray(R"({"class":"SKY","satellites":[]})");
    QTest::newRow("no class") << QByteArray("{}");
    QTest::newRow("no JSON") << QByteArray("{class:");
    QTest::newRow("devices that are no list") << QByteArray(R"({"class":"DEVICES","devices":7})");
    QTest::newRow("a device without a path") << QByteArray(R"({"class":"DEVICE"})");
    QTest::newRow("a device that is none") << QByteArray(R"({"class":"DEVICES","devices":[7]})");
}

void TestGpsdLink::passesOverWhatItDoesNotKnow()
{
    QFETCH(QByteArray, line);
    connectTo();
    greet();
    say(line);
    say(kDevices);
    say(kSentence);
    QTRY_COMPARE(bytes->size(), 1);
    QCOMPARE(last(notices), named("receiver at /dev/a"));
    QVERIFY(notices->size() == 1 ||
            notices->first().first().toString().endsWith(QStringLiteral(" has no receiver yet")));
    QCOMPARE(lost->size(), 0);
    QString error;
    QVERIFY2(canWrite(&error), qPrintable(error));
}

QTEST_GUILESS_MAIN(TestGpsdLink)
#include "TestGpsdLink.moc"
