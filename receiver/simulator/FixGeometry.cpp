// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/simulator/FixGeometry.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

constexpr std::size_t kUnknowns = 4; // east, north, up, clock
using tMatrix = std::array<std::array<double, 2 * kUnknowns>, kUnknowns>;

// Normal equations on the left, the unit matrix on the right.
tMatrix normalEquations(const QVector<tVector> &linesOfSight)
{
    tMatrix m = {};
    for (const tVector &sight : linesOfSight) {
        const std::array<double, kUnknowns> row = {sight.x, sight.y, sight.z, 1.0};
        for (size_t i = 0; i < kUnknowns; ++i) {
            for (size_t j = 0; j < kUnknowns; ++j)
                m[i][j] += row[i] * row[j];
        }
    }
    for (size_t i = 0; i < kUnknowns; ++i)
        m[i][kUnknowns + i] = 1.0;
    return m;
}

// Turns the left half into the unit matrix, the right half into the inverse. False when singular.
bool invert(tMatrix &m)
{
    constexpr double kSmallestPivot = 1e-9;
    for (size_t column = 0; column < kUnknowns; ++column) {
        size_t pivot = column;
        for (size_t row = column + 1; row < kUnknowns; ++row) {
            if (std::fabs(m[row][column]) > std::fabs(m[pivot][column]))
                pivot = row;
        }
        if (std::fabs(m[pivot][column]) < kSmallestPivot)
            return false;
        std::swap(m[pivot], m[column]);
        const double divisor = m[column][column];
        for (double &value : m[column])
            value /= divisor;
        for (size_t row = 0; row < kUnknowns; ++row) {
            const double factor = m[row][column];
            for (size_t k = 0; row != column && k < 2 * kUnknowns; ++k)
                m[row][k] -= factor * m[column][k];
        }
    }
    return true;
}

} // namespace

std::optional<tDilution> dilutionOf(const QVector<tVector> &linesOfSight)
{
    if (linesOfSight.size() < static_cast<int>(kUnknowns))
        return std::nullopt;
    tMatrix m = normalEquations(linesOfSight);
    if (!invert(m))
        return std::nullopt;
    const double east = m[0][kUnknowns];
    const double north = m[1][kUnknowns + 1];
    const double up = m[2][kUnknowns + 2];
    if (!(east > 0.0 && north > 0.0 && up > 0.0))
        return std::nullopt;
    return tDilution{std::sqrt(east + north + up), std::sqrt(east + north), std::sqrt(up)};
}
