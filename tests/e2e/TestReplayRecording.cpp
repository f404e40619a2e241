// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/SatellitePage.h"
#include "support/HostdProcess.h"
#include "support/Pages.h"
#include "support/Recordings.h"
#include "support/ViewerProcess.h"

#include <QtTest>

using SatellitePage::Shown;

namespace {

constexpr int kLongMs = 60000;

/// What a recording of GPS sentences leaves on the page, read from the file with no other tool than
/// split().
struct LastSeen
{
    QByteArrayList gga;
    QByteArrayList gsa;
    QVector<Shown> satellites; ///< of the last GSV set, in use where the last GSA says so
};

double degrees(const QByteArray &text)
{
    const int point = static_cast<int>(text.indexOf('.'));
    return text.left(point - 2).toDouble() + text.mid(point - 2).toDouble() / 60;
}

void addGroups(const QByteArrayList &gsv, QVector<Shown> &satellites)
{
    if (gsv.at(2) == "1")
        satellites.clear();
    for (int i = 4; i + 3 < gsv.size(); i += 4)
        satellites << Shown{gsv.at(i).toInt(), gsv.at(i + 1).toInt(), gsv.at(i + 2).toInt(),
                            gsv.at(i + 3).toInt(), false};
}

LastSeen readRecording(const QString &fileName)
{
    LastSeen seen;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return seen;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (!line.contains('*'))
            continue;
        const QByteArrayList fields = line.left(line.indexOf('*')).split(',');
        if (fields.first() == "$GPGGA")
            seen.gga = fields;
        if (fields.first() == "$GPGSA")
            seen.gsa = fields;
        if (fields.first() == "$GPGSV")
            addGroups(fields, seen.satellites);
    }
    for (Shown &satellite : seen.satellites) {
        const QByteArray number = QByteArray::number(satellite.number).rightJustified(2, '0');
        satellite.used = seen.gsa.mid(3, 12).contains(number);
    }
    return seen;
}

} // namespace

class TestReplayRecording : public QObject
{
    Q_OBJECT

private slots:
    void satellitesAndPositionOfARecordingAreShown();
};

void TestReplayRecording::satellitesAndPositionOfARecordingAreShown()
{
    if (Recordings::folder().isEmpty())
        QSKIP(Recordings::kAbsent);
    const QString recording =
        QDir(Recordings::folder()).filePath(QStringLiteral("signalk-gps.log"));
    const LastSeen last = readRecording(recording);
    QVERIFY(last.gga.size() > 9 && last.gsa.size() > 17 && last.satellites.size() > 10);

    ViewerProcess viewer;
    QVERIFY2(viewer.start(), qPrintable(viewer.errorText()));
    const auto utc = [&] {
        return viewer.text(Pages::kSatellite, QStringLiteral("label_utc"));
    };
    HostdProcess hostd(viewer.root());
    QVERIFY(hostd.start(
        {QStringLiteral("replay"), QStringLiteral("--speed"), QStringLiteral("200"), recording}));
    const QString time = QString::number(last.gga.at(1).toDouble(), 'f', 3);
    QTRY_COMPARE_WITH_TIMEOUT(utc(), time, kLongMs);

    const QStringList expected = {
        QString::number(degrees(last.gga.at(2)), 'f', 6) + QStringLiteral(" \u00B0"),
        QString::number(degrees(last.gga.at(4)), 'f', 6) + QStringLiteral(" \u00B0"),
        QString::number(last.gga.at(9).toDouble(), 'f', 2),
        QString::fromLatin1(last.gga.at(6)),
        QStringLiteral("0.0"),
        time,
        QString::number(last.gsa.at(15).toFloat(), 'f', 1),
        QString::number(last.gsa.at(16).toFloat(), 'f', 1),
        QString::number(last.gsa.at(17).toFloat(), 'f', 1),
    };
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(viewer), expected, kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(viewer, last.satellites), QString(), kLongMs);
    QVERIFY(viewer.press(Pages::kSatellite, QStringLiteral("pushButton_viewSwitch")));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::skyFault(viewer, last.satellites), QString(), kLongMs);
    QCOMPARE(viewer.standardError().count(QStringLiteral("E> ")), 0);
}

QTEST_GUILESS_MAIN(TestReplayRecording)
#include "TestReplayRecording.moc"
