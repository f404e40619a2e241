// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "views/SVInfoViewer.h"

#include <QFont>
#include <QTransform>

/// Sky plot: north up, the horizon as the outer circle, each satellite at its azimuth and elevation
/// with its number beside it, filled when used in the fix. User-interface thread.
class Radar : public SVInfoViewer
{
    Q_OBJECT

public:
    explicit Radar(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QTransform transform; ///< plot units to pixels
    QFont font;           ///< of the compass letters
};
