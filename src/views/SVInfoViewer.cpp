// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SVInfoViewer.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int kCornerRadius = 10;

} // namespace

SVInfoViewer::SVInfoViewer(QWidget *parent)
    : QWidget(parent)
{
}

void SVInfoViewer::setSvInfo(const tSvInfo *entries, qint32 count)
{
    svCount = std::clamp<qint32>(count, 0, kMaxSatellites);
    std::copy_n(entries, svCount, svInfo);
}

void SVInfoViewer::drawBackground(QPainter &painter, const QPen &rim) const
{
    painter.save();
    painter.setPen(rim);
    painter.setBrush(QColor(255, 255, 255, 255));
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.drawRoundedRect(0, 0, width(), height(), kCornerRadius, kCornerRadius);
    painter.restore();
}
