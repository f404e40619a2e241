// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/GnssInfo.h"

#include "support/MessageLog.h"

#include <QSignalSpy>
#include <QtTest>

#include <limits>
#include <thread>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<tUTCTime>);
static_assert(std::is_trivially_copyable_v<tGnssLocation>);
static_assert(std::is_trivially_copyable_v<tGnssSvStatus>);

namespace {

tUTCTime timeOf(int hour, int minute, double second)
{
    tUTCTime utc;
    utc.hour = static_cast<qint16>(hour);
    utc.minute = static_cast<qint16>(minute);
    utc.second = second;
    utc.valid = true;
    return utc;
}

} // namespace

class TestGnssInfo : public QObject
{
    Q_OBJECT

private slots:
    void startsZeroed();
    void init();
    void isOneObject();
    void registersItsRecords();
    void utcGap_data();
    void utcGap();
    void boundsTheGapOfAbsurdSeconds_data();
    void boundsTheGapOfAbsurdSeconds();
    void keepsThePreviousTime();
    void storesWholeRecords();
    void settingZeroTtffCounts();
    void appendsText();
    void keepsTextWithinItsBound_data();
    void keepsTextWithinItsBound();
    void keepsEveryAppendOfTwoThreads();
    void clearsOnlyItsOwn();
    void clearGnssInfoKeepsFlagsAndTimes();
    void clearGnssInfoLeavesNvmUnset();
    void settersEmitNothing();

private:
    GnssInfo *model = GnssInfo::instance();
};

// Runs first, on the model as it was made.
void TestGnssInfo::startsZeroed()
{
    QVERIFY(!model->isDataReceived());
    QVERIFY(!model->isTtffSet());
    QVERIFY(!model->isNvmSaved());
    QCOMPARE(model->getTtff(), 0U);
    QCOMPARE(model->getNmeaData(), QString());
    QCOMPARE(model->utcGap(), 0); // before any setUtcTime
    QCOMPARE(model->getUtcTime().year, qint16(0));
    QVERIFY(!model->getUtcTime().valid);
    QCOMPARE(model->getLocation().fix, 0);
    QCOMPARE(model->getLocation().latitude, 0.0);
    QCOMPARE(model->getSvStatus().numSvs, 0);
    for (const tGnssSv &sv : model->getSvStatus().svList)
        QVERIFY(sv.prn == 0 && sv.snr == 0.0 && !sv.usedInFix);
}

void TestGnssInfo::init()
{
    const MessageLog quiet;
    model->clearGnssInfo();
    model->clearUtcTime();
    model->setDataStatus(false);
    model->setNvmStatus(false);
}

void TestGnssInfo::isOneObject()
{
    QCOMPARE(GnssInfo::instance(), model);
    QVERIFY(!model->parent());
}

void TestGnssInfo::registersItsRecords()
{
    QVERIFY(QMetaType::type("tUTCTime") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("tGnssLocation") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("tGnssSvStatus") != QMetaType::UnknownType);

    // A record can travel through a queued slot call.
    const bool invoked = QMetaObject::invokeMethod(model, "setUtcTime", Qt::QueuedConnection,
                                                   Q_ARG(tUTCTime, timeOf(7, 8, 9.5)));
    QVERIFY(invoked);
    QTRY_COMPARE(model->getUtcTime().second, 9.5);
}

void TestGnssInfo::utcGap_data()
{
    QTest::addColumn<tUTCTime>("before");
    QTest::addColumn<tUTCTime>("after");
    QTest::addColumn<int>("gap");
    QTest::newRow("12:00:00.0 then 12:00:05.7") << timeOf(12, 0, 0.0) << timeOf(12, 0, 5.7) << 5;
    QTest::newRow("23:59:59 then 00:00:00") << timeOf(23, 59, 59) << timeOf(0, 0, 0) << -82799;
    QTest::newRow("00:00:00 then 23:59:59") << timeOf(0, 0, 0) << timeOf(23, 59, 59) << 89999;
    QTest::newRow("same") << timeOf(1, 2, 3) << timeOf(1, 2, 3) << 0;
    QTest::newRow("fractions are cut one by one") << timeOf(0, 0, 1.9) << timeOf(0, 0, 2.0) << 1;
    QTest::newRow("over the hour") << timeOf(4, 59, 59) << timeOf(5, 0, 0) << 1;
    QTest::newRow("backwards") << timeOf(5, 0, 0) << timeOf(4, 59, 59) << -1;
    QTest::newRow("22 hours are no 23") << timeOf(23, 0, 0) << timeOf(1, 0, 0) << -79200;
    QTest::newRow("negative second is cut towards zero")
        << timeOf(0, 0, 0) << timeOf(0, 0, -0.9) << 0;
    QTest::newRow("negative hour beside a huge negative second")
        << timeOf(0, 0, 0) << timeOf(-1, -1, -1e308) << std::numeric_limits<int>::min();
    QTest::newRow("hour beside a huge second")
        << timeOf(0, 0, 0) << timeOf(12, 0, 1e308) << std::numeric_limits<int>::max();
}

// A time field such as "1e+308" is read as a finite number that no integer holds.
void TestGnssInfo::boundsTheGapOfAbsurdSeconds_data()
{
    QTest::addColumn<double>("before");
    QTest::addColumn<double>("after");
    QTest::addColumn<int>("gap");
    constexpr int highest = std::numeric_limits<int>::max();
    constexpr int lowest = std::numeric_limits<int>::min();
    QTest::newRow("highest integer") << 0.0 << 2147483647.0 << highest;
    QTest::newRow("huge") << 0.0 << 1e308 << highest;
    QTest::newRow("huge, negative") << 0.0 << -1e308 << lowest;
    QTest::newRow("from end to end") << -1e308 << 1e308 << highest;
    QTest::newRow("back from end to end") << 1e308 << -1e308 << lowest;
    QTest::newRow("both huge") << 1e308 << 1e300 << 0;
    QTest::newRow("infinite") << 5.0 << std::numeric_limits<double>::infinity() << highest - 5;
    QTest::newRow("not a number") << 5.0 << std::numeric_limits<double>::quiet_NaN() << -5;
}

void TestGnssInfo::boundsTheGapOfAbsurdSeconds()
{
    QFETCH(double, before);
    QFETCH(double, after);
    model->setUtcTime(timeOf(0, 0, before));
    model->setUtcTime(timeOf(0, 0, after));
    QTEST(model->utcGap(), "gap");
}

void TestGnssInfo::utcGap()
{
    QFETCH(tUTCTime, before);
    QFETCH(tUTCTime, after);
    model->setUtcTime(before);
    model->setUtcTime(after);
    QTEST(model->utcGap(), "gap");
}

void TestGnssInfo::keepsThePreviousTime()
{
    model->setUtcTime(timeOf(10, 0, 0));
    QCOMPARE(model->utcGap(), 36000);
    model->setUtcTime(timeOf(10, 0, 4));
    QCOMPARE(model->utcGap(), 4);
    QCOMPARE(model->getUtcTime().hour, qint16(10));
    QVERIFY(model->getUtcTime().valid);
    model->setUtcTime(timeOf(10, 0, 5));
    QCOMPARE(model->utcGap(), 1);
    model->clearUtcTime();
    QCOMPARE(model->utcGap(), 0);
    QVERIFY(!model->getUtcTime().valid);
}

void TestGnssInfo::storesWholeRecords()
{
    tGnssLocation location;
    location.status = 7;
    location.latitude = -33.8675;
    location.longitude = 151.207;
    location.altitude = 58.5;
    location.fix = 2;
    location.speed = 1.5F;
    location.pdop = 1.1F;
    location.hdop = 1.2F;
    location.vdop = 1.3F;
    location.fixTime = 123519.25;
    model->setLocation(location);
    const tGnssLocation stored = model->getLocation();
    QCOMPARE(stored.status, 7);
    QCOMPARE(stored.latitude, -33.8675);
    QCOMPARE(stored.longitude, 151.207);
    QCOMPARE(stored.altitude, 58.5);
    QCOMPARE(stored.fix, 2);
    QCOMPARE(stored.speed, 1.5F);
    QCOMPARE(stored.pdop, 1.1F);
    QCOMPARE(stored.hdop, 1.2F);
    QCOMPARE(stored.vdop, 1.3F);
    QCOMPARE(stored.fixTime, 123519.25);

    tGnssSvStatus status;
    status.numSvs = kMaxSatellites;
    status.svList[kMaxSatellites - 1] = {88, 45.5, 60.0, 359.0F, true};
    model->setSvStatus(status);
    QCOMPARE(model->getSvStatus().numSvs, 32);
    const tGnssSv last = model->getSvStatus().svList[31];
    QCOMPARE(last.prn, 88);
    QCOMPARE(last.snr, 45.5);
    QCOMPARE(last.elevation, 60.0);
    QCOMPARE(last.azimuth, 359.0F);
    QVERIFY(last.usedInFix);
}

void TestGnssInfo::settingZeroTtffCounts()
{
    model->setTtff(0);
    QVERIFY(model->isTtffSet());
    QCOMPARE(model->getTtff(), 0U);
    model->setTtff(4294967295U);
    QCOMPARE(model->getTtff(), 4294967295U);
    model->clearTtff();
    QVERIFY(!model->isTtffSet());
    QCOMPARE(model->getTtff(), 0U);
}

void TestGnssInfo::appendsText()
{
    const MessageLog log;
    model->setNmeaData("a");
    model->setNmeaData("b");
    QCOMPARE(model->getNmeaData(), QString("ab"));
    QCOMPARE(model->getNmeaData(), QString("ab")); // reading takes nothing away
    model->clearGnssInfo();
    QCOMPARE(model->getNmeaData(), QString());
    QCOMPARE(log.lines(), QStringList("d> GnssInfo: GnssInfo clear"));
    model->setNmeaData("c");
    model->clearNmeaData();
    model->clearNmeaData();
    QCOMPARE(model->getNmeaData(), QString());
}

void TestGnssInfo::keepsTextWithinItsBound_data()
{
    QTest::addColumn<int>("pieces");
    QTest::addColumn<int>("pieceLength");
    QTest::addColumn<int>("kept");
    constexpr int mega = 1024 * 1024;
    constexpr int bound = GnssInfo::kMaxNmeaText;
    QTest::newRow("exactly full") << 16 << mega << bound;
    QTest::newRow("one character too many") << 1 << bound + 1 << bound;
    QTest::newRow("a little too much") << 33 << mega / 2 << bound;
    QTest::newRow("far too much") << 40 << mega << bound;
    QTest::newRow("one piece beyond all") << 1 << bound + 3 * mega << bound;
}

void TestGnssInfo::keepsTextWithinItsBound()
{
    QFETCH(int, pieces);
    QFETCH(int, pieceLength);
    QFETCH(int, kept);
    QCOMPARE(GnssInfo::kMaxNmeaText, 16 * 1024 * 1024);
    for (int i = 0; i < pieces; ++i) {
        QString piece(pieceLength, QChar('a' + i));
        piece[0] = '<';
        piece[pieceLength - 1] = '>';
        model->setNmeaData(piece);
    }
    const QString text = model->getNmeaData();
    QCOMPARE(text.size(), kept);
    QVERIFY(text.endsWith('>')); // the newest is whole
    const int cut = pieces * pieceLength - kept;
    QCOMPARE(text.at(0) == '<', cut % pieceLength == 0);
    if (pieces > 1)
        QCOMPARE(text.at(1), QChar('a' + cut / pieceLength)); // the oldest went first
}

void TestGnssInfo::keepsEveryAppendOfTwoThreads()
{
    constexpr int kAppends = 20000;
    const auto append = [this](const QString &text) {
        for (int i = 0; i < kAppends; ++i)
            model->setNmeaData(text);
    };
    std::thread other(append, QStringLiteral("abc"));
    append(QStringLiteral("xyz"));
    other.join();
    QString text = model->getNmeaData();
    QCOMPARE(text.size(), 6 * kAppends);
    QCOMPARE(text.count("abc"), kAppends);
    QCOMPARE(text.count("xyz"), kAppends);
}

void TestGnssInfo::clearsOnlyItsOwn()
{
    tGnssLocation location;
    location.latitude = 1.0;
    tGnssSvStatus status;
    status.numSvs = 3;
    model->setLocation(location);
    model->setSvStatus(status);
    model->setUtcTime(timeOf(1, 0, 0));
    model->setTtff(5);
    model->setNvmStatus(true);
    model->setNmeaData("x");

    model->clearLocation();
    QCOMPARE(model->getLocation().latitude, 0.0);
    QCOMPARE(model->getSvStatus().numSvs, 3);
    model->clearSvStatus();
    QCOMPARE(model->getSvStatus().numSvs, 0);
    QVERIFY(model->isTtffSet());
    model->clearTtff();
    QVERIFY(model->isNvmSaved());
    QCOMPARE(model->getUtcTime().hour, qint16(1));
    QCOMPARE(model->getNmeaData(), QString("x"));
}

void TestGnssInfo::clearGnssInfoKeepsFlagsAndTimes()
{
    const MessageLog quiet;
    tGnssLocation location;
    location.fix = 1;
    tGnssSvStatus status;
    status.numSvs = 3;
    status.svList[2].prn = 9;
    model->setLocation(location);
    model->setSvStatus(status);
    model->setDataStatus(true);
    model->setNvmStatus(true);
    model->setTtff(30);
    model->setNmeaData("x");
    model->setUtcTime(timeOf(10, 0, 0));
    model->setUtcTime(timeOf(10, 0, 2));

    model->clearGnssInfo();
    QVERIFY(model->isDataReceived());
    QVERIFY(model->isNvmSaved());
    QCOMPARE(model->utcGap(), 2);
    QCOMPARE(model->getUtcTime().second, 2.0);
    QCOMPARE(model->getLocation().fix, 0);
    QCOMPARE(model->getSvStatus().numSvs, 0);
    QCOMPARE(model->getSvStatus().svList[2].prn, 0);
    QCOMPARE(model->getNmeaData(), QString());
    QVERIFY(!model->isTtffSet());
    QCOMPARE(model->getTtff(), 0U);
}

void TestGnssInfo::clearGnssInfoLeavesNvmUnset()
{
    const MessageLog quiet;
    model->clearGnssInfo();
    QVERIFY(!model->isNvmSaved());
    QVERIFY(!model->isDataReceived());
}

void TestGnssInfo::settersEmitNothing()
{
    const MessageLog quiet;
    QSignalSpy data(model, &GnssInfo::dataReceived);
    QSignalSpy utc(model, &GnssInfo::utcUpdate);
    QSignalSpy location(model, &GnssInfo::locationUpdate);
    QSignalSpy svs(model, &GnssInfo::svStatusUpdate);
    QSignalSpy ttff(model, &GnssInfo::ttffUpdate);
    QSignalSpy nvm(model, &GnssInfo::nvmUpdate);
    model->setDataStatus(true);
    model->setUtcTime(timeOf(1, 2, 3));
    model->setLocation(tGnssLocation());
    model->setSvStatus(tGnssSvStatus());
    model->setNmeaData("x");
    model->setTtff(1);
    model->setNvmStatus(true);
    model->clearGnssInfo();
    QCOMPARE(data.size() + utc.size() + location.size() + svs.size() + ttff.size() + nvm.size(), 0);
}

QTEST_GUILESS_MAIN(TestGnssInfo)
#include "TestGnssInfo.moc"
