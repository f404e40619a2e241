// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "views/SVInfoViewer.h"

#include <QFont>
#include <QTransform>

/// Bar chart of the carrier-to-noise densities, 0 to 100 dB-Hz, in the order of the list: number
/// below, value above each bar. User-interface thread.
class SatBar : public SVInfoViewer
{
    Q_OBJECT

public:
    explicit SatBar(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setUpFont();

    QFont font; ///< of numbers and values
    QTransform transform;
};
