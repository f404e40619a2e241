// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/epoch/SatelliteNumbering.h"

#include "receiver/nmea/NmeaSentence.h"

#include <QList>

namespace {

// Numbers of a talker's sentences and what brings them into the device's numbering.
struct tNumbering
{
    const char *talker;
    int first;
    int last;
    int offset;
};

constexpr tNumbering kNumberings[] = {
    // One talker for all systems: GLONASS, QZSS, BeiDou and Galileo beside GPS and SBAS.
    {"GP", 1, 96, 0},       {"GP", 120, 151, -87}, // SBAS by its PRN
    {"GP", 193, 200, 0},    {"GP", 201, 263, -80},  {"GP", 301, 336, 0},
    {"GP", 401, 463, -280}, {"GN", 1, 96, 0},       {"GN", 120, 120, -87},
    {"GN", 121, 183, 0}, // the device's own GSAs; SBAS by its PRN is not told apart
    {"GN", 193, 200, 0},    {"GN", 201, 263, -80},  {"GN", 301, 336, 0},
    {"GN", 401, 463, -280}, {"GL", 1, 32, 64},      {"GL", 33, 96, 0},
    {"GA", 1, 36, 300},     {"GA", 101, 136, 200},  {"GA", 301, 336, 0},
    {"GB", 1, 63, 120},     {"GB", 121, 183, 0},    {"GB", 193, 200, 0}, // QZSS under Quectel's PQ
    {"GB", 201, 263, -80},  {"GB", 401, 463, -280}, {"QZ", 1, 10, 192},
    {"QZ", 193, 202, 0},
};

struct tNumberRange
{
    int first;
    int last;
    Constellation constellation;
};

constexpr tNumberRange kRanges[] = {
    {1, 32, Constellation::Gps},      {33, 64, Constellation::Gps}, // SBAS
    {65, 96, Constellation::Glonass}, {121, 183, Constellation::BeiDou},
    {193, 202, Constellation::Qzss},  {301, 336, Constellation::Galileo},
};

} // namespace

namespace SatelliteNumbering {

QByteArray usualTalker(const QByteArray &talker)
{
    static const QList<QByteArray> systems = {"GP", "GL", "GA", "GB", "QZ", "GI", "GN"};
    if (systems.contains(talker))
        return talker;
    if (talker == "BD" || talker == "PQ")
        return QByteArrayLiteral("GB");
    if (talker == "GQ")
        return QByteArrayLiteral("QZ");
    return QByteArrayLiteral("GN");
}

std::optional<QByteArray> talkerOfSystem(const QByteArray &systemId)
{
    static const QList<QByteArray> talkers = {"GP", "GL", "GA", "GB", "QZ", "GI"};
    const int index = Nmea::integer(systemId).value_or(0) - 1;
    return index >= 0 && index < talkers.size() ? std::optional<QByteArray>(talkers[index])
                                                : std::nullopt;
}

std::optional<int> deviceNumber(const QByteArray &talker, int number)
{
    for (const tNumbering &numbering : kNumberings) {
        if (talker == numbering.talker && number >= numbering.first && number <= numbering.last)
            return number + numbering.offset;
    }
    return std::nullopt;
}

std::optional<Constellation> constellationOf(int number)
{
    for (const tNumberRange &range : kRanges) {
        if (number >= range.first && number <= range.last)
            return range.constellation;
    }
    return std::nullopt;
}

} // namespace SatelliteNumbering
