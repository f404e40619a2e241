// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Damages.h"

#include <algorithm>
#include <iterator>

namespace {

using Damages::anyBytes;
using Damages::Damage;
using Damages::Random;

int anyPlace(const QByteArray &bytes, Random &random)
{
    return random.bounded(bytes.size() + 1);
}

QByteArray flippedBits(QByteArray bytes, Random &random)
{
    for (int count = random.bounded(1, 20); count > 0 && !bytes.isEmpty(); --count) {
        const int at = random.bounded(bytes.size());
        bytes[at] = static_cast<char>(bytes.at(at) ^ (1 << random.bounded(8)));
    }
    return bytes;
}

QByteArray cutPieces(QByteArray bytes, Random &random)
{
    for (int count = random.bounded(1, 8); count > 0; --count)
        bytes.remove(anyPlace(bytes, random), random.bounded(1, 60));
    return bytes;
}

QByteArray withNuls(QByteArray bytes, Random &random)
{
    for (int count = random.bounded(1, 30); count > 0; --count)
        bytes.insert(anyPlace(bytes, random), '\0');
    return bytes;
}

/// A field of up to 1500 equal characters, so that its sentence is too long to be kept in some.
QByteArray hugeField(QByteArray bytes, Random &random)
{
    const int comma = bytes.indexOf(',', anyPlace(bytes, random));
    const char filling[] = {'0', '9', '.', '-', 'e', ' ', 'x', ','};
    const char character = filling[random.bounded(int(sizeof filling))];
    return bytes.insert(comma + 1, QByteArray(random.bounded(1, 1500), character));
}

QByteArray longGarbage(QByteArray bytes, Random &random)
{
    return bytes.insert(anyPlace(bytes, random), anyBytes(random.bounded(1, 4000), random));
}

QByteArray repeatedPieces(QByteArray bytes, Random &random)
{
    for (int count = random.bounded(1, 6); count > 0; --count) {
        const QByteArray piece = bytes.mid(anyPlace(bytes, random), random.bounded(1, 200));
        bytes.insert(anyPlace(bytes, random), piece);
    }
    return bytes;
}

/// Bytes with a meaning of their own, at places where they have none.
QByteArray strayMarks(QByteArray bytes, Random &random)
{
    const char *const marks[] = {"$",   "\r",           "\n",           "*",        ",",
                                 "$GP", "\xef\xbb\xbf", "\xe2\x88\x92", "\xc3\xa4", "\xf0\x9f"};
    for (int count = random.bounded(1, 20); count > 0; --count)
        bytes.insert(anyPlace(bytes, random), marks[random.bounded(int(std::size(marks)))]);
    return bytes;
}

constexpr struct
{
    const char *name;
    Damage damage;
} kDamages[] = {
    {"flipped bits", flippedBits}, {"cut pieces", cutPieces},
    {"NUL bytes", withNuls},       {"huge field", hugeField},
    {"long garbage", longGarbage}, {"repeated pieces", repeatedPieces},
    {"stray marks", strayMarks},
};

QByteArray severalDamages(QByteArray bytes, Random &random)
{
    for (int count = random.bounded(2, 6); count > 0; --count)
        bytes = kDamages[random.bounded(int(std::size(kDamages)))].damage(bytes, random);
    return bytes;
}

} // namespace

namespace Damages {

QByteArray anyBytes(int count, Random &random)
{
    QByteArray bytes(count, '\0');
    std::generate(bytes.begin(), bytes.end(),
                  [&random] { return static_cast<char>(random.bounded(256)); });
    return bytes;
}

QVector<Named> all()
{
    QVector<Named> named;
    for (const auto &entry : kDamages)
        named.append({entry.name, entry.damage});
    named.append({"several of them", severalDamages});
    return named;
}

} // namespace Damages
