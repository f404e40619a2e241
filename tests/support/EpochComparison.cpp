// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/EpochComparison.h"

#include "gnss/NmeaReader.h"

#include <QTime>

#include <cmath>
#include <cstdlib>
#include <functional>

namespace {

using EpochComparison::tVerdict;

constexpr double kUnitsOfDegree = 600000.0; // 1/10000 minute
constexpr double kAltitudeTolerance = 1e-6; // metres
constexpr double kDopTolerance = 0.005001;  // two decimals
constexpr int kFarthest = 8;                // epochs looked ahead for one that was lost or added

/// What was made of one epoch, in the reader's units.
struct tFound
{
    std::optional<int> timeMs;
    QDate date;
    QString status; // empty where it cannot be seen
    int quality = 0;
    std::optional<qint64> latitude;
    std::optional<qint64> longitude;
    std::optional<double> altitude;
    std::optional<double> dops[3];
    QMap<int, tSourceSatellite> inView;
    QSet<int> used;
};

template<typename T>
QString text(const std::optional<T> &value)
{
    return value ? QString::number(*value) : QStringLiteral("none");
}

QString text(const std::optional<double> &value)
{
    return value ? QString::number(*value, 'f', 6) : QStringLiteral("none");
}

QString timeText(std::optional<int> timeMs)
{
    return timeMs
               ? QTime::fromMSecsSinceStartOfDay(*timeMs).toString(QStringLiteral("HH:mm:ss.zzz"))
               : QStringLiteral("none");
}

QString dateText(QDate date)
{
    return date.isValid() ? date.toString(Qt::ISODate) : QStringLiteral("none");
}

QString statusText(bool valid)
{
    return valid ? QStringLiteral("A") : QStringLiteral("V");
}

QString text(const tSourceSatellite &satellite)
{
    return QStringLiteral("%1/%2/%3")
        .arg(satellite.elevation)
        .arg(satellite.azimuth)
        .arg(satellite.cn0);
}

class Departures
{
public:
    void expect(const QString &field, const QString &expected, const QString &found)
    {
        if (expected != found)
            list << QStringLiteral("%1: expected %2, found %3").arg(field, expected, found);
    }

    void expect(const QString &field, std::optional<double> expected, std::optional<double> found,
                double tolerance)
    {
        if (expected && found ? std::fabs(*expected - *found) > tolerance : expected != found)
            expect(field, text(expected), text(found));
    }

    QStringList list;
};

void compareFix(const tSourceEpoch &epoch, const tFound &found, Departures *departures)
{
    if (!found.status.isEmpty())
        departures->expect(QStringLiteral("status"), statusText(epoch.valid), found.status);
    departures->expect(QStringLiteral("fix"), QString::number(epoch.quality),
                       QString::number(found.quality));
    departures->expect(QStringLiteral("latitude"), text(epoch.latitude), text(found.latitude));
    departures->expect(QStringLiteral("longitude"), text(epoch.longitude), text(found.longitude));
    departures->expect(QStringLiteral("altitude"), epoch.altitude, found.altitude,
                       kAltitudeTolerance);
    departures->expect(QStringLiteral("PDOP"), epoch.pdop, found.dops[0], kDopTolerance);
    departures->expect(QStringLiteral("HDOP"), epoch.hdop, found.dops[1], kDopTolerance);
    departures->expect(QStringLiteral("VDOP"), epoch.vdop, found.dops[2], kDopTolerance);
}

void compareTime(const tSourceEpoch &epoch, const tFound &found, Departures *departures)
{
    departures->expect(QStringLiteral("time"), timeText(epoch.timeMs), timeText(found.timeMs));
    departures->expect(QStringLiteral("date"), dateText(epoch.date), dateText(found.date));
}

void compareSatellites(const tSourceEpoch &epoch, const tFound &found, Departures *departures)
{
    QMap<int, tSourceSatellite> extra = found.inView;
    for (const tSourceSatellite &satellite : epoch.inView) {
        const int number = satellite.number;
        const QString name = QStringLiteral("satellite %1").arg(number);
        const bool isThere = extra.contains(number);
        departures->expect(name, text(satellite),
                           isThere ? text(extra.take(number)) : QStringLiteral("none"));
        if (isThere)
            departures->expect(name + QStringLiteral(" used"),
                               QString::number(epoch.used.contains(number) ? 1 : 0),
                               QString::number(found.used.contains(number) ? 1 : 0));
    }
    for (auto it = extra.cbegin(); it != extra.cend(); ++it)
        departures->expect(QStringLiteral("satellite %1").arg(it.key()), QStringLiteral("none"),
                           text(*it));
}

// ---- what the daemon writes

std::optional<qint64> coordinate(const QString &digits, const QString &letter)
{
    if (digits.isEmpty())
        return std::nullopt;
    const int point = digits.indexOf(QLatin1Char('.'));
    const QString whole = digits.left(point - 2);
    const QString minutes = digits.mid(point - 2).remove(QLatin1Char('.'));
    const qint64 size = whole.toLongLong() * 600000 + minutes.toLongLong();
    return letter == QLatin1String("S") || letter == QLatin1String("W") ? -size : size;
}

std::optional<double> dopOf(const QStringList &texts)
{
    if (texts.isEmpty() || texts.last().isEmpty())
        return std::nullopt;
    return texts.last().toDouble();
}

std::optional<int> timeOf(const QString &text)
{
    const QTime time = QTime::fromString(text, QStringLiteral("HHmmss.zzz"));
    return time.isValid() ? std::optional<int>(time.msecsSinceStartOfDay()) : std::nullopt;
}

QDate dateOf(const QString &text)
{
    return {2000 + text.mid(4, 2).toInt(), text.mid(2, 2).toInt(), text.left(2).toInt()};
}

/// A cycle without satellites or without GSA leaves what was said of them before.
QVector<tFound> foundIn(const QVector<tReadCycle> &cycles)
{
    QVector<tFound> all;
    tFound found;
    for (const tReadCycle &cycle : cycles) {
        found.timeMs = timeOf(cycle.time);
        found.date = dateOf(cycle.date);
        found.status = statusText(cycle.valid);
        found.quality = cycle.quality;
        found.latitude = coordinate(cycle.latitude, cycle.northSouth);
        found.longitude = coordinate(cycle.longitude, cycle.eastWest);
        found.altitude = std::nullopt;
        if (!cycle.altitude.isEmpty())
            found.altitude = cycle.altitude.toDouble();
        if (!cycle.pdop.isEmpty()) {
            found.dops[0] = dopOf(cycle.pdop);
            found.dops[1] = dopOf(cycle.hdop);
            found.dops[2] = dopOf(cycle.vdop);
        }
        if (!cycle.inView.isEmpty()) {
            found.inView.clear();
            for (auto it = cycle.inView.cbegin(); it != cycle.inView.cend(); ++it)
                found.inView[it.key()] = {it.key(), it->elevation, it->azimuth, it->strength};
            found.used = QSet<int>(cycle.used.cbegin(), cycle.used.cend());
        }
        all.append(found);
    }
    return all;
}

// ---- what a viewer shows

tFound foundIn(const Publication &shown)
{
    tFound found;
    const tUTCTime &utc = shown.utc;
    if (utc.valid)
        found.timeMs = utc.hour * 3600000 + utc.minute * 60000 +
                       static_cast<int>(std::lround(utc.second * 1000.0));
    found.date = QDate(utc.year, utc.month, utc.day);
    found.quality = shown.location.fix;
    found.latitude = std::llround(shown.location.latitude * kUnitsOfDegree);
    found.longitude = std::llround(shown.location.longitude * kUnitsOfDegree);
    found.altitude = shown.location.altitude;
    found.dops[0] = static_cast<double>(shown.location.pdop);
    found.dops[1] = static_cast<double>(shown.location.hdop);
    found.dops[2] = static_cast<double>(shown.location.vdop);
    for (int i = 0; i < shown.svStatus.numSvs; ++i) {
        const tGnssSv &sv = shown.svStatus.svList[i];
        found.inView[sv.prn] = {sv.prn, static_cast<int>(sv.elevation),
                                static_cast<int>(sv.azimuth), static_cast<int>(sv.snr)};
        if (sv.usedInFix)
            found.used.insert(sv.prn);
    }
    return found;
}

/// The page has no signs, and zero for what is unknown.
tSourceEpoch asShown(tSourceEpoch epoch)
{
    epoch.latitude = std::abs(epoch.latitude.value_or(0));
    epoch.longitude = std::abs(epoch.longitude.value_or(0));
    epoch.altitude = epoch.altitude.value_or(0.0);
    epoch.pdop = epoch.pdop.value_or(0.0);
    epoch.hdop = epoch.hdop.value_or(0.0);
    epoch.vdop = epoch.vdop.value_or(0.0);
    return epoch;
}

/// What a viewer does not learn in an epoch it keeps: a date comes only with a time.
QVector<tSourceEpoch> asShown(const QVector<tSourceEpoch> &epochs)
{
    QVector<tSourceEpoch> all;
    std::optional<int> timeMs;
    QDate date;
    for (const tSourceEpoch &epoch : epochs) {
        if (epoch.timeMs) {
            timeMs = epoch.timeMs;
            date = epoch.date;
        }
        all.append(asShown(epoch));
        all.last().timeMs = timeMs;
        all.last().date = date;
    }
    return all;
}

// ---- all epochs

QString named(int number, const tSourceEpoch &epoch, const QString &departure)
{
    return QStringLiteral("epoch %1 (%2): %3").arg(number).arg(timeText(epoch.timeMs), departure);
}

/// How many of `a` from `i` on are passed to meet the time of `b` at `j`; none within reach: -1.
template<typename A, typename B>
int distanceTo(const QVector<A> &a, int i, const QVector<B> &b, int j)
{
    for (int step = 1; step <= kFarthest && i + step < a.size(); ++step) {
        if (a[i + step].timeMs == b[j].timeMs)
            return step;
    }
    return -1;
}

tVerdict compared(const QVector<tSourceEpoch> &epochs, const QVector<tFound> &found)
{
    tVerdict verdict;
    verdict.epochs = epochs.size();
    int j = 0;
    for (int i = 0; i < epochs.size(); ++i) {
        if (j < found.size() && epochs[i].timeMs != found[j].timeMs) {
            const int lost = distanceTo(epochs, i, found, j);
            const int added = distanceTo(found, j, epochs, i);
            for (int n = 0; added > 0 && (lost < 0 || added <= lost) && n < added; ++n)
                verdict.faults << named(
                    i, epochs[i],
                    QStringLiteral("invented before it: %1").arg(timeText(found[j++].timeMs)));
            if (lost > 0 && (added < 0 || lost < added)) {
                verdict.faults << named(i, epochs[i], QStringLiteral("lost"));
                continue;
            }
        }
        if (j >= found.size()) {
            verdict.faults << named(i, epochs[i], QStringLiteral("lost"));
            continue;
        }
        Departures departures;
        compareTime(epochs[i], found[j], &departures);
        compareFix(epochs[i], found[j], &departures);
        compareSatellites(epochs[i], found[j], &departures);
        ++j;
        for (const QString &departure : departures.list)
            verdict.faults << named(i, epochs[i], departure);
        verdict.right += departures.list.isEmpty() ? 1 : 0;
    }
    for (; j < found.size(); ++j)
        verdict.faults << QStringLiteral("invented at the end: %1").arg(timeText(found[j].timeMs));
    return verdict;
}

QStringList rawDepartures(const tSourceEpoch &epoch, const tSourceEpoch &before,
                          const tFound &found)
{
    Departures departures;
    compareTime(epoch, found, &departures);
    for (const auto &compare : {compareFix, compareSatellites}) {
        Departures ofThis;
        Departures ofBefore;
        compare(epoch, found, &ofThis);
        compare(before, found, &ofBefore);
        if (!ofBefore.list.isEmpty())
            departures.list << ofThis.list;
    }
    return departures.list;
}

} // namespace

namespace EpochComparison {

tVerdict ofCycles(const QVector<tSourceEpoch> &epochs, const QVector<tReadCycle> &cycles)
{
    return compared(epochs, foundIn(cycles));
}

tVerdict ofShown(const QVector<tSourceEpoch> &epochs, const std::vector<Publication> &shown)
{
    QVector<tFound> found;
    for (const Publication &publication : shown)
        found.append(foundIn(publication));
    return compared(asShown(epochs), found);
}

tVerdict ofRaw(const QVector<tSourceEpoch> &epochs, const QByteArray &recording)
{
    tVerdict verdict;
    verdict.epochs = epochs.size();
    const QVector<tSourceEpoch> expected = asShown(epochs);
    const Publications publications;
    NmeaReader reader;
    int fed = 0;
    for (int i = 0; i < expected.size(); ++i) {
        const int end = recording.indexOf('\n', expected[i].end) + 1;
        if (end > fed) {
            reader.feed({recording.constData() + fed, static_cast<std::size_t>(end - fed)});
            fed = end;
        }
        const QStringList departures = rawDepartures(expected[i], expected[std::max(i - 1, 0)],
                                                     foundIn(publications.current()));
        for (const QString &departure : departures)
            verdict.faults << named(i, expected[i], departure);
        verdict.right += departures.isEmpty() ? 1 : 0;
    }
    return verdict;
}

} // namespace EpochComparison
