// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// What is compared, and that each departure is seen.

#include "base/NmeaFraming.h"
#include "support/EpochComparison.h"
#include "support/ReadSizes.h"

#include <QLoggingCategory>
#include <QtTest>

namespace {

using EpochComparison::tVerdict;

/// One cycle as the device writes it.
QByteArrayList cycle(const QByteArray &time)
{
    return {"GNGGA," + time + ",4800.0149,N,01100.0151,W,1,08,0.9,500.04,M,47.0,M,,",
            "GPGSV,1,1,02,05,40,100,40,07,41,101,38",
            "GAGSV,1,1,01,301,20,200,30",
            "GPGSA,A,3,05,,,,,,,,,,,,1.50,0.90,1.20",
            "GNGLL,4800.0149,N,01100.0151,W," + time + ",A,A",
            "GNRMC," + time + ",A,4800.0149,N,01100.0151,W,0.0,0.0,010125,,,A"};
}

QByteArray framed(const QByteArrayList &bodies)
{
    QByteArray bytes;
    for (const QByteArray &body : bodies)
        bytes += NmeaFraming::sentence(body);
    return bytes;
}

QByteArrayList threeCycles()
{
    return cycle("120000.000") + cycle("120001.000") + cycle("120002.000");
}

tVerdict ofCycles(const QByteArray &recording, const QByteArray &told)
{
    DialectChecker checker;
    checker.read(told);
    return EpochComparison::ofCycles(RecordingReader::read(recording), checker.cycles());
}

tVerdict ofShown(const QByteArray &recording, const QByteArray &told)
{
    return EpochComparison::ofShown(RecordingReader::read(recording),
                                    ReadSizes::play(told, 4096).published);
}

} // namespace

class TestEpochComparison : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void findsNothingWhereAllIsRight();
    void seesADeparture_data();
    void seesADeparture();
    void seesLostAndInventedEpochs();
    void keepsWhatWasSaidBefore();
    void comparesARecordingAsItIs();
};

void TestEpochComparison::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void TestEpochComparison::cleanupTestCase()
{
    QLoggingCategory::setFilterRules(QString());
}

void TestEpochComparison::findsNothingWhereAllIsRight()
{
    const QByteArray recording = framed(threeCycles());
    for (const tVerdict &verdict :
         {ofCycles(recording, recording), ofShown(recording, recording),
          EpochComparison::ofRaw(RecordingReader::read(recording), recording)}) {
        QCOMPARE(verdict.faults, QStringList());
        QCOMPARE(verdict.epochs, 3);
        QCOMPARE(verdict.right, 3);
    }
}

// In the second of three epochs.
void TestEpochComparison::seesADeparture_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QString>("ofSentences");
    QTest::addColumn<QString>("ofViewer");
    const auto row = [](const char *name, const char *from, const char *to, const char *fault,
                        const char *shown = nullptr) {
        QTest::newRow(name) << QByteArray(from) << QByteArray(to) << QString::fromLatin1(fault)
                            << QString::fromLatin1(shown == nullptr ? fault : shown);
    };
    row("date", "010125", "020125", "date: expected 2025-01-01, found 2025-01-02");
    row("no date", "010125", "", "date: expected 2025-01-01, found none");
    row("status", ",A,4800", ",V,4800", "status: expected A, found V", "");
    row("fix", ",W,1,08", ",W,2,08", "fix: expected 1, found 2");
    row("latitude", "4800.0149", "4800.0150", "latitude: expected 28800149, found 28800150");
    row("south", ",N,", ",S,", "latitude: expected 28800149, found -28800149", "");
    row("longitude", "01100.0151", "01100.0150", "longitude: expected -6600151, found -6600150",
        "longitude: expected 6600151, found 6600150");
    row("altitude", "500.04", "500.0", "altitude: expected 500.040000, found 500.000000");
    row("no altitude", "500.04", "", "altitude: expected 500.040000, found none",
        "altitude: expected 500.040000, found 0.000000");
    row("PDOP", "1.50", "1.51", "PDOP: expected 1.500000, found 1.510000");
    row("HDOP", "0.90,1.20", "0.91,1.20", "HDOP: expected 0.900000, found 0.910000");
    row("VDOP", "1.20", "", "VDOP: expected 1.200000, found none",
        "VDOP: expected 1.200000, found 0.000000");
    row("elevation", "41,101,38", "42,101,38", "satellite 7: expected 41/101/38, found 42/101/38");
    row("azimuth", "41,101,38", "41,102,38", "satellite 7: expected 41/101/38, found 41/102/38");
    row("C/N0", "41,101,38", "41,101,39", "satellite 7: expected 41/101/38, found 41/101/39");
    row("no satellite", "02,05,40,100,40,07", "01,05,40,100,40*07",
        "satellite 7: expected 41/101/38, found none");
    row("one too many", "01,301,20,200,30", "02,301,20,200,30,302,21,201,31",
        "satellite 302: expected none, found 21/201/31");
    row("used", "A,3,05,,", "A,3,05,07,", "satellite 7 used: expected 0, found 1");
    row("not used", "A,3,05,", "A,3,,", "satellite 5 used: expected 1, found 0");
}

void TestEpochComparison::seesADeparture()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QString, ofSentences);
    QFETCH(QString, ofViewer);
    QByteArrayList told = cycle("120001.000");
    for (QByteArray &body : told) {
        body.replace(from, to);
        body = body.split('*').first(); // a row cuts off the rest
    }
    const QByteArray departing = framed(cycle("120000.000") + told + cycle("120002.000"));
    const QByteArray recording = framed(threeCycles());
    const auto expected = [](const QString &fault) {
        return fault.isEmpty() ? QStringList()
                               : QStringList{QStringLiteral("epoch 1 (12:00:01.000): ") + fault};
    };
    QCOMPARE(ofCycles(recording, departing).faults, expected(ofSentences));
    QCOMPARE(ofCycles(recording, departing).right, 2);
    QCOMPARE(ofShown(recording, departing).faults, expected(ofViewer));
}

void TestEpochComparison::seesLostAndInventedEpochs()
{
    const QByteArray one = framed(cycle("120000.000"));
    const QByteArray three = framed(threeCycles());
    const QByteArray withoutMiddle = framed(cycle("120000.000") + cycle("120002.000"));
    QCOMPARE(ofCycles(three, withoutMiddle).faults, QStringList{"epoch 1 (12:00:01.000): lost"});
    QCOMPARE(ofCycles(three, withoutMiddle).right, 2);
    QCOMPARE(ofCycles(withoutMiddle, three).faults,
             QStringList{"epoch 1 (12:00:02.000): invented before it: 12:00:01.000"});
    QCOMPARE(ofCycles(withoutMiddle, three).right, 2);
    QCOMPARE(ofCycles(three, one).faults.size(), 2);
    QCOMPARE(ofCycles(one, three).faults, (QStringList{"invented at the end: 12:00:01.000",
                                                       "invented at the end: 12:00:02.000"}));
    QCOMPARE(ofCycles(three, three + one).faults, QStringList{"invented at the end: 12:00:00.000"});
    QCOMPARE(
        ofCycles(three, framed(cycle("120000.000") + cycle("120001.500") + cycle("120002.000")))
            .faults,
        QStringList{"epoch 1 (12:00:01.000): time: expected 12:00:01.000, found 12:00:01.500"});
}

// A cycle without GSV and GSA says nothing about satellites.
void TestEpochComparison::keepsWhatWasSaidBefore()
{
    QByteArrayList silent = cycle("120001.000");
    silent.erase(silent.begin() + 1, silent.begin() + 4);
    const QByteArray recording = framed(cycle("120000.000") + silent);
    QCOMPARE(ofCycles(recording, recording).faults, QStringList());
    QCOMPARE(ofShown(recording, recording).faults, QStringList());
    QCOMPARE(ofCycles(recording, framed(cycle("120000.000") + cycle("120001.000"))).faults,
             QStringList());
}

void TestEpochComparison::comparesARecordingAsItIs()
{
    const auto raw = [](const QByteArrayList &bodies) {
        const QByteArray recording = framed(bodies);
        return EpochComparison::ofRaw(RecordingReader::read(recording), recording);
    };
    QByteArrayList rmcFirst;
    for (const char *time : {"120000.000", "120001.000", "120002.000"}) {
        QByteArrayList bodies = cycle(time);
        bodies.move(bodies.size() - 1, 0);
        rmcFirst += bodies;
    }
    QCOMPARE(raw(rmcFirst).right, 2); // a second late, but for the first, which is not shown at all
    QByteArrayList fine = threeCycles();
    for (QByteArray &body : fine)
        body.replace("00.0149", "00.01491");
    QCOMPARE(raw(fine).right, 0); // the viewer's fixed width
}

QTEST_GUILESS_MAIN(TestEpochComparison)
#include "TestEpochComparison.moc"
