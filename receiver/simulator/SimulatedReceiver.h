// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/ReceiverCommand.h"
#include "receiver/epoch/Epoch.h"
#include "receiver/simulator/RandomSource.h"
#include "receiver/simulator/Sky.h"

#include <QDateTime>
#include <QMap>

#include <array>
#include <optional>

/// What a start of the receiver still knows from before.
enum class StartType { Hot, Warm, Cold, Factory };

/// What a simulation can be given.
struct tSimulationSettings
{
    tPlace place = {48.1173, 11.5167, 545.4};
    double rateHz = 1.0;
    quint64 seed = 1;
    QDateTime startTime; ///< UTC time of the first epoch; invalid: now
    /// Seconds to the first fix by start type; nothing: a typical one, spread by the seed.
    std::array<std::optional<double>, 4> ttffS;
};

/// A receiver that stands still under the simulated sky: acquisition, fix, noise and what commands
/// do to it. Knows simulated time only; the same settings and commands give the same epochs.
///
/// What survives which start: the chosen constellations stay over stop, start, hot, warm and cold
/// start. A factory start clears the non-volatile memory and returns to the default ones. The
/// non-volatile memory lasts as long as this object. Choosing constellations is a hot start, also
/// when they are the same, except that a stopped receiver stays stopped.
///
/// The viewer measures a start by its epochs, the one with the fix counted. It takes a fix in the
/// first one for one from before the start, unless its time is two seconds or more after that of
/// the epoch before. A fix that is due in the first epoch therefore comes after a silent period,
/// and where periods are shorter than a second in the second epoch.
class SimulatedReceiver
{
public:
    /// Powers up with a cold start. `settings.startTime` must be valid.
    explicit SimulatedReceiver(const tSimulationSettings &settings);

    /// Goes on by one period. Nothing while the receiver is stopped or silent.
    std::optional<tEpoch> nextEpoch();

    /// Goes on by one period without a word, as a receiver does while it restarts.
    void passSilently();

    /// Obeys a command.
    tCommandAnswer obey(const tReceiverCommand &command);

    /// Whether the receiver has not been stopped.
    bool isRunning() const { return running; }

    /// How often the receiver has started, the power-up counted.
    int startCount() const { return starts; }

    /// Seconds from the latest start to its first fix, as drawn or given.
    double timeToFirstFixS() const { return ttffS; }

    /// The constellations in use, ConstellationMask bits.
    unsigned constellations() const { return mask; }

    /// The constellations in the non-volatile memory, ConstellationMask bits; nothing when nothing
    /// was stored.
    std::optional<unsigned> storedConstellations() const { return storedMask; }

private:
    // What the receiver does with one satellite; times in simulated seconds since the simulation
    // began.
    struct tChannel
    {
        double trackedAtS = 0.0;
        double usableAtS = 0.0;
        double shownAtS = 0.0;
        double biasDb = 0.0;
        double noiseDb = 0.0;
    };
    struct tVisible
    {
        int number = 0;
        tVector lineOfSight;
        tDirection direction;
    };

    void restart(StartType type);
    tCommandAnswer restartAnswer(StartType type, const QString &what);
    tCommandAnswer choose(unsigned constellations);
    tCommandAnswer startFromFactory();
    bool isTimeFor(double atS) const;
    bool isFixDue() const;
    bool isToldFromOld() const;
    bool keepsSilent() const;
    double nowS() const;
    QDateTime nowUtc() const;
    QVector<tVisible> visibleSatellites() const;
    void assignChannels(const QVector<tVisible> &visible);
    tChannel acquired(bool first, int rank);
    tEpoch report(const QVector<tVisible> &visible);
    QVector<tVisible> addSatellites(tEpoch &epoch, const QVector<tVisible> &visible);
    tSatellite shown(const tVisible &satellite, tChannel &channel);
    void addFix(tEpoch &epoch, const QVector<tVisible> &usable);
    void addPosition(tEpoch &epoch);
    void wander();

    tSimulationSettings settings;
    RandomSource random;
    qint64 tick = 0; // periods since the simulation began
    bool running = false;
    StartType startType = StartType::Cold;
    double startedAtS = 0.0;
    double ttffS = 0.0;
    qint64 epochsSinceStart = 0;
    qint64 lastEpochS = 0; // whole seconds of UTC in the latest epoch
    int starts = 0;
    bool firstFixDone = false;
    unsigned mask = ConstellationMask::kDefault;
    std::optional<unsigned> storedMask;
    QMap<int, tChannel> channels;
    bool planFirst = false; // the next satellites are those that the start itself acquires
    double eastM = 0.0;     // the position error, slowly wandering
    double northM = 0.0;
    double upM = 0.0;
};
