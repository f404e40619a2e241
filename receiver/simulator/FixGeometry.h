// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/simulator/Sky.h"

#include <QVector>

#include <optional>

/// Dilution of precision of a set of satellites.
struct tDilution
{
    double pdop = 0.0;
    double hdop = 0.0;
    double vdop = 0.0;
};

/// DOPs of a least squares fix of position and receiver clock from unit vectors (east, north, up)
/// towards the satellites. Nothing with fewer than four, or when they leave a direction open.
std::optional<tDilution> dilutionOf(const QVector<tVector> &linesOfSight);
