// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Every recording, played by the real daemon into the real viewer: what the page shows at the end.

#include "e2e/SatellitePage.h"
#include "support/HostdProcess.h"
#include "support/Pages.h"
#include "support/ReadSizes.h"
#include "support/Recordings.h"
#include "support/SourceOracle.h"
#include "support/ThroughDialect.h"
#include "support/ViewerProcess.h"

#include <QLoggingCategory>
#include <QtTest>

#include <cmath>

using SatellitePage::Shown;

namespace {

constexpr int kLongMs = 60000;
constexpr double kTolerance = 1e-6; ///< degrees

/// What the decoder publishes in the end, each epoch compared with the recording itself before.
ReadSizes::Result decoded(const QString &file, const QVector<tSourceEpoch> &epochs, QString *fault)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    ReadSizes::Result result = ReadSizes::play(throughDialect(file), 4096);
    *fault = SourceOracle::faultOfDialect(epochs, result.published);
    QLoggingCategory::setFilterRules(QString());
    return result;
}

QVector<Shown> bars(const tGnssSvStatus &status)
{
    QVector<Shown> shown;
    for (int i = 0; i < status.numSvs; ++i) {
        const tGnssSv &sv = status.svList[i];
        shown << Shown{sv.prn, static_cast<int>(sv.elevation), static_cast<int>(sv.azimuth),
                       static_cast<int>(sv.snr), sv.usedInFix};
    }
    return shown;
}

/// The time as the page writes it: hhmmss.sss read as one number.
QString timeLabel(int timeMs)
{
    const int whole = timeMs / 3600000 * 10000 + timeMs / 60000 % 60 * 100 + timeMs / 1000 % 60;
    return QString::number(whole + timeMs % 1000 / 1000.0, 'f', 3);
}

double degreesOf(const QString &label)
{
    return label.left(label.indexOf(' ')).toDouble();
}

} // namespace

class TestCorpusInViewer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void showsTheEndOfARecording_data();
    void showsTheEndOfARecording();
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
    QFile stored(file);
    QVERIFY(stored.open(QIODevice::ReadOnly));
    const QVector<tSourceEpoch> epochs = SourceOracle::read(stored.readAll());
    QString fault;
    const ReadSizes::Result result = decoded(file, epochs, &fault);
    QCOMPARE(fault, QString());
    const tSourceEpoch &last = epochs.last();

    ViewerProcess viewer;
    QVERIFY2(viewer.start(), qPrintable(viewer.errorText()));
    HostdProcess hostd(viewer.root());
    QVERIFY(hostd.start(
        {QStringLiteral("replay"), QStringLiteral("--speed"), QStringLiteral("200"), file}));
    QTRY_VERIFY_WITH_TIMEOUT(
        hostd.reports().join('\n').contains(QStringLiteral("played %1 epochs").arg(epochs.size())),
        kLongMs);

    const auto label = [&viewer](const char *name) {
        return viewer.text(Pages::kSatellite, QString::fromLatin1(name));
    };
    QVERIFY(last.timeMs);
    QTRY_COMPARE_WITH_TIMEOUT(label("label_utc"), timeLabel(*last.timeMs), kLongMs);
    QVERIFY2(std::fabs(degreesOf(label("label_lat")) - last.latitude) <= kTolerance,
             qPrintable(label("label_lat")));
    QVERIFY2(std::fabs(degreesOf(label("label_lon")) - last.longitude) <= kTolerance,
             qPrintable(label("label_lon")));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(viewer, bars(result.last.svStatus)),
                              QString(), kLongMs);
    QCOMPARE(viewer.standardError().count(QStringLiteral("E> ")), 0);
}

QTEST_GUILESS_MAIN(TestCorpusInViewer)
#include "TestCorpusInViewer.moc"
