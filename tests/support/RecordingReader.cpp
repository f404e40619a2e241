// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/RecordingReader.h"

#include "base/NmeaFraming.h"

#include <QHash>
#include <QList>
#include <QMap>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr int kRoom = 32;
constexpr int kMinuteMs = 60000;
constexpr int kDayMs = 24 * 60 * kMinuteMs;
constexpr int kSameFixMs = 5; // one sentence tells milliseconds, another hundredths of a second
constexpr int kNone = -1;

// ---- numbers of satellites

struct tNumbering
{
    const char *talkers; // separated by blanks
    int first;
    int last;
    int offset;
};

constexpr const char *kAny = "*";

// The first row that fits counts. Where a talker does not name a system the last rows decide by the
// number alone.
constexpr tNumbering kNumberings[] = {
    {"GL", 65, 96, 0},            // NMEA
    {"GL", 1, 32, 64},            // the satellite's slot
    {"GA", 1, 36, 300},           // NMEA 4.10
    {"GA", 301, 336, 0},          // u-blox before NMEA 4.10
    {"GA", 101, 136, 200},        // Quectel
    {"GB BD PQ", 1, 63, 120},     // NMEA 4.11
    {"GB BD PQ", 121, 183, 0},    // the device
    {"GB BD PQ", 201, 263, -80},  // SkyTraq, MediaTek
    {"GB BD PQ", 401, 463, -280}, // u-blox before NMEA 4.10
    {"QZ GQ PQ", 193, 202, 0},    // NMEA
    {"QZ GQ", 1, 10, 192},        // NMEA 4.11
    {kAny, 1, 96, 0},             // GPS, SBAS from 33, GLONASS from 65
    {kAny, 120, 151, -87},        // SBAS by PRN
    {kAny, 193, 200, 0},          // QZSS
    {kAny, 201, 235, -80},        // BeiDou of SkyTraq, MediaTek
    {kAny, 301, 336, 0},          // Galileo
    {kAny, 401, 463, -280},       // BeiDou of u-blox
};

constexpr const char *kNamedSystems[] = {"GL", "GA", "GB", "BD", "PQ", "QZ", "GQ", "GI"};

bool namesSystem(const QByteArray &talker)
{
    return std::any_of(std::begin(kNamedSystems), std::end(kNamedSystems),
                       [&talker](const char *named) { return talker == named; });
}

/// One name for the talkers of one system.
QByteArray systemOf(const QByteArray &talker)
{
    if (talker == "BD" || talker == "PQ")
        return "GB";
    return talker == "QZ" ? QByteArray("GQ") : talker;
}

// ---- sentences

struct tSentence
{
    QByteArray talker;
    QByteArray type;
    QByteArray text; // without frame
    QList<QByteArray> fields;
    bool hasChecksum = false;
    int end = 0; // offset of what stands behind
    int epoch = kNone;

    QByteArray field(int n) const { return fields.value(n).trimmed(); }
    QByteArray address() const { return talker + type; }
};

bool isPrintable(char c)
{
    return c >= ' ' && c <= '~';
}

bool isComment(const QByteArray &recording, int from)
{
    if (recording[from] != '#' || (from > 0 && recording[from - 1] != '\n'))
        return false;
    const int end = recording.indexOf('\n', from);
    const QByteArray line = recording.mid(from, end < 0 ? -1 : end - from);
    return std::all_of(line.cbegin(), line.cend(),
                       [](char c) { return isPrintable(c) || c == '\r' || c == '\t'; });
}

/// The sentence that begins at a `$`, nothing where the bytes are none: a wrong checksum, or the
/// recording ends within it.
std::optional<tSentence> sentenceAt(const QByteArray &recording, int from)
{
    int end = from + 1;
    while (end < recording.size() && isPrintable(recording[end]) && recording[end] != '$' &&
           recording[end] != '*')
        ++end;
    if (end == recording.size())
        return std::nullopt;
    const char stop = recording[end];
    if (stop == '*')
        end = std::min(end + 3, recording.size());
    else if (stop != '\r' && stop != '\n')
        return std::nullopt;
    const auto framed = NmeaFraming::unframed(recording.mid(from, end - from));
    if (!framed)
        return std::nullopt;
    tSentence sentence;
    sentence.text = framed->body;
    sentence.fields = framed->body.split(',');
    sentence.hasChecksum = framed->hasChecksum;
    sentence.end = end;
    const QByteArray address = sentence.fields.first();
    sentence.talker = address.left(2);
    sentence.type = address.mid(2);
    return sentence;
}

/// A sentence without a checksum counts only where its kind never has one.
void dropUnchecked(QVector<tSentence> *sentences)
{
    QSet<QByteArray> checked;
    for (const tSentence &sentence : *sentences) {
        if (sentence.hasChecksum)
            checked.insert(sentence.address());
    }
    const auto isUnsound = [&checked](const tSentence &sentence) {
        return !sentence.hasChecksum && checked.contains(sentence.address());
    };
    sentences->erase(std::remove_if(sentences->begin(), sentences->end(), isUnsound),
                     sentences->end());
}

QVector<tSentence> sentencesOf(const QByteArray &recording)
{
    static const QSet<QByteArray> types = {"GGA", "GNS", "GLL", "RMC", "GSV",
                                           "GSA", "ZDA", "GST", "GBS", "GRS"};
    QVector<tSentence> sentences;
    for (int at = 0; at < recording.size(); ++at) {
        if (isComment(recording, at)) {
            at = recording.indexOf('\n', at);
            if (at < 0)
                break;
        } else if (recording[at] == '$') {
            const auto sentence = sentenceAt(recording, at);
            if (sentence && types.contains(sentence->type))
                sentences.append(*sentence);
        }
    }
    dropUnchecked(&sentences);
    return sentences;
}

// ---- values

bool isDigits(const QByteArray &text)
{
    return !text.isEmpty() &&
           std::all_of(text.cbegin(), text.cend(), [](char c) { return c >= '0' && c <= '9'; });
}

/// A number without sign as a count of 10^-decimals, a further digit rounded half up.
std::optional<qint64> scaled(const QByteArray &text, int decimals)
{
    const int point = text.indexOf('.');
    const QByteArray whole = point < 0 ? text : text.left(point);
    const QByteArray behind = point < 0 ? QByteArray() : text.mid(point + 1);
    if (!isDigits(whole) || (!behind.isEmpty() && !isDigits(behind)))
        return std::nullopt;
    const QByteArray kept = behind.left(decimals).leftJustified(decimals, '0');
    return (whole + kept).toLongLong() + (behind.mid(decimals, 1) >= "5" ? 1 : 0);
}

std::optional<int> timeOf(const QByteArray &text)
{
    if (text.size() < 6 || !isDigits(text.left(6)))
        return std::nullopt;
    const auto second = scaled(text.mid(4), 3);
    const int hour = text.left(2).toInt();
    const int minute = text.mid(2, 2).toInt();
    if (!second || hour > 23 || minute > 59 || *second > 61000)
        return std::nullopt;
    // A leap second is still of the old day.
    const int ofMinute = std::min(static_cast<int>(*second), kMinuteMs - 1);
    return hour * 60 * kMinuteMs + minute * kMinuteMs + ofMinute;
}

QDate dateOf(const QByteArray &day, const QByteArray &month, const QByteArray &year)
{
    return {2000 + year.right(2).toInt(), month.toInt(), day.toInt()};
}

struct tPosition
{
    qint64 latitude;
    qint64 longitude;
    int decimals;
};

std::optional<qint64> angleOf(const QByteArray &text, int degreeDigits, const QByteArray &letter,
                              const char *letters)
{
    const QByteArray minutes = text.mid(degreeDigits);
    const auto fine = scaled(minutes, 4);
    if (!isDigits(text.left(degreeDigits)) || !fine || letter.size() != 1 ||
        (letter[0] != letters[0] && letter[0] != letters[1]))
        return std::nullopt;
    const qint64 size = text.left(degreeDigits).toLongLong() * 600000 + *fine;
    return letter[0] == letters[0] ? size : -size;
}

std::optional<tPosition> positionOf(const tSentence &sentence)
{
    const int first = sentence.type == "GLL" ? 1 : sentence.type == "RMC" ? 3 : 2;
    const QByteArray text = sentence.field(first);
    const auto latitude = angleOf(text, 2, sentence.field(first + 1), "NS");
    const auto longitude = angleOf(sentence.field(first + 2), 3, sentence.field(first + 3), "EW");
    if (!latitude || !longitude)
        return std::nullopt;
    const int point = text.indexOf('.');
    return tPosition{*latitude, *longitude, point < 0 ? 0 : text.size() - point - 1};
}

std::optional<double> numberOf(const QByteArray &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}

/// GGA's number for what a mode letter says.
int qualityOf(char mode)
{
    static const QByteArray letters = "NADPRFEMS";
    return std::max(0, letters.indexOf(mode));
}

// ---- epochs

bool isFix(const tSentence &sentence)
{
    return sentence.type == "GGA" || sentence.type == "GNS" || sentence.type == "GLL" ||
           sentence.type == "RMC";
}

bool isSatellites(const tSentence &sentence)
{
    return sentence.type == "GSV" || sentence.type == "GSA";
}

std::optional<int> timeOf(const tSentence &sentence)
{
    return timeOf(sentence.field(sentence.type == "GLL" ? 5 : 1));
}

bool isSameTime(std::optional<int> a, std::optional<int> b)
{
    return a && b && std::abs(*a - *b) <= kSameFixMs;
}

/// Puts each sentence that has a time to the fix that it is of.
class FixFinder
{
public:
    explicit FixFinder(QVector<tSentence> *sentences)
        : all(sentences)
    {
        for (tSentence &sentence : *all) {
            if (isFix(sentence))
                place(&sentence);
        }
        placeOthersWithTime();
    }

    int count() const { return fixes.size(); }

private:
    struct tFix
    {
        std::optional<int> timeMs;
        QSet<QByteArray> types;
    };

    void place(tSentence *sentence)
    {
        const auto time = timeOf(*sentence);
        for (int fix = fixes.size() - 1; time && fix >= std::max(0, fixes.size() - 2); --fix) {
            if (isSameTime(fixes[fix].timeMs, time))
                return add(sentence, fix);
        }
        const bool joins = !fixes.isEmpty() && !(time && fixes.last().timeMs) &&
                           !fixes.last().types.contains(sentence->type);
        if (!joins)
            fixes.append(tFix());
        add(sentence, fixes.size() - 1);
    }

    void add(tSentence *sentence, int fix)
    {
        sentence->epoch = fix;
        fixes[fix].types.insert(sentence->type);
        if (!fixes[fix].timeMs)
            fixes[fix].timeMs = timeOf(*sentence);
    }

    // ZDA, GST and the like make no fix, but tell where the sentences beside them belong.
    void placeOthersWithTime()
    {
        int before = kNone;
        for (int i = 0; i < all->size(); ++i) {
            tSentence &sentence = (*all)[i];
            if (isFix(sentence)) {
                before = sentence.epoch;
                continue;
            }
            if (isSatellites(sentence))
                continue;
            const auto time = timeOf(sentence);
            const int candidates[] = {before, before + 1};
            for (const int fix : candidates) {
                if (fix >= 0 && fix < fixes.size() && isSameTime(fixes[fix].timeMs, time))
                    sentence.epoch = fix;
            }
        }
    }

    QVector<tSentence> *all;
    QVector<tFix> fixes;
};

/// Puts the sentences without a time to the fix of their cycle. Between two sentences of one fix
/// they belong to it. Elsewhere the rest of the recording shows whether this receiver sends them
/// before or after the sentences that have a time.
class CycleFinder
{
public:
    explicit CycleFinder(QVector<tSentence> *sentences)
        : all(sentences)
    {
        findNeighbours();
        learn();
        for (int i = 0; i < all->size(); ++i) {
            if (isSatellites(all->at(i)))
                (*all)[i].epoch = fixOf(i);
        }
    }

private:
    void findNeighbours()
    {
        before.fill(kNone, all->size());
        after.fill(kNone, all->size());
        for (int i = 0, last = kNone; i < all->size(); ++i) {
            before[i] = last;
            last = all->at(i).epoch >= 0 ? i : last;
        }
        for (int i = all->size() - 1, next = kNone; i >= 0; --i) {
            after[i] = next;
            next = all->at(i).epoch >= 0 ? i : next;
        }
    }

    int fixAt(int sentence) const { return sentence < 0 ? kNone : all->at(sentence).epoch; }

    void learn()
    {
        bool leads = false;
        bool trails = false;
        for (int i = 0; i < all->size(); ++i) {
            const tSentence &sentence = all->at(i);
            if (!isSatellites(sentence))
                continue;
            const bool isWhole = sentence.type == "GSA" || sentence.field(2) == "1";
            leads = leads || (before[i] < 0 && isWhole);
            trails = trails || after[i] < 0;
            if (before[i] < 0 || fixAt(before[i]) != fixAt(after[i]))
                continue;
            ++behind[sentence.type + all->at(before[i]).type];
            ++ahead[sentence.type + all->at(after[i]).type];
        }
        // The recording begins with satellites and does not end with them.
        sendsThemFirst = leads && !trails;
    }

    int fixOf(int i) const
    {
        const int earlier = fixAt(before[i]);
        const int later = fixAt(after[i]);
        if (earlier == later)
            return earlier;
        const QByteArray type = all->at(i).type;
        const int asBehind = before[i] < 0 ? 0 : behind.value(type + all->at(before[i]).type);
        const int asAhead = after[i] < 0 ? 0 : ahead.value(type + all->at(after[i]).type);
        if (asBehind != asAhead)
            return asAhead > asBehind ? later : earlier;
        if (!sendsThemFirst)
            return earlier;
        return later < 0 ? all->size() : later; // of a fix that the recording does not have
    }

    QVector<tSentence> *all;
    QVector<int> before; // the nearest sentence that belongs to a fix
    QVector<int> after;
    QHash<QByteArray, int> behind; // how often a kind stands within a fix, by both types
    QHash<QByteArray, int> ahead;
    bool sendsThemFirst = false;
};

// ---- satellites

struct tSeen
{
    int rawNumber = 0;
    QByteArray talker;
    tSourceSatellite satellite;
};

int whole(const QByteArray &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? static_cast<int>(value) : 0;
}

int elevationOf(const QByteArray &text)
{
    const int value = whole(text);
    return value >= 0 && value <= 90 ? value : 0;
}

int azimuthOf(const QByteArray &text)
{
    const int value = whole(text);
    return value >= 0 && value < 360 ? value : 0;
}

int cn0Of(const QByteArray &text)
{
    return std::min(std::max(whole(text), 0), 99);
}

void addTo(QVector<tSeen> *list, const tSeen &seen)
{
    for (tSeen &known : *list) {
        tSourceSatellite &satellite = known.satellite;
        if (satellite.number != seen.satellite.number)
            continue;
        satellite.cn0 = std::max(satellite.cn0, seen.satellite.cn0);
        if (satellite.elevation == 0 && satellite.azimuth == 0) {
            satellite.elevation = seen.satellite.elevation;
            satellite.azimuth = seen.satellite.azimuth;
        }
        return;
    }
    list->append(seen);
}

/// What one system reports in one cycle: sets of GSV, one for each signal.
class SystemReport
{
public:
    void take(const tSentence &sentence)
    {
        if (texts.contains(sentence.text))
            return;
        texts.insert(sentence.text);
        const bool hasSignal = (sentence.fields.size() - 4) % 4 == 1;
        const QByteArray key = sentence.talker + (hasSignal ? sentence.fields.last() : "");
        const int messages = sentence.field(1).toInt();
        const int message = sentence.field(2).toInt();
        tSet &set = open[key];
        if (message == 1) {
            broken = broken || set.next != 0;
            set = {};
            set.next = 1;
            set.messages = messages;
        }
        if (message == 0 || set.next != message || set.messages != messages) {
            broken = true;
            return;
        }
        read(sentence, hasSignal);
        set.next = message == messages ? 0 : message + 1;
    }

    /// Whether each set that began is there from its first sentence to its last.
    bool isComplete() const
    {
        return !broken && std::all_of(open.cbegin(), open.cend(),
                                      [](const tSet &set) { return set.next == 0; });
    }

    QVector<tSeen> satellites;

private:
    struct tSet
    {
        int next = 0; // number of the message to come, 0 for none
        int messages = 0;
    };

    void read(const tSentence &sentence, bool hasSignal)
    {
        const int end = sentence.fields.size() - (hasSignal ? 1 : 0);
        for (int i = 4; i + 2 < end; i += 4) {
            tSeen seen;
            seen.talker = sentence.talker;
            seen.rawNumber = sentence.field(i).toInt();
            seen.satellite = {RecordingReader::deviceNumber(seen.talker, seen.rawNumber),
                              elevationOf(sentence.field(i + 1)), azimuthOf(sentence.field(i + 2)),
                              cn0Of(sentence.field(i + 3))};
            if (seen.satellite.number > 0)
                addTo(&satellites, seen);
        }
    }

    QMap<QByteArray, tSet> open;
    QSet<QByteArray> texts;
    bool broken = false;
};

/// What a source sends in turns or now and then: how long its latest counts.
class Turns
{
public:
    void came(int cycle) { cycles.append(cycle); }

    /// Usual distance of two reports; 1 where there were no two.
    int interval() const
    {
        QVector<int> distances;
        for (int i = 1; i < cycles.size(); ++i)
            distances.append(cycles[i] - cycles[i - 1]);
        std::sort(distances.begin(), distances.end());
        return distances.isEmpty() ? 1 : distances[distances.size() / 2];
    }

private:
    QVector<int> cycles;
};

/// All of one cycle.
struct tCycle
{
    QVector<const tSentence *> fix; // sentences that tell the fix, or the date
    QMap<QByteArray, SystemReport> reports;
    QVector<QByteArray> systems; // of the reports, in the order in which they came
    QVector<const tSentence *> active;
};

bool isTold(const tCycle &cycle, const QByteArray &system)
{
    return cycle.reports.contains(system) && cycle.reports[system].isComplete();
}

/// Follows the satellites from cycle to cycle.
class SatelliteKeeper
{
public:
    explicit SatelliteKeeper(const QVector<tCycle> &cycles)
    {
        int told = 0;
        int active = 0;
        for (const tCycle &cycle : cycles) {
            bool any = false;
            for (const QByteArray &system : cycle.systems) {
                if (!isTold(cycle, system))
                    continue;
                viewTurns[system].came(told);
                any = true;
            }
            told += any ? 1 : 0;
            QSet<QByteArray> systems;
            for (const tSentence *gsa : cycle.active)
                systems.insert(sourceOf(*gsa));
            for (const QByteArray &system : systems)
                activeTurns[system].came(active);
            active += systems.isEmpty() ? 0 : 1;
        }
    }

    void take(const tCycle &cycle)
    {
        const bool tells = takeView(cycle);
        if (!cycle.active.isEmpty())
            takeActive(cycle);
        if (tells || !cycle.active.isEmpty())
            show();
    }

    void write(tSourceEpoch *epoch) const
    {
        epoch->inView = shownInView;
        epoch->used = shownUsed;
        epoch->pdop = pdop;
        epoch->hdop = hdop;
        epoch->vdop = vdop;
    }

private:
    struct tLatest
    {
        int cycle = 0;
        QVector<tSeen> seen;
    };
    struct tActive
    {
        int cycle = 0;
        QVector<const tSentence *> sentences;
    };

    static QByteArray sourceOf(const tSentence &gsa)
    {
        const QByteArray named = namedSystem(gsa);
        return named.isEmpty() ? gsa.talker : named;
    }

    /// The talker of the system that a GSA is of: its system id, else its talker where that names
    /// one; empty where only the numbers tell.
    static QByteArray namedSystem(const tSentence &gsa)
    {
        static const QByteArray systems[] = {"", "GP", "GL", "GA", "GB", "GQ", "GI"};
        const int id = gsa.field(18).toInt();
        if (id > 0 && id < static_cast<int>(std::size(systems)))
            return systems[id];
        return namesSystem(gsa.talker) ? systemOf(gsa.talker) : QByteArray();
    }

    bool takeView(const tCycle &cycle)
    {
        bool any = false;
        for (const QByteArray &system : cycle.systems) {
            if (!isTold(cycle, system))
                continue;
            if (!latest.contains(system))
                order.append(system);
            latest[system] = {toldCycles, cycle.reports[system].satellites};
            any = true;
        }
        if (!any)
            return false;
        for (const QByteArray &system : QVector<QByteArray>(order)) {
            if (toldCycles - latest[system].cycle >= 2 * viewTurns[system].interval()) {
                latest.remove(system);
                order.removeOne(system);
            }
        }
        ++toldCycles;
        return true;
    }

    void takeActive(const tCycle &cycle)
    {
        for (const tSentence *gsa : cycle.active) {
            tActive &entry = activeBySource[sourceOf(*gsa)];
            if (entry.cycle != activeCycles)
                entry.sentences.clear();
            entry.cycle = activeCycles;
            entry.sentences.append(gsa);
        }
        const QList<QByteArray> sources = activeBySource.keys();
        for (const QByteArray &source : sources) {
            if (activeCycles - activeBySource[source].cycle >= activeTurns[source].interval())
                activeBySource.remove(source);
        }
        ++activeCycles;
        readDops(cycle);
    }

    void readDops(const tCycle &cycle)
    {
        pdop = hdop = vdop = std::nullopt;
        for (const tSentence *gsa : cycle.active) {
            if (gsa->field(15).isEmpty() && gsa->field(16).isEmpty() && gsa->field(17).isEmpty())
                continue;
            pdop = numberOf(gsa->field(15));
            hdop = numberOf(gsa->field(16));
            vdop = numberOf(gsa->field(17));
        }
    }

    QVector<tSeen> allInView() const
    {
        QVector<tSeen> all;
        for (const QByteArray &system : order) {
            for (const tSeen &seen : latest[system].seen)
                addTo(&all, seen);
        }
        return all;
    }

    QSet<int> usedOf(const QVector<tSeen> &inView) const
    {
        QSet<int> used;
        for (const tActive &entry : activeBySource) {
            QSet<QByteArray> texts;
            for (const tSentence *gsa : entry.sentences)
                texts.insert(gsa->text);
            for (const tSentence *gsa : entry.sentences) {
                const QByteArray system = namedSystem(*gsa);
                const bool isMixed = system.isEmpty() && (gsa->talker != "GP" || texts.size() > 1);
                for (int i = 3; i <= 14; ++i) {
                    const int raw = gsa->field(i).toInt();
                    const int alone = isMixed ? onlyOneCalled(inView, raw) : 0;
                    const QByteArray talker = system.isEmpty() ? gsa->talker : system;
                    used.insert(alone > 0 ? alone : RecordingReader::deviceNumber(talker, raw));
                }
            }
        }
        used.remove(0);
        return used;
    }

    /// The one satellite in view that its GSV calls `raw`; 0 where there is none or several.
    static int onlyOneCalled(const QVector<tSeen> &inView, int raw)
    {
        int number = 0;
        for (const tSeen &seen : inView) {
            if (seen.rawNumber != raw)
                continue;
            if (number > 0)
                return 0;
            number = seen.satellite.number;
        }
        return number;
    }

    void show()
    {
        QVector<tSeen> inView = allInView();
        if (inView.isEmpty())
            return; // the viewer cannot be told that there are none: it keeps the last ones
        const QSet<int> used = usedOf(inView);
        const auto isBetter = [&used](const tSeen &a, const tSeen &b) {
            const tSourceSatellite &x = a.satellite;
            const tSourceSatellite &y = b.satellite;
            if (used.contains(x.number) != used.contains(y.number))
                return used.contains(x.number);
            return x.cn0 != y.cn0 ? x.cn0 > y.cn0 : x.elevation > y.elevation;
        };
        std::stable_sort(inView.begin(), inView.end(), isBetter);
        shownInView.clear();
        shownUsed.clear();
        for (const tSeen &seen : inView.mid(0, kRoom)) {
            shownInView.append(seen.satellite);
            if (used.contains(seen.satellite.number))
                shownUsed.insert(seen.satellite.number);
        }
    }

    QMap<QByteArray, Turns> viewTurns;
    QMap<QByteArray, Turns> activeTurns;
    QMap<QByteArray, tLatest> latest;
    QVector<QByteArray> order;
    QMap<QByteArray, tActive> activeBySource;
    int toldCycles = 0;
    int activeCycles = 0;
    std::optional<double> pdop;
    std::optional<double> hdop;
    std::optional<double> vdop;
    QVector<tSourceSatellite> shownInView;
    QSet<int> shownUsed;
};

// ---- one fix out of its sentences

/// The sentences of one type, in order.
QVector<const tSentence *> ofType(const tCycle &cycle, const char *type)
{
    QVector<const tSentence *> found;
    for (const tSentence *sentence : cycle.fix) {
        if (sentence->type == type)
            found.append(sentence);
    }
    return found;
}

/// The first text that one of a type's sentences has in a field.
QByteArray firstText(const tCycle &cycle, const char *type, int field)
{
    for (const tSentence *sentence : ofType(cycle, type)) {
        if (!sentence->field(field).isEmpty())
            return sentence->field(field);
    }
    return {};
}

void readTime(const tCycle &cycle, tSourceEpoch *epoch)
{
    for (const char *type : {"RMC", "GGA", "GNS", "GLL"}) {
        for (const tSentence *sentence : ofType(cycle, type)) {
            if (!epoch->timeMs)
                epoch->timeMs = timeOf(*sentence);
        }
    }
}

void readPosition(const tCycle &cycle, tSourceEpoch *epoch)
{
    std::optional<tPosition> finest;
    for (const char *type : {"RMC", "GGA", "GNS", "GLL"}) {
        for (const tSentence *sentence : ofType(cycle, type)) {
            const auto position = positionOf(*sentence);
            if (position && (!finest || position->decimals > finest->decimals))
                finest = position;
        }
    }
    if (finest) {
        epoch->latitude = finest->latitude;
        epoch->longitude = finest->longitude;
    }
}

void readAltitude(const tCycle &cycle, tSourceEpoch *epoch)
{
    for (const char *type : {"GGA", "GNS"}) {
        if (!epoch->altitude)
            epoch->altitude = numberOf(firstText(cycle, type, 9));
    }
}

int qualityOf(const tCycle &cycle, bool valid)
{
    const QByteArray ofGga = firstText(cycle, "GGA", 6);
    if (!ofGga.isEmpty())
        return ofGga.toInt();
    const QByteArray modes = firstText(cycle, "GNS", 6) + firstText(cycle, "RMC", 12).left(1) +
                             firstText(cycle, "GLL", 7).left(1);
    for (const char mode : modes) {
        if (qualityOf(mode) > 0)
            return qualityOf(mode);
    }
    return valid ? 1 : 0;
}

void readFix(const tCycle &cycle, tSourceEpoch *epoch)
{
    QByteArray status = firstText(cycle, "RMC", 2);
    if (status.isEmpty())
        status = firstText(cycle, "GLL", 6);
    const QByteArray modes = firstText(cycle, "GNS", 6);
    const bool hasMode =
        std::any_of(modes.cbegin(), modes.cend(), [](char mode) { return qualityOf(mode) > 0; });
    epoch->valid =
        status.isEmpty() ? firstText(cycle, "GGA", 6).toInt() > 0 || hasMode : status == "A";
    epoch->quality = qualityOf(cycle, epoch->valid);
}

QDate dateOf(const tCycle &cycle)
{
    const QByteArray ofRmc = firstText(cycle, "RMC", 9);
    const QDate date = dateOf(ofRmc.left(2), ofRmc.mid(2, 2), ofRmc.mid(4, 2));
    if (ofRmc.size() == 6 && date.isValid())
        return date;
    for (const tSentence *zda : ofType(cycle, "ZDA")) {
        const QDate ofZda = dateOf(zda->field(2), zda->field(3), zda->field(4));
        if (!zda->field(4).isEmpty() && ofZda.isValid())
            return ofZda;
    }
    return {};
}

/// The date goes on from fix to fix where none comes, and steps at midnight.
class Calendar
{
public:
    void take(const tCycle &cycle, tSourceEpoch *epoch)
    {
        const QDate told = dateOf(cycle);
        const bool isNextDay = epoch->timeMs && time && *time - *epoch->timeMs > kDayMs / 2;
        if (told.isValid())
            date = told;
        else if (date.isValid() && isNextDay)
            date = date.addDays(1);
        if (epoch->timeMs)
            time = epoch->timeMs;
        epoch->date = date;
    }

private:
    QDate date;
    std::optional<int> time;
};

/// What came in each cycle; the first is what stands before the recording's first fix.
QVector<tCycle> cyclesOf(const QVector<tSentence> &sentences, int fixes)
{
    QVector<tCycle> cycles(fixes + 1);
    for (const tSentence &sentence : sentences) {
        if (sentence.epoch >= fixes)
            continue;
        tCycle &cycle = cycles[sentence.epoch + 1];
        const QByteArray system = systemOf(sentence.talker);
        if (sentence.type == "GSV") {
            if (!cycle.systems.contains(system))
                cycle.systems.append(system);
            cycle.reports[system].take(sentence);
        } else if (sentence.type == "GSA") {
            cycle.active.append(&sentence);
        } else if (sentence.epoch >= 0) {
            cycle.fix.append(&sentence);
        }
    }
    return cycles;
}

} // namespace

namespace RecordingReader {

QVector<tSourceEpoch> read(const QByteArray &recording)
{
    QVector<tSentence> sentences = sentencesOf(recording);
    const int fixes = FixFinder(&sentences).count();
    const CycleFinder finder(&sentences);
    const QVector<tCycle> cycles = cyclesOf(sentences, fixes);
    SatelliteKeeper satellites(cycles);
    Calendar calendar;
    satellites.take(cycles.first());
    QVector<tSourceEpoch> epochs;
    for (int i = 1; i < cycles.size(); ++i) {
        const tCycle &cycle = cycles[i];
        tSourceEpoch epoch;
        readTime(cycle, &epoch);
        readPosition(cycle, &epoch);
        readAltitude(cycle, &epoch);
        readFix(cycle, &epoch);
        calendar.take(cycle, &epoch);
        satellites.take(cycle);
        satellites.write(&epoch);
        epoch.end = cycle.fix.last()->end;
        epochs.append(epoch);
    }
    return epochs;
}

QByteArray asSent(const QByteArray &stored)
{
    return stored.contains('\r') ? stored : QByteArray(stored).replace("\n", "\r\n");
}

int deviceNumber(const QByteArray &talker, int number)
{
    for (const tNumbering &row : kNumberings) {
        const QByteArray talkers(row.talkers);
        const bool fits =
            talkers == kAny ? !namesSystem(talker) : talkers.split(' ').contains(talker);
        if (fits && number >= row.first && number <= row.last)
            return number + row.offset;
    }
    return 0;
}

} // namespace RecordingReader
