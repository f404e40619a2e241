// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPoint>
#include <QRectF>
#include <QSize>
#include <QTransform>

/// Place of a direction on the sky plot, in plot units: the zenith at the origin, one unit a degree
/// of zenith distance, north up, y growing downwards. Both angles in degrees.
QPointF polarToPoint(double azimuth, double elevation);

/// Where the sky plot's parts lie. A value; it draws nothing. Unless said otherwise positions are
/// in plot units, the square from -90 to 90 on both axes that transform() puts on the widget.
class RadarGeometry
{
public:
    /// Radius of the horizon, plot units.
    static constexpr int kHorizon = 90;

    /// `letterWidth` and `lineHeight`, in pixels, are the width of "W" and the height of a line in
    /// the font of the compass letters; they are also the room left around the plot.
    RadarGeometry(QSize size, int letterWidth, int lineHeight);

    /// From plot units to the widget's pixels, with the same scale on both axes.
    QTransform transform() const;

    /// Square around the circle of `radius` about the zenith.
    static QRectF ring(int radius);

    /// Baseline origins of the compass letters, `textWidth` wide.
    QPoint northOrigin(int textWidth) const;
    QPoint eastOrigin(int textWidth) const;
    QPoint southOrigin(int textWidth) const;
    QPoint westOrigin(int textWidth) const;

    /// Square around the marker of a satellite at `position`.
    static QRectF marker(QPointF position);

    /// Baseline origin of the number of a satellite at `position`.
    static QPoint numberOrigin(QPointF position);

private:
    QSize widgetSize;
    int letterRoom;
    int textHeight;
};
