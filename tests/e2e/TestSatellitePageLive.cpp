// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/SatellitePage.h"
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/ViewerProcess.h"

#include <QtTest>

#include <memory>

using Pages::kControl;
using Pages::kSatellite;
using SatellitePage::Shown;

namespace {

constexpr int kLongMs = 60000;
constexpr int kFix = 3; ///< place of the fix value among the labels; it stays when all is cleared

const char *const kPosition = "4807.0380,N,01131.0000,E";
const QByteArray kDops = "1.5,0.9,1.2";

/// GPS and GLONASS, in the fix and not, in directions away from the lines of the sky plot.
const QVector<Shown> kSky = {
    {12, 70, 20, 45, true},  {3, 45, 110, 38, false},  {31, 20, 200, 22, true},
    {65, 50, 290, 41, true}, {72, 15, 340, 30, false}, {80, 38, 66, 33, true},
};

/// What comes before the checksum, of one second of a receiver with a fix.
struct Second
{
    QByteArray time = "123519.000";
    QByteArray position = kPosition;
    QByteArray quality = "1";
    QByteArray altitude = "545.4";
    QByteArray status = "A";
    QVector<Shown> satellites = kSky;
};

QByteArray gsvSets(const QVector<Shown> &satellites)
{
    QVector<NmeaSentences::Satellite> gps;
    QVector<NmeaSentences::Satellite> glonass;
    for (const Shown &sv : satellites)
        (sv.number <= 64 ? gps : glonass).append({sv.number, sv.elevation, sv.azimuth, sv.snr});
    return NmeaSentences::gsvSet("GP", gps) + NmeaSentences::gsvSet("GL", glonass);
}

QByteArray gsas(const QVector<Shown> &satellites)
{
    QByteArrayList used;
    for (const Shown &sv : satellites) {
        if (sv.used)
            used << QByteArray::number(sv.number);
    }
    QByteArray text;
    do {
        QByteArrayList group = used.mid(0, 12);
        used = used.mid(12);
        while (group.size() < 12)
            group << QByteArray();
        text += NmeaSentences::sentence("GNGSA,A,3," + group.join(',') + ',' + kDops);
    } while (!used.isEmpty());
    return text;
}

QByteArray sentences(const Second &second)
{
    return NmeaSentences::sentence("GNGGA," + second.time + ',' + second.position + ',' +
                                   second.quality + ",08,0.9," + second.altitude + ",M,46.9,M,,") +
           gsvSets(second.satellites) + gsas(second.satellites) +
           NmeaSentences::sentence("GNGLL," + second.position + ',' + second.time + ",A,A") +
           NmeaSentences::sentence("GNRMC," + second.time + ',' + second.status + ',' +
                                   second.position + ",0.02,84.40,050321,,,A");
}

/// Labels of a Second with the standard position.
QStringList labels(const QString &utc, const QString &fix = QStringLiteral("1"))
{
    return {QStringLiteral("48.117300 \u00B0"),
            QStringLiteral("11.516667 \u00B0"),
            QStringLiteral("545.40"),
            fix,
            QStringLiteral("0.0"),
            utc,
            QStringLiteral("1.5"),
            QStringLiteral("0.9"),
            QStringLiteral("1.2")};
}

QVector<Shown> unused(QVector<Shown> satellites)
{
    for (Shown &sv : satellites)
        sv.used = false;
    return satellites;
}

} // namespace

class TestSatellitePageLive : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void showsTheNineValues_data();
    void showsTheNineValues();
    void showsZerosWithoutData();
    void drawsTheBars_data();
    void drawsTheBars();
    void viewSwitchShowsTheSkyPlotAndBack_data();
    void viewSwitchShowsTheSkyPlotAndBack();
    void lostFixLeavesNoSatelliteInUse();
    void resetClearsThePage();
    void stopFreezesThePageUntilStart();
    void sentenceCutAcrossTwoWrites();
    void moreThan32SatellitesShowTheFirst32();
    void garbageBetweenSentencesDoesNoHarm();
    void textWithoutASentenceShowsNothing();
    void absurdNumberLeavesTheWindowOnTheScreen();

private:
    bool startViewer(QSize screen = {800, 480});
    bool write(const Second &second) const { return pipe->write(sentences(second)); }
    int traced(const char *text) const
    {
        return viewer->standardError().count(QLatin1String(text));
    }

    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<NmeaPipe> pipe;
};

void TestSatellitePageLive::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(4000)));
    viewer.reset();
    pipe.reset();
}

bool TestSatellitePageLive::startViewer(QSize screen)
{
    viewer = std::make_unique<ViewerProcess>(screen);
    pipe = std::make_unique<NmeaPipe>(viewer->path(QStringLiteral("/tmp/agiin")));
    if (pipe->isOpen() && viewer->start())
        return true;
    qWarning("%s", qPrintable(viewer->errorText()));
    return false;
}

void TestSatellitePageLive::showsTheNineValues_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("a fix") << sentences({}) << labels(QStringLiteral("123519.000"));

    Second southWest;
    southWest.position = "3352.0500,S,07012.6000,W";
    southWest.quality = "2";
    QStringList values = labels(QStringLiteral("123519.000"), QStringLiteral("2"));
    values[0] = QStringLiteral("33.867500 \u00B0");
    values[1] = QStringLiteral("70.210000 \u00B0");
    QTest::newRow("south and west without a sign") << sentences(southWest) << values;

    Second low;
    low.altitude = "-3.456";
    low.time = "000001.250";
    values = labels(QStringLiteral("1.250"));
    values[2] = QStringLiteral("-3.46");
    QTest::newRow("below the sea, just after midnight") << sentences(low) << values;

    QByteArray gns = sentences({});
    gns.replace(0, gns.indexOf('\n') + 1,
                NmeaSentences::sentence("GNGNS,123519.000," + QByteArray(kPosition) +
                                        ",AA,08,0.9,545.4,46.9,,"));
    QTest::newRow("GNS has no number for its fix")
        << gns << labels(QStringLiteral("123519.000"), QStringLiteral("0"));
}

void TestSatellitePageLive::showsTheNineValues()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, expected);
    QVERIFY(startViewer());
    QVERIFY(pipe->write(bytes));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), expected, kLongMs);
}

void TestSatellitePageLive::showsZerosWithoutData()
{
    QVERIFY(startViewer());
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), SatellitePage::zeros(), kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, {}), QString(), kLongMs);
}

void TestSatellitePageLive::drawsTheBars_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::newRow("800x480") << QSize(800, 480);
    QTest::newRow("1280x720") << QSize(1280, 720);
}

void TestSatellitePageLive::drawsTheBars()
{
    QFETCH(QSize, screen);
    QVERIFY(startViewer(screen));
    QVERIFY(write({}));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);

    // Another list, of another length, without signal too, takes its place.
    Second later;
    later.time = "123520.000";
    later.satellites = {{7, 30, 40, 0, false}, {9, 60, 80, 99, true}, {88, 5, 300, 17, false}};
    QVERIFY(write(later));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, later.satellites), QString(),
                              kLongMs);
}

void TestSatellitePageLive::viewSwitchShowsTheSkyPlotAndBack_data()
{
    drawsTheBars_data();
}

void TestSatellitePageLive::viewSwitchShowsTheSkyPlotAndBack()
{
    QFETCH(QSize, screen);
    const QString viewSwitch = QStringLiteral("pushButton_viewSwitch");
    QVERIFY(startViewer(screen));
    QVERIFY(write({}));
    QCOMPARE(viewer->text(kSatellite, viewSwitch), QStringLiteral("Switch To SV"));
    for (int round = 0; round < 2; ++round) {
        QVERIFY(viewer->press(kSatellite, viewSwitch));
        QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kSatellite, viewSwitch),
                                  QStringLiteral("Switch To CN0"), kLongMs);
        QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::skyFault(*viewer, kSky), QString(), kLongMs);
        QVERIFY(viewer->press(kSatellite, viewSwitch));
        QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kSatellite, viewSwitch),
                                  QStringLiteral("Switch To SV"), kLongMs);
        QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);
    }
}

void TestSatellitePageLive::lostFixLeavesNoSatelliteInUse()
{
    QVERIFY(startViewer());
    QVERIFY(write({}));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);

    Second lost;
    lost.time = "123520.000";
    lost.position = ",,,";
    lost.quality = "0";
    lost.altitude = "";
    lost.status = "V";
    lost.satellites = unused(kSky);
    QVERIFY(write(lost));
    QStringList values = labels(QStringLiteral("123520.000"), QStringLiteral("0"));
    values[0] = values[1] = QStringLiteral("0.000000 \u00B0");
    values[2] = QStringLiteral("0.00");
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), values, kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, unused(kSky)), QString(), kLongMs);
}

void TestSatellitePageLive::resetClearsThePage()
{
    QVERIFY(startViewer());
    Second noFixYet;
    noFixYet.time = "123518.000";
    noFixYet.status = "V";
    QVERIFY(pipe->write(sentences(noFixYet) + sentences({})));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);

    QVERIFY(viewer->showPage(Pages::kControlButton, kControl));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, QStringLiteral("label_TTFF")),
                              QStringLiteral("TTFF: 2 seconds"), kLongMs);
    QVERIFY(viewer->press(kControl, QStringLiteral("pushButton_GpsReset")));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, QStringLiteral("label_TTFF")),
                              QStringLiteral("TTFF not avaiable"), kLongMs);
    QVERIFY(viewer->showPage(Pages::kSatelliteButton, kSatellite));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), SatellitePage::zeros(), kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, {}), QString(), kLongMs);

    // What comes after the reset is shown as ever.
    Second after;
    after.time = "123600.000";
    QVERIFY(write(after));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), labels(QStringLiteral("123600.000")),
                              kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);
}

void TestSatellitePageLive::stopFreezesThePageUntilStart()
{
    const QString start = QStringLiteral("pushButton_start");
    const QString state = QStringLiteral("label_state");
    QStringList cleared = labels({});
    for (int i = 0; i < cleared.size(); ++i) {
        if (i != kFix)
            cleared[i].clear();
    }

    QVERIFY(startViewer());
    QVERIFY(write({}));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), labels(QStringLiteral("123519.000")),
                              kLongMs);
    QVERIFY(viewer->showPage(Pages::kControlButton, kControl));
    QVERIFY(viewer->press(kControl, start));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, state), QStringLiteral("Idle"), kLongMs);
    QCOMPARE(SatellitePage::values(*viewer), cleared);

    // New data shows on the control page, but no refresh comes: five idle reads are 2.5 seconds.
    const int refreshes = traced("updateLocation");
    Second later;
    later.time = "123520.000";
    QVERIFY(write(later));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, state), QStringLiteral("Runing..."), kLongMs);
    const int idleReads = traced("read error");
    QTRY_VERIFY_WITH_TIMEOUT(traced("read error") >= idleReads + 5, kLongMs);
    QCOMPARE(traced("updateLocation"), refreshes);
    QCOMPARE(SatellitePage::values(*viewer), cleared);

    // The data has turned the button into Stop again, so Start is the second press.
    QVERIFY(viewer->press(kControl, start));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, state), QStringLiteral("Idle"), kLongMs);
    QVERIFY(viewer->press(kControl, start));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, state), QStringLiteral("Running"), kLongMs);
    later.time = "123530.000";
    QVERIFY(write(later));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), labels(QStringLiteral("123530.000")),
                              kLongMs);
    QVERIFY(viewer->showPage(Pages::kSatelliteButton, kSatellite));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);
}

void TestSatellitePageLive::sentenceCutAcrossTwoWrites()
{
    QVERIFY(startViewer());
    QVERIFY(write({}));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), labels(QStringLiteral("123519.000")),
                              kLongMs);

    // Cut in the middle of the time of the sentence that publishes.
    Second next;
    next.time = "123520.000";
    const QByteArray bytes = sentences(next);
    const int cut = bytes.indexOf("RMC,1235") + 8;
    const int reads = traced("read len");
    QVERIFY(pipe->write(bytes.left(cut)));
    QTRY_VERIFY_WITH_TIMEOUT(traced("read len") > reads, kLongMs);
    QCOMPARE(traced("RMC received"), 1);
    QVERIFY(pipe->write(bytes.mid(cut)));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), labels(QStringLiteral("123520.000")),
                              kLongMs);
    QCOMPARE(traced("RMC received"), 2);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);
}

void TestSatellitePageLive::moreThan32SatellitesShowTheFirst32()
{
    Second crowded;
    crowded.satellites.clear();
    for (int i = 0; i < 40; ++i)
        crowded.satellites.append({1 + i, 10 + i, 9 * i, 15 + i, i % 3 == 0});
    QVERIFY(startViewer());
    QVERIFY(write(crowded));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, crowded.satellites.mid(0, 32)),
                              QString(), kLongMs);
    QCOMPARE(SatellitePage::values(*viewer), labels(QStringLiteral("123519.000")));

    Second after;
    after.time = "123520.000";
    QVERIFY(write(after));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);
}

void TestSatellitePageLive::garbageBetweenSentencesDoesNoHarm()
{
    QByteArray noise;
    for (int i = 0; i < 3000; ++i)
        noise += static_cast<char>((i * 197 + i / 7 * 31) % 256);
    noise.replace('$', '#').replace('\r', '\n');
    const QByteArray longFragment = '$' + QByteArray(2000, 'x');
    const QByteArray broken = "$\r\n$,,,,,\r\n$GPGSV\r\n$GPGSV,1,1\r\n$GPGSA,A,3,\r\n$$$GPGGA,1\r\n"
                              "$GNRMC\r\n$PPLMG,3\r\n$GPGGA,\xc3\xa4\xff,,,,,,,,,\r\n";
    QVERIFY(startViewer());
    QVERIFY(pipe->write(noise + QByteArray(300, '\0') + broken));
    QTRY_COMPARE_WITH_TIMEOUT(traced("read len"), 1, kLongMs);
    // In a read of its own, so that the tail is what it is dropped for.
    QVERIFY(pipe->write(longFragment));
    QTRY_COMPARE_WITH_TIMEOUT(traced("read len"), 2, kLongMs);

    QVERIFY(write({}));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), labels(QStringLiteral("123519.000")),
                              kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);
}

void TestSatellitePageLive::textWithoutASentenceShowsNothing()
{
    QVERIFY(startViewer());
    QVERIFY(pipe->write("the receiver says hello\r\nand nothing else\r\n"));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->text(kControl, QStringLiteral("label_state")),
                              QStringLiteral("Runing..."), kLongMs);
    const int refreshes = traced("updateLocation");
    QTRY_VERIFY_WITH_TIMEOUT(traced("updateLocation") >= refreshes + 2, kLongMs);
    QCOMPARE(SatellitePage::values(*viewer), SatellitePage::zeros());
    QCOMPARE(SatellitePage::barFault(*viewer, {}), QString());
}

void TestSatellitePageLive::absurdNumberLeavesTheWindowOnTheScreen()
{
    QVERIFY(startViewer());
    const QRect before = viewer->rect(Pages::kWindow, {});
    Second absurd;
    absurd.altitude = "1e300";
    QVERIFY(write(absurd));
    QTRY_VERIFY_WITH_TIMEOUT(viewer->text(kSatellite, QStringLiteral("label_alt")).size() > 300,
                             kLongMs);
    QCOMPARE(viewer->rect(Pages::kWindow, {}), before);
    Second later;
    later.time = "123520.000";
    QVERIFY(write(later));
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::values(*viewer), labels(QStringLiteral("123520.000")),
                              kLongMs);
    QCOMPARE(viewer->rect(Pages::kWindow, {}), before);
    QTRY_COMPARE_WITH_TIMEOUT(SatellitePage::barFault(*viewer, kSky), QString(), kLongMs);
}

QTEST_GUILESS_MAIN(TestSatellitePageLive)
#include "TestSatellitePageLive.moc"
