// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/SatellitePage.h"

#include "support/Pages.h"
#include "support/Pixels.h"
#include "views/RadarGeometry.h"
#include "views/SatBarGeometry.h"

#include <QColor>
#include <QImage>

#include <algorithm>

namespace {

using SatellitePage::Shown;

constexpr int kFontPixels = 12;
constexpr int kHighestLowNumber = 63;

QRgb barColor(const Shown &satellite)
{
    if (!satellite.used)
        return QColor(Qt::gray).rgb();
    return QColor(satellite.number <= kHighestLowNumber ? Qt::blue : Qt::green).rgb();
}

bool isBarColor(QRgb pixel)
{
    return pixel == QColor(Qt::gray).rgb() || pixel == QColor(Qt::blue).rgb() ||
           pixel == QColor(Qt::green).rgb();
}

bool isReddish(QRgb pixel)
{
    return qRed(pixel) - qGreen(pixel) > 60 && qRed(pixel) - qBlue(pixel) > 60;
}

QString at(const QString &what, const Shown &satellite, QPoint place, const QImage &image)
{
    return QStringLiteral("satellite %1: %2 at %3,%4, which is %5")
        .arg(satellite.number)
        .arg(what)
        .arg(place.x())
        .arg(place.y())
        .arg(image.valid(place) ? QColor(image.pixel(place)).name()
                                : QStringLiteral("off the screen"));
}

/// The column through the middle of a bar: coloured from top to bottom and nowhere else, as the
/// texts stay off its ends by more than two pixels.
QString columnFault(const QImage &image, const QRectF &bar, const Shown &satellite)
{
    const int x = static_cast<int>(bar.center().x());
    const int top = static_cast<int>(bar.top());
    const int bottom = static_cast<int>(bar.bottom());
    for (int y = top + 1; y < bottom; ++y) {
        if (!image.valid(x, y) || image.pixel(x, y) != barColor(satellite))
            return at(QStringLiteral("no bar"), satellite, {x, y}, image);
    }
    for (const QPoint outside : {QPoint(x, top - 2), QPoint(x, bottom + 2)}) {
        if (!image.valid(outside) || isBarColor(image.pixel(outside)))
            return at(QStringLiteral("bar too long"), satellite, outside, image);
    }
    return {};
}

/// Both edges of a bar, where the gaps are wide enough to tell.
QString edgeFault(const QImage &image, const QRectF &bar, const Shown &satellite)
{
    if (bar.height() < 4 || bar.width() < 60)
        return {};
    const int y = static_cast<int>(bar.center().y());
    const int left = static_cast<int>(bar.left());
    const int right = static_cast<int>(bar.right());
    for (const int x : {left + 1, right - 1}) {
        if (image.pixel(x, y) != barColor(satellite))
            return at(QStringLiteral("bar too narrow"), satellite, {x, y}, image);
    }
    for (const int x : {left - 2, right + 2}) {
        if (isBarColor(image.pixel(x, y)))
            return at(QStringLiteral("bar too wide"), satellite, {x, y}, image);
    }
    return {};
}

QString markerFault(const QImage &image, const QTransform &toScreen, const Shown &satellite)
{
    const QPointF position = polarToPoint(satellite.azimuth, satellite.elevation);
    const QPoint middle = toScreen.map(position).toPoint();
    if (!image.valid(middle))
        return at(QStringLiteral("marker"), satellite, middle, image);
    const bool filled = image.pixel(middle) == QColor(Qt::red).rgb();
    if (filled != satellite.used)
        return at(satellite.used ? QStringLiteral("hollow") : QStringLiteral("filled"), satellite,
                  middle, image);
    const QRect around = toScreen.mapRect(RadarGeometry::marker(position)).toAlignedRect();
    if (Pixels::count(image, around, isReddish) < 8)
        return at(QStringLiteral("no rim"), satellite, middle, image);
    return {};
}

} // namespace

namespace SatellitePage {

QStringList values(ViewerProcess &viewer)
{
    QStringList texts;
    for (const char *label : {"label_lat", "label_lon", "label_alt", "label_fix", "label_speed",
                              "label_utc", "label_pdop", "label_hdop", "label_vdop"})
        texts << viewer.text(Pages::kSatellite, QString::fromLatin1(label));
    return texts;
}

QStringList zeros()
{
    const QString degrees = QStringLiteral("0.000000 \u00B0");
    const QString dop = QStringLiteral("0.0");
    return {degrees,
            degrees,
            QStringLiteral("0.00"),
            QStringLiteral("0"),
            dop,
            QStringLiteral("0.000"),
            dop,
            dop,
            dop};
}

QString barFault(ViewerProcess &viewer, const QVector<Shown> &satellites)
{
    const QRect area = viewer.rect(Pages::kSatellite, QStringLiteral("SatBar"));
    const QImage image = viewer.screenshot();
    if (area.isEmpty() || image.isNull())
        return QStringLiteral("no bar chart");
    if (satellites.isEmpty() && Pixels::count(image, area, isBarColor) > 0)
        return QStringLiteral("there are bars");
    const SatBarGeometry geometry(area.size(), satellites.size(),
                                  viewer.fontMetrics(kFontPixels).height());
    for (int i = 0; i < satellites.size(); ++i) {
        const Shown &satellite = satellites.at(i);
        const QRectF bar = geometry.bar(i, satellite.snr).translated(area.topLeft());
        for (const QString &fault :
             {columnFault(image, bar, satellite), edgeFault(image, bar, satellite)}) {
            if (!fault.isEmpty())
                return fault;
        }
    }
    return {};
}

QString skyFault(ViewerProcess &viewer, const QVector<Shown> &satellites)
{
    const QRect area = viewer.rect(Pages::kSatellite, QStringLiteral("Radar"));
    const QImage image = viewer.screenshot();
    if (area.isEmpty() || image.isNull())
        return QStringLiteral("no sky plot");
    if (satellites.isEmpty() && Pixels::count(image, area, isReddish) > 0)
        return QStringLiteral("there are markers");
    const QSize metrics = viewer.fontMetrics(kFontPixels);
    const QTransform toScreen =
        RadarGeometry(area.size(), metrics.width(), metrics.height()).transform() *
        QTransform::fromTranslate(area.x(), area.y());
    for (const Shown &satellite : satellites) {
        const QString fault = markerFault(image, toScreen, satellite);
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

} // namespace SatellitePage
