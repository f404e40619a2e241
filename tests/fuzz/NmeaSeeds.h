// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QVector>

/// A short input that the mutations of the fuzz tests start from.
struct NmeaSeed
{
    const char *name;
    QByteArray bytes;
};

/// One input for each thing that the reader treats in its own way.
QVector<NmeaSeed> nmeaSeeds();
