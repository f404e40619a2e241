// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/GnssInfo.h"

#include "config/DebugOutput.h"

#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

/// Text beyond the limit is cut in steps of this many characters: moving 32 MB for every read
/// would cost more than the text is worth.
constexpr int kNmeaTextSlack = GnssInfo::kMaxNmeaText / 16;

constexpr double kLowestInt = std::numeric_limits<int>::min();
constexpr double kHighestInt = std::numeric_limits<int>::max();

// A broken time field can hold any finite number; the conversion of one that no int holds is
// undefined.
qint64 secondOfDay(const tUTCTime &utc)
{
    const double second =
        std::isnan(utc.second) ? 0.0 : std::clamp(utc.second, kLowestInt, kHighestInt);
    return utc.hour * 3600 + utc.minute * 60 + static_cast<qint64>(second);
}

} // namespace

GnssInfo::GnssInfo()
{
    qRegisterMetaType<tUTCTime>();
    qRegisterMetaType<tGnssLocation>();
    qRegisterMetaType<tGnssSvStatus>();
}

GnssInfo *GnssInfo::instance()
{
    static auto *const instance = new GnssInfo;
    return instance;
}

void GnssInfo::setDataStatus(bool status)
{
    dataReceivedFlag = status;
}

void GnssInfo::setUtcTime(tUTCTime utc)
{
    previousUtcTime = utcTime;
    utcTime = utc;
}

void GnssInfo::setLocation(tGnssLocation loc)
{
    location = loc;
}

void GnssInfo::setSvStatus(tGnssSvStatus svs)
{
    svStatus = svs;
}

// Taken by value as in every setter; sharing the text costs one counter.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void GnssInfo::setNmeaData(QString str)
{
    const QMutexLocker locker(&nmeaMutex);
    nmeaData += str;
    if (nmeaData.size() > kMaxNmeaText + kNmeaTextSlack)
        nmeaData.remove(0, nmeaData.size() - kMaxNmeaText);
}

void GnssInfo::setTtff(uint time_to_fix)
{
    ttff = time_to_fix;
    ttffSet = true;
}

void GnssInfo::setNvmStatus(bool st)
{
    nvmSaved = st;
}

tUTCTime GnssInfo::getUtcTime()
{
    return utcTime;
}

tGnssLocation GnssInfo::getLocation()
{
    return location;
}

tGnssSvStatus GnssInfo::getSvStatus()
{
    return svStatus;
}

QString GnssInfo::getNmeaData()
{
    const QMutexLocker locker(&nmeaMutex);
    return nmeaData.size() > kMaxNmeaText ? nmeaData.right(kMaxNmeaText) : nmeaData;
}

uint GnssInfo::getTtff()
{
    return ttff;
}

bool GnssInfo::isDataReceived()
{
    return dataReceivedFlag;
}

bool GnssInfo::isTtffSet()
{
    return ttffSet;
}

bool GnssInfo::isNvmSaved()
{
    return nvmSaved;
}

int GnssInfo::utcGap()
{
    qint64 gap = secondOfDay(utcTime) - secondOfDay(previousUtcTime);
    if (std::abs(utcTime.hour - previousUtcTime.hour) == 23)
        gap += 3600;
    return static_cast<int>(
        std::clamp<qint64>(gap, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

void GnssInfo::clearUtcTime()
{
    utcTime = {};
    previousUtcTime = {};
}

void GnssInfo::clearLocation()
{
    location = {};
}

void GnssInfo::clearSvStatus()
{
    svStatus = {};
}

void GnssInfo::clearNmeaData()
{
    const QMutexLocker locker(&nmeaMutex);
    nmeaData.clear();
}

void GnssInfo::clearTtff()
{
    ttff = 0;
    ttffSet = false;
}

void GnssInfo::clearGnssInfo()
{
    debugPrint(1, QStringLiteral("GnssInfo"), QStringLiteral("GnssInfo clear"));
    clearLocation();
    clearSvStatus();
    clearNmeaData();
    clearTtff();
}
