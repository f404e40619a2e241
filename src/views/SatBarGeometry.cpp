// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SatBarGeometry.h"

#include "views/PaintLimits.h"

using PaintLimits::limited;
using PaintLimits::truncated;

namespace {

constexpr int kFullScaleDb = 100;
constexpr int kTextGap = 4; ///< pixels between a text and what it belongs to

} // namespace

SatBarGeometry::SatBarGeometry(QSize size, int svCount, int lineHeight)
    : height(size.height())
    , edge(lineHeight + kTextGap)
    , pixelsPerDb(static_cast<float>(height - 2 * edge) / static_cast<float>(kFullScaleDb))
    , slot(static_cast<float>(svCount > 0 ? size.width() / svCount : 0))
{
}

int SatBarGeometry::margin() const
{
    return edge;
}

float SatBarGeometry::scale() const
{
    return pixelsPerDb;
}

int SatBarGeometry::slotWidth() const
{
    return static_cast<int>(slot);
}

int SatBarGeometry::gridLineY(int percent) const
{
    const float y = static_cast<float>(edge) + static_cast<float>(percent) * pixelsPerDb;
    return truncated(static_cast<double>(y));
}

QRectF SatBarGeometry::bar(int index, double cn0) const
{
    const int slotLeft = static_cast<int>(static_cast<float>(index) * slot);
    const double width = static_cast<double>(slot);
    return {static_cast<double>(truncated(slotLeft + 0.05 * width)),
            static_cast<double>(truncated(barTop(cn0))), 0.9 * width,
            limited(cn0 * static_cast<double>(pixelsPerDb))};
}

QPoint SatBarGeometry::numberOrigin(int index, int textWidth) const
{
    return {centredText(index, textWidth), height - kTextGap};
}

QPoint SatBarGeometry::valueOrigin(int index, double cn0, int textWidth) const
{
    return {centredText(index, textWidth), truncated(barTop(cn0) - kTextGap)};
}

double SatBarGeometry::barTop(double cn0) const
{
    return edge + (kFullScaleDb - cn0) * static_cast<double>(pixelsPerDb);
}

int SatBarGeometry::centredText(int index, int textWidth) const
{
    return truncated((index + 0.5) * static_cast<double>(slot) - textWidth / 2.0);
}
