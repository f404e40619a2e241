// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPoint>
#include <QRectF>
#include <QSize>

/// Where the bar chart's parts lie, in pixels of a widget of the given size. A value; it draws
/// nothing. The precisions and truncations decide to the pixel what the chart looks like.
class SatBarGeometry
{
public:
    /// For `svCount` bars, 0 or more, with texts of `lineHeight` pixels.
    SatBarGeometry(QSize size, int svCount, int lineHeight);

    /// Height of the empty strips above 100 and below 0 dB-Hz.
    int margin() const;

    /// Pixels per dB-Hz. Negative where the widget is too low for both margins.
    float scale() const;

    /// Whole pixels of width that each satellite has; 0 with no satellite, or with more satellites
    /// than pixels.
    int slotWidth() const;

    /// Height of the grid line that has `percent` of the scale above it.
    int gridLineY(int percent) const;

    /// The bar of the satellite at `index`. It is clipped neither above 100 nor below 0 dB-Hz,
    /// where its height turns negative.
    QRectF bar(int index, double cn0) const;

    /// Baseline origin of the satellite number, `textWidth` pixels wide, below the bar.
    QPoint numberOrigin(int index, int textWidth) const;

    /// Baseline origin of the value, `textWidth` pixels wide, above the bar.
    QPoint valueOrigin(int index, double cn0, int textWidth) const;

private:
    double barTop(double cn0) const;
    int centredText(int index, int textWidth) const;

    int height;
    int edge;
    float pixelsPerDb;
    float slot; ///< whole pixels, in the type that the positions are computed in
};
