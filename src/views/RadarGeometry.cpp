// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/RadarGeometry.h"

#include "views/PaintLimits.h"

#include <algorithm>
#include <cmath>

using PaintLimits::limited;
using PaintLimits::truncated;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kZenith = 90.0; ///< degrees of elevation
constexpr double kMarkerRadius = 2.0;

} // namespace

QPointF polarToPoint(double azimuth, double elevation)
{
    const double theta = (90.0 - azimuth) * kPi / 180.0;
    const double r = kZenith - elevation;
    return {limited(std::cos(theta) * r), limited(-(std::sin(theta) * r))};
}

RadarGeometry::RadarGeometry(QSize size, int letterWidth, int lineHeight)
    : widgetSize(size)
    , letterRoom(letterWidth)
    , textHeight(lineHeight)
{
}

QTransform RadarGeometry::transform() const
{
    const int plotPixels =
        std::min(widgetSize.width() - 3 * letterRoom, widgetSize.height()) - 3 * textHeight;
    const double scale = plotPixels / (2.0 * kHorizon);
    const QPoint centre(widgetSize.width() / 2, widgetSize.height() / 2);
    QTransform transform;
    transform.translate(centre.x(), centre.y());
    transform.scale(scale, scale);
    return transform;
}

QRectF RadarGeometry::ring(int radius)
{
    return QRectF(-radius, -radius, 2 * radius, 2 * radius);
}

QPoint RadarGeometry::northOrigin(int textWidth) const
{
    return {truncated(-0.5 * textWidth), truncated(-kHorizon - textHeight / 4.0)};
}

QPoint RadarGeometry::eastOrigin(int textWidth) const
{
    return {truncated(kHorizon + textWidth / 4.0), truncated(textHeight / 4.0)};
}

QPoint RadarGeometry::southOrigin(int textWidth) const
{
    return {truncated(-0.5 * textWidth), truncated(kHorizon + 0.75 * textHeight)};
}

QPoint RadarGeometry::westOrigin(int textWidth) const
{
    return {truncated(-kHorizon - 1.25 * textWidth), truncated(textHeight / 4.0)};
}

QRectF RadarGeometry::marker(QPointF position)
{
    return {position.x() - kMarkerRadius, position.y() - kMarkerRadius, 2 * kMarkerRadius,
            2 * kMarkerRadius};
}

QPoint RadarGeometry::numberOrigin(QPointF position)
{
    return {truncated(position.x() + kMarkerRadius), truncated(position.y() + kMarkerRadius)};
}
