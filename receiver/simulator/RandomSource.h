// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <cmath>

/// Random numbers that are the same for the same seed with every compiler and library, which the
/// distributions of the standard library do not promise.
class RandomSource
{
public:
    explicit RandomSource(quint64 seed)
        : state(seed)
    {
    }

    /// Evenly spread over 0 <= x < 1.
    double uniform() { return static_cast<double>(next() >> 11U) * 0x1.0p-53; }

    /// Evenly spread between two values.
    double uniform(double low, double high) { return low + (high - low) * uniform(); }

    /// Normally spread with mean 0 and standard deviation 1.
    double gaussian()
    {
        constexpr double kTwoPi = 6.283185307179586;
        const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform()));
        return radius * std::cos(kTwoPi * uniform());
    }

private:
    // SplitMix64.
    quint64 next()
    {
        state += 0x9e3779b97f4a7c15U;
        quint64 z = state;
        z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
        return z ^ (z >> 31U);
    }

    quint64 state;
};
