// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/simulator/SimulatedReceiver.h"

#include "gnss/NmeaReader.h"
#include "hostd/Dialect.h"
#include "hostd/DialectChecker.h"
#include "receiver/epoch/SatelliteNumbering.h"

#include <QtTest>

#include <cmath>

class TestSimulatedReceiver : public QObject
{
    Q_OBJECT
private slots:
    void writesTheDialectEverywhere_data();
    void writesTheDialectEverywhere();
    void fixesAfterTheGivenTime_data();
    void fixesAfterTheGivenTime();
    void letsTheViewerMeasureTheGivenTime_data();
    void letsTheViewerMeasureTheGivenTime();
    void spreadsTypicalTimesBySeed_data();
    void spreadsTypicalTimesBySeed();
    void acquiresStepByStep();
    void showsOnlyChosenConstellations();
    void startsAnewWithTheMask();
    void keepsSilentWithANewMaskWhileStopped();
    void isSilentWhileStopped();
    void keepsConstellationsAsDocumented();
    void repeatsItselfBySeed();
    void keepsEveryRateInThousandths_data();
    void keepsEveryRateInThousandths();
    void saysDopsOfItsGeometry();
    void letsNoSatelliteJump();
    void agreesOnConstellationsOfViewAndFix();
};

using Kind = tReceiverCommand::Kind;

namespace {

tSimulationSettings settingsWith(quint64 seed = 1)
{
    tSimulationSettings settings;
    settings.seed = seed;
    settings.startTime = QDateTime(QDate(2025, 6, 1), QTime(12, 0), Qt::UTC);
    return settings;
}

QByteArray bytesOf(const tEpoch &epoch)
{
    QByteArray all;
    for (const QByteArray &sentence : Dialect::sentences(epoch))
        all += sentence;
    return all;
}

// The number of the first epoch with a fix from now on, counted from 1; 0 when none comes.
int epochsToFix(SimulatedReceiver &receiver, int most = 400)
{
    for (int i = 1; i <= most; ++i) {
        const auto epoch = receiver.nextEpoch();
        if (epoch && epoch->valid)
            return i;
    }
    return 0;
}

unsigned bitOf(int number)
{
    switch (*SatelliteNumbering::constellationOf(number)) {
    case Constellation::Gps:
        return 0x01;
    case Constellation::Glonass:
        return 0x02;
    case Constellation::Galileo:
        return 0x04;
    case Constellation::BeiDou:
        return 0x08;
    case Constellation::Qzss:
        return 0x20;
    }
    return 0;
}

} // namespace

void TestSimulatedReceiver::writesTheDialectEverywhere_data()
{
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<QString>("hemispheres");
    QTest::newRow("north pole") << 90.0 << 0.0 << QString();
    QTest::newRow("south pole") << -90.0 << 120.0 << QString();
    QTest::newRow("Sydney") << -33.8568 << 151.2153 << QStringLiteral("SE");
    QTest::newRow("Lima") << -12.05 << -77.04 << QStringLiteral("SW");
    QTest::newRow("New York") << 40.7 << -74.0 << QStringLiteral("NW");
    QTest::newRow("Singapore") << 1.35 << 103.8 << QStringLiteral("NE");
    QTest::newRow("Tromso") << 69.65 << 18.96 << QStringLiteral("NE");
    QTest::newRow("date line") << 52.0 << 180.0 << QString();
    QTest::newRow("just below a degree") << 47.99999999 << 10.99999999 << QStringLiteral("NE");
}

void TestSimulatedReceiver::writesTheDialectEverywhere()
{
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(QString, hemispheres);
    tSimulationSettings settings = settingsWith();
    settings.place = {latitude, longitude, 40.0};
    settings.rateHz = 0.05; // three hours in a few hundred epochs
    SimulatedReceiver receiver(settings);
    receiver.obey({Kind::SelectConstellations, 0x3f});
    DialectChecker checker;
    for (int i = 0; i < 540; ++i)
        checker.read(bytesOf(*receiver.nextEpoch()));
    QCOMPARE(checker.error(), QString());
    QCOMPARE(checker.cycles().size(), 540);
    for (const tReadCycle &cycle : checker.cycles()) {
        QCOMPARE(cycle.valid, cycle.quality == 1);
        QCOMPARE(cycle.valid, !cycle.latitude.isEmpty());
        QCOMPARE(cycle.valid, cycle.used.size() >= 4);
        for (const int number : cycle.used)
            QVERIFY(cycle.inView.contains(number) && cycle.inView[number].strength > 0);
        if (!cycle.valid)
            continue;
        const double readLatitude =
            cycle.latitude.left(2).toDouble() + cycle.latitude.mid(2).toDouble() / 60.0;
        QVERIFY(std::fabs(readLatitude - std::fabs(latitude)) < 0.001);
        if (!hemispheres.isEmpty())
            QCOMPARE(cycle.northSouth + cycle.eastWest, hemispheres);
    }
    QVERIFY(checker.cycles().last().valid);
    QVERIFY(checker.cycles().last().inView.size() >= 20);
}

void TestSimulatedReceiver::fixesAfterTheGivenTime_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("epoch");
    QTest::newRow("hot, after a silent epoch") << static_cast<int>(Kind::HotStart) << 2;
    QTest::newRow("warm") << static_cast<int>(Kind::WarmStart) << 5;
    QTest::newRow("cold") << static_cast<int>(Kind::ColdStart) << 8;
    QTest::newRow("factory") << static_cast<int>(Kind::FactoryStart) << 12;
}

void TestSimulatedReceiver::fixesAfterTheGivenTime()
{
    QFETCH(int, kind);
    QFETCH(int, epoch);
    tSimulationSettings settings = settingsWith();
    settings.ttffS = {1.0, 5.0, 8.0, 12.0};
    SimulatedReceiver receiver(settings);
    QCOMPARE(epochsToFix(receiver), 8); // the power-up is a cold start
    for (int loop = 0; loop < 5; ++loop) {
        QVERIFY(receiver.obey({static_cast<Kind>(kind), 0}).obeyed);
        QCOMPARE(epochsToFix(receiver), epoch);
    }
    receiver.obey({static_cast<Kind>(kind), 0});
    receiver.passSilently(); // a silent epoch of the restart does not count
    QCOMPARE(epochsToFix(receiver), kind == static_cast<int>(Kind::HotStart) ? 1 : epoch);
}

void TestSimulatedReceiver::letsTheViewerMeasureTheGivenTime_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<double>("given");
    QTest::addColumn<int>("measured"); // RMC sentences, by which the viewer counts
    for (const int seconds : {1, 2, 3, 4, 5, 8, 12, 35, 300})
        QTest::addRow("%d s", seconds) << 1.0 << static_cast<double>(seconds) << seconds;
    QTest::newRow("below a second") << 1.0 << 0.001 << 1;
    QTest::newRow("up to the next epoch") << 1.0 << 4.2 << 5;
    QTest::newRow("2 s at 0.5 Hz") << 0.5 << 2.0 << 1;
    QTest::newRow("4 s at 0.5 Hz") << 0.5 << 4.0 << 2;
    QTest::newRow("a period at 0.7 Hz") << 0.7 << 1.0 << 1;
    QTest::newRow("1 s at 10 Hz") << 10.0 << 1.0 << 10;
    QTest::newRow("two periods at 10 Hz") << 10.0 << 0.2 << 2;
    // So often, a period of silence is no gap that the viewer sees.
    QTest::newRow("a period at 10 Hz") << 10.0 << 0.1 << 2;
}

// Every start by the viewer's own reading, which forgets what was before when it has commanded.
void TestSimulatedReceiver::letsTheViewerMeasureTheGivenTime()
{
    QFETCH(double, rate);
    QFETCH(double, given);
    QFETCH(int, measured);
    tSimulationSettings settings = settingsWith();
    settings.rateHz = rate;
    settings.ttffS = {given, given, given, given};
    SimulatedReceiver receiver(settings);
    GnssInfo *const model = GnssInfo::instance();
    NmeaReader reader;
    const auto goOn = [&receiver, &reader] {
        if (const auto epoch = receiver.nextEpoch()) {
            const QByteArray bytes = bytesOf(*epoch);
            reader.feed({bytes.constData(), static_cast<size_t>(bytes.size())});
        }
    };
    for (int loop = 0; loop < 3; ++loop) {
        for (const Kind kind : {Kind::HotStart, Kind::WarmStart, Kind::ColdStart,
                                Kind::FactoryStart, Kind::SelectConstellations}) {
            for (int silent = 0; silent < 2; ++silent) {
                QVERIFY(receiver.obey({kind, 0x0f}).obeyed);
                reader.clearBuf();
                model->clearGnssInfo();
                if (silent == 1)
                    receiver.passSilently();
                for (int i = 0; i < 4 * measured + 8 && !model->isTtffSet(); ++i)
                    goOn();
                QCOMPARE(static_cast<int>(model->getTtff()), measured);
                for (int i = 0; i < 3; ++i)
                    goOn();
            }
        }
    }
}

void TestSimulatedReceiver::spreadsTypicalTimesBySeed_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<double>("least");
    QTest::addColumn<double>("most");
    QTest::newRow("hot") << static_cast<int>(Kind::HotStart) << 1.0 << 3.0;
    QTest::newRow("warm") << static_cast<int>(Kind::WarmStart) << 20.0 << 30.0;
    QTest::newRow("cold") << static_cast<int>(Kind::ColdStart) << 28.0 << 40.0;
    QTest::newRow("factory") << static_cast<int>(Kind::FactoryStart) << 35.0 << 50.0;
}

void TestSimulatedReceiver::spreadsTypicalTimesBySeed()
{
    QFETCH(int, kind);
    QFETCH(double, least);
    QFETCH(double, most);
    double lowest = 1e9;
    double highest = 0.0;
    for (quint64 seed = 0; seed < 40; ++seed) {
        SimulatedReceiver receiver(settingsWith(seed));
        receiver.obey({static_cast<Kind>(kind), 0});
        const double drawn = receiver.timeToFirstFixS();
        QVERIFY(drawn >= least && drawn <= most);
        lowest = std::min(lowest, drawn);
        highest = std::max(highest, drawn);
        const int epochs = epochsToFix(receiver);
        QVERIFY(epochs >= std::max(2.0, drawn) && epochs <= std::max(2.0, std::ceil(drawn)));
    }
    QVERIFY(highest - lowest > 0.6 * (most - least));
}

void TestSimulatedReceiver::acquiresStepByStep()
{
    SimulatedReceiver receiver(settingsWith(3));
    QMap<int, int> stage; // by satellite: 1 known, 2 tracked, 3 in use
    QSet<int> knownFirst;
    QVector<int> knownCounts;
    for (int i = 0; i < 60; ++i) {
        const tEpoch epoch = *receiver.nextEpoch();
        knownCounts.append(epoch.inView.size());
        for (const tSatellite &satellite : epoch.inView) {
            const int now = epoch.used.contains(satellite.number) ? 3
                            : satellite.cn0DbHz > 0               ? 2
                                                                  : 1;
            if (!stage.contains(satellite.number) && now == 1)
                knownFirst.insert(satellite.number);
            QVERIFY(now >= stage.value(satellite.number));
            stage[satellite.number] = now;
        }
    }
    QVERIFY(knownCounts.first() < 5);
    QVERIFY(knownCounts.last() > 20);
    QVERIFY(knownFirst.size() > 20);
    QVERIFY(std::count(stage.cbegin(), stage.cend(), 3) > 20);
}

void TestSimulatedReceiver::showsOnlyChosenConstellations()
{
    tSimulationSettings settings = settingsWith();
    settings.place = {35.0, 139.0, 10.0}; // where every constellation is in view
    settings.ttffS[0] = 1.0;
    for (unsigned mask = 0; mask < 64; ++mask) {
        SimulatedReceiver receiver(settings);
        QVERIFY(receiver.obey({Kind::SelectConstellations, mask}).obeyed);
        QCOMPARE(receiver.constellations(), mask);
        receiver.obey({Kind::HotStart, 0});
        unsigned seen = 0;
        tEpoch epoch;
        for (int i = 0; i < 30; ++i) {
            epoch = receiver.nextEpoch().value_or(tEpoch());
            for (const tSatellite &satellite : epoch.inView)
                seen |= bitOf(satellite.number);
        }
        QCOMPARE(seen, mask & ~0x10U);
        // Any of the four whole constellations gives a fix; the few of QZSS need not.
        if ((mask & 0x0f) != 0)
            QVERIFY2(epoch.valid, qPrintable(QString::number(mask, 16)));
        if ((mask & 0x2f) == 0) {
            QVERIFY(!epoch.valid);
            QVERIFY(epoch.inView.isEmpty());
        }
    }
}

void TestSimulatedReceiver::startsAnewWithTheMask()
{
    tSimulationSettings settings = settingsWith();
    settings.ttffS = {4.0, 20.0, 3.0, 30.0};
    SimulatedReceiver receiver(settings);
    QCOMPARE(epochsToFix(receiver), 3);
    // The viewer forgets the fix when it sets the constellations, also the same as before.
    for (const unsigned mask : {0x01U, 0x01U, 0x0fU}) {
        const int starts = receiver.startCount();
        const tCommandAnswer answer = receiver.obey({Kind::SelectConstellations, mask});
        QVERIFY(answer.obeyed);
        QVERIFY2(answer.text.contains(QStringLiteral("hot start")), qPrintable(answer.text));
        QCOMPARE(receiver.startCount(), starts + 1);
        QCOMPARE(epochsToFix(receiver), 4); // the time of a hot start
    }
    receiver.obey({Kind::SelectConstellations, 0});
    QVERIFY(!receiver.nextEpoch()->valid);
    QVERIFY(receiver.nextEpoch()->inView.isEmpty());
}

void TestSimulatedReceiver::keepsSilentWithANewMaskWhileStopped()
{
    SimulatedReceiver receiver(settingsWith());
    receiver.obey({Kind::Stop, 0});
    QVERIFY(receiver.obey({Kind::SelectConstellations, 0x01}).obeyed);
    QVERIFY(!receiver.isRunning());
    QVERIFY(!receiver.nextEpoch());
    receiver.obey({Kind::Start, 0});
    QVERIFY(epochsToFix(receiver) > 0);
    const tEpoch epoch = *receiver.nextEpoch();
    for (const tSatellite &satellite : epoch.inView)
        QCOMPARE(bitOf(satellite.number), 0x01U);
}

void TestSimulatedReceiver::isSilentWhileStopped()
{
    tSimulationSettings settings = settingsWith();
    settings.ttffS = {2.0, 5.0, 3.0, 12.0};
    SimulatedReceiver receiver(settings);
    QCOMPARE(epochsToFix(receiver), 3);
    receiver.obey({Kind::Stop, 0});
    QVERIFY(!receiver.isRunning());
    for (int i = 0; i < 10; ++i)
        QVERIFY(!receiver.nextEpoch());
    receiver.obey({Kind::Start, 0});
    const tEpoch first = *receiver.nextEpoch();
    QVERIFY(!first.valid);
    QCOMPARE(*first.timeMs, 12 * 3600000 + 13 * 1000); // time went on meanwhile
    QVERIFY(receiver.nextEpoch()->valid);              // a hot start
    const int starts = receiver.startCount();
    QVERIFY(receiver.obey({Kind::Start, 0}).obeyed); // changes nothing now
    QCOMPARE(receiver.startCount(), starts);
    QVERIFY(receiver.nextEpoch()->valid);
    receiver.obey({Kind::Stop, 0});
    receiver.obey({Kind::WarmStart, 0}); // a reset starts it as well
    QCOMPARE(epochsToFix(receiver), 5);
}

void TestSimulatedReceiver::keepsConstellationsAsDocumented()
{
    SimulatedReceiver receiver(settingsWith());
    QCOMPARE(receiver.constellations(), 0x0fU);
    receiver.obey({Kind::SelectConstellations, 0x03});
    for (const Kind kind :
         {Kind::HotStart, Kind::WarmStart, Kind::ColdStart, Kind::Stop, Kind::Start}) {
        receiver.obey({kind, 0});
        QCOMPARE(receiver.constellations(), 0x03U);
    }
    receiver.obey({Kind::FactoryStart, 0});
    QCOMPARE(receiver.constellations(), 0x0fU);
    receiver.obey({Kind::SelectConstellations, 0x05});
    QVERIFY(receiver.obey({Kind::StoreNvm, 0}).text.contains(QStringLiteral("GPS, Galileo")));
    receiver.obey({Kind::ColdStart, 0});
    QVERIFY(receiver.storedConstellations());
    QCOMPARE(*receiver.storedConstellations(), 0x05U);
    // A factory start forgets what was stored as well.
    const tCommandAnswer answer = receiver.obey({Kind::FactoryStart, 0});
    QVERIFY2(answer.text.contains(QStringLiteral("GPS, Galileo")), qPrintable(answer.text));
    QCOMPARE(receiver.constellations(), 0x0fU);
    QVERIFY(!receiver.storedConstellations());
}

void TestSimulatedReceiver::repeatsItselfBySeed()
{
    const auto run = [](quint64 seed) {
        SimulatedReceiver receiver(settingsWith(seed));
        QByteArray all;
        for (int i = 0; i < 200; ++i) {
            if (i == 100)
                receiver.obey({Kind::WarmStart, 0});
            all += bytesOf(*receiver.nextEpoch());
        }
        return all;
    };
    QCOMPARE(run(7), run(7));
    QVERIFY(run(7) != run(8));
}

void TestSimulatedReceiver::keepsEveryRateInThousandths_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QStringList>("times");
    QTest::newRow("1 Hz") << 1.0 << QStringList{"235959.000", "000000.000", "000001.000"};
    QTest::newRow("10 Hz") << 10.0 << QStringList{"235959.000", "235959.100", "235959.200"};
    QTest::newRow("3 Hz") << 3.0 << QStringList{"235959.000", "235959.333", "235959.667"};
    QTest::newRow("0.5 Hz") << 0.5 << QStringList{"235959.000", "000001.000", "000003.000"};
    QTest::newRow("100 Hz") << 100.0 << QStringList{"235959.000", "235959.010", "235959.020"};
}

void TestSimulatedReceiver::keepsEveryRateInThousandths()
{
    QFETCH(double, rate);
    QFETCH(QStringList, times);
    tSimulationSettings settings = settingsWith();
    settings.rateHz = rate;
    settings.startTime = QDateTime(QDate(2025, 12, 31), QTime(23, 59, 59), Qt::UTC);
    SimulatedReceiver receiver(settings);
    for (const QString &time : qAsConst(times)) {
        const tEpoch epoch = *receiver.nextEpoch();
        const QByteArray rmc = Dialect::sentences(epoch).last();
        QCOMPARE(QString::fromLatin1(rmc.split(',').at(1)), time);
        QCOMPARE(rmc.split(',').at(9), time.startsWith(QLatin1String("23")) ? QByteArray("311225")
                                                                            : QByteArray("010126"));
    }
}

void TestSimulatedReceiver::saysDopsOfItsGeometry()
{
    tSimulationSettings settings = settingsWith();
    settings.ttffS[2] = 3.0;
    SimulatedReceiver receiver(settings);
    epochsToFix(receiver);
    double few = 0.0;
    tEpoch epoch = *receiver.nextEpoch();
    few = *epoch.pdop;
    const int usedFirst = epoch.used.size();
    for (int i = 0; i < 30; ++i)
        epoch = *receiver.nextEpoch();
    QVERIFY(epoch.used.size() > usedFirst);
    QVERIFY(*epoch.pdop < few);
    QVERIFY(*epoch.pdop > 0.5 && *epoch.pdop < 2.5);
    QVERIFY(std::fabs(std::hypot(*epoch.hdop, *epoch.vdop) - *epoch.pdop) < 0.015);
}

void TestSimulatedReceiver::letsNoSatelliteJump()
{
    SimulatedReceiver receiver(settingsWith());
    QMap<int, tSatellite> last;
    for (int i = 0; i < 1800; ++i) {
        QMap<int, tSatellite> now;
        const tEpoch epoch = *receiver.nextEpoch();
        for (const tSatellite &satellite : epoch.inView) {
            now[satellite.number] = satellite;
            if (!last.contains(satellite.number))
                continue;
            const tSatellite before = last[satellite.number];
            QVERIFY(std::abs(*satellite.elevationDeg - *before.elevationDeg) <= 1);
            // Near the zenith the azimuth turns fast without the satellite moving fast.
            const double turn = std::remainder(*satellite.azimuthDeg - *before.azimuthDeg, 360.0) *
                                std::cos(*satellite.elevationDeg * M_PI / 180.0);
            QVERIFY(std::fabs(turn) <= 1.0);
            if (before.cn0DbHz > 0)
                QVERIFY(satellite.cn0DbHz > 0 && std::abs(satellite.cn0DbHz - before.cn0DbHz) <= 5);
        }
        // None is lost except by setting.
        for (auto it = last.cbegin(); it != last.cend(); ++it)
            QVERIFY(now.contains(it.key()) || *it->elevationDeg <= 5);
        last = now;
    }
}

// The viewer has the memory stored once both lists name the same constellations.
void TestSimulatedReceiver::agreesOnConstellationsOfViewAndFix()
{
    for (quint64 seed = 0; seed < 10; ++seed) {
        SimulatedReceiver receiver(settingsWith(seed));
        for (int i = epochsToFix(receiver); i < 70; ++i)
            receiver.nextEpoch();
        const tEpoch epoch = *receiver.nextEpoch();
        QSet<unsigned> viewed;
        QSet<unsigned> used;
        for (const tSatellite &satellite : epoch.inView)
            viewed.insert(bitOf(satellite.number));
        for (const int number : epoch.used)
            used.insert(bitOf(number));
        QCOMPARE(viewed, used);
        QCOMPARE(viewed.size(), 4);
    }
}

QTEST_GUILESS_MAIN(TestSimulatedReceiver)
#include "TestSimulatedReceiver.moc"
