// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/SerialLink.h"

#include "hostd/Dialect.h"
#include "support/Pty.h"
#include "support/ShortWaits.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

/// The link to a serial device, at real pseudo-terminals. TestLiveSource has what a receiver at the
/// other end brings about.
class TestSerialLink : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void saysWhatIsNoSerialLine();
    void writesOnlyAtAKnownSpeed();
    void refusesWhatTheDeviceDoesNotTake();
    void saysWhyADeviceThatIsStillThereWasLost();
    void keepsAGivenSpeed();
    void searchesAgainForASpeedInDoubt();
    void searchesAgainWhereNothingIsReadable();

private:
    void open(std::optional<int> baud);

    std::unique_ptr<QTemporaryDir> folder;
    QString device;
    std::unique_ptr<SerialLink> link;
    std::unique_ptr<QSignalSpy> opened;
    std::unique_ptr<QSignalSpy> lost;
    std::unique_ptr<QSignalSpy> notices;
};

namespace {

const QByteArray kSentence = Dialect::sentence("GNRMC,120000.00,V,,,,,,,010126,,,N");

} // namespace

void TestSerialLink::init()
{
    link.reset();
    folder = std::make_unique<QTemporaryDir>();
    device = folder->filePath(QStringLiteral("ttyUSB0"));
}

void TestSerialLink::open(std::optional<int> baud)
{
    link = std::make_unique<SerialLink>(device, baud);
    opened = std::make_unique<QSignalSpy>(link.get(), &ByteLink::opened);
    lost = std::make_unique<QSignalSpy>(link.get(), &ByteLink::lost);
    notices = std::make_unique<QSignalSpy>(link.get(), &ByteLink::notice);
    link->open();
}

void TestSerialLink::saysWhatIsNoSerialLine()
{
    QCOMPARE(::mkfifo(QFile::encodeName(device).constData(), 0600), 0);
    open(9600);
    QCOMPARE(lost->size(), 1);
    QVERIFY2(!lost->first().first().toString().isEmpty(), "a reason");
    QCOMPARE(opened->size(), 0);
    QString error;
    QVERIFY(!link->write("x", &error));
    QCOMPARE(error, device + QStringLiteral(" is not open"));
}

void TestSerialLink::writesOnlyAtAKnownSpeed()
{
    Pty receiver;
    QVERIFY(receiver.plugIn(device));
    open({});
    QString error;
    QVERIFY(!link->write("x", &error));
    QCOMPARE(error, QStringLiteral("the speed of %1 is not found yet").arg(device));
    QTRY_VERIFY(receiver.isOpened());
    QVERIFY(receiver.write(kSentence));
    QTRY_COMPARE(opened->size(), 1);
    error.clear();
    QVERIFY2(link->write("x", &error), qPrintable(error));
    QByteArray told;
    QTRY_COMPARE(told += receiver.read(), QByteArray("x"));
    link->close();
    QVERIFY(!link->write("x", &error));
    QCOMPARE(error, device + QStringLiteral(" is not open"));
    QCOMPARE(lost->size(), 0);
}

void TestSerialLink::refusesWhatTheDeviceDoesNotTake()
{
    Pty receiver;
    QVERIFY(receiver.plugIn(device));
    open(9600);
    QCOMPARE(opened->size(), 1);
    const QByteArray much(20000, 'x');
    QString error;
    int taken = 0;
    while (taken < 100 && link->write(much, &error)) {
        ++taken;
        QCoreApplication::processEvents();
    }
    QVERIFY(taken > 0 && taken < 100);
    QCOMPARE(error, device + QStringLiteral(" takes no bytes"));
    QCOMPARE(lost->size(), 0);
}

void TestSerialLink::saysWhyADeviceThatIsStillThereWasLost()
{
    Pty receiver;
    QVERIFY(receiver.plugIn(device));
    open(9600);
    QCOMPARE(opened->size(), 1);
    // Back under the same name before anybody looks.
    receiver.unplug();
    QVERIFY(receiver.plugIn(device));
    QSignalSpy appeared(link.get(), &ByteLink::appeared);
    QTRY_COMPARE(lost->size(), 1);
    const QString reason = lost->first().first().toString();
    QVERIFY2(!reason.isEmpty() && reason != QStringLiteral("the device is gone"),
             qPrintable(reason));
    QTRY_COMPARE(appeared.size(), 1);
    link->open();
    QCOMPARE(opened->size(), 2);
}

void TestSerialLink::keepsAGivenSpeed()
{
    const ShortWaits waits(10000);
    Pty receiver;
    QVERIFY(receiver.plugIn(device));
    open(9600);
    link->doubtSpeed();
    link->close();
    link->doubtSpeed();
    QVERIFY(ShortWaits::nominal().empty()); // nothing is searched for
    QCOMPARE(opened->size(), 1);
}

void TestSerialLink::searchesAgainForASpeedInDoubt()
{
    Pty receiver;
    QVERIFY(receiver.plugIn(device));
    open({});
    link->doubtSpeed(); // a search is on already
    QTRY_VERIFY(receiver.isOpened());
    QVERIFY(receiver.write(kSentence));
    QTRY_COMPARE(opened->size(), 1);
    const ShortWaits waits(10);
    link->doubtSpeed();
    QTRY_VERIFY(ShortWaits::nominal().size() >= 2);
    QCOMPARE(ShortWaits::nominal()[0], 1000);
    QCOMPARE(ShortWaits::nominal()[1], 1300); // the search is on
    QString error;
    QVERIFY(!link->write("x", &error));
    ShortWaits::setLength(10000);
    QTRY_VERIFY(receiver.write(kSentence) && opened->size() >= 2);
    QVERIFY(opened->last().first().toString().startsWith(QStringLiteral("at ")));
}

void TestSerialLink::searchesAgainWhereNothingIsReadable()
{
    Pty receiver;
    QVERIFY(receiver.plugIn(device));
    open({});
    QTRY_VERIFY(receiver.isOpened());
    QVERIFY(receiver.write(kSentence));
    QTRY_COMPARE(opened->size(), 1);
    const auto reads = [this, &receiver](const QString &text) {
        receiver.write(QByteArray(1600, '\x80'));
        return !notices->isEmpty() && notices->last().first().toString() == text;
    };
    QTRY_VERIFY(
        reads(QStringLiteral("%1: nothing readable any more; trying other speeds").arg(device)));
    QCOMPARE(notices->size(), 1);
    // Wrong at every speed: said once, and tried on.
    const QString hint =
        QStringLiteral("%1: no speed from 4800 to 921600 baud gives NMEA sentences "
                       "or binary frames; trying on")
            .arg(device);
    QTRY_VERIFY_WITH_TIMEOUT(reads(hint), 20000);
    for (int i = 0; i < 20; ++i) {
        reads(hint);
        QTest::qWait(5);
    }
    QCOMPARE(notices->size(), 2);
    QTRY_VERIFY(receiver.write("\r\n" + kSentence) && opened->size() >= 2);
}

QTEST_GUILESS_MAIN(TestSerialLink)
#include "TestSerialLink.moc"
