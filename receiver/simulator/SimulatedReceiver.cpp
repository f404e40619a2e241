// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/simulator/SimulatedReceiver.h"

#include "receiver/simulator/FixGeometry.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

using Kind = tReceiverCommand::Kind;

constexpr double kElevationMaskDeg = 5.0;
constexpr int kFixSatellites = 4;
constexpr int kChannels = 32; // satellites that are tracked at once

struct tSpread
{
    double fromS;
    double toS;
};

// Typical times to first fix under an open sky, by start type.
constexpr tSpread kTypicalTtff[] = {{1.0, 3.0}, {20.0, 30.0}, {28.0, 40.0}, {35.0, 50.0}};

constexpr double kHorizontalNoiseM = 0.9; // for each of east and north
constexpr double kVerticalNoiseM = 1.8;
constexpr double kPositionMemoryS = 20.0; // how long a position error lasts
constexpr double kSignalMemoryS = 8.0;
constexpr double kSignalNoiseDb = 0.9;

// What the receiver says of a value, in steps of so much of one.
constexpr double kDopSteps = 100.0;
constexpr double kAltitudeSteps = 10.0;

double rounded(double value, double steps)
{
    return std::round(value * steps) / steps;
}

unsigned bitOf(Constellation constellation)
{
    switch (constellation) {
    case Constellation::Gps:
        return ConstellationMask::kGps;
    case Constellation::Glonass:
        return ConstellationMask::kGlonass;
    case Constellation::Galileo:
        return ConstellationMask::kGalileo;
    case Constellation::BeiDou:
        return ConstellationMask::kBeiDou;
    case Constellation::Qzss:
        return ConstellationMask::kQzss;
    }
    return 0;
}

QString namesOf(unsigned mask)
{
    const QStringList names = constellationNames(mask);
    return names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", "));
}

// About 29 dB-Hz at the horizon mask, 48 overhead.
double signalStrength(double elevationDeg)
{
    return 27.0 + 21.0 * std::sin(qDegreesToRadians(elevationDeg));
}

// Value of a first-order wander with the given standard deviation and memory, one step on.
double wandered(double value, double deviation, double memoryS, double stepS, RandomSource &random)
{
    const double keep = std::exp(-stepS / memoryS);
    return value * keep + deviation * std::sqrt(1.0 - keep * keep) * random.gaussian();
}

qint64 tenThousandthMinutes(double degrees)
{
    return std::llround(degrees * 60.0 * 10000.0);
}

} // namespace

SimulatedReceiver::SimulatedReceiver(const tSimulationSettings &given)
    : settings(given)
    , random(given.seed)
{
    // As if it had been there before: the viewer may have seen another one a period ago.
    lastEpochS = nowUtc().addMSecs(-std::llround(1000.0 / settings.rateHz)).toSecsSinceEpoch();
    restart(StartType::Cold);
}

std::optional<tEpoch> SimulatedReceiver::nextEpoch()
{
    std::optional<tEpoch> epoch;
    wander();
    if (running && !keepsSilent()) {
        const QVector<tVisible> visible = visibleSatellites();
        assignChannels(visible);
        epoch = report(visible);
        ++epochsSinceStart;
        lastEpochS = nowUtc().toSecsSinceEpoch();
    }
    ++tick;
    return epoch;
}

void SimulatedReceiver::passSilently()
{
    ++tick;
    startedAtS = std::max(startedAtS, nowS() - 1.0 / settings.rateHz);
}

tCommandAnswer SimulatedReceiver::obey(const tReceiverCommand &command)
{
    switch (command.kind) {
    case Kind::Start:
        if (running)
            return {true, QStringLiteral("start: already running")};
        return restartAnswer(StartType::Hot, QStringLiteral("start"));
    case Kind::Stop:
        running = false;
        return {true, QStringLiteral("stop: silent until a start")};
    case Kind::HotStart:
        return restartAnswer(StartType::Hot, QStringLiteral("hot start"));
    case Kind::WarmStart:
        return restartAnswer(StartType::Warm, QStringLiteral("warm start"));
    case Kind::ColdStart:
        return restartAnswer(StartType::Cold, QStringLiteral("cold start"));
    case Kind::FactoryStart:
        return startFromFactory();
    case Kind::SelectConstellations:
        return choose(command.mask);
    case Kind::StoreNvm:
        storedMask = mask;
        return {true, QStringLiteral("stored in the non-volatile memory: constellations %1")
                          .arg(namesOf(mask))};
    }
    return {false, QStringLiteral("not known to the simulated receiver")};
}

tCommandAnswer SimulatedReceiver::restartAnswer(StartType type, const QString &what)
{
    restart(type);
    return {true, QStringLiteral("%1: first fix in about %2 s").arg(what).arg(ttffS, 0, 'f', 1)};
}

// The viewer forgets the fix when it chooses, also the same constellations once more, and waits for
// a new one: without a restart there would never be a time to first fix again.
tCommandAnswer SimulatedReceiver::choose(unsigned constellations)
{
    mask = constellations;
    const QString text = QStringLiteral("constellations: %1; ").arg(namesOf(mask));
    if (!running)
        return {true, text + QStringLiteral("stopped, from the next start on")};
    return restartAnswer(StartType::Hot, text + QStringLiteral("hot start"));
}

tCommandAnswer SimulatedReceiver::startFromFactory()
{
    QString text = QStringLiteral("factory start");
    if (storedMask)
        text += QStringLiteral(", stored constellations %1 cleared").arg(namesOf(*storedMask));
    storedMask.reset();
    mask = ConstellationMask::kDefault;
    return restartAnswer(StartType::Factory, text);
}

void SimulatedReceiver::restart(StartType type)
{
    const auto index = static_cast<size_t>(type);
    // Drawn in any case, so that a given time for one type leaves all other numbers as they are.
    const double typical = random.uniform(kTypicalTtff[index].fromS, kTypicalTtff[index].toS);
    ttffS = settings.ttffS[index].value_or(typical);
    startType = type;
    running = true;
    firstFixDone = false;
    epochsSinceStart = 0;
    ++starts;
    // The period before the next epoch counts, so that an epoch a second gives whole seconds.
    startedAtS = nowS() - 1.0 / settings.rateHz;
    channels.clear();
    planFirst = true;
}

bool SimulatedReceiver::isTimeFor(double atS) const
{
    constexpr double kEpsilonS = 1e-6;
    return nowS() + kEpsilonS >= atS;
}

bool SimulatedReceiver::isFixDue() const
{
    return firstFixDone || isTimeFor(startedAtS + ttffS);
}

// Whether the viewer would not take a fix in this epoch for one from before the start.
bool SimulatedReceiver::isToldFromOld() const
{
    constexpr qint64 kVisibleGapS = 2;
    return epochsSinceStart > 0 || nowUtc().toSecsSinceEpoch() - lastEpochS >= kVisibleGapS;
}

// Only where one period makes the gap that the viewer sees.
bool SimulatedReceiver::keepsSilent() const
{
    constexpr double kMaxRateHz = 1.0;
    return isFixDue() && !isToldFromOld() && settings.rateHz <= kMaxRateHz;
}

double SimulatedReceiver::nowS() const
{
    return static_cast<double>(tick) / settings.rateHz;
}

QDateTime SimulatedReceiver::nowUtc() const
{
    return settings.startTime.toUTC().addMSecs(std::llround(nowS() * 1000.0));
}

QVector<SimulatedReceiver::tVisible> SimulatedReceiver::visibleSatellites() const
{
    const double seconds = Sky::secondsSince2000(settings.startTime) + nowS();
    QVector<tVisible> visible;
    for (const tOrbit &orbit : Sky::orbits()) {
        if ((mask & bitOf(orbit.constellation)) == 0)
            continue;
        tVisible satellite;
        satellite.number = orbit.number;
        satellite.lineOfSight = Sky::lineOfSight(settings.place, Sky::earthFixed(orbit, seconds));
        satellite.direction = Sky::directionOf(satellite.lineOfSight);
        if (satellite.direction.elevationDeg >= kElevationMaskDeg)
            visible.append(satellite);
    }
    return visible;
}

// A satellite keeps its channel from rising to setting; free ones go to the highest.
void SimulatedReceiver::assignChannels(const QVector<tVisible> &visible)
{
    QMap<int, tChannel> kept;
    QVector<tVisible> waiting;
    for (const tVisible &satellite : visible) {
        const auto channel = channels.constFind(satellite.number);
        if (channel != channels.cend())
            kept.insert(satellite.number, *channel);
        else
            waiting.append(satellite);
    }
    channels = kept;
    std::stable_sort(waiting.begin(), waiting.end(), [](const tVisible &a, const tVisible &b) {
        return a.direction.elevationDeg > b.direction.elevationDeg;
    });
    for (int i = 0; i < waiting.size() && channels.size() < kChannels; ++i)
        channels.insert(waiting[i].number, acquired(planFirst, i));
    planFirst = false;
}

// When a satellite is known of, tracked and usable. `first`: found by the start itself, where the
// highest ones (low `rank`) make the first fix and the others follow within seconds.
SimulatedReceiver::tChannel SimulatedReceiver::acquired(bool first, int rank)
{
    constexpr int kMakeTheFix = 6;
    tChannel channel;
    channel.biasDb = random.uniform(-2.5, 2.5);
    const double early = random.uniform();
    const double middle = random.uniform();
    const double late = random.uniform();
    if (!first) {
        channel.shownAtS = nowS();
        channel.trackedAtS = channel.shownAtS + 1.0 + 2.0 * middle;
        channel.usableAtS = channel.trackedAtS + 2.0 + 4.0 * late;
        return channel;
    }
    const bool makesTheFix = rank < kMakeTheFix;
    // After a hot start all are known from before; otherwise they are found one by one.
    const double shown = startType == StartType::Hot
                             ? 0.0
                             : ttffS * (makesTheFix ? 0.4 : 0.9) * (0.05 + 0.95 * early);
    const double tracked = shown + ttffS * (0.1 + 0.2 * middle);
    channel.shownAtS = startedAtS + shown;
    channel.trackedAtS = startedAtS + tracked;
    channel.usableAtS =
        startedAtS + (makesTheFix ? tracked + 0.2 * ttffS : std::max(tracked, ttffS) + 8.0 * late);
    return channel;
}

tEpoch SimulatedReceiver::report(const QVector<tVisible> &visible)
{
    const QDateTime utc = nowUtc();
    tEpoch epoch;
    epoch.timeMs = utc.time().msecsSinceStartOfDay();
    epoch.date = utc.date();
    epoch.activeKnown = true;
    const QVector<tVisible> usable = addSatellites(epoch, visible);
    if (isFixDue() && isToldFromOld())
        addFix(epoch, usable);
    return epoch;
}

// Adds what is known of the satellites by now; those that can be used for a fix.
QVector<SimulatedReceiver::tVisible>
SimulatedReceiver::addSatellites(tEpoch &epoch, const QVector<tVisible> &visible)
{
    QVector<tVisible> usable;
    for (const tVisible &satellite : visible) {
        const auto channel = channels.find(satellite.number);
        if (channel == channels.end() || !isTimeFor(channel->shownAtS))
            continue;
        epoch.inView.append(shown(satellite, *channel));
        if (isTimeFor(channel->usableAtS))
            usable.append(satellite);
    }
    return usable;
}

tSatellite SimulatedReceiver::shown(const tVisible &satellite, tChannel &channel)
{
    channel.noiseDb =
        wandered(channel.noiseDb, kSignalNoiseDb, kSignalMemoryS, 1.0 / settings.rateHz, random);
    tSatellite result;
    result.number = satellite.number;
    result.elevationDeg = static_cast<int>(std::lround(satellite.direction.elevationDeg));
    result.azimuthDeg = static_cast<int>(std::lround(satellite.direction.azimuthDeg)) % 360;
    if (isTimeFor(channel.trackedAtS)) {
        const double strength =
            signalStrength(satellite.direction.elevationDeg) + channel.biasDb + channel.noiseDb;
        result.cn0DbHz = static_cast<int>(std::lround(std::clamp(strength, 10.0, 55.0)));
    }
    return result;
}

// Adds a fix by these satellites, if they make one.
void SimulatedReceiver::addFix(tEpoch &epoch, const QVector<tVisible> &usable)
{
    QVector<int> numbers;
    QVector<tVector> linesOfSight;
    for (const tVisible &satellite : usable) {
        numbers.append(satellite.number);
        linesOfSight.append(satellite.lineOfSight);
    }
    const std::optional<tDilution> dilution = dilutionOf(linesOfSight);
    if (numbers.size() < kFixSatellites || !dilution)
        return;
    firstFixDone = true;
    epoch.used = numbers;
    epoch.pdop = rounded(dilution->pdop, kDopSteps);
    epoch.hdop = rounded(dilution->hdop, kDopSteps);
    epoch.vdop = rounded(dilution->vdop, kDopSteps);
    addPosition(epoch);
}

void SimulatedReceiver::addPosition(tEpoch &epoch)
{
    const tPlace place =
        Sky::displaced(settings.place, eastM * epoch.hdop.value_or(1.0),
                       northM * epoch.hdop.value_or(1.0), upM * epoch.vdop.value_or(1.0));
    epoch.valid = true;
    epoch.quality = 1;
    epoch.mode = 'A';
    epoch.fixMode = 3;
    epoch.satellitesInUse = epoch.used.size();
    epoch.latitude = tenThousandthMinutes(place.latitudeDeg);
    epoch.longitude = tenThousandthMinutes(place.longitudeDeg);
    epoch.altitudeM = rounded(place.altitudeM, kAltitudeSteps);
    epoch.separationM = 0.0; // the simulated earth is the ellipsoid
    epoch.speedKnots = std::fabs(random.gaussian()) * 0.02;
}

void SimulatedReceiver::wander()
{
    const double step = 1.0 / settings.rateHz;
    eastM = wandered(eastM, kHorizontalNoiseM, kPositionMemoryS, step, random);
    northM = wandered(northM, kHorizontalNoiseM, kPositionMemoryS, step, random);
    upM = wandered(upM, kVerticalNoiseM, kPositionMemoryS, step, random);
}
