// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSize>

/// How large letters and what a finger presses are on a screen, in pixels. They follow the screen's
/// height, or its width where that is the scarcer one; 800x480 is the measure. A value.
class TouchSizes
{
public:
    explicit TouchSizes(QSize screen);

    /// Letters of all texts whose size no form gives.
    int fontPixels() const;
    /// Height of what is pressed, and width of an arrow: 40 of 480, 7.8 mm on a panel of 130 dpi.
    int fingerPixels() const;
    /// Boxes, circles and scroll bars, around which there is more that takes the press.
    int indicatorPixels() const;
    /// The most that a layout leaves free at the edges of a page, if nothing else is given.
    int marginPixels() const;
    /// The most that a layout leaves free between two widgets, if nothing else is given.
    int spacingPixels() const;

private:
    int extent; ///< height of a landscape screen of 5:3 that fits in
};
