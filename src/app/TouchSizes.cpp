// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchSizes.h"

#include <algorithm>

namespace {

constexpr int kMeasure = 480; ///< height of the screen that the sizes below are for
constexpr int kFontPixels = 13;
constexpr int kFingerPixels = 40;
constexpr int kIndicatorPixels = 24;
constexpr int kMarginPixels = 9;
constexpr int kSpacingPixels = 6;

// Below these nobody reads or hits anything, however small the screen is.
constexpr int kMinFontPixels = 10;
constexpr int kMinFingerPixels = 20;
constexpr int kMinIndicatorPixels = 14;
constexpr int kMinGapPixels = 2;

int scaled(int pixels, int extent, int least)
{
    return std::max(least, (pixels * extent + kMeasure / 2) / kMeasure);
}

} // namespace

TouchSizes::TouchSizes(QSize screen)
    : extent(std::min(screen.height(), screen.width() * 3 / 5))
{
}

int TouchSizes::fontPixels() const
{
    return scaled(kFontPixels, extent, kMinFontPixels);
}

int TouchSizes::fingerPixels() const
{
    return scaled(kFingerPixels, extent, kMinFingerPixels);
}

int TouchSizes::indicatorPixels() const
{
    return scaled(kIndicatorPixels, extent, kMinIndicatorPixels);
}

int TouchSizes::marginPixels() const
{
    return scaled(kMarginPixels, extent, kMinGapPixels);
}

int TouchSizes::spacingPixels() const
{
    return scaled(kSpacingPixels, extent, kMinGapPixels);
}
