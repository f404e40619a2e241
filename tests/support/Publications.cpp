// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/Publications.h"

#include <QTextStream>

#include <algorithm>
#include <iterator>

bool operator==(const tUTCTime &a, const tUTCTime &b)
{
    return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
           a.minute == b.minute && a.second == b.second && a.reserved == b.reserved &&
           a.valid == b.valid;
}

bool operator==(const tGnssLocation &a, const tGnssLocation &b)
{
    return a.status == b.status && a.latitude == b.latitude && a.longitude == b.longitude &&
           a.altitude == b.altitude && a.fix == b.fix && a.speed == b.speed && a.pdop == b.pdop &&
           a.hdop == b.hdop && a.vdop == b.vdop && a.fixTime == b.fixTime;
}

bool operator==(const tGnssSv &a, const tGnssSv &b)
{
    return a.prn == b.prn && a.snr == b.snr && a.elevation == b.elevation &&
           a.azimuth == b.azimuth && a.usedInFix == b.usedInFix;
}

bool operator==(const tGnssSvStatus &a, const tGnssSvStatus &b)
{
    return a.numSvs == b.numSvs &&
           std::equal(std::begin(a.svList), std::end(a.svList), std::begin(b.svList));
}

bool operator==(const Publication &a, const Publication &b)
{
    return a.location == b.location && a.utc == b.utc && a.svStatus == b.svStatus &&
           a.ttff == b.ttff && a.ttffSet == b.ttffSet && a.nvmSaved == b.nvmSaved &&
           a.utcUpdates == b.utcUpdates && a.ttffUpdates == b.ttffUpdates &&
           a.nvmUpdates == b.nvmUpdates;
}

QString describe(const Publication &publication)
{
    QString text;
    QTextStream out(&text);
    out.setRealNumberPrecision(17);
    const tGnssLocation &location = publication.location;
    out << "location " << location.status << ' ' << location.latitude << ' ' << location.longitude
        << ' ' << location.altitude << ' ' << location.fix << ' ' << location.speed << ' '
        << location.pdop << ' ' << location.hdop << ' ' << location.vdop << ' ' << location.fixTime;
    const tUTCTime &utc = publication.utc;
    out << " utc " << utc.year << '-' << utc.month << '-' << utc.day << ' ' << utc.hour << ':'
        << utc.minute << ':' << utc.second << ' ' << utc.valid;
    out << " ttff " << publication.ttffSet << ' ' << publication.ttff << " nvm "
        << publication.nvmSaved << " signals " << publication.utcUpdates << ' '
        << publication.ttffUpdates << ' ' << publication.nvmUpdates;
    out << " svs " << publication.svStatus.numSvs;
    for (const tGnssSv &sv : publication.svStatus.svList)
        out << " [" << sv.prn << ' ' << sv.elevation << ' ' << sv.azimuth << ' ' << sv.snr << ' '
            << sv.usedInFix << ']';
    return text;
}

Publications::Publications()
{
    resetModel();
    QObject::connect(model, &GnssInfo::utcUpdate, &context, [this] { ++utcUpdates; });
    QObject::connect(model, &GnssInfo::ttffUpdate, &context, [this] { ++ttffUpdates; });
    QObject::connect(model, &GnssInfo::nvmUpdate, &context, [this] { ++nvmUpdates; });
    QObject::connect(model, &GnssInfo::locationUpdate, &context,
                     [this] { list.push_back(current()); });
}

Publication Publications::current() const
{
    return {model->getLocation(), model->getUtcTime(), model->getSvStatus(),
            model->getTtff(),     model->isTtffSet(),  model->isNvmSaved(),
            utcUpdates,           ttffUpdates,         nvmUpdates};
}

void Publications::resetModel()
{
    GnssInfo *const model = GnssInfo::instance();
    model->clearLocation();
    model->clearSvStatus();
    model->clearNmeaData();
    model->clearTtff();
    model->clearUtcTime();
    model->setDataStatus(false);
    model->setNvmStatus(false);
}

QString firstDifference(const std::vector<Publication> &a, const std::vector<Publication> &b)
{
    const auto [inA, inB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (inA == a.end() && inB == b.end())
        return {};
    return QStringLiteral("publication %1 of %2 and %3\n%4\n%5")
        .arg(inA - a.begin())
        .arg(a.size())
        .arg(b.size())
        .arg(inA == a.end() ? QStringLiteral("(none)") : describe(*inA),
             inB == b.end() ? QStringLiteral("(none)") : describe(*inB));
}
