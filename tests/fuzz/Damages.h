// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QRandomGenerator>
#include <QVector>

/// What can happen to bytes on their way, the same for the same random numbers.
namespace Damages {

using Random = QRandomGenerator;
using Damage = QByteArray (*)(QByteArray bytes, Random &random);

struct Named
{
    const char *name;
    Damage damage;
};

/// Each kind of damage, and one that does several of them.
QVector<Named> all();

QByteArray anyBytes(int count, Random &random);

} // namespace Damages
