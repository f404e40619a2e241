// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ViewerProcess.h"

#include <QString>
#include <QStringList>
#include <QVector>

/// What the running viewer's satellite page shows: its labels as text, its drawings by the pixels
/// of the screen.
namespace SatellitePage {

/// A satellite as the page has to draw it.
struct Shown
{
    int number = 0;
    int elevation = 0; ///< degrees
    int azimuth = 0;   ///< degrees
    int snr = 0;       ///< dB-Hz
    bool used = false;
};

/// Texts of the labels: Lat, Lon, Alt, Fix, Speed, UTC, PDOP, HDOP, VDOP.
QStringList values(ViewerProcess &viewer);

/// What the labels show while the model is empty.
QStringList zeros();

/// Empty when the bar chart on the screen shows these satellites, in this order, and no others;
/// otherwise the first thing that is wrong.
QString barFault(ViewerProcess &viewer, const QVector<Shown> &satellites);

/// Empty when the sky plot on the screen marks these satellites, filled or hollow.
QString skyFault(ViewerProcess &viewer, const QVector<Shown> &satellites);

} // namespace SatellitePage
