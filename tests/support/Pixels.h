// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QImage>
#include <QWidget>

#include <functional>

/// What a widget looks like, and questions about it.
namespace Pixels {

inline QImage of(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// How many pixels of `area`, as far as it lies in the image, are of that kind.
inline int count(const QImage &image, const QRect &area, const std::function<bool(QRgb)> &isKind)
{
    int found = 0;
    const QRect inside = area & image.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x)
            found += isKind(image.pixel(x, y)) ? 1 : 0;
    }
    return found;
}

inline int count(const QImage &image, const QColor &color)
{
    return count(image, image.rect(), [&](QRgb pixel) { return pixel == color.rgb(); });
}

inline bool isDark(QRgb pixel)
{
    return qRed(pixel) < 80 && qGreen(pixel) < 80 && qBlue(pixel) < 80;
}

inline bool isColorless(QRgb pixel)
{
    return std::abs(qRed(pixel) - qGreen(pixel)) <= 6 &&
           std::abs(qGreen(pixel) - qBlue(pixel)) <= 6;
}

} // namespace Pixels
