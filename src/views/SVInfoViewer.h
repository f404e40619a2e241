// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gnss/GnssInfo.h"

#include <QWidget>

class QPainter;
class QPen;

/// One satellite as the satellite widgets draw it.
struct tSvInfo
{
    qint32 prn = 0;         ///< satellite number as GSV gives it
    double azimuth = 0.0;   ///< degrees from true north, clockwise
    double elevation = 0.0; ///< degrees above the horizon, 0..90
    double cn0 = 0.0;       ///< carrier-to-noise density, dB-Hz
    bool used = false;      ///< used in the fix
};

/// Base of the widgets that show the satellites in view: it holds their list and paints nothing but
/// the background that they have in common.
/// User-interface thread.
class SVInfoViewer : public QWidget
{
    Q_OBJECT

public:
    explicit SVInfoViewer(QWidget *parent = nullptr);

    /// Copies `count` entries, at most kMaxSatellites and none for a negative count, and shows that
    /// many from the next update() on, which is left to the caller.
    void setSvInfo(const tSvInfo *entries, qint32 count);

protected:
    /// Fills the widget with white, rounded at the corners and rimmed by `rim`. Leaves the painter
    /// as it found it.
    void drawBackground(QPainter &painter, const QPen &rim) const;

    tSvInfo svInfo[kMaxSatellites];
    qint32 svCount = 0; ///< entries of svInfo that count, 0..kMaxSatellites
};
