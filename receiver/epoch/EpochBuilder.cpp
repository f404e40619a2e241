// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/epoch/EpochBuilder.h"

#include "base/NmeaFraming.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

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
namespace Zda {
constexpr int kTime = 1;
constexpr int kDay = 2;
constexpr int kMonth = 3;
constexpr int kYear = 4;
} // namespace Zda

constexpr int kDayMs = 86400000;

// Cycles that may come word for word again, with a fix, before the clock is known to stand still.
constexpr int kMaxRepeated = 2;

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

// Whether the viewer takes a sentence for one of those that are written anew: it looks at three
// letters only.
bool looksOrdinary(const QByteArray &text)
{
    constexpr int kTalkerEnd = 3;
    static const QList<QByteArray> types = {"GGA", "GNS", "GSV", "GSA", "GLL", "RMC"};
    return types.contains(text.mid(kTalkerEnd, 3));
}

// The mode letter of GLL and RMC, which older receivers do not send.
char modeOf(const QByteArray &text)
{
    return text.isEmpty() ? '\0' : text[0];
}

// Whether a sentence with a time says that there is a fix.
bool hasFix(const tNmeaSentence &sentence)
{
    if (sentence.type == "RMC")
        return sentence.field(Rmc::kStatus) == "A";
    if (sentence.type == "GLL")
        return sentence.field(Gll::kStatus) == "A";
    if (sentence.type == "GGA")
        return Nmea::integer(sentence.field(Gga::kQuality)).value_or(0) > 0;
    const QByteArray modes = modesOf(sentence.field(Gns::kModes));
    return modes.count('N') < modes.size();
}

QVector<QByteArray> setsIn(const QVector<tNmeaSentence> &sentences)
{
    QVector<QByteArray> sets;
    for (const tNmeaSentence &sentence : sentences) {
        const QByteArray set = SatelliteReports::begunSet(sentence);
        if (!set.isEmpty())
            sets.append(set);
    }
    return sets;
}

bool isGsv(const tNmeaSentence &sentence)
{
    return sentence.type == "GSV";
}

// A message that does not begin its set.
bool isGsvContinued(const tNmeaSentence &sentence)
{
    return isGsv(sentence) && SatelliteReports::begunSet(sentence).isEmpty();
}

bool isGsa(const tNmeaSentence &sentence)
{
    return sentence.type == "GSA";
}

bool anyOf(const QVector<tNmeaSentence> &sentences, bool (*is)(const tNmeaSentence &))
{
    return std::any_of(sentences.cbegin(), sentences.cend(), is);
}

auto count(const QVector<tNmeaSentence> &sentences, bool (*is)(const tNmeaSentence &))
{
    return std::count_if(sentences.cbegin(), sentences.cend(), is);
}

bool anyOfThem(const QVector<QByteArray> &sets, const QVector<QByteArray> &others)
{
    return std::any_of(sets.cbegin(), sets.cend(),
                       [&others](const QByteArray &set) { return others.contains(set); });
}

// Where a set comes again with a GSA in between: without one it is a second signal.
int secondRound(const QVector<tNmeaSentence> &sentences)
{
    QVector<QByteArray> sets;
    bool isActiveBetween = false;
    for (int i = 0; i < sentences.size(); ++i) {
        const QVector<QByteArray> begun = setsIn({sentences[i]});
        isActiveBetween = isActiveBetween || (isGsa(sentences[i]) && !sets.isEmpty());
        if (!isActiveBetween || !anyOfThem(begun, sets)) {
            sets += begun;
            continue;
        }
        int begin = i;
        while (isGsa(sentences.first()) && isGsa(sentences[begin - 1]))
            --begin;
        return begin;
    }
    return sentences.size();
}

} // namespace

bool EpochBuilder::tTimes::agreeWith(const tTime &time) const
{
    return std::any_of(times.cbegin(), times.cend(),
                       [&time](const tTime &other) { return isSameFix(time, other); });
}

std::optional<EpochBuilder::tTime> EpochBuilder::timeOf(const QByteArray &text)
{
    const std::optional<int> ms = Nmea::timeMs(text);
    return ms ? std::optional<tTime>({*ms, Nmea::decimals(text)}) : std::nullopt;
}

// Receivers give the time of one fix in some sentences with fewer decimals than in others: rounded,
// and whole seconds cut off at times.
bool EpochBuilder::isSameFix(const tTime &one, const tTime &other)
{
    if (one.decimals == other.decimals)
        return one.ms == other.ms;
    const tTime &fine = one.decimals > other.decimals ? one : other;
    const tTime &coarse = one.decimals > other.decimals ? other : one;
    constexpr int kUnits[] = {1000, 100, 10, 1};
    const int unit = kUnits[std::min(coarse.decimals, 3)];
    const int passed = fine.ms - coarse.ms;
    const bool isCutOff = coarse.decimals == 0 && passed >= 0 && passed < unit;
    return isCutOff || 2 * std::abs(passed) <= unit;
}

std::optional<tEpoch> EpochBuilder::add(const tNmeaSentence &sentence)
{
    const std::optional<tEpoch> completed = addSentence(sentence);
    latestText = sentence.text;
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
    return isGsa(sentence) || isGsv(sentence) ? addSatellites(sentence) : addOther(sentence);
}

std::optional<tEpoch> EpochBuilder::addTimed(const tNmeaSentence &sentence, const tTimed &timedType)
{
    const std::optional<tTime> time = timeOf(sentence.field(timedType.timeField));
    std::optional<tEpoch> completed;
    const bool isNews =
        !open.texts.contains(sentence.text) && !before.texts.contains(sentence.text);
    if (isNews) {
        repeated = 0;
    } else if (time && isRepetition(sentence)) {
        ++repeated;
        return completed;
    }
    if (isLate(timedType.flag, time)) {
        noteLate(sentence);
        return completed;
    }
    if (beginsNew(timedType.flag, time, sentence)) {
        const QVector<tNmeaSentence> next = takeNextSets();
        completed = complete(time && !open.agreeWith(*time));
        satellites = next;
        sentences = next.size();
    } else if (open.seen != 0 && anyOf(satellites.mid(settled), isGsv)) {
        setsLead = false;
    }
    leading = open.seen == 0 ? satellites.size() : leading;
    settled = satellites.size();
    if (time)
        noteTime(timedType.flag, *time);
    (this->*timedType.add)(sentence);
    open.seen |= timedType.flag;
    open.addresses.append(sentence.field(0));
    open.texts.append(sentence.text);
    ++sentences;
    return completed;
}

// GGA and RMC are what the viewer shows a time from.
void EpochBuilder::noteTime(unsigned type, const tTime &time)
{
    open.times.append(time);
    const auto rank = [](unsigned from) {
        return from == SeenRmc ? 4 : from == SeenGga ? 3 : from == SeenGns ? 2 : from == SeenGll;
    };
    if (epoch.timeMs && rank(type) < rank(timeFrom))
        return;
    epoch.timeMs = time.ms;
    timeFrom = type;
}

std::optional<tEpoch> EpochBuilder::takeRest()
{
    takeNextSets(); // the time that they were for never came
    std::optional<tEpoch> rest = complete();
    EpochBuilder anew;
    anew.leftOut = leftOut;
    anew.reports = reports;
    anew.reports.forget();
    *this = anew;
    return rest;
}

std::optional<tEpoch> EpochBuilder::pause()
{
    // What a receiver sends before it pauses belongs to the time before the pause.
    if (open.seen != 0 && anyOf(satellites.mid(settled), isGsv))
        setsLead = false;
    return complete();
}

// Whether a sentence that came before, word for word, is only a repetition. Without a fix the clock
// may stand still, as that of a generator of sentences may with one; then it is the next cycle's,
// unless this one still lacks what cycles have.
bool EpochBuilder::isRepetition(const tNmeaSentence &sentence) const
{
    const bool isInOpen = open.texts.contains(sentence.text);
    const int cycle = std::max(open.texts.size(), before.texts.size());
    const bool isStanding = repeated >= kMaxRepeated * cycle;
    return (hasFix(sentence) && !isStanding) || (isInOpen && (before.seen & ~open.seen) != 0);
}

// Another time, or a sentence that the open epoch already has: where a time is missing as during a
// cold start, and where it stands still. One of another talker is the same cycle again.
bool EpochBuilder::beginsNew(unsigned type, const std::optional<tTime> &time,
                             const tNmeaSentence &sentence) const
{
    if (open.seen == 0)
        return false;
    if (!time || open.times.isEmpty())
        return (open.seen & type) != 0;
    const bool isKnown = open.addresses.contains(sentence.field(0));
    const bool isSame = std::any_of(open.times.cbegin(), open.times.cend(),
                                    [&time](const tTime &other) { return other.ms == time->ms; });
    // Receivers with more than one fix a second may give whole seconds only.
    const bool mayStandStill = time->ms % 1000 == 0 || !hasFix(sentence);
    const bool isWhole = (before.seen & ~open.seen) == 0;
    if (isSame)
        return isKnown && mayStandStill && isWhole;
    return isKnown || !open.agreeWith(*time);
}

// A part of the epoch before, which a pause has ended too early. An epoch of its own would be one
// too many for the viewer, who counts them.
bool EpochBuilder::isLate(unsigned type, const std::optional<tTime> &time) const
{
    return open.seen == 0 && time && before.agreeWith(*time) && (before.seen & type) == 0;
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
std::optional<tEpoch> EpochBuilder::addSatellites(const tNmeaSentence &sentence)
{
    std::optional<tEpoch> completed;
    const bool isDoubled = sentence.text == latestText;
    const QByteArray set = isDoubled ? QByteArray() : SatelliteReports::begunSet(sentence);
    if (!set.isEmpty()) {
        if (open.seen == 0 && sets.contains(set) && !followsItsOwn(set))
            completed = complete();
        sets.insert(set);
    }
    if (!isDoubled)
        satellites.append(sentence);
    ++sentences;
    return completed;
}

// Directly behind one of the same name a set is that of a second signal without a number.
bool EpochBuilder::followsItsOwn(const QByteArray &set) const
{
    return !satellites.isEmpty() && isGsv(satellites.last()) &&
           SatelliteReports::setOf(satellites.last()) == set;
}

std::optional<tEpoch> EpochBuilder::addOther(const tNmeaSentence &sentence)
{
    if (looksOrdinary(sentence.text)) {
        ++leftOut;
        return std::nullopt;
    }
    if (sentence.type == "ZDA")
        noteZda(sentence);
    const QByteArray whole = sentence.text.contains('*')
                                 ? sentence.text + "\r\n"
                                 : NmeaFraming::sentence(sentence.text.mid(1));
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

// At a new time: takes away the satellites' sentences behind the last one with a time that belong
// to the new epoch.
QVector<tNmeaSentence> EpochBuilder::takeNextSets()
{
    learnWhetherSetsLead();
    const int end = beginOfNextSets();
    QVector<tNmeaSentence> next = satellites.mid(end);
    satellites.resize(end);
    if (setsLead && !activeLeads) {
        std::copy_if(next.cbegin(), next.cend(), std::back_inserter(satellites), isGsa);
        next.erase(std::remove_if(next.begin(), next.end(), isGsa), next.end());
    }
    return next;
}

// A receiver that sends the sets before the time does so from its first cycle on. A stream that
// begins in the middle of a cycle has fewer there than in the next.
void EpochBuilder::learnWhetherSetsLead()
{
    const QVector<tNmeaSentence> ahead = satellites.mid(0, leading);
    const QVector<QByteArray> setsAhead = setsIn(ahead);
    const bool isWithin = anyOf(satellites.mid(leading, settled - leading), isGsv);
    if (setsLead || setsAhead.isEmpty() || isWithin || isGsvContinued(ahead.first()))
        return;
    const QVector<tNmeaSentence> behind = satellites.mid(settled);
    const QVector<QByteArray> setsBehind = setsIn(behind);
    const bool hasAll =
        std::all_of(setsBehind.cbegin(), setsBehind.cend(),
                    [&setsAhead](const QByteArray &set) { return setsAhead.contains(set); });
    setsLead = hasAll && count(ahead, isGsa) >= count(behind, isGsa);
    activeLeads = anyOf(ahead, isGsa);
}

// Where the next epoch's begin: behind the last sentence with a time if they lead, or if this epoch
// had the like between its times already, so that what should separate them was lost; or with the
// second round of GSAs and sets.
int EpochBuilder::beginOfNextSets() const
{
    const QVector<tNmeaSentence> within = satellites.mid(leading, settled - leading);
    const QVector<tNmeaSentence> behind = satellites.mid(settled);
    const QVector<QByteArray> setsBehind = setsIn(behind);
    const bool onlyActive = anyOf(behind, isGsa) && !anyOf(behind, isGsv);
    const bool isAgain =
        anyOfThem(setsBehind, setsIn(within)) || (onlyActive && anyOf(within, isGsa));
    if (isAgain || (setsLead && !setsBehind.isEmpty()))
        return settled;
    return settled + secondRound(behind);
}

// A set that came before the time and again after it: the first is of the epoch before, whose end
// the stream began with or a pause has cut off.
void EpochBuilder::dropSetsOfBefore()
{
    const QVector<QByteArray> later = setsIn(satellites.mid(leading));
    const QVector<QByteArray> earlier = setsIn(satellites.mid(0, leading));
    const bool isAgain = anyOfThem(earlier, later);
    const bool isCut = !later.isEmpty() && leading > 0 && isGsvContinued(satellites.first());
    if (open.seen != 0 && (isAgain || isCut))
        satellites.remove(0, leading);
}

// Nothing but sentences of the epoch before, and not all of them, while the clock went on.
bool EpochBuilder::isPartOfARepetition() const
{
    return open.seen != 0 && (before.seen & ~open.seen) != 0 && !open.times.isEmpty() &&
           std::all_of(open.texts.cbegin(), open.texts.cend(),
                       [this](const QByteArray &text) { return before.texts.contains(text); });
}

std::optional<tEpoch> EpochBuilder::complete(bool clockMovedOn)
{
    if (sentences == 0)
        return std::nullopt;
    epoch.withoutFix = open.seen == 0 || (clockMovedOn && isPartOfARepetition());
    if (!epoch.withoutFix) {
        noteRestart();
        completeFix();
    }
    dropSetsOfBefore();
    // What the stream began with may be the end of a cycle whose other satellites it does not have.
    const bool isTail = isFirst && open.seen == SeenGll && leading > 0;
    reports.complete(isTail ? QVector<tNmeaSentence>() : satellites, epoch);
    isFirst = false;
    if (!epoch.withoutFix)
        before = open;
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
    open = {};
    timeFrom = 0;
    positionDecimals = -1;
    satellites.clear();
    leading = 0;
    settled = 0;
    sets.clear();
    ownZdaDate = {};
    isStatusKnown = false;
    sentences = 0;
    otherBytes = 0;
}

// A receiver that starts anew has lost the time or comes back with another one; the satellites from
// before the start must not be shown for those of now.
void EpochBuilder::noteRestart()
{
    constexpr int kLongestGapMs = 60000;
    if (latestMs) {
        const int passed = epoch.timeMs ? *epoch.timeMs - *latestMs : -1;
        const bool isMidnight = passed < -kDayMs / 2;
        if (!isMidnight && (passed < 0 || passed > kLongestGapMs))
            reports.forget();
    }
}

void EpochBuilder::completeFix()
{
    // RMC or GLL has said whether the fix is valid, otherwise the quality tells.
    if (!isStatusKnown)
        epoch.valid = epoch.quality != 0;
    epoch.date = knownDate();
    latestMs = epoch.timeMs;
    if (epoch.mode == '\0')
        epoch.mode = epoch.valid ? modeOfQuality(epoch.quality) : 'N';
    if ((open.seen & (SeenGga | SeenGns)) == 0) {
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

// RMC's date, or that of a ZDA of the same time, or the latest known.
QDate EpochBuilder::knownDate() const
{
    if (epoch.date.isValid())
        return epoch.date;
    if (zdaTime && open.agreeWith(*zdaTime))
        return zdaDate;
    if (ownZdaDate.isValid())
        return ownZdaDate;
    // An RMC without a date says that the receiver has none.
    if ((open.seen & SeenRmc) != 0)
        return {};
    const bool isPastMidnight = latestMs && epoch.timeMs && *latestMs - *epoch.timeMs > kDayMs / 2;
    return isPastMidnight ? latest.date.addDays(1) : latest.date;
}

void EpochBuilder::noteZda(const tNmeaSentence &sentence)
{
    // It may be that of the next epoch already.
    if (zdaTime && open.agreeWith(*zdaTime))
        ownZdaDate = zdaDate;
    zdaTime = timeOf(sentence.field(Zda::kTime));
    zdaDate = QDate(sentence.field(Zda::kYear).toInt(), sentence.field(Zda::kMonth).toInt(),
                    sentence.field(Zda::kDay).toInt());
}

// The finest counts; of equals the one of GGA.
void EpochBuilder::addPosition(const tNmeaSentence &sentence, int firstField)
{
    const QByteArray latitudeText = sentence.field(firstField);
    const QByteArray longitudeText = sentence.field(firstField + 2);
    const std::optional<qint64> latitude =
        Nmea::angle(latitudeText, sentence.field(firstField + 1), 90);
    const std::optional<qint64> longitude =
        Nmea::angle(longitudeText, sentence.field(firstField + 3), 180);
    const int decimals = std::min(Nmea::decimals(latitudeText), Nmea::decimals(longitudeText));
    const bool isPreferred = sentence.type == "GGA" && decimals == positionDecimals;
    if (!latitude || !longitude || (decimals <= positionDecimals && !isPreferred))
        return;
    epoch.latitude = latitude;
    epoch.longitude = longitude;
    positionDecimals = decimals;
}

void EpochBuilder::addGga(const tNmeaSentence &sentence)
{
    addPosition(sentence, Gga::kPosition);
    epoch.quality = std::clamp(Nmea::integer(sentence.field(Gga::kQuality)).value_or(0), 0, 9);
    // Some receivers count no satellites here when they also send GNS.
    if (const auto count = Nmea::integer(sentence.field(Gga::kSatellites));
        count && (*count > 0 || !epoch.satellitesInUse))
        epoch.satellitesInUse = std::clamp(*count, 0, 99);
    Nmea::replaceIfKnown(epoch.ggaHdop, sentence.field(Gga::kHdop));
    Nmea::replaceIfKnown(epoch.altitudeM, sentence.field(Gga::kAltitude));
    Nmea::replaceIfKnown(epoch.separationM, sentence.field(Gga::kSeparation));
}

void EpochBuilder::addGns(const tNmeaSentence &sentence)
{
    addPosition(sentence, Gns::kPosition);
    // Some receivers send one for each system after the one of all.
    if (epoch.gnsModes.isEmpty() || hasFix(sentence))
        epoch.gnsModes = modesOf(sentence.field(Gns::kModes));
    if (const auto count = Nmea::integer(sentence.field(Gns::kSatellites));
        count && epoch.satellitesInUse.value_or(0) == 0)
        epoch.satellitesInUse = std::clamp(*count, 0, 99);
    if ((open.seen & SeenGga) != 0)
        return;
    const QByteArray modes = sentence.field(Gns::kModes);
    for (const char mode : modes)
        epoch.quality = epoch.quality == 0 ? qualityOfMode(mode) : epoch.quality;
    Nmea::replaceIfKnown(epoch.ggaHdop, sentence.field(Gns::kHdop));
    Nmea::replaceIfKnown(epoch.altitudeM, sentence.field(Gns::kAltitude));
    Nmea::replaceIfKnown(epoch.separationM, sentence.field(Gns::kSeparation));
}

void EpochBuilder::addGll(const tNmeaSentence &sentence)
{
    addPosition(sentence, Gll::kPosition);
    // The oldest receivers send neither time nor status.
    if ((open.seen & SeenRmc) != 0 || sentence.field(Gll::kStatus).isEmpty())
        return;
    isStatusKnown = true;
    epoch.valid = sentence.field(Gll::kStatus) == "A";
    epoch.mode = modeOf(sentence.field(Gll::kMode));
}

void EpochBuilder::addRmc(const tNmeaSentence &sentence)
{
    addPosition(sentence, Rmc::kPosition);
    isStatusKnown = true;
    epoch.valid = sentence.field(Rmc::kStatus) == "A";
    epoch.mode = modeOf(sentence.field(Rmc::kMode));
    epoch.date = dateOf(sentence.field(Rmc::kDate));
    Nmea::replaceIfKnown(epoch.speedKnots, sentence.field(Rmc::kSpeed));
    Nmea::replaceIfKnown(epoch.courseDeg, sentence.field(Rmc::kCourse));
}
