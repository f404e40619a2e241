// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/epoch/SatelliteReports.h"

#include "receiver/epoch/SatelliteNumbering.h"

#include <algorithm>
#include <iterator>

namespace {

// Field numbers of the sentences; the address is field 0.
namespace Gsa {
constexpr int kMode = 2;
constexpr int kFirstNumber = 3;
constexpr int kUsualNumbers = 12;
constexpr int kDops = 3; // PDOP, HDOP, VDOP behind the numbers
} // namespace Gsa
namespace Gsv {
constexpr int kMessages = 1;
constexpr int kNumber = 2; // of the message within its set
constexpr int kFirstGroup = 4;
constexpr int kGroupFields = 4;
constexpr int kElevation = 1;
constexpr int kAzimuth = 2;
constexpr int kStrength = 3;
} // namespace Gsv

// Cycles for which the latest sets still count where only GSA comes; receivers that send GSV more
// seldom than GSA do so every fifth second.
constexpr int kMaxCyclesWithoutSets = 60;

// Cycles after which a system that comes again does not come in turns.
constexpr int kLongestTurn = 12;

int satellitesField(const tNmeaSentence &gsa)
{
    // Some receivers have room for more than twelve; the DOPs stand behind them all the same.
    const int beyond = gsa.fields.size() - (Gsa::kFirstNumber + Gsa::kUsualNumbers + Gsa::kDops);
    constexpr int kSystemAndSpare = 2;
    return Gsa::kUsualNumbers + (beyond > kSystemAndSpare ? beyond : 0);
}

QByteArray signalOf(const tNmeaSentence &gsv)
{
    // What is left after the last whole group is a signal identifier.
    const int surplus = (gsv.fields.size() - Gsv::kFirstGroup) % Gsv::kGroupFields;
    return surplus == 1 ? gsv.fields.last() : QByteArray();
}

void merge(tSatellite &known, const tSatellite &more)
{
    known.cn0DbHz = std::max(known.cn0DbHz, more.cn0DbHz);
    if (!known.elevationDeg)
        known.elevationDeg = more.elevationDeg;
    if (!known.azimuthDeg)
        known.azimuthDeg = more.azimuthDeg;
}

bool holds(const QVector<tSatellite> &satellites, int number)
{
    return std::any_of(
        satellites.cbegin(), satellites.cend(),
        [number](const tSatellite &satellite) { return satellite.number == number; });
}

void addMerged(const QVector<tSatellite> &more, QVector<tSatellite> &all)
{
    for (const tSatellite &satellite : more) {
        const auto same =
            std::find_if(all.begin(), all.end(), [&satellite](const tSatellite &other) {
                return other.number == satellite.number;
            });
        if (same == all.end())
            all.append(satellite);
        else
            merge(*same, satellite);
    }
}

// What GSA tells.
void copyActive(const tEpoch &from, tEpoch &to)
{
    to.activeKnown = from.activeKnown;
    to.fixMode = from.fixMode;
    to.used = from.used;
    to.pdop = from.pdop;
    to.hdop = from.hdop;
    to.vdop = from.vdop;
}

// The device's numbers of a GSA's satellites read as one talker's; nothing when one of them is not
// in view.
QVector<int> fitting(const QByteArray &talker, const QVector<int> &numbers,
                     const QVector<tSatellite> &seen)
{
    QVector<int> all;
    for (const int number : numbers) {
        const std::optional<int> device = SatelliteNumbering::deviceNumber(talker, number);
        if (!device || !holds(seen, *device))
            return {};
        all.append(*device);
    }
    return all;
}

// The readings of a GSA under which all its satellites are in view; its talker's own comes first.
QVector<QVector<int>> fittingReadings(const QByteArray &own, const QVector<int> &numbers,
                                      const QVector<tSatellite> &seen)
{
    QVector<QVector<int>> readings;
    for (const QByteArray &talker : {own, QByteArrayLiteral("GL"), QByteArrayLiteral("GA"),
                                     QByteArrayLiteral("GB"), QByteArrayLiteral("QZ")}) {
        const QVector<int> reading = fitting(talker, numbers, seen);
        if (!reading.isEmpty() && !readings.contains(reading))
            readings.append(reading);
    }
    return readings;
}

// Each system has a GSA of its own, and a further one only behind a full one.
bool isTaken(const QVector<int> &reading, const QVector<int> &used)
{
    const auto count = std::count_if(used.cbegin(), used.cend(), [&reading](int number) {
        return SatelliteNumbering::constellationOf(number) ==
               SatelliteNumbering::constellationOf(reading.first());
    });
    return count % Gsa::kUsualNumbers != 0;
}

} // namespace

QByteArray SatelliteReports::begunSet(const tNmeaSentence &gsv)
{
    const bool begins = gsv.type == "GSV" && Nmea::integer(gsv.field(Gsv::kNumber)) == 1;
    return begins ? setOf(gsv) : QByteArray();
}

QByteArray SatelliteReports::setOf(const tNmeaSentence &gsv)
{
    return gsv.talker + signalOf(gsv);
}

void SatelliteReports::complete(const QVector<tNmeaSentence> &sentences, tEpoch &epoch)
{
    QVector<tSet> sets;
    for (const tNmeaSentence &sentence : sentences) {
        if (sentence.type == "GSV")
            addMessage(sentence, sets);
    }
    const bool anyWhole =
        std::any_of(sets.cbegin(), sets.cend(), [](const tSet &set) { return set.isWhole(); });
    noteSets(sets);
    const QVector<tActive> actives = readActive(sentences, epoch);
    cyclesWithoutSets = anyWhole ? 0 : cyclesWithoutSets + (actives.isEmpty() ? 0 : 1);
    const QVector<tSatellite> seen = inView();
    if (!actives.isEmpty()) {
        addUsed(actives, seen, epoch);
        addUsedInTurns(actives, epoch);
        copyActive(epoch, latest);
        latest.valid = epoch.valid;
    }
    isOwed = isOwed || anyWhole;
    // The viewer adds up all sets until the next time, and shows nothing where one comes twice.
    if (epoch.withoutFix) {
        copyActive({}, epoch);
        return;
    }
    if (isOwed || (!actives.isEmpty() && cyclesWithoutSets < kMaxCyclesWithoutSets))
        epoch.inView = seen;
    isOwed = false;
    const bool isStillTrue = latest.activeKnown && (epoch.valid || !latest.valid);
    if (actives.isEmpty() && isStillTrue && !epoch.inView.isEmpty())
        copyActive(latest, epoch);
}

void SatelliteReports::forget()
{
    known.clear();
    latest = {};
    isOwed = false;
}

void SatelliteReports::addMessage(const tNmeaSentence &gsv, QVector<tSet> &sets)
{
    const QByteArray key = setOf(gsv);
    const int number = Nmea::integer(gsv.field(Gsv::kNumber)).value_or(0);
    const auto open = std::find_if(sets.rbegin(), sets.rend(),
                                   [&key](const tSet &set) { return set.key == key; });
    const bool isOpen = open != sets.rend() && !open->isWhole() && !open->broken;
    if (number == 1 || !isOpen) {
        tSet set;
        set.talker = SatelliteNumbering::usualTalker(gsv.talker);
        set.key = key;
        set.messages = Nmea::integer(gsv.field(Gsv::kMessages)).value_or(0);
        set.broken = number != 1;
        // A set that begins anew takes the place of one that was cut off.
        if (open != sets.rend() && !open->isWhole())
            sets.erase(std::next(open).base());
        sets.append(set);
    } else if (number != open->next) {
        open->broken = true;
    }
    tSet &set = number == 1 || !isOpen ? sets.last() : *open;
    if (set.broken)
        return;
    ++set.next;
    addMerged(satellitesOf(gsv, set.talker), set.satellites);
}

QVector<tSatellite> SatelliteReports::satellitesOf(const tNmeaSentence &gsv,
                                                   const QByteArray &talker)
{
    QVector<tSatellite> satellites;
    // Some receivers leave out the last comma where the last C/N0 is missing.
    for (int group = Gsv::kFirstGroup; group + Gsv::kStrength <= gsv.fields.size();
         group += Gsv::kGroupFields) {
        const std::optional<int> given = Nmea::integer(gsv.field(group));
        const std::optional<int> number = given ? numbered(talker, *given) : std::nullopt;
        if (!number)
            continue;
        tSatellite satellite;
        satellite.number = *number;
        satellite.elevationDeg = Nmea::wholePart(gsv.field(group + Gsv::kElevation));
        satellite.azimuthDeg = Nmea::wholePart(gsv.field(group + Gsv::kAzimuth));
        satellite.cn0DbHz =
            std::clamp(Nmea::wholePart(gsv.field(group + Gsv::kStrength)).value_or(0), 0, 99);
        satellites.append(satellite);
    }
    return satellites;
}

// A talker of which a set was cut off keeps its latest whole report.
void SatelliteReports::noteSets(const QVector<tSet> &sets)
{
    QVector<tKnown> now;
    QVector<QByteArray> cutOff;
    for (const tSet &set : sets) {
        if (!set.isWhole())
            cutOff.append(set.talker);
    }
    for (const tSet &set : sets) {
        if (cutOff.contains(set.talker))
            continue;
        auto entry = std::find_if(now.begin(), now.end(), [&set](const tKnown &other) {
            return other.talker == set.talker;
        });
        if (entry == now.end())
            entry = now.insert(now.end(), {set.talker, {}, {}, 0, 0, 0, false});
        addMerged(set.satellites, entry->satellites);
    }
    if (now.isEmpty())
        return;
    ++reports;
    QVector<QByteArray> reported;
    for (const tKnown &entry : qAsConst(now))
        reported.append(entry.talker);
    for (tKnown &entry : now) {
        entry.together = reported;
        entry.last = reports;
        for (const tKnown &old : qAsConst(known))
            entry.carryOn(old);
    }
    QVector<tKnown> missing;
    for (const tKnown &old : qAsConst(known)) {
        if (reported.contains(old.talker))
            continue;
        missing.append(old);
        missing.last().over = old.over || (!cutOff.contains(old.talker) && isOver(old, now));
    }
    known = now + missing;
}

void SatelliteReports::tKnown::carryOn(const tKnown &old)
{
    if (old.talker != talker)
        return;
    previous = old.last;
    oneBefore = old.previous;
}

// The shorter of the two latest, so that one gap makes no longer turn.
qint64 SatelliteReports::tKnown::turn() const
{
    const qint64 latestTurn = previous == 0 ? 0 : last - previous;
    const qint64 turn = oneBefore == 0 ? latestTurn : std::min(latestTurn, previous - oneBefore);
    return turn <= kLongestTurn ? turn : 0;
}

// Whether a talker that is missing from a cycle has ended: its turn is over, or it has none and
// those of its latest cycle go on without it, or another came twice since.
bool SatelliteReports::isOver(const tKnown &missing, const QVector<tKnown> &now) const
{
    const qint64 turn = missing.turn();
    if (turn > 1)
        return reports - missing.last > 2 * turn;
    return std::any_of(now.cbegin(), now.cend(), [&missing](const tKnown &other) {
        return missing.together.contains(other.talker) || other.previous > missing.last;
    });
}

QVector<tSatellite> SatelliteReports::inView() const
{
    QVector<tSatellite> all;
    for (const tKnown &entry : known) {
        if (!entry.over)
            addMerged(entry.satellites, all);
    }
    return all;
}

QVector<SatelliteReports::tActive>
SatelliteReports::readActive(const QVector<tNmeaSentence> &sentences, tEpoch &epoch)
{
    QVector<tActive> actives;
    int plainGps = 0; // of talker GP without a system
    for (const tNmeaSentence &gsa : sentences) {
        if (gsa.type != "GSA")
            continue;
        const int count = satellitesField(gsa);
        const int dops = Gsa::kFirstNumber + count;
        const std::optional<QByteArray> system =
            SatelliteNumbering::talkerOfSystem(gsa.field(dops + Gsa::kDops));
        tActive active;
        active.talker = system.value_or(SatelliteNumbering::usualTalker(gsa.talker));
        const bool isPlainGps = !system && active.talker == "GP";
        active.isCertain = system || (active.talker != "GN" && !isPlainGps);
        plainGps += isPlainGps ? 1 : 0;
        for (int n = Gsa::kFirstNumber; n < dops; ++n) {
            if (const std::optional<int> number = Nmea::integer(gsa.field(n)))
                active.numbers.append(*number);
        }
        epoch.activeKnown = true;
        epoch.fixMode = std::max(
            epoch.fixMode, std::clamp(Nmea::integer(gsa.field(Gsa::kMode)).value_or(1), 1, 3));
        Nmea::replaceIfKnown(epoch.pdop, gsa.field(dops));
        Nmea::replaceIfKnown(epoch.hdop, gsa.field(dops + 1));
        Nmea::replaceIfKnown(epoch.vdop, gsa.field(dops + 2));
        actives.append(active);
    }
    // One is that of GPS; of several each belongs to another system.
    for (tActive &active : actives)
        active.isCertain = active.isCertain || (active.talker == "GP" && plainGps == 1);
    return actives;
}

void SatelliteReports::addUsed(const QVector<tActive> &actives, const QVector<tSatellite> &seen,
                               tEpoch &epoch)
{
    for (const tActive &active : actives) {
        const QVector<int> numbers = numbersOf(active, seen, epoch.used);
        for (const int number : numbers) {
            if (!epoch.used.contains(number))
                epoch.used.append(number);
        }
    }
}

// Systems that are reported in turns have their GSAs in turns too.
void SatelliteReports::addUsedInTurns(const QVector<tActive> &actives, tEpoch &epoch) const
{
    for (const tKnown &entry : known) {
        const bool isTold =
            std::any_of(actives.cbegin(), actives.cend(), [&entry](const tActive &active) {
                return !active.isCertain || active.talker == entry.talker;
            });
        if (entry.last == reports || entry.over || isTold)
            continue;
        for (const int number : latest.used) {
            if (holds(entry.satellites, number) && !epoch.used.contains(number))
                epoch.used.append(number);
        }
    }
}

// Where neither the talker nor a system identifier says whose numbers they are, what is in view
// does, as far as only one system fits.
QVector<int> SatelliteReports::numbersOf(const tActive &active, const QVector<tSatellite> &seen,
                                         const QVector<int> &used)
{
    if (active.isCertain || active.numbers.isEmpty())
        return eachNumberOf(active, {});
    const QVector<QVector<int>> readings = fittingReadings(active.talker, active.numbers, seen);
    if (readings.isEmpty())
        return eachNumberOf(active, seen);
    QVector<QVector<int>> free;
    std::copy_if(readings.cbegin(), readings.cend(), std::back_inserter(free),
                 [&used](const QVector<int> &reading) { return !isTaken(reading, used); });
    const QVector<int> own = fitting(active.talker, active.numbers, seen);
    if (free.size() == 1 && !free.contains(own))
        return free.first();
    if (!own.isEmpty())
        return own;
    return readings.size() == 1 ? readings.first() : eachNumberOf(active, seen);
}

QVector<int> SatelliteReports::eachNumberOf(const tActive &active, const QVector<tSatellite> &seen)
{
    QVector<int> numbers;
    for (const int given : active.numbers) {
        const QVector<QVector<int>> readings = fittingReadings(active.talker, {given}, seen);
        const bool isOther =
            fitting(active.talker, {given}, seen).isEmpty() && readings.size() == 1;
        if (const std::optional<int> number =
                isOther ? readings.first().first() : numbered(active.talker, given))
            numbers.append(*number);
    }
    return numbers;
}

std::optional<int> SatelliteReports::numbered(const QByteArray &talker, int number)
{
    const std::optional<int> device = SatelliteNumbering::deviceNumber(talker, number);
    constexpr int kMaxRemembered = 1000; // noise can make up any number of them
    if (!device && unnumbered.size() < kMaxRemembered)
        unnumbered.insert(talker + QByteArray::number(number));
    return device;
}
