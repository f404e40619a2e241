// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/Dialect.h"

#include "receiver/epoch/SatelliteNumbering.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <tuple>

namespace {

constexpr int kGsvGroups = 4;   // satellites a GSV sentence holds
constexpr int kGsaNumbers = 12; // satellites a GSA sentence holds

QByteArray padded(qint64 value, int width)
{
    return QByteArray::number(value).rightJustified(width, '0');
}

// A value beyond what any field holds is not known rather than wrong, and makes no endless field.
QByteArray fixedOrEmpty(const std::optional<double> &value, int decimals)
{
    constexpr double kMost = 99999.0;
    return value && std::fabs(*value) <= kMost ? QByteArray::number(*value, 'f', decimals)
                                               : QByteArray();
}

// As many decimals as the receiver gave, within limits: the viewer does its own rounding.
QByteArray preciseOrEmpty(const std::optional<double> &value, int leastDecimals, int maxDecimals)
{
    QByteArray text = fixedOrEmpty(value, maxDecimals);
    const int least = text.indexOf('.') + 1 + leastDecimals;
    while (text.size() > least && text.endsWith('0'))
        text.chop(1);
    return text;
}

QByteArray dopText(const std::optional<double> &value)
{
    return preciseOrEmpty(value ? std::optional<double>(std::max(*value, 0.0)) : std::nullopt, 2,
                          3);
}

QByteArray metresText(const std::optional<double> &value)
{
    return preciseOrEmpty(value, 1, 4);
}

QByteArray timeText(const tEpoch &epoch)
{
    if (!epoch.timeMs)
        return {};
    const int ms = *epoch.timeMs;
    return padded(ms / 3600000, 2) + padded(ms / 60000 % 60, 2) + padded(ms / 1000 % 60, 2) + '.' +
           padded(ms % 1000, 3);
}

QByteArray dateText(const tEpoch &epoch)
{
    if (!epoch.date.isValid())
        return {};
    return padded(epoch.date.day(), 2) + padded(epoch.date.month(), 2) +
           padded(epoch.date.year() % 100, 2);
}

// Degrees and minutes with the hemisphere letter, "4807.0380,N".
QByteArray angleText(const std::optional<qint64> &angle, int degreeDigits, char positive,
                     char negative)
{
    if (!angle)
        return QByteArrayLiteral(",");
    constexpr qint64 kUnitsADegree = 600000; // 60 minutes in ten-thousandths
    const qint64 units = std::abs(*angle);
    const qint64 minutes = units % kUnitsADegree;
    return padded(units / kUnitsADegree, degreeDigits) + padded(minutes / 10000, 2) + '.' +
           padded(minutes % 10000, 4) + ',' + (*angle < 0 ? negative : positive);
}

QByteArray positionText(const tEpoch &epoch)
{
    return angleText(epoch.latitude, 2, 'N', 'S') + ',' + angleText(epoch.longitude, 3, 'E', 'W');
}

QByteArray gga(const tEpoch &epoch)
{
    return Dialect::sentence(
        QByteArrayLiteral("GNGGA,") + timeText(epoch) + ',' + positionText(epoch) + ',' +
        QByteArray::number(epoch.quality) + ',' + padded(epoch.satellitesInUse.value_or(0), 2) +
        ',' + dopText(epoch.ggaHdop ? epoch.ggaHdop : epoch.hdop) + ',' +
        metresText(epoch.altitudeM) + ",M," + metresText(epoch.separationM) + ",M,,");
}

// A receiver's GNS stays, before the GGA: that one alone tells the viewer the quality of the fix.
QByteArray gns(const tEpoch &epoch)
{
    // The viewer knows the lack of a fix by exactly these letters.
    const bool any = epoch.gnsModes.count('N') < epoch.gnsModes.size();
    return Dialect::sentence(
        QByteArrayLiteral("GNGNS,") + timeText(epoch) + ',' + positionText(epoch) + ',' +
        (any ? epoch.gnsModes : QByteArrayLiteral("NNNN")) + ',' +
        padded(epoch.satellitesInUse.value_or(0), 2) + ',' +
        dopText(epoch.ggaHdop ? epoch.ggaHdop : epoch.hdop) + ',' + metresText(epoch.altitudeM) +
        ',' + metresText(epoch.separationM) + ",,");
}

QByteArray gll(const tEpoch &epoch)
{
    return Dialect::sentence(QByteArrayLiteral("GNGLL,") + positionText(epoch) + ',' +
                             timeText(epoch) + ',' + (epoch.valid ? 'A' : 'V') + ',' + epoch.mode);
}

QByteArray rmc(const tEpoch &epoch)
{
    return Dialect::sentence(
        QByteArrayLiteral("GNRMC,") + timeText(epoch) + ',' + (epoch.valid ? 'A' : 'V') + ',' +
        positionText(epoch) + ',' + fixedOrEmpty(epoch.speedKnots, 2) + ',' +
        fixedOrEmpty(epoch.courseDeg, 2) + ',' + dateText(epoch) + ",,," + epoch.mode);
}

QByteArray gsvGroup(const tSatellite &satellite)
{
    // Always two digits of C/N0: the reader takes two characters there, also before the checksum.
    return ',' + padded(satellite.number, 2) + ',' +
           (satellite.elevationDeg ? padded(std::clamp(*satellite.elevationDeg, 0, 90), 2)
                                   : QByteArray()) +
           ',' +
           (satellite.azimuthDeg ? padded(((*satellite.azimuthDeg % 360) + 360) % 360, 3)
                                 : QByteArray()) +
           ',' + padded(std::clamp(satellite.cn0DbHz, 0, 99), 2);
}

void appendGsvSet(QVector<QByteArray> &out, const QByteArray &talker,
                  const QVector<tSatellite> &satellites)
{
    const int messages = (satellites.size() + kGsvGroups - 1) / kGsvGroups;
    for (int message = 0; message < messages; ++message) {
        QByteArray text = talker + "GSV," + QByteArray::number(messages) + ',' +
                          QByteArray::number(message + 1) + ',' + padded(satellites.size(), 2);
        const int end = std::min(satellites.size(), (message + 1) * kGsvGroups);
        for (int i = message * kGsvGroups; i < end; ++i)
            text += gsvGroup(satellites[i]);
        out.append(Dialect::sentence(text));
    }
}

QByteArray gsa(const tEpoch &epoch, const QByteArray &talker, const QVector<int> &numbers)
{
    QByteArray text = talker + "GSA,A," + QByteArray::number(epoch.fixMode);
    for (int i = 0; i < kGsaNumbers; ++i)
        text += i < numbers.size() ? ',' + padded(numbers[i], 2) : QByteArrayLiteral(",");
    return Dialect::sentence(text + ',' + dopText(epoch.pdop) + ',' + dopText(epoch.hdop) + ',' +
                             dopText(epoch.vdop));
}

void appendGsas(QVector<QByteArray> &out, const tEpoch &epoch, const QVector<int> &used)
{
    bool any = false;
    for (const Constellation constellation : kConstellations) {
        QVector<int> numbers;
        for (const int number : used) {
            if (SatelliteNumbering::constellationOf(number) == constellation)
                numbers.append(number);
        }
        for (int from = 0; from < numbers.size(); from += kGsaNumbers) {
            out.append(
                gsa(epoch, Dialect::talkerOf(constellation), numbers.mid(from, kGsaNumbers)));
            any = true;
        }
    }
    // Without a satellite in use one empty sentence still carries the fix mode and the DOPs.
    if (!any)
        out.append(gsa(epoch, Dialect::talkerOf(Constellation::Gps), {}));
}

bool isNumbered(const tSatellite &satellite)
{
    return SatelliteNumbering::constellationOf(satellite.number).has_value();
}

// At most kMaxInView satellites, in their own order: those in the fix first, then the strongest,
// then the highest.
QVector<tSatellite> listed(const tEpoch &epoch)
{
    QVector<tSatellite> all;
    std::copy_if(epoch.inView.cbegin(), epoch.inView.cend(), std::back_inserter(all), isNumbered);
    if (all.size() <= Dialect::kMaxInView)
        return all;
    QVector<int> order(all.size());
    for (int i = 0; i < order.size(); ++i)
        order[i] = i;
    const auto rank = [&all, &epoch](int i) {
        return std::make_tuple(!epoch.used.contains(all[i].number), -all[i].cn0DbHz,
                               -all[i].elevationDeg.value_or(-1));
    };
    std::stable_sort(order.begin(), order.end(),
                     [&rank](int left, int right) { return rank(left) < rank(right); });
    order.resize(Dialect::kMaxInView);
    std::sort(order.begin(), order.end());
    QVector<tSatellite> kept;
    for (const int i : qAsConst(order))
        kept.append(all[i]);
    return kept;
}

// The satellites in the fix; one that had to leave the list of those in view leaves this one too.
QVector<int> listedInUse(const tEpoch &epoch, const QVector<tSatellite> &inView)
{
    const auto holds = [](const QVector<tSatellite> &list, int number) {
        return std::any_of(list.cbegin(), list.cend(),
                           [number](const tSatellite &sat) { return sat.number == number; });
    };
    QVector<int> numbers;
    for (const int number : epoch.used) {
        const bool left = holds(epoch.inView, number) && !holds(inView, number);
        if (!left && SatelliteNumbering::constellationOf(number) && !numbers.contains(number) &&
            numbers.size() < Dialect::kMaxInView)
            numbers.append(number);
    }
    return numbers;
}

} // namespace

namespace Dialect {

QByteArray talkerOf(Constellation constellation)
{
    switch (constellation) {
    case Constellation::Gps:
        return QByteArrayLiteral("GP");
    case Constellation::Glonass:
        return QByteArrayLiteral("GL");
    case Constellation::Galileo:
        return QByteArrayLiteral("GA");
    case Constellation::BeiDou:
        return QByteArrayLiteral("GB");
    case Constellation::Qzss:
        return QByteArrayLiteral("QZ");
    }
    return {};
}

QVector<QByteArray> sentences(const tEpoch &epoch)
{
    const QVector<tSatellite> inView = listed(epoch);
    QVector<QByteArray> out;
    if (!epoch.gnsModes.isEmpty())
        out.append(gns(epoch));
    if (!epoch.withoutFix)
        out.append(gga(epoch));
    for (const Constellation constellation : kConstellations) {
        QVector<tSatellite> ofIt;
        std::copy_if(inView.cbegin(), inView.cend(), std::back_inserter(ofIt),
                     [constellation](const tSatellite &satellite) {
                         return SatelliteNumbering::constellationOf(satellite.number) ==
                                constellation;
                     });
        appendGsvSet(out, talkerOf(constellation), ofIt);
    }
    if (epoch.activeKnown)
        appendGsas(out, epoch, listedInUse(epoch, inView));
    if (!epoch.withoutFix) {
        out.append(gll(epoch));
        out.append(rmc(epoch));
    }
    return out + epoch.others;
}

} // namespace Dialect
