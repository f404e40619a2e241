// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/EpochBuilder.h"

#include "hostd/Dialect.h"

#include <algorithm>

namespace {

// Field numbers of the sentences; the address is field 0.
namespace Gga {
constexpr int kTime = 1;
constexpr int kPosition = 2;
constexpr int kQuality = 6;
constexpr int kSatellites = 7;
constexpr int kHdop = 8;
constexpr int kAltitude = 9;
constexpr int kSeparation = 11;
} // namespace Gga
namespace Gns {
constexpr int kTime = 1;
constexpr int kPosition = 2;
constexpr int kModes = 6;
constexpr int kSatellites = 7;
constexpr int kHdop = 8;
constexpr int kAltitude = 9;
constexpr int kSeparation = 10;
} // namespace Gns
namespace Gll {
constexpr int kPosition = 1;
constexpr int kTime = 5;
constexpr int kStatus = 6;
constexpr int kMode = 7;
} // namespace Gll
namespace Rmc {
constexpr int kTime = 1;
constexpr int kStatus = 2;
constexpr int kPosition = 3;
constexpr int kSpeed = 7;
constexpr int kCourse = 8;
constexpr int kDate = 9;
constexpr int kMode = 12;
} // namespace Rmc
namespace Gsa {
constexpr int kMode = 2;
constexpr int kFirstNumber = 3;
constexpr int kLastNumber = 14;
constexpr int kPdop = 15;
constexpr int kHdop = 16;
constexpr int kVdop = 17;
constexpr int kSystem = 18;
} // namespace Gsa
namespace Gsv {
constexpr int kNumber = 2; // of the message within its set
constexpr int kFirstGroup = 4;
constexpr int kGroupFields = 4;
constexpr int kElevation = 1;
constexpr int kAzimuth = 2;
constexpr int kStrength = 3;
} // namespace Gsv

// Numbers of a talker's sentences and what brings them into the device's numbering.
struct tNumbering
{
    const char *talker;
    int first;
    int last;
    int offset;
};

constexpr tNumbering kNumberings[] = {
    {"GP", 1, 88, 0},      // GPS, SBAS, and receivers that send GLONASS under the same talker
    {"GP", 120, 151, -87}, // SBAS by its PRN
    {"GP", 193, 199, 0},   {"GP", 201, 237, -80},  {"GP", 301, 336, 0},    {"GL", 65, 88, 0},
    {"GL", 1, 24, 64},     {"GA", 1, 36, 300},     {"GA", 301, 336, 0},    {"GB", 1, 37, 120},
    {"GB", 121, 157, 0},   {"GB", 201, 237, -80},  {"GB", 401, 437, -280}, {"QZ", 193, 199, 0},
    {"QZ", 1, 7, 192},     {"GN", 401, 437, -280}, {"GN", 1, 88, 0},       {"GN", 121, 157, 0},
    {"GN", 193, 199, 0},   {"GN", 201, 237, -80},  {"GN", 301, 336, 0},
};

// Different letters for the same system.
QByteArray usualTalker(const QByteArray &talker)
{
    if (talker == "BD" || talker == "PQ")
        return QByteArrayLiteral("GB");
    if (talker == "GQ")
        return QByteArrayLiteral("QZ");
    return talker;
}

// Talker of a system identifier, as GSA sentences of talker GN carry it.
QByteArray talkerOfSystem(const QByteArray &system)
{
    static const QList<QByteArray> talkers = {"GP", "GL", "GA", "GB", "QZ", "GI"};
    return talkers.value(Nmea::integer(system).value_or(0) - 1, QByteArrayLiteral("GN"));
}

int qualityOfMode(char mode)
{
    switch (mode) {
    case 'A':
        return 1;
    case 'D':
        return 2;
    case 'P':
        return 3;
    case 'R':
        return 4;
    case 'F':
        return 5;
    case 'E':
        return 6;
    case 'M':
        return 7;
    case 'S':
        return 8;
    default:
        return 0;
    }
}

char modeOfQuality(int quality)
{
    constexpr char kModes[] = "NADPRFEMS";
    return quality >= 0 && quality < static_cast<int>(sizeof(kModes)) - 1 ? kModes[quality] : 'A';
}

// The letters of GNS, one for each system; a receiver that gives none has no fix.
QByteArray modesOf(const QByteArray &text)
{
    constexpr int kSystems = 6;
    const QByteArray modes = text.left(kSystems);
    const bool letters = std::all_of(modes.cbegin(), modes.cend(),
                                     [](char mode) { return mode >= 'A' && mode <= 'Z'; });
    return letters && !modes.isEmpty() ? modes : QByteArrayLiteral("N");
}

QDate dateOf(const QByteArray &text)
{
    constexpr int kCentury = 2000; // only the last two digits travel, in and out
    if (text.size() != 6)
        return {};
    return {kCentury + text.mid(4, 2).toInt(), text.mid(2, 2).toInt(), text.left(2).toInt()};
}

void merge(tSatellite &known, const tSatellite &more)
{
    known.cn0DbHz = std::max(known.cn0DbHz, more.cn0DbHz);
    if (!known.elevationDeg)
        known.elevationDeg = more.elevationDeg;
    if (!known.azimuthDeg)
        known.azimuthDeg = more.azimuthDeg;
}

// Whether the viewer takes a sentence for one of those that are written anew: it looks at three
// letters only.
bool looksOrdinary(const QByteArray &text)
{
    constexpr int kTalkerEnd = 3;
    static const QList<QByteArray> types = {"GGA", "GNS", "GSV", "GSA", "GLL", "RMC"};
    return types.contains(text.mid(kTalkerEnd, 3));
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

// The mode letter of GLL and RMC, which older receivers do not send.
char modeOf(const QByteArray &text)
{
    return text.isEmpty() ? '\0' : text[0];
}

void replaceIfKnown(std::optional<double> &value, const QByteArray &text)
{
    if (const std::optional<double> number = Nmea::number(text))
        value = number;
}

} // namespace

std::optional<tEpoch> EpochBuilder::add(const tNmeaSentence &sentence)
{
    const std::optional<tEpoch> completed = addSentence(sentence);
    // An epoch has just been completed or there are too many sentences, never both.
    return sentences >= kMostSentences ? complete() : completed;
}

std::optional<tEpoch> EpochBuilder::addSentence(const tNmeaSentence &sentence)
{
    static constexpr tTimed kTimed[] = {
        {"GGA", SeenGga, Gga::kTime, &EpochBuilder::addGga},
        {"GNS", SeenGns, Gns::kTime, &EpochBuilder::addGns},
        {"GLL", SeenGll, Gll::kTime, &EpochBuilder::addGll},
        {"RMC", SeenRmc, Rmc::kTime, &EpochBuilder::addRmc},
    };
    for (const tTimed &entry : kTimed) {
        if (sentence.type == entry.type)
            return addTimed(sentence, entry);
    }
    std::optional<tEpoch> completed;
    if (sentence.type == "GSA") {
        addGsa(sentence);
    } else if (sentence.type == "GSV") {
        completed = beginSet(sentence);
        addGsv(sentence);
    } else {
        return addOther(sentence);
    }
    ++sentences;
    return completed;
}

std::optional<tEpoch> EpochBuilder::addTimed(const tNmeaSentence &sentence, const tTimed &timedType)
{
    const std::optional<int> time = Nmea::timeMs(sentence.field(timedType.timeField));
    std::optional<tEpoch> completed;
    if (isLate(timedType.flag, time)) {
        noteLate(sentence);
        return completed;
    }
    if (beginsNew(timedType.flag, time, sentence.field(0)))
        completed = complete();
    if (time)
        epoch.timeMs = time;
    (this->*timedType.add)(sentence);
    seen |= timedType.flag;
    timed.insert(sentence.field(0));
    ++sentences;
    return completed;
}

std::optional<tEpoch> EpochBuilder::takeRest()
{
    std::optional<tEpoch> rest = complete();
    seenBefore = 0;
    before.reset();
    latest = {};
    return rest;
}

std::optional<tEpoch> EpochBuilder::pause()
{
    return complete();
}

// Another time, or a sentence that the open epoch already has: where a time is missing as during a
// cold start, and where it stands still. One of another talker is the same cycle again.
bool EpochBuilder::beginsNew(unsigned type, const std::optional<int> &time,
                             const QByteArray &address) const
{
    if (seen == 0)
        return false;
    if (time && epoch.timeMs)
        return *time != *epoch.timeMs || timed.contains(address);
    return (seen & type) != 0;
}

// A part of the epoch before, which a pause has ended too early. An epoch of its own would be one
// too many for the viewer, who counts them.
bool EpochBuilder::isLate(unsigned type, const std::optional<int> &time) const
{
    return seen == 0 && time && time == before && (seenBefore & type) == 0;
}

// Only its date is of use to the epochs that follow.
void EpochBuilder::noteLate(const tNmeaSentence &sentence)
{
    ++leftOut;
    if (sentence.type == "RMC")
        latest.date = dateOf(sentence.field(Rmc::kDate));
}

// Ends the epoch where a set comes for the second time and nothing with a time separates the two.
// Elsewhere it may be a second signal of a receiver that does not number them.
std::optional<tEpoch> EpochBuilder::beginSet(const tNmeaSentence &sentence)
{
    std::optional<tEpoch> completed;
    if (sentence.field(Gsv::kNumber) != "1")
        return completed;
    const int surplus = (sentence.fields.size() - Gsv::kFirstGroup) % Gsv::kGroupFields;
    const QByteArray set = sentence.talker + (surplus == 1 ? sentence.fields.last() : QByteArray());
    if (seen == 0 && sets.contains(set))
        completed = complete();
    sets.insert(set);
    return completed;
}

std::optional<tEpoch> EpochBuilder::addOther(const tNmeaSentence &sentence)
{
    if (looksOrdinary(sentence.text)) {
        ++leftOut;
        return std::nullopt;
    }
    const QByteArray whole = sentence.text.contains('*') ? sentence.text + "\r\n"
                                                         : Dialect::sentence(sentence.text.mid(1));
    std::optional<tEpoch> surplus;
    if (otherBytes > 0 && otherBytes + whole.size() > kMostOtherBytes) {
        surplus.emplace();
        surplus->withoutFix = true;
        surplus->others.swap(epoch.others);
        sentences -= surplus->others.size();
        otherBytes = 0;
    }
    epoch.others.append(whole);
    otherBytes += whole.size();
    ++sentences;
    return surplus;
}

std::optional<tEpoch> EpochBuilder::complete()
{
    if (sentences == 0)
        return std::nullopt;
    // A GLL alone is what is left of a cycle that was cut off, unless it is the same all the time.
    epoch.withoutFix = seen == 0 || (seen == SeenGll && seenBefore != SeenGll);
    if (!epoch.withoutFix)
        completeFix();
    completeActive();
    if (seen != 0) {
        seenBefore = seen;
        before = epoch.timeMs;
    }
    std::optional<tEpoch> completed;
    if (!epoch.withoutFix || epoch.activeKnown || !epoch.inView.isEmpty() ||
        !epoch.others.isEmpty())
        completed = epoch;
    forgetOpen();
    return completed;
}

void EpochBuilder::forgetOpen()
{
    epoch = {};
    seen = 0;
    timed.clear();
    sets.clear();
    sentences = 0;
    otherBytes = 0;
}

void EpochBuilder::completeFix()
{
    if ((seen & SeenRmc) == 0) {
        // GLL has said whether the fix is valid, otherwise the quality tells.
        epoch.valid = (seen & SeenGll) != 0 ? epoch.valid : epoch.quality != 0;
        epoch.date = latest.date;
    }
    if (epoch.mode == '\0')
        epoch.mode = epoch.valid ? modeOfQuality(epoch.quality) : 'N';
    if ((seen & (SeenGga | SeenGns)) == 0) {
        epoch.quality = epoch.valid ? std::max(qualityOfMode(epoch.mode), 1) : 0;
        if (epoch.valid) {
            epoch.altitudeM = latest.altitudeM;
            epoch.separationM = latest.separationM;
            epoch.satellitesInUse = latest.satellitesInUse;
        }
    }
    if (epoch.valid && epoch.mode == 'N')
        epoch.mode = modeOfQuality(std::max(epoch.quality, 1));
    latest.date = epoch.date;
    latest.altitudeM = epoch.altitudeM;
    latest.separationM = epoch.separationM;
    latest.satellitesInUse = epoch.satellitesInUse;
}

void EpochBuilder::completeActive()
{
    if (epoch.activeKnown)
        copyActive(epoch, latest);
    else if (latest.activeKnown && !epoch.inView.isEmpty())
        copyActive(latest, epoch);
}

void EpochBuilder::addPosition(const tNmeaSentence &sentence, int firstField, bool preferred)
{
    const std::optional<qint64> latitude =
        Nmea::angle(sentence.field(firstField), sentence.field(firstField + 1), 90);
    const std::optional<qint64> longitude =
        Nmea::angle(sentence.field(firstField + 2), sentence.field(firstField + 3), 180);
    if (!latitude || !longitude || (epoch.latitude && !preferred))
        return;
    epoch.latitude = latitude;
    epoch.longitude = longitude;
}

void EpochBuilder::addGga(const tNmeaSentence &sentence)
{
    addPosition(sentence, Gga::kPosition, true);
    epoch.quality = std::clamp(Nmea::integer(sentence.field(Gga::kQuality)).value_or(0), 0, 9);
    // Some receivers count no satellites here when they also send GNS.
    if (const auto count = Nmea::integer(sentence.field(Gga::kSatellites));
        count && (*count > 0 || !epoch.satellitesInUse))
        epoch.satellitesInUse = std::clamp(*count, 0, 99);
    replaceIfKnown(epoch.ggaHdop, sentence.field(Gga::kHdop));
    replaceIfKnown(epoch.altitudeM, sentence.field(Gga::kAltitude));
    replaceIfKnown(epoch.separationM, sentence.field(Gga::kSeparation));
}

void EpochBuilder::addGns(const tNmeaSentence &sentence)
{
    addPosition(sentence, Gns::kPosition, (seen & SeenGga) == 0);
    epoch.gnsModes = modesOf(sentence.field(Gns::kModes));
    if (const auto count = Nmea::integer(sentence.field(Gns::kSatellites));
        count && epoch.satellitesInUse.value_or(0) == 0)
        epoch.satellitesInUse = std::clamp(*count, 0, 99);
    if ((seen & SeenGga) != 0)
        return;
    const QByteArray modes = sentence.field(Gns::kModes);
    for (const char mode : modes)
        epoch.quality = epoch.quality == 0 ? qualityOfMode(mode) : epoch.quality;
    replaceIfKnown(epoch.ggaHdop, sentence.field(Gns::kHdop));
    replaceIfKnown(epoch.altitudeM, sentence.field(Gns::kAltitude));
    replaceIfKnown(epoch.separationM, sentence.field(Gns::kSeparation));
}

void EpochBuilder::addGll(const tNmeaSentence &sentence)
{
    addPosition(sentence, Gll::kPosition, false);
    if ((seen & SeenRmc) != 0)
        return;
    epoch.valid = sentence.field(Gll::kStatus) == "A";
    epoch.mode = modeOf(sentence.field(Gll::kMode));
}

void EpochBuilder::addRmc(const tNmeaSentence &sentence)
{
    addPosition(sentence, Rmc::kPosition, false);
    epoch.valid = sentence.field(Rmc::kStatus) == "A";
    epoch.mode = modeOf(sentence.field(Rmc::kMode));
    epoch.date = dateOf(sentence.field(Rmc::kDate));
    replaceIfKnown(epoch.speedKnots, sentence.field(Rmc::kSpeed));
    replaceIfKnown(epoch.courseDeg, sentence.field(Rmc::kCourse));
}

void EpochBuilder::addGsa(const tNmeaSentence &sentence)
{
    const QByteArray talker =
        sentence.talker == "GN" ? talkerOfSystem(sentence.field(Gsa::kSystem)) : sentence.talker;
    epoch.activeKnown = true;
    epoch.fixMode = std::max(
        epoch.fixMode, std::clamp(Nmea::integer(sentence.field(Gsa::kMode)).value_or(1), 1, 3));
    for (int n = Gsa::kFirstNumber; n <= Gsa::kLastNumber; ++n) {
        const std::optional<int> number = numbered(talker, sentence.field(n));
        if (number && !epoch.used.contains(*number))
            epoch.used.append(*number);
    }
    replaceIfKnown(epoch.pdop, sentence.field(Gsa::kPdop));
    replaceIfKnown(epoch.hdop, sentence.field(Gsa::kHdop));
    replaceIfKnown(epoch.vdop, sentence.field(Gsa::kVdop));
}

void EpochBuilder::addGsv(const tNmeaSentence &sentence)
{
    // What is left after the last whole group is a signal identifier.
    for (int group = Gsv::kFirstGroup; group + Gsv::kGroupFields <= sentence.fields.size();
         group += Gsv::kGroupFields) {
        const std::optional<int> number = numbered(sentence.talker, sentence.field(group));
        if (!number)
            continue;
        tSatellite satellite;
        satellite.number = *number;
        satellite.elevationDeg = Nmea::integer(sentence.field(group + Gsv::kElevation));
        satellite.azimuthDeg = Nmea::integer(sentence.field(group + Gsv::kAzimuth));
        satellite.cn0DbHz =
            std::clamp(Nmea::integer(sentence.field(group + Gsv::kStrength)).value_or(0), 0, 99);
        const auto known = std::find_if(
            epoch.inView.begin(), epoch.inView.end(),
            [&satellite](const tSatellite &other) { return other.number == satellite.number; });
        if (known == epoch.inView.end())
            epoch.inView.append(satellite);
        else
            merge(*known, satellite);
    }
}

std::optional<int> EpochBuilder::numbered(const QByteArray &talker, const QByteArray &number)
{
    const std::optional<int> given = Nmea::integer(number);
    if (!given)
        return std::nullopt;
    const QByteArray usual = usualTalker(talker);
    for (const tNumbering &numbering : kNumberings) {
        if (usual == numbering.talker && *given >= numbering.first && *given <= numbering.last)
            return *given + numbering.offset;
    }
    constexpr int kMostRemembered = 1000; // noise can make up any number of them
    if (unnumbered.size() < kMostRemembered)
        unnumbered.insert(usual + number);
    return std::nullopt;
}
