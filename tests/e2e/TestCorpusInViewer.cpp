// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Recordings, played by the real daemon into the real viewer: what the page shows, against the
// recording itself.

#include "e2e/SatellitePage.h"
#include "support/HostdProcess.h"
#include "support/Pages.h"
#include "support/ReadSizes.h"
#include "support/RecordingReader.h"
#include "support/Recordings.h"
#include "support/ThroughDialect.h"
#include "support/ViewerProcess.h"

#include <QLoggingCategory>
#include <QTime>
#include <QtTest>

#include <cmath>
#include <cstdlib>

using SatellitePage::Shown;

namespace {

constexpr int kLongMs = 60000;
constexpr int kNextMs = 30000; ///< until the next epoch: the daemon shortens gaps
constexpr int kDrawnMs = 5000; ///< until the satellites of the epoch that the labels show
constexpr double kUnitsOfDegree = 600000.0; // 1/10000 minute

/// The numbers of the satellites in the order in which the page has them, after each epoch.
QVector<QVector<int>> ordersOf(const QString &file)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const ReadSizes::Result result = ReadSizes::play(throughDialect(file), 4096);
    QLoggingCategory::setFilterRules(QString());
    QVector<QVector<int>> orders;
    for (const Publication &publication : result.published) {
        QVector<int> numbers;
        for (int i = 0; i < publication.svStatus.numSvs; ++i)
            numbers << publication.svStatus.svList[i].prn;
        orders << numbers;
    }
    return orders;
}

/// The recording's satellites in that order; others that it has come last, and the page does not
/// have them.
QVector<Shown> satellites(const tSourceEpoch &epoch, const QVector<int> &order)
{
    QMap<int, Shown> all;
    for (const tSourceSatellite &satellite : epoch.inView)
        all[satellite.number] = {satellite.number, satellite.elevation, satellite.azimuth,
                                 satellite.cn0, epoch.used.contains(satellite.number)};
    QVector<Shown> shown;
    for (const int number : order)
        shown << all.take(number);
    for (const Shown &left : all)
        shown << left;
    return shown;
}

QString degrees(const std::optional<qint64> &angle)
{
    const double size = static_cast<double>(std::abs(angle.value_or(0))) / kUnitsOfDegree;
    return QString::number(size, 'f', 6) + QStringLiteral(" \u00B0");
}

/// The time as the page writes it: hhmmss.sss read as one number.
QString timeLabel(const tSourceEpoch &epoch)
{
    const QTime time = QTime::fromMSecsSinceStartOfDay(epoch.timeMs.value_or(0));
    return QString::number(time.toString(QStringLiteral("HHmmss.zzz")).toDouble(), 'f', 3);
}

QString dop(const std::optional<double> &value)
{
    return QString::number(static_cast<double>(static_cast<float>(value.value_or(0.0))), 'f', 1);
}

/// The page's labels, in the order of SatellitePage::values().
QStringList labels(const tSourceEpoch &epoch)
{
    return {degrees(epoch.latitude),
            degrees(epoch.longitude),
            QString::number(epoch.altitude.value_or(0.0), 'f', 2),
            QString::number(epoch.quality),
            QStringLiteral("0.0"),
            timeLabel(epoch),
            dop(epoch.pdop),
            dop(epoch.hdop),
            dop(epoch.vdop)};
}

QVector<tSourceEpoch> epochsOf(const QString &file)
{
    QFile stored(file);
    return stored.open(QIODevice::ReadOnly) ? RecordingReader::read(stored.readAll())
                                            : QVector<tSourceEpoch>();
}

} // namespace

class TestCorpusInViewer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void showsTheEndOfARecording_data();
    void showsTheEndOfARecording();
    void showsEveryEpochOfARecording_data();
    void showsEveryEpochOfARecording();
};

void TestCorpusInViewer::initTestCase()
{
    if (Recordings::folder().isEmpty())
        QSKIP(Recordings::kAbsent);
}

void TestCorpusInViewer::showsTheEndOfARecording_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(Recordings::folder());
    for (const QString &file : folder.entryList({QStringLiteral("*.log")}))
        QTest::newRow(qPrintable(file)) << folder.filePath(file);
}

void TestCorpusInViewer::showsTheEndOfARecording()
{
    QFETCH(QString, file);
    const QVector<tSourceEpoch> epochs = epochsOf(file);
    QVERIFY(!epochs.isEmpty());

    ViewerProcess viewer;
    QVERIFY2(viewer.start(), qPrintable(viewer.errorText()));
    HostdProcess hostd(viewer.root());
    QVERIFY(hostd.start(
        {QStringLiteral("replay"), QStringLiteral("--speed"), QStringLiteral("200"), file}));
    QTRY_VERIFY_WITH_TIMEOUT(
        hostd.reports().join('\n').contains(QStringLiteral("played %1 epochs").arg(epochs.size())),
        kLongMs);

    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(viewer), labels(epochs.last()), kLongMs);
    const QVector<int> order = ordersOf(file).last();
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(viewer, satellites(epochs.last(), order)),
                              QString(), kLongMs);
    QCOMPARE(viewer.standardError().count(QStringLiteral("E> ")), 0);
}

// Recordings whose epochs all have a time and are a second or more apart.
void TestCorpusInViewer::showsEveryEpochOfARecording_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(Recordings::folder());
    for (const char *file : {"gpsd-beidou-bd.log", "gpsd-furuno_gl_ga.log", "gpsd-garmin-10x.log",
                             "gpsd-rx210.log", "gpsd-ublox-zed-f9p-nmea.log"})
        QTest::newRow(file) << folder.filePath(QString::fromLatin1(file));
}

void TestCorpusInViewer::showsEveryEpochOfARecording()
{
    QFETCH(QString, file);
    const QVector<tSourceEpoch> epochs = epochsOf(file);
    const QVector<QVector<int>> orders = ordersOf(file);
    QVERIFY(epochs.size() >= 10);
    QCOMPARE(orders.size(), epochs.size());

    ViewerProcess viewer;
    QVERIFY2(viewer.start(), qPrintable(viewer.errorText()));
    HostdProcess hostd(viewer.root());
    // The page is refreshed once a second: slowly enough that it shows each epoch.
    QVERIFY(hostd.start(
        {QStringLiteral("replay"), QStringLiteral("--speed"), QStringLiteral("0.5"), file}));
    for (int i = 0; i < epochs.size(); ++i) {
        QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(viewer), labels(epochs[i]), kNextMs);
        QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(viewer, satellites(epochs[i], orders[i])),
                                  QString(), kDrawnMs);
    }
}

QTEST_GUILESS_MAIN(TestCorpusInViewer)
#include "TestCorpusInViewer.moc"
