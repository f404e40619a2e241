// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/Radar.h"

#include "views/RadarGeometry.h"

#include <QFontMetrics>
#include <QPainter>

namespace {

constexpr int kLetterPixels = 12;
constexpr int kNumberPixels = 8; ///< in plot units, as the numbers are scaled with the plot
constexpr int kRings[] = {30, 60, RadarGeometry::kHorizon}; ///< the elevations 60, 30 and 0 degrees
constexpr int kDiameters = 8;
constexpr double kDiameterStepDeg = 45.0;

QPen cosmeticPen(Qt::GlobalColor color, qreal width, Qt::PenStyle style)
{
    QPen pen(color, width, style, Qt::SquareCap, Qt::BevelJoin);
    pen.setCosmetic(true);
    return pen;
}

RadarGeometry geometryFor(QSize size, const QFont &letterFont)
{
    const QFontMetrics metrics(letterFont);
    return {size, metrics.horizontalAdvance(QLatin1Char('W')), metrics.height()};
}

void drawGrid(QPainter &painter, const QTransform &transform)
{
    painter.save();
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.setTransform(transform);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(cosmeticPen(Qt::gray, 0.6, Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    for (const int radius : kRings)
        painter.drawEllipse(RadarGeometry::ring(radius));

    // The rotations add up, so that the eight lines are four diameters drawn twice each, every
    // second one from its other end. Dashes and smooth edges show that.
    for (int i = 0; i < kDiameters; ++i) {
        painter.rotate(kDiameterStepDeg * i);
        painter.drawLine(0, -RadarGeometry::kHorizon, 0, RadarGeometry::kHorizon);
    }
    // One restore for the one save: the painter goes on, and Qt complains of states left behind.
    painter.restore();
}

void drawLetters(QPainter &painter, const QTransform &transform, const RadarGeometry &geometry,
                 const QFont &font)
{
    painter.save();
    painter.setTransform(transform);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setPen(cosmeticPen(Qt::black, 1, Qt::SolidLine));
    painter.setFont(font);
    const QFontMetrics metrics(font);
    const QString south = QStringLiteral("S");
    painter.drawText(geometry.southOrigin(metrics.horizontalAdvance(south)), south);
    const QString north = QStringLiteral("N");
    painter.drawText(geometry.northOrigin(metrics.horizontalAdvance(north)), north);
    const QString east = QStringLiteral("E");
    painter.drawText(geometry.eastOrigin(metrics.horizontalAdvance(east)), east);
    const QString west = QStringLiteral("W");
    painter.drawText(geometry.westOrigin(metrics.horizontalAdvance(west)), west);
    painter.restore();
}

void drawMarker(QPainter &painter, QPointF position, bool used)
{
    painter.save();
    painter.setPen(Qt::darkRed);
    if (used) {
        painter.setBackgroundMode(Qt::OpaqueMode);
        painter.setBrush(Qt::red);
    }
    painter.drawEllipse(RadarGeometry::marker(position));
    painter.restore();
}

} // namespace

Radar::Radar(QWidget *parent)
    : SVInfoViewer(parent)
{
}

// One painter for all: two that are active on a widget at once share their state in Qt 5, which
// would fill the hollow markers. Every drawing function leaves the painter as it found it.
void Radar::paintEvent(QPaintEvent *)
{
    font.setPixelSize(kLetterPixels);
    QPainter painter(this);
    drawBackground(painter, painter.pen());
    drawGrid(painter, transform);
    drawLetters(painter, transform, geometryFor(size(), font), font);

    painter.setTransform(transform);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    QPen numberPen(Qt::gray, 1);
    numberPen.setCosmetic(true);
    painter.setPen(numberPen);
    QFont numberFont;
    numberFont.setPixelSize(kNumberPixels);
    painter.setFont(numberFont);
    for (int i = 0; i < svCount; ++i) {
        const tSvInfo &sv = svInfo[i];
        const QPointF position = polarToPoint(sv.azimuth, sv.elevation);
        drawMarker(painter, position, sv.used);
        painter.drawText(RadarGeometry::numberOrigin(position), QStringLiteral("%1").arg(sv.prn));
    }
}

void Radar::resizeEvent(QResizeEvent *)
{
    font.setPixelSize(kLetterPixels);
    transform = geometryFor(size(), font).transform();
}
