// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SatBar.h"

#include "views/SatBarGeometry.h"

#include <QFontMetrics>
#include <QPainter>

namespace {

constexpr qint32 kHighestLowNumber = 63;
constexpr int kGridPercents[] = {67, 33};

Qt::GlobalColor barColor(const tSvInfo &sv)
{
    if (!sv.used)
        return Qt::gray;
    return sv.prn <= kHighestLowNumber ? Qt::blue : Qt::green;
}

// White on white: the grid is there for whoever gives it a colour one day.
void drawGrid(QPainter &painter, const QTransform &transform, const SatBarGeometry &geometry,
              int width)
{
    painter.save();
    painter.setTransform(transform);
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(Qt::white, 0.3, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    for (const int percent : kGridPercents) {
        const int y = geometry.gridLineY(percent);
        painter.drawLine(0, y, width, y);
    }
    painter.restore();
}

void drawBar(QPainter &painter, const QRectF &bar, Qt::GlobalColor color)
{
    painter.setPen(color);
    painter.setBrush(color);
    // Filled, not outlined: a rim would make each bar a pixel wider and give 0 dB-Hz a line.
    painter.fillRect(bar, painter.brush());
}

} // namespace

SatBar::SatBar(QWidget *parent)
    : SVInfoViewer(parent)
{
}

void SatBar::paintEvent(QPaintEvent *)
{
    setUpFont();
    const QFontMetrics metrics(font);
    const SatBarGeometry geometry(size(), svCount, metrics.height());

    QPainter painter(this);
    drawBackground(painter, QPen(Qt::white, 0.5, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    drawGrid(painter, transform, geometry, width());
    if (svCount == 0)
        return;

    painter.setTransform(transform);
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setFont(font);
    const QPen textPen(Qt::black, 0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    for (int i = 0; i < svCount; ++i) {
        const tSvInfo &sv = svInfo[i];
        drawBar(painter, geometry.bar(i, sv.cn0), barColor(sv));

        painter.setPen(textPen);
        const QString number = QStringLiteral("%1").arg(sv.prn);
        painter.drawText(geometry.numberOrigin(i, metrics.horizontalAdvance(number)), number);
        const QString value = QStringLiteral("%1").arg(sv.cn0);
        painter.drawText(geometry.valueOrigin(i, sv.cn0, metrics.horizontalAdvance(value)), value);
    }
}

void SatBar::resizeEvent(QResizeEvent *)
{
    setUpFont();
    transform = QTransform();
}

void SatBar::setUpFont()
{
    font.setPixelSize(12);
    font.setWeight(QFont::Normal);
}
