// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Recordings of real receivers, run through the reader in reads of any size.

#include "support/PlainDecoder.h"
#include "support/Publications.h"
#include "support/ReadSizes.h"
#include "support/Recordings.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTextCodec>
#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

/// What is known of a recording without decoding it: counted in its lines.
struct Facts
{
    const char *file;
    int publications;   ///< RMC sentences, as far as binary data between them leaves them whole
    int withoutFix;     ///< those of them before the first fix
    int mostSatellites; ///< announced by a whole GSV cycle, at most 32
    double latitude;    ///< degrees, of the last position
    double longitude;
};

/// Where the receiver sends other than the four decimals of minutes that the cut is made for.
constexpr double kNotDecoded = -1.0;
constexpr double kTolerance = 1e-4; ///< degrees

constexpr Facts kFacts[] = {
    {"gpsd-beidou-bd.log", 10, 5, 32, 31.2482, 121.5874},
    {"gpsd-furuno_gl_ga.log", 16, 0, 18, 59.9501, 11.0107},
    {"gpsd-garmin-10x.log", 14, 0, 10, 41.7268, 83.6348},
    {"gpsd-gp-320fw-2019-04-07-coldboot.log", 17, 0, 12, 0.0, 0.0},
    {"gpsd-nmea-rtk.log", 122, 0, 0, kNotDecoded, kNotDecoded},
    {"gpsd-quectel-l76k-nmea.log", 150, 0, 26, kNotDecoded, kNotDecoded},
    {"gpsd-rx210.log", 62, 22, 18, kNotDecoded, kNotDecoded},
    {"gpsd-sl869.log", 15, 7, 19, 33.6802, 151.2912},
    {"gpsd-telit-he910.log", 224, 37, 7, 50.8402, 4.3470},
    {"gpsd-ublox-neo-m9n-nmea.log", 61, 0, 32, kNotDecoded, kNotDecoded},
    // These two repeat each set for a second signal: no cycle is whole.
    {"gpsd-ublox-zed-f9p-nmea.log", 29, 0, 0, kNotDecoded, kNotDecoded},
    {"pygnssutils-rtcm3.log", 125, 0, 0, kNotDecoded, kNotDecoded},
    {"signalk-gps.log", 1201, 0, 13, 52.3719, 4.9097},
};

/// A file without a single carriage return is given one at each line end, as a receiver sends it.
QByteArray asSent(const QByteArray &stored)
{
    return stored.contains('\r') ? stored : QByteArray(stored).replace("\n", "\r\n");
}

QByteArray recording(const QString &file)
{
    QFile stored(QDir(Recordings::folder()).filePath(file));
    return stored.open(QIODevice::ReadOnly) ? asSent(stored.readAll()) : QByteArray();
}

} // namespace

Q_DECLARE_METATYPE(Facts)

class TestCorpus : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void knowsEveryRecording();
    void givesTheSameInEveryReadSize_data();
    void givesTheSameInEveryReadSize();
    void agreesWithPlainDecoder_data();
    void agreesWithPlainDecoder();
    void givesWhatTheRecordingIsKnownFor_data();
    void givesWhatTheRecordingIsKnownFor();

private:
    void addRecordings();
};

void TestCorpus::initTestCase()
{
    if (Recordings::folder().isEmpty())
        QSKIP(Recordings::kAbsent);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QLoggingCategory::setFilterRules("default.debug=false");
}

void TestCorpus::cleanupTestCase()
{
    QLoggingCategory::setFilterRules(QString());
}

/// Every recording of the folder, whether anything is known of it or not.
void TestCorpus::addRecordings()
{
    QTest::addColumn<QString>("file");
    for (const QString &file : QDir(Recordings::folder()).entryList({"*.log"}))
        QTest::newRow(qPrintable(file)) << file;
}

// A folder that is there but lacks them must not pass for one that has them.
void TestCorpus::knowsEveryRecording()
{
    for (const Facts &facts : kFacts)
        QVERIFY2(!recording(facts.file).isEmpty(), facts.file);
}

void TestCorpus::givesTheSameInEveryReadSize_data()
{
    addRecordings();
}

void TestCorpus::givesTheSameInEveryReadSize()
{
    QFETCH(QString, file);
    const QByteArray bytes = recording(file);
    const ReadSizes::Result first = ReadSizes::play(bytes, ReadSizes::kAll[0]);
    QVERIFY(!first.published.empty());
    QCOMPARE(first.text, QString::fromLocal8Bit(bytes.constData(), bytes.size()));
    for (const int size : ReadSizes::kAll) {
        const ReadSizes::Result result = ReadSizes::play(bytes, size);
        QCOMPARE(firstDifference(first.published, result.published), QString());
        QCOMPARE(describe(first.last), describe(result.last));
        QVERIFY2(first.text == result.text, QByteArray::number(size));
    }
}

void TestCorpus::agreesWithPlainDecoder_data()
{
    addRecordings();
}

void TestCorpus::agreesWithPlainDecoder()
{
    QFETCH(QString, file);
    const QByteArray bytes = recording(file);
    for (const int size : {7, 65536}) {
        PlainDecoder plain;
        for (int at = 0; at < bytes.size(); at += size)
            plain.read(bytes.mid(at, size));
        const ReadSizes::Result result = ReadSizes::play(bytes, size);
        QCOMPARE(firstDifference(result.published, plain.all()), QString());
        QCOMPARE(describe(result.last), describe(plain.current()));
    }
}

void TestCorpus::givesWhatTheRecordingIsKnownFor_data()
{
    QTest::addColumn<Facts>("facts");
    for (const Facts &facts : kFacts)
        QTest::newRow(facts.file) << facts;
}

void TestCorpus::givesWhatTheRecordingIsKnownFor()
{
    QFETCH(Facts, facts);
    const ReadSizes::Result result = ReadSizes::play(recording(facts.file), 1000);
    const auto hasNoFix = [](const Publication &p) {
        return !p.ttffSet;
    };
    const auto hasFewer = [](const Publication &a, const Publication &b) {
        return a.svStatus.numSvs < b.svStatus.numSvs;
    };
    const std::vector<Publication> &all = result.published;
    QCOMPARE(int(all.size()), facts.publications);
    QCOMPARE(int(std::count_if(all.begin(), all.end(), hasNoFix)), facts.withoutFix);
    QCOMPARE(int(result.last.ttff), facts.withoutFix + 1);
    QCOMPARE(std::max_element(all.begin(), all.end(), hasFewer)->svStatus.numSvs,
             facts.mostSatellites);
    if (facts.latitude == kNotDecoded)
        return;
    const tGnssLocation &location = result.last.location;
    QVERIFY2(std::abs(location.latitude - facts.latitude) < kTolerance &&
                 std::abs(location.longitude - facts.longitude) < kTolerance,
             qPrintable(describe(result.last)));
}

QTEST_GUILESS_MAIN(TestCorpus)
#include "TestCorpus.moc"
